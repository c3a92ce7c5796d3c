// The hint shown where the rows would be when there are no timers.
#pragma once

#include "view.h"

namespace tock {

class EmptyHint : public View {
    Q_OBJECT
public:
    using View::View;
    static QString text() { return QStringLiteral("No timers yet"); }
    static constexpr qreal height = 92;

protected:
    void paintEvent(QPaintEvent *event) override;
};

} // namespace tock
