// Still renders of the window: the fixed scenes for every style, drawn from a model without a
// store (nothing read or written in the data folder), plus an index page to review them.
#pragma once

#include "appmodel.h"
#include "timeedit.h"

#include <QImage>
#include <QString>
#include <QStringList>
#include <QTextStream>

#include <memory>
#include <optional>

namespace tock {

namespace Screenshots {

// The scene names, in the order the index shows them.
const QStringList &scenes();
// The device pixel ratio a scene is written at: 2, or 1 for "default" (the default zoom on an
// ordinary screen).
qreal pixelRatio(const QString &scene);

// Services for a still scene: a clock stopped at one instant, a scheduler that never runs
// anything and settings kept in memory.
Services stillServices(Instant at = 1'700'000'000);

// A model without a store showing `scene` in `style`; `undo` must outlive it. The report
// scene's model records into a generated history held in memory.
std::unique_ptr<AppModel> sceneModel(const QString &scene, StyleID style, UndoManager &undo);

// The window rendered into a transparent image at `pixelRatio`; an open time mask shows its
// cursor on `maskField` when given. A model with a history shows the week's report.
// `markFocus` shows the keyboard focus mark on the second row's start button.
QImage render(AppModel &model, qreal pixelRatio, bool inactive, std::optional<TimeField> maskField = std::nullopt,
              bool markFocus = false);

// Writes DIR/<style>/<scene>.png for every style and scene and DIR/index.html. Returns the exit
// status (0, or 1 with a message on `err` when a file could not be written).
int writeAll(const QString &directory, QTextStream &err);

} // namespace Screenshots

} // namespace tock
