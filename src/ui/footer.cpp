#include "footer.h"

#include "draw.h"

#include <QEasingCurve>
#include <QFontMetricsF>
#include <QKeySequence>
#include <QTextBoundaryFinder>
#include <QVariantAnimation>

namespace tock {

namespace {

qreal keyRoom(const Theme &t)
{
    return t.buttonShadow ? t.shadowOffset : (t.lipShadow ? 2 : 0);
}

// The string index of a caret counted in user-perceived characters.
qsizetype indexOfCaret(const QString &text, qsizetype caret)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    qsizetype index = 0;
    for (qsizetype i = 0; i < caret; ++i) {
        const qsizetype next = finder.toNextBoundary();
        if (next < 0)
            return text.size();
        index = next;
    }
    return index;
}

} // namespace

// ---------------------------------------------------------------------------------------------

ToastView::ToastView(AppModel *model, QWidget *parent) : View(model, parent), undo_(new ThemedButton(model, this))
{
    undo_->setText(QStringLiteral("Undo"));
    undo_->setGlyph(Glyph::undo);
    connect(undo_, &ThemedButton::clicked, this, [this] { this->model()->undoToast(); });
    hide();
}

QSizeF ToastView::preferredSize() const
{
    const Theme &t = theme();
    const qreal text = message_.isEmpty() ? 0 : Draw::textWidth(t.captionFont, message_);
    return {text + 16 + undo_->preferredSize().width() + keyRoom(t), t.buttonSize + keyRoom(t)};
}

void ToastView::setOpacity(qreal opacity)
{
    opacity_ = opacity;
    undo_->setOpacity(opacity);
    update();
}

void ToastView::follow(bool animated)
{
    const std::optional<Toast> &toast = model()->toast();
    if (fade_) {
        fade_->stop();
        fade_->deleteLater();
        fade_ = nullptr;
    }
    const qreal target = toast ? 1 : 0;
    if (toast) {
        message_ = toast->entry.message();
        relayout();
        show();
    }
    if (!animated || !isVisible()) {
        setOpacity(target);
        if (!toast) {
            hide();
            Q_EMIT faded();
        }
        return;
    }
    fade_ = new QVariantAnimation(this);
    fade_->setStartValue(opacity_);
    fade_->setEndValue(target);
    fade_->setDuration(toast ? 180 : 240);
    fade_->setEasingCurve(QEasingCurve::InOutQuad);
    connect(fade_, &QVariantAnimation::valueChanged, this, [this](const QVariant &v) { setOpacity(v.toReal()); });
    connect(fade_, &QVariantAnimation::finished, this, [this, hideAfter = !toast] {
        fade_->deleteLater();
        fade_ = nullptr;
        if (hideAfter) {
            hide();
            Q_EMIT faded();
        }
    });
    fade_->start();
}

void ToastView::relayout()
{
    const Theme &t = theme();
    const QSizeF s = undo_->preferredSize() + QSizeF(keyRoom(t), keyRoom(t));
    const QSizeF size = unzoomedSize();
    undo_->setUnzoomedGeometry(QRectF(QPointF(size.width() - s.width(), (size.height() - s.height()) / 2 + keyRoom(t) / 2), s));
    update();
}

void ToastView::resizeEvent(QResizeEvent *)
{
    relayout();
}

void ToastView::paintEvent(QPaintEvent *)
{
    if (opacity_ <= 0)
        return;
    QPainter painter(this);
    begin(painter);
    painter.setOpacity(opacity_);
    const Theme &t = theme();
    const QRectF area = unzoomedRect();
    const qreal undoLeft = undo_->x() / zoom();
    Draw::text(painter, QRectF(area.left() + 4, area.top(), undoLeft - 10, area.height()),
               Qt::AlignVCenter | Qt::AlignRight, message_, t.captionFont, t.nameInk);
}

// ---------------------------------------------------------------------------------------------

PromptView::PromptView(AppModel *model, QWidget *parent) : View(model, parent)
{
    setCursor(Qt::IBeamCursor);
    setAccessibleName(QStringLiteral("Command prompt"));
    setToolTip(Footer::addHelp(true));
}

qreal PromptView::lineHeight() const
{
    return std::ceil(QFontMetricsF(theme().nameFont).height() + 4);
}

QStringList PromptView::wrap(const QFont &font, const QString &line, qreal width)
{
    // Breaks after spaces, as a terminal would; a word wider than the line is cut by characters.
    QStringList lines;
    QString current;
    QTextBoundaryFinder words(QTextBoundaryFinder::Line, line);
    qsizetype start = 0;
    const auto push = [&](const QString &piece) {
        if (Draw::textWidth(font, (current + piece).trimmed()) <= width || current.isEmpty()) {
            current += piece;
        } else {
            lines << current.trimmed();
            current = piece;
        }
        while (Draw::textWidth(font, current.trimmed()) > width && current.size() > 1) {
            qsizetype fit = current.size() - 1;
            while (fit > 1 && Draw::textWidth(font, current.left(fit)) > width)
                --fit;
            lines << current.left(fit);
            current = current.mid(fit);
        }
    };
    while (start < line.size()) {
        words.setPosition(start);
        qsizetype end = words.toNextBoundary();
        if (end <= start)
            end = line.size();
        push(line.mid(start, end - start));
        start = end;
    }
    if (!current.trimmed().isEmpty() || lines.isEmpty())
        lines << current.trimmed();
    return lines;
}

QStringList PromptView::shownOutput() const
{
    const Theme &t = theme();
    const qreal width = Theme::contentWidth - 2 * t.windowBorderWidth - 2 * t.contentPadding;
    QStringList lines;
    for (const QString &output : model()->shell().shellOutput())
        lines << wrap(t.nameFont, output, width);
    return lines;
}

qreal PromptView::preferredHeight() const
{
    return lineHeight() * qreal(1 + shownOutput().size());
}

void PromptView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    begin(painter);
    const Theme &t = theme();
    const AppModel *m = model();
    const QRectF area = unzoomedRect();
    const qreal line = lineHeight();
    const QFont font = t.nameFont;
    qreal y = area.top();
    const QColor outputInk = m->shell().shellOutputIsError() ? t.danger : t.muted;
    for (const QString &output : shownOutput()) {
        Draw::text(painter, QRectF(area.left(), y, area.width(), line), Qt::AlignVCenter | Qt::AlignLeft, output, font,
                   outputInk);
        y += line;
    }
    const QRectF textRect = textLine();
    const QRectF promptLine = textRect.adjusted(area.left() - textRect.left(), 0, 0, 0);
    Draw::text(painter, promptLine, Qt::AlignVCenter | Qt::AlignLeft, QStringLiteral("> "), font, t.accent);
    const QString &text = m->shell().promptText();
    const qsizetype caretIndex = indexOfCaret(text, m->shell().promptCaret());
    const qreal caretX = textRect.left() + Draw::textWidth(font, text.left(caretIndex));
    if (text.isEmpty()) {
        const qreal cell = Draw::textWidth(font, QStringLiteral("m"));
        Draw::text(painter, textRect.adjusted(cell + 4, 0, 0, 0), Qt::AlignVCenter | Qt::AlignLeft, placeholder(), font,
                   t.muted);
    } else {
        Draw::text(painter, textRect, Qt::AlignVCenter | Qt::AlignLeft, text, font, t.nameInk);
    }
    // The caret: a character cell, filled while the window has the keyboard, hollow otherwise.
    const QFontMetricsF metrics(font);
    const QString under = caretIndex < text.size() ? text.mid(caretIndex, 1) : QStringLiteral(" ");
    const qreal cellWidth = t.caret == CaretKind::block ? std::max<qreal>(metrics.horizontalAdvance(under), 6) : 1.5;
    const QRectF caret(caretX, promptLine.center().y() - metrics.height() / 2, cellWidth, metrics.height());
    const bool active = looksActive();
    if (t.caret == CaretKind::block && !active) {
        painter.setPen(QPen(t.nameInk, 1));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(caret.adjusted(0.5, 0.5, -0.5, -0.5));
    } else {
        painter.fillRect(caret, t.nameInk);
        if (t.caret == CaretKind::block && caretIndex < text.size())
            Draw::text(painter, caret.adjusted(-1, 0, 1, 0), Qt::AlignCenter, under, font, t.windowFill);
    }
}

QRectF PromptView::textLine() const
{
    const QRectF area = unzoomedRect();
    const qreal line = lineHeight();
    const qreal sign = Draw::textWidth(theme().nameFont, QStringLiteral("> "));
    return {area.left() + sign, area.top() + line * qreal(shownOutput().size()), area.width() - sign, line};
}

QRect PromptView::characterRect(qsizetype index) const
{
    const QString &text = model()->shell().promptText();
    if (index < 0 || index > text.size())
        return {};
    const QFont &font = theme().nameFont;
    const QRectF line = textLine();
    const qreal left = line.left() + Draw::textWidth(font, text.left(index));
    const QString under = index < text.size() ? text.mid(index, 1) : QStringLiteral(" ");
    return zoomedRect(QRectF(left, line.top(), Draw::textWidth(font, under), line.height()));
}

qsizetype PromptView::characterAt(QPoint at) const
{
    const QString &text = model()->shell().promptText();
    const QRectF line = textLine();
    const QPointF p = unzoomed(QPointF(at));
    if (p.y() < line.top() || p.y() >= line.bottom() || p.x() < line.left())
        return -1;
    const QFont &font = theme().nameFont;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (p.x() < line.left() + Draw::textWidth(font, text.left(i + 1)))
            return i;
    }
    return -1;
}

void PromptView::mousePressEvent(QMouseEvent *)
{
    window()->activateWindow();
}

// ---------------------------------------------------------------------------------------------

Footer::Footer(AppModel *model, QWidget *parent)
    : View(model, parent), add_(new ThemedButton(model, this, ThemedButton::Role::primary)),
      toast_(new ToastView(model, this)), prompt_(new PromptView(model, this))
{
    add_->setGlyph(Glyph::plus);
    add_->setText(QStringLiteral("Add timer"));
    add_->setAccessibleName(QStringLiteral("Add timer"));
    add_->setToolTip(addHelp(false));
    connect(add_, &ThemedButton::clicked, this, [this] { this->model()->addTimer(); });
    connect(toast_, &ToastView::faded, this, [this] {
        // The add button had made room for the toast; it gets its label back once the toast is gone.
        showAddLabel();
        relayout();
        Q_EMIT heightChanged();
    });
    refresh();
    followToast(false);
}

QString Footer::addHelp(bool prompt)
{
    const QString shortcut = QKeySequence(QKeySequence::New).toString(QKeySequence::NativeText);
    QString help = QStringLiteral("Add timer (") + shortcut + QLatin1Char(')');
    if (prompt)
        help += QStringLiteral(", or type: add <name>");
    return help;
}

bool Footer::toastShown() const
{
    return model()->toast().has_value() || toast_->isVisible();
}

void Footer::showAddLabel()
{
    const Theme &t = theme();
    add_->setText(t.addStyle == AddStyle::panel || !toastShown() ? QStringLiteral("Add timer") : QString());
    add_->setAccessibleName(QStringLiteral("Add timer"));
}

qreal Footer::toastLine() const
{
    const Theme &t = theme();
    return t.buttonSize + keyRoom(t) + 4;
}

qreal Footer::preferredHeight() const
{
    const Theme &t = theme();
    if (t.addStyle == AddStyle::prompt)
        // The toast's line stays reserved, so the window keeps its height when a toast comes and goes.
        return t.contentPadding * 2 + prompt_->preferredHeight() + toastLine();
    return t.contentPadding * 2 + t.buttonSize + keyRoom(t);
}

void Footer::refresh()
{
    const Theme &t = theme();
    const bool prompt = t.addStyle == AddStyle::prompt;
    add_->setVisible(!prompt);
    prompt_->setVisible(prompt);
    showAddLabel();
    relayout();
    update();
    prompt_->update();
    add_->update();
}

void Footer::followToast(bool animated)
{
    toast_->follow(animated);
    showAddLabel();
    relayout();
    Q_EMIT heightChanged();
}

void Footer::relayout()
{
    const Theme &t = theme();
    const QSizeF size = unzoomedSize();
    const qreal pad = t.contentPadding;
    const qreal room = keyRoom(t);
    const QRectF inner(pad, pad, size.width() - 2 * pad, size.height() - 2 * pad);
    if (t.addStyle == AddStyle::prompt) {
        qreal top = inner.top();
        toast_->setUnzoomedGeometry(QRectF(inner.left(), top, inner.width(), toastLine() - 4));
        top += toastLine();
        prompt_->setUnzoomedGeometry(QRectF(inner.left(), top, inner.width(), inner.bottom() - top));
        return;
    }
    const bool toast = toastShown();
    qreal addWidth = add_->preferredSize().width() + room;
    if (t.addStyle == AddStyle::panel)
        addWidth = toast ? addWidth : inner.width();
    add_->setUnzoomedGeometry(QRectF(inner.left(), inner.top(), addWidth, t.buttonSize + room));
    const qreal toastLeft = inner.left() + addWidth + 8;
    toast_->setUnzoomedGeometry(QRectF(toastLeft, inner.top(), inner.right() - toastLeft, t.buttonSize + room));
}

void Footer::resizeEvent(QResizeEvent *)
{
    relayout();
}

void Footer::paintEvent(QPaintEvent *)
{
    const Theme &t = theme();
    if (t.rowSeparator == SeparatorKind::none && t.titleRule == SeparatorKind::none)
        return;
    // Styles that rule their lines also rule off the footer.
    QPainter painter(this);
    begin(painter);
    const SeparatorKind kind = t.rowSeparator != SeparatorKind::none ? t.rowSeparator : t.titleRule;
    Draw::separator(painter, QPointF(0, 0.5), QPointF(unzoomedSize().width(), 0.5), kind, t.ruleInk, 1);
}

} // namespace tock
