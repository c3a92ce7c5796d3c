// The mark around the control that has the keyboard focus, drawn as the theme says (a ring or
// brackets in the focus ink). It shows only once a key moved the focus, as desktop users expect:
// a mouse press in the window takes the focus from the control, and its mark with it.
#pragma once

#include "view.h"

#include <QPointer>

namespace tock {

class FocusMark : public View {
    Q_OBJECT
public:
    // `clip` is the list's viewport: a mark of a row scrolled partly away is cut there.
    FocusMark(AppModel *model, QWidget *root, QWidget *clip);

    // Whether `widget` is one of the controls the mark goes around.
    static bool marks(const QWidget *widget);
    // The control the mark is around now, or null while no mark shows.
    QWidget *target() const { return shown_ ? target_.data() : nullptr; }
    // Places the mark again (the control moved, or the style changed).
    void follow();
    // Marks `control` as if a key had moved the focus there (still renders).
    void showOn(QWidget *control);

protected:
    void paintEvent(QPaintEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void retarget(QWidget *now);
    void watch(bool on);
    QWidget *root_;
    QWidget *clip_;
    QPointer<QWidget> target_;
    bool byKeys_ = false; // the last press in the window was a key
    bool shown_ = false;
    QRectF mark_; // in this view's unzoomed points
};

} // namespace tock
