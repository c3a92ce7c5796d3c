// The identifiers of the seven visual styles, in menu (and Ctrl+1..7) order.
#pragma once

#include <QList>
#include <QString>

#include <optional>

namespace tock {

enum class StyleID { classic, color, gameboy, braun, amber, flap, shell };

namespace StyleIDs {
// All seven in declaration order.
const QList<StyleID> &allCases();
// The identifier written to the data file and the settings ("classic", ...).
QString rawValue(StyleID style);
// Absent for any text other than the seven raw values.
std::optional<StyleID> fromRawValue(const QString &raw);
// The menu's and the command line's title ("Neo Classic", ...).
QString displayName(StyleID style);
} // namespace StyleIDs

} // namespace tock
