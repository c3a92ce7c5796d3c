// The base of every window view: access to the model and its theme, and the zoom. A view is
// placed at zoomed geometry by its parent and paints in unzoomed points with the painter scaled,
// so the whole window scales crisply instead of stretching a bitmap.
#pragma once

#include "appmodel.h"
#include "theme.h"

#include <QPainter>
#include <QWidget>

#include <optional>

namespace tock {

class View : public QWidget {
    Q_OBJECT
public:
    View(AppModel *model, QWidget *parent);

    AppModel *model() const { return model_; }
    const Theme &theme() const { return Theme::of(model_->style()); }
    qreal zoom() const;
    // The view's size in unzoomed points: as the layout gave it, before rounding.
    QSizeF unzoomedSize() const { return layoutRect_ ? layoutRect_->size() : QSizeF(size()) / zoom(); }
    QRectF unzoomedRect() const { return QRectF(QPointF(0, 0), unzoomedSize()); }
    // Places the view at `rect` given in the parent's unzoomed points. Its edges are those of
    // the whole window's layout rounded once to pixels, so neighbours and nested views agree.
    void setUnzoomedGeometry(const QRectF &rect);
    // Where the layout put this view, in unzoomed points from the window's top left, before
    // rounding.
    QPointF layoutOrigin() const;
    // How far, in pixels, the layout meant this view from where its rounded place put it (less
    // than half a pixel each way); begin() draws shifted by it.
    QPointF pixelShift() const;
    // Sets a widget's geometry and lays out its children at once, even while it is hidden (Qt
    // holds a hidden widget's resize event back until it is shown, and still renders and
    // measurements must not wait for that).
    static void place(QWidget *widget, const QRect &geometry);
    // A position from a mouse event in unzoomed points.
    QPointF unzoomed(const QPointF &position) const { return position / zoom(); }
    // The widget rectangle covering `rect` given in unzoomed points (for update(rect)).
    QRect zoomedRect(const QRectF &rect) const;

    // Whether to draw the window as the active one. A window that is not on screen (a still
    // render) looks active unless its "tockInactive" property says otherwise.
    bool looksActive() const;

protected:
    // A painter on this view, antialiased and scaled to unzoomed points.
    void begin(QPainter &painter);

private:
    AppModel *model_;
    std::optional<QRectF> layoutRect_; // unzoomed, in the parent; unset when placed in pixels
};

} // namespace tock
