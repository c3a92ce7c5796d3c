#include "flapstyle.h"

namespace tock {

FlapStyle FlapStyle::board()
{
    FlapStyle s;
    // Where the condensed bold face of the design is installed it wins; elsewhere the carried
    // condensed face, or whatever bold face the system substitutes.
    s.font.setFamilies({QStringLiteral("Helvetica Neue"), QStringLiteral("Roboto Condensed")});
    s.font.setWeight(QFont::Bold);
    s.tile = QColor(0x2B, 0x2B, 0x2B);
    s.ink = QColor(0xF1, 0xEC, 0xDD);
    s.split = QColor(0x17, 0x17, 0x17);
    s.shade = QColor(0, 0, 0);
    s.separatorInk = QColor(0xBD, 0xB7, 0xA8);
    return s;
}

} // namespace tock
