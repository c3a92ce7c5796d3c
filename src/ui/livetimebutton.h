// A row's time: redrawn by the shared display tick while its timer runs; a click opens the time edit.
#pragma once

#include "buttonview.h"
#include "draw.h"

#include <QUuid>

#include <optional>

namespace tock {

class FlapText;
struct ViewContext;

// The time display: redrawn by the shared display tick (only while its timer runs), and only
// its own rectangle. A click opens the time edit.
class LiveTimeButton : public ButtonView {
    Q_OBJECT
public:
    LiveTimeButton(AppModel *model, const ViewContext &context, QWidget *parent, QUuid id);
    // The width the time needs in unzoomed points for `text` (the digits' count matters).
    static qreal widthFor(const Theme &theme, const QString &text);
    static qreal heightFor(const Theme &theme);
    QString text() const;
    static QString accessibleText(const QString &time);
    // Current whenever a reader asks; only starts, pauses, resets and sets are announced.
    QString accessibleLabel() const override { return accessibleText(text()); }
    // The theme, zoom or the row's card changed: the split-flap tiles come, go or restyle.
    // `ground` is the flat card under the time, if it is flat.
    void restyle(std::optional<QColor> ground);
    FlapText *flapText() const { return flap_; }

Q_SIGNALS:
    // The shown text changed length (99:59:59 to 100:00:00): the row must make room.
    void widthChanged();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void pressStateChanged() override {}

private:
    void onTick();
    void paintTiles(QPainter &painter, const QRectF &rect, const QString &text, bool running);
    const ViewContext &context_;
    QUuid id_;
    qsizetype shownLength_ = 0;
    FlapText *flap_ = nullptr; // the tiles, in themes that draw the time on them
    Draw::Layer well_;         // the recessed panel behind the digits, in themes that have one
};

} // namespace tock
