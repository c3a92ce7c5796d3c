// The footer: the add control in the form the theme chooses (a button, a wide panel, or the
// command prompt with its output), and the toast with its undo button.
#pragma once

#include "themedbutton.h"
#include "view.h"

class QVariantAnimation;

namespace tock {

// The toast: the undone action's message and an undo button, fading in and out.
class ToastView : public View {
    Q_OBJECT
public:
    ToastView(AppModel *model, QWidget *parent);
    // The model's toast changed: fades in the new one or out the old one. `animated` false
    // jumps to the end (still renders).
    void follow(bool animated);
    ThemedButton *undoButton() const { return undo_; }
    qreal opacity() const { return opacity_; }
    QSizeF preferredSize() const;
    void relayout();

Q_SIGNALS:
    void faded(); // the fade-out finished; the footer may reclaim the space

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void setOpacity(qreal opacity);
    ThemedButton *undo_;
    QString message_;
    qreal opacity_ = 0;
    QVariantAnimation *fade_ = nullptr;
};

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

class Footer : public View {
    Q_OBJECT
public:
    Footer(AppModel *model, QWidget *parent);
    qreal preferredHeight() const;
    void relayout();
    void refresh(); // style or prompt changed
    void followToast(bool animated);

    ThemedButton *addButton() const { return add_; }
    ToastView *toastView() const { return toast_; }
    PromptView *promptView() const { return prompt_; }
    // "Add timer (Ctrl+N)" on Linux, with the platform's own shortcut text.
    static QString addHelp(bool prompt);

Q_SIGNALS:
    void heightChanged();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    bool toastShown() const;
    void showAddLabel();
    qreal toastLine() const;
    ThemedButton *add_;
    ToastView *toast_;
    PromptView *prompt_;
};

} // namespace tock
