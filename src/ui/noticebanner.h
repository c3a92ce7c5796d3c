// The storage banner (restored from a backup, unreadable data, saving failed) with its two
// buttons, and the hint shown when there are no timers.
#pragma once

#include "themedbutton.h"
#include "view.h"

#include <functional>

namespace tock {

class NoticeBanner : public View {
    Q_OBJECT
public:
    // `showFiles` opens the data folder.
    NoticeBanner(AppModel *model, QWidget *parent, std::function<void()> showFiles);

    // The banner's height for a content width, in unzoomed points (0 without a notice).
    qreal heightFor(qreal width) const;
    // The notice changed: new texts and buttons.
    void refresh();
    ThemedButton *firstButton() const { return first_; }
    ThemedButton *secondButton() const { return second_; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    enum class Action { dismiss, showFiles, startFresh, retry };
    void run(Action action);
    QRectF bodyRect() const;
    qreal detailHeight(qreal width) const;
    std::function<void()> showFiles_;
    ThemedButton *first_;
    ThemedButton *second_;
    Action firstAction_ = Action::dismiss;
    Action secondAction_ = Action::showFiles;
};

} // namespace tock
