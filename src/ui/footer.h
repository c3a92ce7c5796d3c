// The footer: the add control in the form the theme chooses (a button, a wide panel, or the
// command prompt with its output), and the toast over it.
#pragma once

#include "themedbutton.h"
#include "view.h"

namespace tock {

class PromptView;
class ToastView;

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
