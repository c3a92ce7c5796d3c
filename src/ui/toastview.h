// The toast: the undone action's message and an undo button, fading in and out.
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

} // namespace tock
