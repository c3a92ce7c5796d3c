// The command prompt of the prompt styles: its output lines above and the line being typed.
#pragma once

#include "view.h"

namespace tock {

// The command prompt of the terminal style: output lines above a prompt line with its caret.
class PromptView : public View {
    Q_OBJECT
public:
    PromptView(AppModel *model, QWidget *parent);
    static QString placeholder() { return QStringLiteral("type a command · help"); }
    qreal preferredHeight() const;
    // The output lines as drawn: each wrapped to the prompt's width, none cut off.
    QStringList shownOutput() const;
    // `line` broken into lines no wider than `width` in `font`.
    static QStringList wrap(const QFont &font, const QString &line, qreal width);
    // Where the typed line's character at `index` (UTF-16) is drawn, in this widget's pixels;
    // at the end of the line, the caret's empty cell. For screen readers and magnifiers.
    QRect characterRect(qsizetype index) const;
    // The index of the typed character under `at` (widget pixels), or -1 off the line.
    qsizetype characterAt(QPoint at) const;

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;

private:
    qreal lineHeight() const;
    // The typed line's own area, right of the "> " sign, in points.
    QRectF textLine() const;
};

} // namespace tock
