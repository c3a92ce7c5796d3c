#include "theme.h"

#include <QFontDatabase>

namespace tock {

namespace {

constexpr QColor clear{0, 0, 0, 0};

// A font from a list of families, the preferred (macOS) face first and the carried substitute
// after it, at a size in points before zoom (see the unit note in theme.h).
QFont fontOf(const QStringList &families, int size, QFont::Weight weight,
             QFont::Stretch stretch = QFont::Unstretched)
{
    QFont font;
    font.setFamilies(families);
    font.setPixelSize(size);
    font.setWeight(weight);
    if (stretch != QFont::Unstretched)
        font.setStretch(stretch);
    return font;
}

QFont uiFont(int size, QFont::Weight weight)
{
    QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    font.setPixelSize(size);
    font.setWeight(weight);
    return font;
}

QFont monoFont(int size, QFont::Weight weight = QFont::DemiBold)
{
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPixelSize(size);
    font.setWeight(weight);
    font.setFixedPitch(true);
    return font;
}

// Tock's own grid fonts: kerning would break their cells apart.
QFont gridFont(const QString &family, int size)
{
    QFont font = fontOf({family}, size, QFont::Normal);
    font.setKerning(false);
    // Characters the grid fonts lack fall back to a monospace face, closest in spirit.
    font.setStyleHint(QFont::TypeWriter);
    return font;
}

// TockPixel has eight cells to the em: sizes in tens land its cells on whole pixels at the
// default zoom (0.8) on both plain and double-density screens.
QFont pixelFont(int size) { return gridFont(QStringLiteral("TockPixel"), size); }
QFont termFont(int size) { return gridFont(QStringLiteral("TockTerm"), size); }

QFont condensedBold(int size)
{
    return fontOf({QStringLiteral("Helvetica Neue"), QStringLiteral("Roboto Condensed")}, size,
                  QFont::Bold, QFont::Condensed);
}

QFont calculatorDigits(int size)
{
    return fontOf({QStringLiteral("DIN Alternate"), QStringLiteral("Roboto")}, size, QFont::Bold);
}

QFont calculatorText(int size)
{
    return fontOf({QStringLiteral("Helvetica Neue"), QStringLiteral("Roboto")}, size,
                  QFont::Medium);
}

QColor withAlpha(QColor color, int alpha)
{
    color.setAlpha(alpha);
    return color;
}

// The flat light look: cream card, near-black outlines and hard offset shadows.
Theme buildClassic()
{
    const QColor ink(0x1B, 0x1B, 0x1F);
    const QColor cream(0xFF, 0xFD, 0xF7);
    const QColor white(0xFF, 0xFF, 0xFF);
    const QColor hover(0xFF, 0xF4, 0xD6);

    Theme t;
    t.windowFill = cream;
    t.windowFill2 = cream;
    t.windowShape = ShapeKind::rect(16);
    t.windowBorder = ink;
    t.windowBorderWidth = 2;
    t.hardShadow = true;
    t.hardShadowColor = ink;
    t.systemShadow = false;
    t.overlay = Theme::Overlay::none;
    t.dark = false;

    t.titleHeight = 36;
    t.titleFill = clear;
    t.titleRule = SeparatorKind::solid;
    t.titleRuleWidth = 2;
    t.titleText = QStringLiteral("Tock");
    t.titleFont = uiFont(14, QFont::Bold);
    t.titleInk = ink;
    t.titleTracking = 0;
    t.titleCentered = true;
    t.windowButtons = WindowButtonsKind::traffic;

    t.sbFont = uiFont(12, QFont::DemiBold);
    t.sbFill = white;
    t.sbInk = ink;
    t.sbBorder = ink;
    t.sbBorderWidth = 1.5;
    t.sbShape = ShapeKind::rect(7);
    t.sbHardShadow = true;
    t.sbHover = hover;
    t.sbOpenFill = ink;
    t.sbOpenInk = cream;
    t.sbHeight = 24;
    t.chevron = ChevronKind::icon;

    t.menuFill = white;
    t.menuBorder = ink;
    t.menuBorderWidth = 2;
    t.menuShape = ShapeKind::rect(12);
    t.menuHardShadow = true;
    t.menuSoftShadow = false;
    t.menuSelectedFill = Theme::Palette::yellow;
    t.menuSelectedInk = ink;
    t.menuItemShape = ShapeKind::rect(7);
    t.menuMarker = MarkerKind::check;
    t.menuRowHeight = 28;

    t.muted = QColor(0x6A, 0x66, 0x5C);
    t.accent = Theme::Palette::coral;
    t.danger = QColor(0xD6, 0x3A, 0x2F);

    t.contentPadding = 12;
    t.rowSpacing = 8;
    t.rowHeight = 46;
    t.rowInset = 12;
    t.rowFill = white;
    t.rowBorder = ink;
    t.rowBorderWidth = 2;
    t.rowShape = ShapeKind::rect(10);
    t.rowShadow = true;
    t.rowSeparator = SeparatorKind::none;
    t.rowHoverFill = QColor(0xFF, 0xFA, 0xEA);
    t.rowEditFill = hover;
    t.rowEmbossed = false;

    t.labelCase = TextCase::unchanged;
    t.nameCase = TextCase::unchanged;
    t.nameFont = uiFont(14, QFont::Medium);
    t.nameInk = ink;
    t.nameTracking = 0;
    t.timeKind = TimeKind::plain;
    t.timeSize = 20;
    t.timeFont = uiFont(20, QFont::Bold);
    t.timeInk = ink;
    t.runningTimeInk = ink;
    t.timeTracking = 0;
    t.timeGlow = false;
    t.labelFont = uiFont(12, QFont::DemiBold);
    t.captionFont = uiFont(11, QFont::Normal);

    t.wellFill = clear;
    t.wellFill2 = clear;
    t.wellBorder = clear;
    t.wellBorderWidth = 0;
    t.wellShape = ShapeKind::rect(8);
    t.wellPadH = 6;
    t.wellPadV = 2;
    t.wellHardShadow = false;
    t.wellRecessed = false;

    t.buttonSize = 30;
    t.buttonShape = ShapeKind::rect(8);
    t.buttonFill = white;
    t.buttonFill2 = white;
    t.buttonHover = hover;
    t.buttonPressed = QColor(0xEC, 0xE7, 0xD9);
    t.buttonInk = ink;
    t.buttonPressedInk = ink;
    t.buttonBorder = ink;
    t.buttonBorderWidth = 2;
    t.buttonShadow = true;
    t.lipShadow = false;
    t.buttonHighlight = clear;
    t.primaryFill = Theme::Palette::yellow;
    t.primaryInk = ink;
    t.primaryBorder = ink;
    t.runningFill = Theme::Palette::coral;
    t.runningInk = ink;
    t.runningBorder = ink;
    t.runningGlow = false;

    t.icons = IconKind::vector;
    t.iconSize = 14;
    t.addStyle = AddStyle::button;

    t.fieldFill = white;
    t.fieldFocusFill = white;
    t.fieldInk = ink;
    t.fieldFocusInk = ink;
    t.fieldBorder = ink;
    t.fieldFocusBorder = ink;
    t.fieldBorderWidth = 2;
    t.fieldShape = ShapeKind::rect(8);
    t.fieldHardShadow = true;
    t.invalidFill = QColor(0xFF, 0xE0, 0xDA);
    t.invalidInk = QColor(0xA8, 0x1F, 0x14);
    t.fieldDigitSize = 20;
    t.digitFont = uiFont(20, QFont::Bold);
    t.digitAdvance = 13;
    t.caret = CaretKind::bar;
    t.steadyCursor = false;

    t.shadowOffset = 3;
    t.ruleInk = ink;
    t.focusKind = FocusKind::ring;
    t.focusInk = ink;
    t.focusShape = ShapeKind::rect(6);
    t.focusWidth = 2;
    t.reportFill = cream;
    t.reportInk = ink;
    t.reportMuted = t.muted;
    t.reportGrid = QColor(0xE4, 0xDE, 0xD0);
    t.reportSeries = {ink, Theme::Palette::coral, Theme::Palette::sky, white};
    t.reportBarEdge = ink;
    return t;
}

// Classic's object with a warmer card and rows tinted in turn.
Theme buildColor()
{
    const QColor ink(0x1B, 0x1B, 0x1F);
    Theme t = buildClassic();
    t.windowFill = QColor(0xFF, 0xF6, 0xE6);
    t.windowFill2 = t.windowFill;
    t.hardShadow = true;
    t.shadowOffset = 4;
    t.rowTints = Theme::Palette::rowCycle();
    t.rowFill = Theme::Palette::yellow;
    // The running key takes a darker shade of its own row's tint (runningFillAt).
    t.runningFill = QColor();
    t.runningInk = ink;
    // Hover and editing lighten the tint rather than replacing it.
    t.rowHoverFill = QColor(0xFF, 0xFF, 0xFF, 0x40);
    t.rowEditFill = QColor(0xFF, 0xFF, 0xFF, 0x66);
    t.primaryFill = Theme::Palette::coral;
    t.menuSelectedFill = Theme::Palette::sky;
    t.sbFill = Theme::Palette::mint;
    t.sbHover = QColor(0xA6, 0xEB, 0xCC);
    t.accent = Theme::Palette::sky;
    t.muted = QColor(0x3A, 0x35, 0x2D); // readable on every tint, coral included
    t.reportFill = t.windowFill;
    t.reportMuted = t.muted;
    t.reportGrid = QColor(0xEC, 0xDF, 0xC6);
    t.reportSeries = Theme::Palette::rowCycle();
    t.reportBarEdge = ink;
    return t;
}

// A four-shade handheld screen: notched pixel panels, everything in the DMG greens.
Theme buildGameboy()
{
    using D = Theme::DMG;
    Theme t;
    t.windowFill = D::c3;
    t.windowFill2 = D::c3;
    t.windowShape = ShapeKind::notched(4);
    t.windowBorder = D::c0;
    t.windowBorderWidth = 4;
    t.hardShadow = true;
    t.hardShadowColor = D::c1;
    t.systemShadow = false;
    t.overlay = Theme::Overlay::pixelGrid;
    t.dark = false;

    t.titleHeight = 34;
    t.titleFill = clear;
    t.titleRule = SeparatorKind::solid;
    t.titleRuleWidth = 2;
    t.titleText = QStringLiteral("TOCK");
    t.titleFont = pixelFont(20);
    t.titleInk = D::c0;
    t.titleTracking = 2;
    t.titleCentered = true;
    t.windowButtons = WindowButtonsKind::boxes;

    t.sbFont = pixelFont(10);
    t.sbFill = D::c2;
    t.sbInk = D::c0;
    t.sbBorder = D::c0;
    t.sbBorderWidth = 2;
    t.sbShape = ShapeKind::notched(2);
    t.sbHardShadow = true;
    t.sbHover = D::c3;
    t.sbOpenFill = D::c0;
    t.sbOpenInk = D::c3;
    t.sbHeight = 22;
    t.chevron = ChevronKind::icon;

    t.menuFill = D::c3;
    t.menuBorder = D::c0;
    t.menuBorderWidth = 3;
    t.menuShape = ShapeKind::notched(3);
    t.menuHardShadow = true;
    t.menuSoftShadow = false;
    t.menuSelectedFill = D::c0;
    t.menuSelectedInk = D::c3;
    t.menuItemShape = ShapeKind::notched(2);
    t.menuMarker = MarkerKind::pixelArrow;
    t.menuRowHeight = 26;

    t.muted = D::c0; // the middle shades are too close to the screen for text
    t.accent = D::c1;
    t.danger = D::c0;

    t.contentPadding = 12;
    t.rowSpacing = 6;
    t.rowHeight = 44;
    t.rowInset = 10;
    t.rowFill = D::c2;
    t.rowBorder = D::c0;
    t.rowBorderWidth = 2;
    t.rowShape = ShapeKind::notched(2);
    t.rowShadow = false;
    t.rowSeparator = SeparatorKind::none;
    t.rowHoverFill = D::c3;
    t.rowEditFill = D::c3;
    t.rowEmbossed = false;

    t.labelCase = TextCase::upper;
    t.nameCase = TextCase::unchanged;
    t.nameFont = pixelFont(10);
    t.nameInk = D::c0;
    t.nameTracking = 0;
    t.timeKind = TimeKind::plain;
    t.timeSize = 20;
    t.timeFont = pixelFont(20);
    t.timeInk = D::c0;
    t.runningTimeInk = D::c0;
    t.timeTracking = 1;
    t.timeGlow = false;
    t.labelFont = pixelFont(10);
    t.captionFont = pixelFont(10);

    t.wellFill = clear;
    t.wellFill2 = clear;
    t.wellBorder = clear;
    t.wellBorderWidth = 0;
    t.wellShape = ShapeKind::notched(2);
    t.wellPadH = 4;
    t.wellPadV = 2;
    t.wellHardShadow = false;
    t.wellRecessed = false;

    t.buttonSize = 28;
    t.buttonShape = ShapeKind::notched(2);
    t.buttonFill = D::c2;
    t.buttonFill2 = D::c2;
    t.buttonHover = D::c3;
    t.buttonPressed = D::c1;
    t.buttonInk = D::c0;
    t.buttonPressedInk = D::c3;
    t.buttonBorder = D::c0;
    t.buttonBorderWidth = 2;
    t.buttonShadow = false;
    t.lipShadow = false;
    t.buttonHighlight = clear;
    t.primaryFill = D::c2;
    t.primaryInk = D::c0;
    t.primaryBorder = D::c0;
    t.runningFill = D::c0;
    t.runningInk = D::c3;
    t.runningBorder = D::c0;
    t.runningGlow = false;

    t.icons = IconKind::pixel;
    t.iconSize = 14;
    t.addStyle = AddStyle::panel;

    t.fieldFill = D::c3;
    t.fieldFocusFill = D::c3;
    t.fieldInk = D::c0;
    t.fieldFocusInk = D::c0;
    t.fieldBorder = D::c0;
    t.fieldFocusBorder = D::c0;
    t.fieldBorderWidth = 2;
    t.fieldShape = ShapeKind::notched(2);
    t.fieldHardShadow = false;
    t.invalidFill = D::c0;
    t.invalidInk = D::c3;
    t.fieldDigitSize = 20;
    t.digitFont = pixelFont(20);
    t.digitAdvance = 14;
    t.caret = CaretKind::block;
    t.steadyCursor = true;

    t.shadowOffset = 4;
    t.ruleInk = D::c0;
    t.focusKind = FocusKind::ring;
    t.focusInk = D::c0;
    t.focusShape = ShapeKind::notched(2);
    t.focusWidth = 2;
    t.reportFill = D::c3;
    t.reportInk = D::c0;
    t.reportMuted = D::c0;
    t.reportGrid = D::c2;
    // Four shades are all the screen has: the darkest first, every piece edged in it.
    t.reportSeries = {D::c0, D::c1, D::c2, D::c3};
    t.reportBarEdge = D::c0;
    return t;
}

// A calculator's front panel: warm grey, raised keys, the time in a recessed LCD well.
Theme buildBraun()
{
    const QColor panel(0xE9, 0xE6, 0xDF);
    const QColor ink(0x2B, 0x2A, 0x27);
    const QColor key(0xF7, 0xF5, 0xF0);
    const QColor edge(0xBD, 0xB8, 0xAD);
    const QColor lcd(0xB9, 0xC2, 0xA5);
    const QColor lcdInk(0x1E, 0x26, 0x1B);
    const QColor orange(0xE0, 0x6A, 0x1B);

    Theme t;
    t.windowFill = panel;
    t.windowFill2 = QColor(0xDA, 0xD6, 0xCD);
    t.windowShape = ShapeKind::rect(18);
    t.windowBorder = edge;
    t.windowBorderWidth = 1;
    t.hardShadow = false;
    t.hardShadowColor = clear;
    t.systemShadow = true;
    t.overlay = Theme::Overlay::none;
    t.dark = false;

    t.titleHeight = 34;
    t.titleFill = clear;
    t.titleRule = SeparatorKind::none;
    t.titleRuleWidth = 0;
    t.titleText = QStringLiteral("TOCK");
    t.titleFont = calculatorText(10);
    t.titleInk = QColor(0x5E, 0x5A, 0x52);
    t.titleTracking = 2.5;
    t.titleCentered = false;
    t.windowButtons = WindowButtonsKind::boxes;

    t.sbFont = calculatorText(10);
    t.sbFill = key;
    t.sbInk = ink;
    t.sbBorder = edge;
    t.sbBorderWidth = 1;
    t.sbShape = ShapeKind::rect(6);
    t.sbHardShadow = false;
    t.sbHover = QColor(0xFF, 0xFF, 0xFF);
    t.sbOpenFill = ink;
    t.sbOpenInk = key;
    t.sbHeight = 22;
    t.chevron = ChevronKind::triangle;

    t.menuFill = key;
    t.menuBorder = edge;
    t.menuBorderWidth = 1;
    t.menuShape = ShapeKind::rect(12);
    t.menuHardShadow = false;
    t.menuSoftShadow = true;
    t.menuSelectedFill = QColor(0xE2, 0xDE, 0xD5);
    t.menuSelectedInk = ink;
    t.menuItemShape = ShapeKind::rect(6);
    t.menuMarker = MarkerKind::square;
    t.menuRowHeight = 28;

    t.muted = QColor(0x62, 0x5E, 0x56);
    t.accent = orange;
    t.danger = QColor(0xC8, 0x3F, 0x25);

    t.contentPadding = 14;
    t.rowSpacing = 8;
    t.rowHeight = 48;
    t.rowInset = 10;
    t.rowFill = QColor(0xF2, 0xF0, 0xEB);
    t.rowBorder = QColor(0xCC, 0xC7, 0xBC);
    t.rowBorderWidth = 1;
    t.rowShape = ShapeKind::rect(12);
    t.rowShadow = false;
    t.rowSeparator = SeparatorKind::none;
    t.rowHoverFill = QColor(0xF7, 0xF5, 0xF1);
    t.rowEditFill = QColor(0xF7, 0xF5, 0xF1);
    t.rowEmbossed = true;

    t.labelCase = TextCase::upper;
    t.nameCase = TextCase::unchanged;
    t.nameFont = calculatorText(13);
    t.nameInk = ink;
    t.nameTracking = 0.2;
    t.timeKind = TimeKind::well;
    t.timeSize = 21;
    t.timeFont = calculatorDigits(21);
    t.timeInk = lcdInk;
    t.runningTimeInk = lcdInk;
    t.timeTracking = 0.5;
    t.timeGlow = false;
    t.labelFont = calculatorText(9);
    t.captionFont = calculatorText(10);

    t.wellFill = lcd;
    t.wellFill2 = QColor(0xA9, 0xB3, 0x94);
    t.wellBorder = QColor(0x8A, 0x91, 0x7C);
    t.wellBorderWidth = 1;
    t.wellShape = ShapeKind::rect(5);
    t.wellPadH = 8;
    t.wellPadV = 3;
    t.wellHardShadow = false;
    t.wellRecessed = true;

    t.buttonSize = 30;
    t.buttonShape = ShapeKind::circle();
    t.buttonFill = key;
    t.buttonFill2 = QColor(0xDD, 0xD9, 0xD0);
    t.buttonHover = QColor(0xFF, 0xFF, 0xFF);
    t.buttonPressed = QColor(0xD3, 0xCF, 0xC5);
    t.buttonInk = QColor(0x3A, 0x38, 0x33);
    t.buttonPressedInk = QColor(0x3A, 0x38, 0x33);
    t.buttonBorder = edge;
    t.buttonBorderWidth = 1;
    t.buttonShadow = false;
    t.lipShadow = true;
    t.buttonHighlight = QColor(0xFF, 0xFF, 0xFF, 0xCC);
    t.primaryFill = Theme::Palette::yellow;
    t.primaryInk = ink;
    t.primaryBorder = QColor(0xC9, 0xA5, 0x1E);
    t.runningFill = orange;
    t.runningInk = QColor(0xFF, 0xFF, 0xFF);
    t.runningBorder = QColor(0xB8, 0x55, 0x12);
    t.runningGlow = false;

    t.icons = IconKind::vector;
    t.iconSize = 12;
    t.addStyle = AddStyle::button;

    t.fieldFill = lcd;
    t.fieldFocusFill = QColor(0xC7, 0xD0, 0xB2);
    t.fieldInk = lcdInk;
    t.fieldFocusInk = lcdInk;
    t.fieldBorder = QColor(0x8A, 0x91, 0x7C);
    t.fieldFocusBorder = QColor(0x5C, 0x63, 0x50);
    t.fieldBorderWidth = 1;
    t.fieldShape = ShapeKind::rect(5);
    t.fieldHardShadow = false;
    t.invalidFill = QColor(0xE8, 0xBC, 0xAC);
    t.invalidInk = QColor(0x7A, 0x1E, 0x0E);
    t.fieldDigitSize = 21;
    t.digitFont = calculatorDigits(21);
    t.digitAdvance = 12.5;
    t.caret = CaretKind::bar;
    t.steadyCursor = false;

    t.shadowOffset = 2; // the depth of a key's lip
    t.ruleInk = edge;
    t.revealFont = calculatorDigits(13);
    t.focusKind = FocusKind::ring;
    t.focusInk = ink;
    t.focusShape = ShapeKind::rect(7);
    t.focusWidth = 2;
    t.reportFill = t.rowFill;
    t.reportInk = ink;
    t.reportMuted = t.muted;
    t.reportGrid = QColor(0xDD, 0xD9, 0xD0);
    t.reportSeries = {orange, QColor(0x3A, 0x38, 0x33), QColor(0xA3, 0x9E, 0x93), QColor(0xD9, 0xB8, 0x4A)};
    // The light grey and yellow keys would fade into the card: a thin dark edge keeps every bar.
    t.reportBarEdge = QColor(0x3A, 0x38, 0x33);
    return t;
}

// An amber phosphor terminal: scanlines, dotted rules, words in brackets, glowing digits.
Theme buildAmber()
{
    using A = Theme::Amber;
    // The palette's dim is too faint for text on the dark screen; this is its brightest step.
    const QColor dimText(0xB5, 0x80, 0x3A);

    Theme t;
    t.windowFill = A::bg;
    t.windowFill2 = A::bg;
    t.windowShape = ShapeKind::rect(8);
    t.windowBorder = A::faint;
    t.windowBorderWidth = 2;
    t.hardShadow = false;
    t.hardShadowColor = clear;
    t.systemShadow = true;
    t.overlay = Theme::Overlay::scanlines;
    t.dark = true;

    t.titleHeight = 34;
    t.titleFill = clear;
    t.titleRule = SeparatorKind::dashed;
    t.titleRuleWidth = 1;
    t.titleText = QStringLiteral("TOCK");
    t.titleFont = termFont(16);
    t.titleInk = A::ink;
    t.titleTracking = 2;
    t.titleCentered = false;
    t.windowButtons = WindowButtonsKind::boxes;

    t.sbFont = termFont(12);
    t.sbFill = clear;
    t.sbInk = A::ink;
    t.sbBorder = A::faint;
    t.sbBorderWidth = 1;
    t.sbShape = ShapeKind::rect(0);
    t.sbHardShadow = false;
    t.sbHover = A::deep;
    t.sbOpenFill = A::ink;
    t.sbOpenInk = A::bg;
    t.sbHeight = 22;
    t.chevron = ChevronKind::text;

    t.menuFill = A::bg;
    t.menuBorder = A::dim;
    t.menuBorderWidth = 1;
    t.menuShape = ShapeKind::rect(0);
    t.menuHardShadow = false;
    t.menuSoftShadow = false;
    t.menuSelectedFill = A::ink; // inverse video
    t.menuSelectedInk = A::bg;
    t.menuItemShape = ShapeKind::rect(0);
    t.menuMarker = MarkerKind::star;
    t.menuRowHeight = 26;

    t.muted = dimText;
    t.accent = A::ink;
    t.danger = QColor(0xE8, 0x5D, 0x34);

    t.contentPadding = 10;
    t.rowSpacing = 0;
    t.rowHeight = 44;
    t.rowInset = 10;
    t.rowFill = A::deep;
    t.rowBorder = clear;
    t.rowBorderWidth = 0;
    t.rowShape = ShapeKind::rect(0);
    t.rowShadow = false;
    t.rowSeparator = SeparatorKind::dotted;
    t.rowHoverFill = QColor(0x2F, 0x21, 0x10);
    t.rowEditFill = QColor(0x2F, 0x21, 0x10);
    t.rowEmbossed = false;

    t.labelCase = TextCase::upper;
    t.nameCase = TextCase::unchanged;
    t.nameFont = termFont(12);
    t.nameInk = A::ink;
    t.nameTracking = 0;
    t.timeKind = TimeKind::plain;
    t.timeSize = 18;
    t.timeFont = termFont(18);
    t.timeInk = A::ink;
    t.runningTimeInk = A::ink;
    t.timeTracking = 0;
    t.timeGlow = true;
    t.labelFont = termFont(12);
    t.captionFont = termFont(11);

    t.wellFill = clear;
    t.wellFill2 = clear;
    t.wellBorder = clear;
    t.wellBorderWidth = 0;
    t.wellShape = ShapeKind::rect(0);
    t.wellPadH = 4;
    t.wellPadV = 2;
    t.wellHardShadow = false;
    t.wellRecessed = false;

    t.buttonSize = 28;
    t.buttonShape = ShapeKind::rect(0);
    t.buttonFill = clear;
    t.buttonFill2 = clear;
    t.buttonHover = A::faint;
    t.buttonPressed = A::ink;
    t.buttonInk = dimText;
    t.buttonPressedInk = A::bg;
    t.buttonBorder = clear;
    t.buttonBorderWidth = 0;
    t.buttonShadow = false;
    t.lipShadow = false;
    t.buttonHighlight = clear;
    t.primaryFill = clear;
    t.primaryInk = A::ink;
    t.primaryBorder = A::dim;
    t.runningFill = clear;
    t.runningInk = A::ink;
    t.runningBorder = clear;
    t.runningGlow = true;

    t.icons = IconKind::word;
    t.iconSize = 12;
    t.addStyle = AddStyle::panel;

    t.fieldFill = A::bg;
    t.fieldFocusFill = A::bg;
    t.fieldInk = A::ink;
    t.fieldFocusInk = A::ink;
    t.fieldBorder = A::faint;
    t.fieldFocusBorder = A::dim;
    t.fieldBorderWidth = 1;
    t.fieldShape = ShapeKind::rect(0);
    t.fieldHardShadow = false;
    t.invalidFill = QColor(0x4A, 0x1A, 0x0E);
    t.invalidInk = QColor(0xFF, 0x8A, 0x5C);
    t.fieldDigitSize = 18;
    t.digitFont = termFont(18);
    t.digitAdvance = 10.5; // the font's seven-column advance at this size
    t.caret = CaretKind::block;
    t.steadyCursor = false;

    t.shadowOffset = 0;
    t.ruleInk = A::faint;
    t.bracketWords = true;
    // Inverse video, so the uncovered word stands on its own ground.
    t.revealFill = A::ink;
    t.revealInk = A::bg;
    t.focusKind = FocusKind::brackets;
    t.focusInk = A::ink;
    t.focusWidth = 1.5;
    t.reportFill = A::bg;
    t.reportInk = A::ink;
    t.reportMuted = dimText;
    t.reportGrid = A::faint;
    // Phosphor at four brightnesses.
    t.reportSeries = {A::ink, QColor(0xFF, 0xD0, 0x89), QColor(0xA8, 0x72, 0x28), QColor(0x88, 0x5D, 0x21)};
    // Dark seams between the stacked shades, so neighbouring brightnesses stay apart.
    t.reportBarEdge = A::bg;
    return t;
}

// A station departures board: near-black body, upper-case condensed labels, split-flap tiles.
Theme buildFlap()
{
    using F = Theme::Flap;
    const QColor black(0x00, 0x00, 0x00);
    const QColor panel(0x1F, 0x1F, 0x1F);
    const QColor raised(0x36, 0x36, 0x36);

    Theme t;
    t.windowFill = F::body;
    t.windowFill2 = F::body;
    t.windowShape = ShapeKind::rect(10);
    t.windowBorder = black;
    t.windowBorderWidth = 1;
    t.hardShadow = false;
    t.hardShadowColor = clear;
    t.systemShadow = true;
    t.overlay = Theme::Overlay::none;
    t.dark = true;

    t.titleHeight = 36;
    t.titleFill = clear;
    t.titleRule = SeparatorKind::solid;
    t.titleRuleWidth = 1;
    t.titleText = QStringLiteral("TOCK");
    t.titleFont = condensedBold(13);
    t.titleInk = F::label;
    t.titleTracking = 3;
    t.titleCentered = false;
    t.windowButtons = WindowButtonsKind::boxes;

    t.sbFont = condensedBold(11);
    t.sbFill = F::tile;
    t.sbInk = F::label;
    t.sbBorder = black;
    t.sbBorderWidth = 1;
    t.sbShape = ShapeKind::rect(3);
    t.sbHardShadow = false;
    t.sbHover = raised;
    t.sbOpenFill = F::yellow;
    t.sbOpenInk = F::body;
    t.sbHeight = 22;
    t.chevron = ChevronKind::triangle;

    t.menuFill = QColor(0x20, 0x20, 0x20);
    t.menuBorder = black;
    t.menuBorderWidth = 1;
    t.menuShape = ShapeKind::rect(6);
    t.menuHardShadow = false;
    t.menuSoftShadow = true;
    t.menuSelectedFill = F::tile;
    t.menuSelectedInk = F::digit;
    t.menuItemShape = ShapeKind::rect(3);
    t.menuMarker = MarkerKind::star;
    t.menuRowHeight = 28;

    t.muted = QColor(0x8C, 0x87, 0x7B);
    t.accent = F::yellow;
    t.danger = QColor(0xD2, 0x46, 0x2F);

    t.contentPadding = 12;
    t.rowSpacing = 6;
    t.rowHeight = 48;
    t.rowInset = 10;
    t.rowFill = panel;
    t.rowBorder = black;
    t.rowBorderWidth = 1;
    t.rowShape = ShapeKind::rect(4);
    t.rowShadow = false;
    t.rowSeparator = SeparatorKind::none;
    t.rowHoverFill = QColor(0x25, 0x25, 0x25);
    t.rowEditFill = QColor(0x25, 0x25, 0x25);
    t.rowEmbossed = false;

    t.labelCase = TextCase::upper;
    t.nameCase = TextCase::upper;
    t.nameFont = condensedBold(14);
    t.nameInk = F::label;
    t.nameTracking = 1.2;
    t.timeKind = TimeKind::flap;
    t.timeSize = 22;
    t.timeFont = condensedBold(22);
    t.timeInk = F::digit;
    t.runningTimeInk = F::digit;
    t.timeTracking = 0;
    t.timeGlow = false;
    t.labelFont = condensedBold(10);
    t.captionFont = condensedBold(10);

    t.wellFill = F::tile; // the tiles
    t.wellFill2 = QColor(0x23, 0x23, 0x23);
    t.wellBorder = black;
    t.wellBorderWidth = 1;
    t.wellShape = ShapeKind::rect(3);
    t.wellPadH = 2;
    t.wellPadV = 2;
    t.wellHardShadow = false;
    t.wellRecessed = false;

    t.buttonSize = 30;
    t.buttonShape = ShapeKind::rect(4);
    t.buttonFill = F::tile;
    t.buttonFill2 = QColor(0x24, 0x24, 0x24);
    t.buttonHover = raised;
    t.buttonPressed = QColor(0x11, 0x11, 0x11);
    t.buttonInk = F::label;
    t.buttonPressedInk = F::digit;
    t.buttonBorder = black;
    t.buttonBorderWidth = 1;
    t.buttonShadow = false;
    t.lipShadow = false;
    t.buttonHighlight = QColor(0xFF, 0xFF, 0xFF, 0x12);
    t.primaryFill = F::yellow;
    t.primaryInk = F::body;
    t.primaryBorder = black;
    t.runningFill = F::yellow;
    t.runningInk = F::body;
    t.runningBorder = black;
    t.runningGlow = false;

    t.icons = IconKind::vector;
    t.iconSize = 13;
    t.addStyle = AddStyle::button;

    t.fieldFill = F::tile;
    t.fieldFocusFill = QColor(0x33, 0x33, 0x33);
    t.fieldInk = F::digit;
    t.fieldFocusInk = F::digit;
    t.fieldBorder = black;
    t.fieldFocusBorder = F::yellow;
    t.fieldBorderWidth = 1;
    t.fieldShape = ShapeKind::rect(3);
    t.fieldHardShadow = false;
    t.invalidFill = QColor(0x5A, 0x1E, 0x16);
    t.invalidInk = QColor(0xFF, 0xA3, 0x92);
    t.fieldDigitSize = 22;
    t.digitFont = condensedBold(22);
    t.digitAdvance = 14;
    t.caret = CaretKind::bar;
    t.steadyCursor = false;

    t.shadowOffset = 0;
    t.ruleInk = black;
    t.focusKind = FocusKind::ring;
    t.focusInk = F::yellow;
    t.focusShape = ShapeKind::rect(5);
    t.focusWidth = 2;
    t.reportFill = F::body;
    t.reportInk = F::digit;
    t.reportMuted = F::label;
    t.reportGrid = F::tile;
    // The board's own paints: the yellow, the card white, a worn grey, the signal red; pieces
    // split by the black gap between tiles.
    t.reportSeries = {F::yellow, F::digit, QColor(0x8C, 0x87, 0x7B), QColor(0xD2, 0x46, 0x2F)};
    t.reportBarEdge = black;
    return t;
}

// A dark terminal window: a title strip, no row fills, leader dots, words for buttons.
Theme buildShell()
{
    using T = Theme::Term;
    const QColor edge(0x3A, 0x3B, 0x41);

    // The palette's dim is too faint for text on the bar and the window; a lighter grey reads.
    const QColor dimText(0x9D, 0xA2, 0xAD);

    Theme t;
    t.windowFill = T::bg;
    t.windowFill2 = T::bg;
    t.windowShape = ShapeKind::rect(10);
    t.windowBorder = edge;
    t.windowBorderWidth = 1;
    t.hardShadow = false;
    t.hardShadowColor = clear;
    t.systemShadow = true;
    t.overlay = Theme::Overlay::none;
    t.dark = true;

    t.titleHeight = 28;
    t.titleFill = T::bar;
    t.titleRule = SeparatorKind::solid;
    t.titleRuleWidth = 1;
    t.titleText = QStringLiteral("tock — zsh");
    t.titleFont = uiFont(12, QFont::Medium);
    t.titleInk = dimText;
    t.titleTracking = 0;
    t.titleCentered = true;
    t.windowButtons = WindowButtonsKind::traffic;

    t.sbFont = monoFont(11, QFont::Normal);
    t.sbFill = clear;
    t.sbInk = dimText;
    t.sbBorder = clear;
    t.sbBorderWidth = 0;
    t.sbShape = ShapeKind::rect(4);
    t.sbHardShadow = false;
    t.sbHover = withAlpha(T::text, 0x14);
    t.sbOpenFill = T::sel;
    t.sbOpenInk = T::text;
    t.sbHeight = 20;
    t.chevron = ChevronKind::text;

    t.menuFill = T::bar;
    t.menuBorder = edge;
    t.menuBorderWidth = 1;
    t.menuShape = ShapeKind::rect(6);
    t.menuHardShadow = false;
    t.menuSoftShadow = true;
    t.menuSelectedFill = T::sel;
    t.menuSelectedInk = T::text;
    t.menuItemShape = ShapeKind::rect(4);
    t.menuMarker = MarkerKind::square;
    t.menuRowHeight = 24;

    t.muted = dimText;
    t.accent = T::green;
    t.danger = T::red;

    t.contentPadding = 10;
    t.rowSpacing = 0;
    t.rowHeight = 40;
    t.rowInset = 6;
    t.rowFill = clear;
    t.rowBorder = clear;
    t.rowBorderWidth = 0;
    t.rowShape = ShapeKind::rect(4);
    t.rowShadow = false;
    t.rowSeparator = SeparatorKind::none;
    t.rowHoverFill = withAlpha(T::text, 0x0D);
    t.rowEditFill = T::bar;
    t.rowEmbossed = false;

    t.labelCase = TextCase::lower;
    t.nameCase = TextCase::unchanged;
    t.nameFont = monoFont(13, QFont::Normal);
    t.nameInk = T::text;
    t.nameTracking = 0;
    t.timeKind = TimeKind::plain;
    t.timeSize = 18;
    t.timeFont = monoFont(18);
    t.timeInk = T::text;
    t.runningTimeInk = T::green;
    t.timeTracking = 0;
    t.timeGlow = false;
    t.labelFont = monoFont(12, QFont::Normal);
    t.captionFont = monoFont(11, QFont::Normal);

    t.wellFill = clear;
    t.wellFill2 = clear;
    t.wellBorder = clear;
    t.wellBorderWidth = 0;
    t.wellShape = ShapeKind::rect(3);
    t.wellPadH = 4;
    t.wellPadV = 2;
    t.wellHardShadow = false;
    t.wellRecessed = false;

    t.buttonSize = 24;
    t.buttonShape = ShapeKind::rect(4);
    t.buttonFill = clear;
    t.buttonFill2 = clear;
    t.buttonHover = withAlpha(T::text, 0x14);
    t.buttonPressed = T::sel;
    t.buttonInk = dimText;
    t.buttonPressedInk = T::text;
    t.buttonBorder = clear;
    t.buttonBorderWidth = 0;
    t.buttonShadow = false;
    t.lipShadow = false;
    t.buttonHighlight = clear;
    t.primaryFill = clear;
    t.primaryInk = T::green;
    t.primaryBorder = clear;
    t.runningFill = clear;
    t.runningInk = T::green;
    t.runningBorder = clear;
    t.runningGlow = false;

    t.icons = IconKind::word;
    t.iconSize = 12;
    t.addStyle = AddStyle::prompt;

    t.fieldFill = T::bar;
    t.fieldFocusFill = T::bar;
    t.fieldInk = T::text;
    t.fieldFocusInk = T::text;
    t.fieldBorder = edge;
    t.fieldFocusBorder = QColor(0x3F, 0x72, 0xA6);
    t.fieldBorderWidth = 1;
    t.fieldShape = ShapeKind::rect(3);
    t.fieldHardShadow = false;
    t.invalidFill = QColor(0x3A, 0x1A, 0x1E);
    t.invalidInk = T::red;
    t.fieldDigitSize = 18;
    t.digitFont = monoFont(18);
    t.digitAdvance = 11; // the monospace advance at this size
    t.caret = CaretKind::block;
    t.steadyCursor = false;

    t.shadowOffset = 0;
    t.ruleInk = QColor(0x14, 0x15, 0x18);
    t.leaderDots = true;
    t.revealFill = T::red;
    t.revealInk = T::bg;
    t.focusKind = FocusKind::brackets;
    t.focusInk = T::green;
    t.focusWidth = 1.5;
    t.reportFill = T::bg;
    t.reportInk = T::text;
    t.reportMuted = dimText;
    t.reportGrid = T::bar;
    t.reportSeries = {T::green, T::yellow, QColor(0x61, 0xAF, 0xEF), QColor(0xC6, 0x78, 0xDD), T::red};
    t.reportBarEdge = QColor();
    return t;
}

} // namespace

const QList<QColor> &Theme::Palette::rowCycle()
{
    static const QList<QColor> cycle{yellow, sky, mint, coral};
    return cycle;
}

const Theme &Theme::classic()
{
    static const Theme theme = buildClassic();
    return theme;
}

const Theme &Theme::color()
{
    static const Theme theme = buildColor();
    return theme;
}

const Theme &Theme::gameboy()
{
    static const Theme theme = buildGameboy();
    return theme;
}

const Theme &Theme::braun()
{
    static const Theme theme = buildBraun();
    return theme;
}

const Theme &Theme::amber()
{
    static const Theme theme = buildAmber();
    return theme;
}

const Theme &Theme::flap()
{
    static const Theme theme = buildFlap();
    return theme;
}

const Theme &Theme::shell()
{
    static const Theme theme = buildShell();
    return theme;
}

const Theme &Theme::of(StyleID style)
{
    switch (style) {
    case StyleID::classic: return classic();
    case StyleID::color: return color();
    case StyleID::gameboy: return gameboy();
    case StyleID::braun: return braun();
    case StyleID::amber: return amber();
    case StyleID::flap: return flap();
    case StyleID::shell: return shell();
    }
    return classic();
}

QFont Theme::digitFontAt(qreal size) const
{
    QFont font = digitFont;
    font.setPixelSize(qMax(1, qRound(size)));
    return font;
}

QString Theme::applyCase(TextCase textCase, const QString &text)
{
    switch (textCase) {
    case TextCase::upper: return text.toUpper();
    case TextCase::lower: return text.toLower();
    case TextCase::unchanged: break;
    }
    return text;
}

QColor Theme::rowFillAt(int index) const
{
    if (rowTints.isEmpty() || index < 0)
        return rowFill;
    return rowTints.at(index % rowTints.size());
}

QColor Theme::runningFillAt(int index) const
{
    if (runningFill.isValid() || rowTints.isEmpty())
        return runningFill;
    return rowFillAt(index).darker(128);
}

} // namespace tock
