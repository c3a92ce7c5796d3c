#include "namefield.h"

#include "appmodel.h"
#include "cursorblink.h"
#include "shapes.h"
#include "terminalcursor.h"
#include "theme.h"

#include <QEnterEvent>
#include <QFocusEvent>
#include <QFontMetricsF>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPointer>
#include <QProxyStyle>

#include <cmath>

namespace tock {

namespace {

const QString untitled = QStringLiteral("Untitled");
constexpr qreal padV = 3;

// Hides the line edit's own bar where the theme draws a block instead.
class BlockCaretStyle : public QProxyStyle {
public:
    int pixelMetric(PixelMetric metric, const QStyleOption *option, const QWidget *widget) const override
    {
        if (metric == PM_TextCursorWidth)
            return 0;
        return QProxyStyle::pixelMetric(metric, option, widget);
    }
};

} // namespace

// The text field of a rename: Return commits, Escape restores, losing the focus commits.
class NameLineEdit : public QLineEdit {
public:
    explicit NameLineEdit(NameField *field) : QLineEdit(field), field_(field)
    {
        setFrame(false);
        setAttribute(Qt::WA_MacShowFocusRect, false);
    }

    void setBlockCaret(bool block)
    {
        if (block == (blockStyle_ != nullptr))
            return;
        if (block) {
            blockStyle_ = new BlockCaretStyle;
            blockStyle_->setParent(this);
            setStyle(blockStyle_);
        } else {
            setStyle(nullptr);
            delete blockStyle_;
            blockStyle_ = nullptr;
        }
    }
    bool hasBlockCaret() const { return blockStyle_ != nullptr; }
    // The block's cell at the cursor, in this widget's coordinates.
    QRectF blockRect() const
    {
        const qreal px = font().pixelSize();
        const QRect bar = cursorRect();
        const QString under = characterUnderCursor();
        const qreal advance = under.isEmpty() ? 0 : QFontMetricsF(font()).horizontalAdvance(under);
        const qreal w = std::max(advance, px * CursorCharacter::cellSize.width() / 13.0);
        const qreal h = std::min<qreal>(height(), px * CursorCharacter::cellSize.height() / 13.0);
        return {bar.center().x() + 0.5, bar.center().y() - h / 2 + 0.5, w, h};
    }

protected:
    void keyPressEvent(QKeyEvent *event) override
    {
        switch (event->key()) {
        case Qt::Key_Return:
        case Qt::Key_Enter:
            field_->endEditing(NameField::End::commit);
            return;
        case Qt::Key_Escape:
            field_->endEditing(NameField::End::cancel);
            return;
        default:
            QLineEdit::keyPressEvent(event);
            if (blockStyle_)
                field_->blink_->restart();
        }
    }
    void focusInEvent(QFocusEvent *event) override
    {
        QLineEdit::focusInEvent(event);
        field_->updateBlinking();
    }
    void focusOutEvent(QFocusEvent *event) override
    {
        QLineEdit::focusOutEvent(event);
        // A context menu borrows the focus; it is not the user leaving the field.
        if (event->reason() != Qt::PopupFocusReason && field_->editor_ == this)
            field_->endEditing(NameField::End::commit);
        else
            field_->updateBlinking();
    }
    void paintEvent(QPaintEvent *event) override
    {
        QLineEdit::paintEvent(event);
        if (!blockStyle_ || !field_->theme_)
            return;
        const bool keys = hasFocus() || window()->focusWidget() == this || !isVisible();
        if (!keys || !field_->blink_->isShown())
            return;
        const Theme &theme = *field_->theme_;
        QPainter painter(this);
        CursorCharacter ch;
        ch.character = characterUnderCursor();
        ch.cursor = true;
        ch.active = field_->paintsActive_.value_or(!isVisible() || isActiveWindow());
        ch.paint(painter, blockRect(), font(), theme.fieldFocusInk, theme.fieldFocusInk, theme.fieldFocusFill);
    }

private:
    QString characterUnderCursor() const
    {
        const QString t = displayText();
        const int at = cursorPosition();
        if (at >= t.size())
            return {};
        return t.mid(at, t.at(at).isHighSurrogate() ? 2 : 1);
    }

    NameField *field_;
    BlockCaretStyle *blockStyle_ = nullptr;
};

NameField::NameField(AppModel *model, QUuid id, QWidget *parent)
    : QWidget(parent), model_(model), id_(id), blink_(new CursorBlink(this))
{
    setAccessibleName(QStringLiteral("Timer name"));
    setFocusPolicy(Qt::TabFocus);
    setAccessibleDescription(QStringLiteral("Click to rename"));
    setAttribute(Qt::WA_Hover);
    setCursor(Qt::IBeamCursor);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    if (const std::optional<TimerItem> timer = model_->board().timer(id_))
        name_ = timer->name;
    connect(model_, &AppModel::boardChanged, this, [this](const BoardChange &change) {
        if (!change.changed.contains(id_))
            return; // a full list of rows need not search the board for every change
        if (const std::optional<TimerItem> timer = model_->board().timer(id_))
            setName(timer->name);
    });
    restyle();
    connect(model_, &AppModel::nameFocusIDChanged, this, &NameField::takeNameFocus);
    connect(blink_, &CursorBlink::shownChanged, this, [this] {
        if (editor_)
            editor_->update(editor_->blockRect().toAlignedRect().adjusted(-1, -1, 1, 1));
    });
}

NameField::~NameField()
{
    // Leaving mid-rename (the row went away): the model must not think a name is being typed.
    if (editor_) {
        editor_ = nullptr;
        if (model_)
            model_->setIsEditingName(false);
    }
}

void NameField::restyle()
{
    if (!model_)
        return;
    const Theme *theme = &Theme::of(model_->style());
    const qreal zoom = std::max(model_->zoom(), 0.1);
    if (theme == theme_ && zoom == zoom_)
        return;
    theme_ = theme;
    zoom_ = zoom;
    styleEditor();
    relayout();
    updateGeometry();
    update();
}

void NameField::setName(const QString &name)
{
    if (name == name_)
        return;
    name_ = name;
    relayout();
    if (!editor_)
        update();
}

void NameField::setPaintsActive(std::optional<bool> active)
{
    if (active == paintsActive_)
        return;
    paintsActive_ = active;
    if (editor_)
        editor_->update();
}

QLineEdit *NameField::editor() const
{
    return editor_;
}

QFont NameField::nameFont() const
{
    if (!theme_)
        return font();
    QFont f = theme_->nameFont;
    if (theme_->nameTracking != 0)
        f.setLetterSpacing(QFont::AbsoluteSpacing, theme_->nameTracking);
    return f;
}

qreal NameField::padH() const
{
    return theme_ ? std::max<qreal>(4, theme_->fieldBorderWidth + 3) : 4;
}

QRectF NameField::fieldRect() const
{
    return {0, 0, width() / zoom_, height() / zoom_};
}

QString NameField::shownText() const
{
    return elided_;
}

void NameField::relayout()
{
    if (theme_) {
        const QString source = name_.isEmpty() ? untitled : name_;
        QString text = source;
        if (text.size() > measureCap) {
            qsizetype cut = measureCap;
            if (text.at(cut - 1).isHighSurrogate())
                --cut;
            text = text.left(cut) + QChar(0x2026);
        }
        text = Theme::applyCase(theme_->nameCase, text);
        // Names never hold line breaks once renamed, but a hand-edited file may carry some.
        for (QChar &c : text) {
            if (c == QLatin1Char('\n') || c == QLatin1Char('\r') || c == QChar::LineSeparator
                || c == QChar::ParagraphSeparator)
                c = QLatin1Char(' ');
        }
        const qreal room = std::max<qreal>(0, fieldRect().width() - 2 * padH());
        elided_ = QFontMetricsF(nameFont()).elidedText(text, Qt::ElideRight, room);
    }
    if (editor_) {
        const qreal bw = theme_ ? theme_->fieldBorderWidth : 0;
        // The line edit keeps 2 pixels of its own margin; the text lines up with the label's.
        const QRectF inner(padH() * zoom_ - 2, bw * zoom_, width() - 2 * padH() * zoom_ + 4,
                           height() - 2 * bw * zoom_);
        editor_->setGeometry(inner.toRect());
    }
}

void NameField::styleEditor()
{
    if (!editor_ || !theme_)
        return;
    QFont f = nameFont();
    f.setPixelSize(std::max(1, int(std::lround(theme_->nameFont.pixelSize() * zoom_))));
    if (theme_->nameTracking != 0)
        f.setLetterSpacing(QFont::AbsoluteSpacing, theme_->nameTracking * zoom_);
    editor_->setFont(f);
    QPalette p = editor_->palette();
    p.setColor(QPalette::Base, Qt::transparent);
    p.setColor(QPalette::Text, theme_->fieldFocusInk);
    p.setColor(QPalette::PlaceholderText, theme_->muted);
    // The selection is the field's own colours swapped, readable in every style.
    p.setColor(QPalette::Highlight, theme_->fieldFocusInk);
    p.setColor(QPalette::HighlightedText, theme_->fieldFocusFill);
    editor_->setPalette(p);
    editor_->setBlockCaret(theme_->caret == CaretKind::block);
    updateBlinking();
}

void NameField::beginEditing()
{
    if (!editor_) {
        fromKeys_ = hasFocus();
        editor_ = new NameLineEdit(this);
        editor_->setAccessibleName(QStringLiteral("Timer name"));
        editor_->setText(name_);
        editor_->setPlaceholderText(untitled);
        editor_->selectAll();
        styleEditor();
        relayout();
        model_->setIsEditingName(true);
        update();
    }
    if (isVisible()) {
        editor_->show();
        editor_->setFocus(Qt::OtherFocusReason);
    }
    updateBlinking();
}

void NameField::endEditing(End end)
{
    if (!editor_)
        return;
    // Let go of the editor first: hiding it moves the focus, which must not end this twice.
    NameLineEdit *editor = editor_;
    editor_ = nullptr;
    const QString text = editor->text();
    // Ended from the keyboard (Return, Escape), the focus stays on the name.
    const bool hadKeys = editor->hasFocus();
    editor->hide();
    editor->deleteLater();
    blink_->setBlinking(false);
    if (!model_)
        return;
    if (end == End::commit && text != name_) {
        model_->rename(id_, text);
        // The board cleans the text (line breaks become spaces); show what it kept.
        if (const std::optional<TimerItem> timer = model_->board().timer(id_))
            name_ = timer->name;
    }
    model_->setIsEditingName(false);
    if (hadKeys && fromKeys_)
        setFocus(Qt::OtherFocusReason);
    relayout();
    update();
}

void NameField::takeNameFocus()
{
    if (model_->nameFocusID() != id_ || !isVisible())
        return;
    beginEditing();
    model_->setNameFocusID(std::nullopt);
}

void NameField::updateBlinking()
{
    blink_->setBlinking(editor_ && theme_ && theme_->caret == CaretKind::block && !theme_->steadyCursor
                        && editor_->hasFocus() && isActiveWindow());
}

QSize NameField::sizeHint() const
{
    const qreal line = QFontMetricsF(nameFont()).height();
    return {int(std::ceil(160 * zoom_)), int(std::ceil((line + 2 * padV) * zoom_))};
}

QSize NameField::minimumSizeHint() const
{
    return {int(std::ceil(40 * zoom_)), sizeHint().height()};
}

void NameField::paintEvent(QPaintEvent *)
{
    if (!theme_)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(zoom_, zoom_);
    const QRectF r = fieldRect();
    if (editor_) {
        paintShape(painter, theme_->fieldShape, r, theme_->fieldFocusFill, theme_->fieldFocusBorder,
                   theme_->fieldBorderWidth);
        return;
    }
    if (hover_) {
        // A quiet field outline says the name can be edited here.
        QColor edge = theme_->fieldBorder;
        edge.setAlphaF(edge.alphaF() * 0.45);
        paintShape(painter, theme_->fieldShape, r, Qt::NoBrush, edge, 1);
    }
    painter.setFont(nameFont());
    painter.setPen(name_.isEmpty() ? theme_->muted : theme_->nameInk);
    painter.drawText(r.adjusted(padH(), 0, -padH(), 0), Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                     elided_);
}

void NameField::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || editor_) {
        QWidget::mousePressEvent(event);
        return;
    }
    event->accept();
    rename();
}

void NameField::rename()
{
    // The model first commits an open time edit; an invalid one keeps the click from renaming.
    if (!editor_ && model_ && model_->commitEditForNameClick())
        beginEditing();
}

void NameField::keyPressEvent(QKeyEvent *event)
{
    const int key = event->key();
    const bool plain = (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
    if (plain && !editor_ && (key == Qt::Key_F2 || key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Space)) {
        rename();
        return;
    }
    QWidget::keyPressEvent(event);
}

void NameField::enterEvent(QEnterEvent *event)
{
    QWidget::enterEvent(event);
    if (!hover_) {
        hover_ = true;
        update();
    }
}

void NameField::leaveEvent(QEvent *event)
{
    QWidget::leaveEvent(event);
    if (hover_) {
        hover_ = false;
        update();
    }
}

void NameField::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    relayout();
}

void NameField::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    if (editor_) {
        editor_->show();
        editor_->setFocus(Qt::OtherFocusReason);
    }
    // A row made for a timer just added appears after the model asked for its name's focus.
    takeNameFocus();
}

void NameField::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::ActivationChange) {
        updateBlinking();
        if (editor_)
            editor_->update();
    }
}

} // namespace tock
