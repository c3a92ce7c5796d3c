// The list of timer rows in board order, scrolled vertically once the window reaches its height
// cap. Rows are kept per timer id, so a change rebuilds only what was added or removed.
#pragma once

#include "view.h"

#include <QHash>
#include <QList>
#include <QUuid>

namespace tock {

class TimerRow;
struct ViewContext;

class RowList : public View {
    Q_OBJECT
public:
    RowList(AppModel *model, const ViewContext &context, QWidget *parent);

    // Makes the rows match the board: adds, removes and re-places them.
    void sync();
    // Height of all rows with the list's padding, in unzoomed points.
    qreal contentHeight() const;
    TimerRow *row(const QUuid &id) const { return rows_.value(id); }
    QList<TimerRow *> rows() const;
    void relayout();
    qreal scrollOffset() const { return scroll_; }
    void scrollBy(qreal delta);
    // Every row redraws (style, hover, edit changed).
    void refreshAll();
    // Scrolls just enough to show `row` whole.
    void ensureVisible(const TimerRow *row);

protected:
    void resizeEvent(QResizeEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    // The keys of a row whose control has the focus: ↑ ↓ to the neighbour's same control,
    // Alt+↑ ↓ move the row, Delete and ⌫ delete it, F2 renames, Shift+F10 opens its menu.
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void leaveEvent(QEvent *event) override;

private:
    qreal maxScroll() const;
    // Hovers the row under a pointer that stood still while rows moved.
    void hoverUnderPointer();
    const ViewContext &context_;
    QHash<QUuid, TimerRow *> rows_;
    qreal scroll_ = 0;
};

} // namespace tock
