#pragma once
// The fonts Tock carries inside the executable (its two grid fonts and the free faces that stand
// in for system faces found only on some platforms) and the choice among installed families.

#include <QFont>
#include <QStringList>

namespace tock {

class FontLoader
{
public:
    // The family names the bundled faces register under: "TockPixel", "TockTerm",
    // "Roboto Condensed" (Bold) and "Roboto" (Medium and Bold).
    static const QStringList &bundledFamilies();

    // Registers every bundled face with Qt's font database. Needs a QGuiApplication; without one
    // it does nothing and returns false, so windowless modes may call it too. Later calls only
    // repeat the first answer: true when every face loaded.
    static bool registerBundledFonts();

    // Qt warns once per string drawn in a script no installed font shapes (say Devanagari on a
    // machine without such fonts); the text still falls back to boxes, so that one warning is
    // dropped and every other message passes to the previous handler.
    static void quietMissingScriptWarnings();

    // A font in the first of `families` that is installed (say {"DIN Alternate", "Roboto"}),
    // the others kept as fallbacks; characters none of them has come from Qt's own fallback.
    // Registers the bundled faces first if nobody has. Qt sizes fonts in whole pixels, so
    // `pixelSize` is rounded.
    static QFont font(const QStringList &families, qreal pixelSize, QFont::Weight weight = QFont::Normal);
};

} // namespace tock
