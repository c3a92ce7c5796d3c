// The delete button behind a row, uncovered when the row slides left.
#pragma once

#include "buttonview.h"

#include <QUuid>

namespace tock {

// The delete button behind a row, uncovered when the row slides left.
class DeleteReveal : public ButtonView {
    Q_OBJECT
public:
    DeleteReveal(AppModel *model, QWidget *parent, QUuid id);
    // Where the sliding face's edge is, in unzoomed points from this view's left: only the part
    // to the right of it is drawn.
    void setUncovered(qreal left);
    qreal uncovered() const { return uncovered_; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void pressStateChanged() override {}

private:
    qreal uncovered_ = 0;
};

} // namespace tock
