#include "deletereveal.h"

#include "draw.h"
#include "glyph.h"

namespace tock {

DeleteReveal::DeleteReveal(AppModel *model, QWidget *parent, QUuid id) : ButtonView(model, parent)
{
    setAccessibleName(QStringLiteral("Delete"));
    connect(this, &ButtonView::clicked, this, [this, id] { this->model()->deleteTimer(id); });
}

void DeleteReveal::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    begin(painter);
    const Theme &t = theme();
    const QRectF area = unzoomedRect();
    // Only the part the sliding face has uncovered is drawn: rows without a fill would otherwise
    // show the delete through their own buttons.
    painter.setClipRect(QRectF(uncovered_, area.top(), area.width() - uncovered_, area.height()));
    Draw::Panel panel;
    panel.fill = panel.fill2 = t.revealFill.isValid() ? t.revealFill : t.danger;
    panel.shape = t.rowShape;
    Draw::panel(painter, area, panel);
    const QColor ink = t.revealInk.isValid() ? t.revealInk : QColor(Qt::white);
    const QString label = t.icons == IconKind::word ? Glyphs::word(t, Glyph::trash)
                                                    : Theme::applyCase(t.labelCase, QStringLiteral("Delete"));
    // Centred in what is uncovered, so the word slides in with the row's edge.
    const QRectF shown(uncovered_, area.top(), area.width() - uncovered_, area.height());
    Draw::text(painter, shown, Qt::AlignCenter, label, t.revealFont.value_or(t.labelFont), ink);
}

void DeleteReveal::setUncovered(qreal left)
{
    if (uncovered_ == left)
        return;
    uncovered_ = left;
    update();
}

} // namespace tock
