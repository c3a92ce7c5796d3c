// Still renders of the window: the fixed scenes for every style, drawn from a model without a
// store (nothing read or written in the data folder), plus an index page to review them.
#pragma once

#include "appmodel.h"

#include <QImage>
#include <QString>
#include <QStringList>
#include <QTextStream>

#include <memory>

namespace tock {

namespace Screenshots {

// The scene names, in the order the index shows them.
const QStringList &scenes();

// A model showing `scene` in `style`; `services` must outlive it.
std::unique_ptr<AppModel> sceneModel(const QString &scene, StyleID style, const Services &services);

// The window rendered into a transparent image at `pixelRatio`.
QImage render(AppModel &model, qreal pixelRatio, bool inactive);

// Writes DIR/<style>/<scene>.png for every style and scene and DIR/index.html. Returns the exit
// status (0, or 1 with a message on `err` when a file could not be written).
int writeAll(const QString &directory, QTextStream &err);

} // namespace Screenshots

} // namespace tock
