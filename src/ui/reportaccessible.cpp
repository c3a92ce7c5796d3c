#include "reportaccessible.h"

#include "reportview.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QHash>
#include <QLocale>
#include <QPointer>

namespace tock {

namespace {

class ReportTable;

// One cell, made when a reader first asks for it and kept (by its place) while the table lives.
class ReportCell : public QAccessibleInterface, public QAccessibleTableCellInterface {
public:
    ReportCell(ReportTable *table, int row, int column) : table_(table), row_(row), column_(column) {}

    bool isValid() const override;
    QObject *object() const override { return nullptr; }
    QAccessibleInterface *parent() const override;
    QAccessibleInterface *child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface *) const override { return -1; }
    QAccessibleInterface *childAt(int, int) const override { return nullptr; }
    QString text(QAccessible::Text t) const override;
    void setText(QAccessible::Text, const QString &) override {}
    QRect rect() const override;
    QAccessible::Role role() const override { return QAccessible::Cell; }
    QAccessible::State state() const override
    {
        QAccessible::State s;
        s.readOnly = true;
        return s;
    }
    void *interface_cast(QAccessible::InterfaceType type) override
    {
        return type == QAccessible::TableCellInterface ? static_cast<QAccessibleTableCellInterface *>(this) : nullptr;
    }

    bool isSelected() const override { return false; }
    QList<QAccessibleInterface *> columnHeaderCells() const override { return {}; }
    QList<QAccessibleInterface *> rowHeaderCells() const override { return {}; }
    int columnIndex() const override { return column_; }
    int rowIndex() const override { return row_; }
    int columnExtent() const override { return 1; }
    int rowExtent() const override { return 1; }
    QAccessibleInterface *table() const override;

private:
    ReportTable *table_;
    int row_;
    int column_;
};

class ReportTable : public QAccessibleWidget, public QAccessibleTableInterface {
public:
    explicit ReportTable(ReportView *view) : QAccessibleWidget(view, QAccessible::Table) {}
    ~ReportTable() override
    {
        for (const QAccessible::Id id : std::as_const(cells_))
            QAccessible::deleteAccessibleInterface(id);
    }

    ReportView *view() const { return static_cast<ReportView *>(widget()); }
    const WeekReport &report() const { return view()->report(); }

    QString text(QAccessible::Text t) const override
    {
        if (t == QAccessible::Name)
            return view()->accessibleTitle();
        if (t == QAccessible::Description)
            return QStringLiteral("Left and Right arrows: previous and next week; Escape: back to the timers");
        return QAccessibleWidget::text(t);
    }
    void *interface_cast(QAccessible::InterfaceType type) override
    {
        return type == QAccessible::TableInterface ? static_cast<QAccessibleTableInterface *>(this)
                                                   : QAccessibleWidget::interface_cast(type);
    }

    int childCount() const override { return rowCount() * columnCount(); }
    QAccessibleInterface *child(int index) const override
    {
        const int columns = columnCount();
        return index < 0 || index >= childCount() ? nullptr : cellAt(index / columns, index % columns);
    }
    int indexOfChild(const QAccessibleInterface *child) const override
    {
        if (!child || child->role() != QAccessible::Cell)
            return -1;
        auto *cell = const_cast<QAccessibleInterface *>(child)->tableCellInterface();
        return cell ? cell->rowIndex() * columnCount() + cell->columnIndex() : -1;
    }

    // Rows: the timers, then the total. Columns: the days, then the week.
    int rowCount() const override { return int(report().rows.size()) + 1; }
    int columnCount() const override { return int(report().days.size()) + 1; }
    QString rowDescription(int row) const override
    {
        return row < report().rows.size() ? report().rows.at(row).name : QStringLiteral("Total");
    }
    QString columnDescription(int column) const override
    {
        if (column < report().days.size())
            return QLocale::c().toString(report().days.at(column), QStringLiteral("dddd MMM d"));
        return QStringLiteral("Week");
    }
    QString cellText(int row, int column) const
    {
        const WeekReport &r = report();
        const bool total = row >= r.rows.size();
        if (column >= r.days.size())
            return ReportView::duration(total ? r.total : r.rows.at(row).total);
        return ReportView::duration(total ? r.dayTotals.value(column) : r.rows.at(row).perDay.value(column));
    }
    QAccessibleInterface *cellAt(int row, int column) const override
    {
        if (row < 0 || column < 0 || row >= rowCount() || column >= columnCount())
            return nullptr;
        const quint64 key = quint64(row) << 32 | quint64(column);
        auto it = cells_.constFind(key);
        if (it == cells_.constEnd()) {
            auto *self = const_cast<ReportTable *>(this);
            it = self->cells_.insert(key, QAccessible::registerAccessibleInterface(new ReportCell(self, row, column)));
        }
        return QAccessible::accessibleInterface(*it);
    }
    QAccessibleInterface *caption() const override { return nullptr; }
    QAccessibleInterface *summary() const override { return nullptr; }
    int selectedCellCount() const override { return 0; }
    QList<QAccessibleInterface *> selectedCells() const override { return {}; }
    int selectedColumnCount() const override { return 0; }
    int selectedRowCount() const override { return 0; }
    QList<int> selectedColumns() const override { return {}; }
    QList<int> selectedRows() const override { return {}; }
    bool isColumnSelected(int) const override { return false; }
    bool isRowSelected(int) const override { return false; }
    bool selectRow(int) override { return false; }
    bool selectColumn(int) override { return false; }
    bool unselectRow(int) override { return false; }
    bool unselectColumn(int) override { return false; }
    void modelChange(QAccessibleTableModelChangeEvent *) override {}

private:
    mutable QHash<quint64, QAccessible::Id> cells_;
};

bool ReportCell::isValid() const
{
    return row_ < table_->rowCount() && column_ < table_->columnCount() && table_->isValid();
}

QAccessibleInterface *ReportCell::parent() const
{
    return table_;
}

QAccessibleInterface *ReportCell::table() const
{
    return table_;
}

QString ReportCell::text(QAccessible::Text t) const
{
    if (!isValid())
        return {};
    if (t == QAccessible::Name || t == QAccessible::Value)
        return table_->cellText(row_, column_);
    if (t == QAccessible::Description)
        return table_->rowDescription(row_) + QStringLiteral(", ") + table_->columnDescription(column_);
    return {};
}

QRect ReportCell::rect() const
{
    // Drawn as bars and a legend, not a grid: a cell's place is the table's.
    return table_->rect();
}

} // namespace

QAccessibleInterface *reportAccessible(ReportView *view)
{
    return new ReportTable(view);
}

} // namespace tock
