// The base of every window view: access to the model and its theme, and the zoom. A view is
// placed at zoomed geometry by its parent and paints in unzoomed points with the painter scaled,
// so the whole window scales crisply instead of stretching a bitmap.
#pragma once

#include "appmodel.h"
#include "theme.h"

#include <QPainter>
#include <QWidget>

namespace tock {

class View : public QWidget {
    Q_OBJECT
public:
    View(AppModel *model, QWidget *parent);

    AppModel *model() const { return model_; }
    const Theme &theme() const { return Theme::of(model_->style()); }
    qreal zoom() const;
    // The view's size in unzoomed points.
    QSizeF unzoomedSize() const { return QSizeF(size()) / zoom(); }
    QRectF unzoomedRect() const { return QRectF(QPointF(0, 0), unzoomedSize()); }
    // Places the view at `rect` given in the parent's unzoomed points.
    void setUnzoomedGeometry(const QRectF &rect);
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
};

} // namespace tock
