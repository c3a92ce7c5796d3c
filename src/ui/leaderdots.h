// A row of dots leading from the name to the time.
#pragma once

#include "view.h"

namespace tock {

// A row of dots leading from the name to the time.
class LeaderDots : public View {
    Q_OBJECT
public:
    using View::View;

protected:
    void paintEvent(QPaintEvent *event) override;
};

} // namespace tock
