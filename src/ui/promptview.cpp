#include "promptview.h"

#include "draw.h"

#include <QFontMetricsF>
#include <QTextBoundaryFinder>

namespace tock {

namespace {

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

PromptView::PromptView(AppModel *model, QWidget *parent) : View(model, parent)
{
    setCursor(Qt::IBeamCursor);
    setAccessibleName(QStringLiteral("Command prompt"));
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

} // namespace tock
