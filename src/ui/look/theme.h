// Theme: the one immutable record that describes how a style looks; every view reads it.
//
// Units. Every size in a Theme (widths, heights, radii, paddings, tracking, font sizes) is in
// points before zoom, and one point is one device-independent pixel: the views draw with the
// painter scaled by the zoom, so a value here is multiplied by the zoom and then by the screen's
// device pixel ratio. Fonts therefore carry their size as a pixel size (QFont::setPixelSize),
// never a point size, so text scales exactly with the painter and does not depend on the
// screen's DPI. Where a field such as `timeSize` names a size, the matching font already has it.
#pragma once

#include "styleid.h"

#include <QColor>
#include <QFont>
#include <QList>
#include <QString>

#include <optional>

namespace tock {

// A shape used by the window, rows, wells, buttons, fields and menus.
struct ShapeKind {
    enum Kind { Rect, Notched, Circle };
    Kind kind = Rect;
    // Rect: the corner radius. Notched: the size of one corner step (one pixel cell).
    qreal radius = 0;

    static constexpr ShapeKind rect(qreal cornerRadius = 0) { return {Rect, cornerRadius}; }
    static constexpr ShapeKind notched(qreal step = 3) { return {Notched, step}; }
    static constexpr ShapeKind circle() { return {Circle, 0}; }

    friend constexpr bool operator==(const ShapeKind &, const ShapeKind &) = default;
};

// The line under the title bar and between rows.
enum class SeparatorKind { solid, dotted, dashed, none };
// System-like vector glyphs, pixel bitmaps, or words in place of icons.
enum class IconKind { vector, pixel, word };
// Square custom buttons, or round coloured lights.
enum class WindowButtonsKind { boxes, traffic };
// The style button's open indicator: an icon, a small solid triangle, or a text mark.
enum class ChevronKind { icon, triangle, text };
// The mark beside the current style in the style menu.
enum class MarkerKind { square, pixelArrow, star, check };
// How names and labels are cased before drawing.
enum class TextCase { upper, lower, unchanged };
// The footer's add control: a button, a wide panel, or the command prompt.
enum class AddStyle { button, panel, prompt };
// The text cursor in fields: a cell-sized block or a thin bar.
enum class CaretKind { block, bar };
// How a row draws its time: plain text, text inside a display well, or split-flap tiles.
enum class TimeKind { plain, well, flap };
// The keyboard focus mark: a ring around the control, or a bracket at each side of it.
enum class FocusKind { ring, brackets };

struct Theme {
    // The window's width in unzoomed points, the same in every style.
    static constexpr qreal contentWidth = 320;

    // An overlay painted over the whole window.
    enum class Overlay { none, pixelGrid, scanlines };

    // The fixed colours the themes draw from.
    struct Palette {
        static constexpr QColor coral{0xFF, 0x7A, 0x66};
        static constexpr QColor sky{0x7C, 0xC8, 0xFF};
        static constexpr QColor mint{0x7E, 0xE0, 0xB5};
        static constexpr QColor yellow{0xFF, 0xD4, 0x3B};
        // The tinted rows take these in turn, top row first.
        static const QList<QColor> &rowCycle();
    };
    // Four handheld-screen greens, darkest first.
    struct DMG {
        static constexpr QColor c0{0x0F, 0x38, 0x0F};
        static constexpr QColor c1{0x30, 0x62, 0x30};
        static constexpr QColor c2{0x8B, 0xAC, 0x0F};
        static constexpr QColor c3{0x9B, 0xBC, 0x0F};
    };
    struct Amber {
        static constexpr QColor bg{0x15, 0x10, 0x0A};
        static constexpr QColor ink{0xE6, 0xA2, 0x3C};
        static constexpr QColor dim{0x9C, 0x6C, 0x2A};
        static constexpr QColor faint{0x4A, 0x34, 0x18};
        static constexpr QColor deep{0x24, 0x19, 0x0D};
    };
    struct Flap {
        static constexpr QColor body{0x17, 0x17, 0x17};
        static constexpr QColor tile{0x2B, 0x2B, 0x2B};
        static constexpr QColor digit{0xF1, 0xEC, 0xDD};
        static constexpr QColor label{0xBD, 0xB7, 0xA8};
        static constexpr QColor yellow{0xF2, 0xC2, 0x30};
    };
    struct Term {
        static constexpr QColor bg{0x1C, 0x1D, 0x21};
        static constexpr QColor bar{0x2A, 0x2B, 0x30};
        static constexpr QColor text{0xD6, 0xD8, 0xDE};
        static constexpr QColor dim{0x6B, 0x6F, 0x7A};
        static constexpr QColor green{0x98, 0xC3, 0x79};
        static constexpr QColor yellow{0xE5, 0xC0, 0x7B};
        static constexpr QColor red{0xE0, 0x6C, 0x75};
        static constexpr QColor sel{0x26, 0x4F, 0x78};
    };

    // Window
    QColor windowFill;
    QColor windowFill2; // the bottom of a vertical gradient; equal to windowFill for a flat fill
    ShapeKind windowShape;
    QColor windowBorder;
    qreal windowBorderWidth = 0;
    bool hardShadow = false;
    QColor hardShadowColor;
    bool systemShadow = false;
    Overlay overlay = Overlay::none;
    bool dark = false;

    // Title bar
    qreal titleHeight = 0;
    QColor titleFill; // transparent: the window's fill shows through
    SeparatorKind titleRule = SeparatorKind::none;
    qreal titleRuleWidth = 0;
    QString titleText;
    QFont titleFont;
    QColor titleInk;
    qreal titleTracking = 0;
    bool titleCentered = false;
    WindowButtonsKind windowButtons = WindowButtonsKind::boxes;

    // Style button
    QFont sbFont;
    QColor sbFill;
    QColor sbInk;
    QColor sbBorder;
    qreal sbBorderWidth = 0;
    ShapeKind sbShape;
    bool sbHardShadow = false;
    QColor sbHover;
    QColor sbOpenFill;
    QColor sbOpenInk;
    qreal sbHeight = 0;
    ChevronKind chevron = ChevronKind::icon;

    // Style menu
    QColor menuFill;
    QColor menuBorder;
    qreal menuBorderWidth = 0;
    ShapeKind menuShape;
    bool menuHardShadow = false;
    bool menuSoftShadow = false;
    QColor menuSelectedFill;
    QColor menuSelectedInk;
    ShapeKind menuItemShape;
    MarkerKind menuMarker = MarkerKind::check;
    qreal menuRowHeight = 0;

    // Shared colours
    QColor muted;
    QColor accent;
    QColor danger;

    // List
    qreal contentPadding = 0;
    qreal rowSpacing = 0;
    qreal rowHeight = 0;
    qreal rowInset = 0; // horizontal padding inside a row
    QColor rowFill;     // transparent: rows have no fill of their own
    QColor rowBorder;
    qreal rowBorderWidth = 0;
    ShapeKind rowShape;
    bool rowShadow = false; // a hard shadow in hardShadowColor, offset by shadowOffset
    SeparatorKind rowSeparator = SeparatorKind::none;
    QColor rowHoverFill; // painted over the row's fill, so it may be translucent
    QColor rowEditFill;  // likewise
    bool rowEmbossed = false;

    // Text
    TextCase labelCase = TextCase::unchanged;
    TextCase nameCase = TextCase::unchanged;
    QFont nameFont;
    QColor nameInk;
    qreal nameTracking = 0;
    TimeKind timeKind = TimeKind::plain;
    QFont timeFont; // its pixel size is timeSize
    qreal timeSize = 0;
    QColor timeInk;
    QColor runningTimeInk;
    qreal timeTracking = 0;
    bool timeGlow = false;
    QFont labelFont;
    QFont captionFont;

    // Time well
    QColor wellFill;
    QColor wellFill2;
    QColor wellBorder;
    qreal wellBorderWidth = 0;
    ShapeKind wellShape;
    qreal wellPadH = 0;
    qreal wellPadV = 0;
    bool wellHardShadow = false;
    bool wellRecessed = false;

    // Buttons
    qreal buttonSize = 0;
    ShapeKind buttonShape;
    QColor buttonFill;
    QColor buttonFill2;
    QColor buttonHover;
    QColor buttonPressed;
    QColor buttonInk;
    QColor buttonPressedInk;
    QColor buttonBorder;
    qreal buttonBorderWidth = 0;
    bool buttonShadow = false;
    bool lipShadow = false;
    QColor buttonHighlight; // a thin light edge along a key's top; transparent for none
    QColor primaryFill;
    QColor primaryInk;
    QColor primaryBorder;
    QColor runningFill;
    QColor runningInk;
    QColor runningBorder;
    bool runningGlow = false;

    // Icons
    IconKind icons = IconKind::vector;
    qreal iconSize = 0;
    AddStyle addStyle = AddStyle::button;

    // Fields (name field and time mask)
    QColor fieldFill;
    QColor fieldFocusFill;
    QColor fieldInk;
    QColor fieldFocusInk;
    QColor fieldBorder;
    QColor fieldFocusBorder;
    qreal fieldBorderWidth = 0;
    ShapeKind fieldShape;
    bool fieldHardShadow = false;
    QColor invalidFill;
    QColor invalidInk;
    qreal fieldDigitSize = 0;
    QFont digitFont; // its pixel size is fieldDigitSize
    qreal digitAdvance = 0;
    CaretKind caret = CaretKind::bar;
    bool steadyCursor = false;

    // Details the views need beyond the fields above, still data rather than a style switch.
    qreal shadowOffset = 0;    // the offset (right and down) of every hard shadow
    QColor ruleInk;            // the title rule and the row separators
    QList<QColor> rowTints;    // when not empty, row i is filled with rowTints[i % size] (rowFillAt)
    bool leaderDots = false;   // dots between a row's name and its time
    bool bracketWords = false; // word icons are drawn as "[word]"
    // The ground and ink of the delete a swipe uncovers (invalid: danger with white ink), and its
    // font (unset: labelFont).
    QColor revealFill;
    QColor revealInk;
    std::optional<QFont> revealFont;
    // The mark around the control with the keyboard focus, at least 3:1 against the fills
    // around it.
    FocusKind focusKind = FocusKind::ring;
    QColor focusInk;
    ShapeKind focusShape; // of the ring
    qreal focusWidth = 2;
    // The week's report in the window: the ground it is drawn on, its text and the fainter text
    // of dates and scale (both at least 4.5:1 on the ground), the scale's lines, the colours the
    // timers' bars take in turn, and the edge around each bar piece (invalid: none).
    QColor reportFill;
    QColor reportInk;
    QColor reportMuted;
    QColor reportGrid;
    QList<QColor> reportSeries;
    QColor reportBarEdge;

    friend bool operator==(const Theme &, const Theme &) = default;

    // The seven themes, each built once on first use. The system fonts are looked up then, so
    // the first use must come after the application object exists.
    static const Theme &classic();
    static const Theme &color();
    static const Theme &gameboy();
    static const Theme &braun();
    static const Theme &amber();
    static const Theme &flap();
    static const Theme &shell();
    // The theme of a style; the core only knows the identifier, so the mapping lives here.
    static const Theme &of(StyleID style);

    // The time mask's digit font (the field digitFont) at another pixel size. Named apart from
    // the field because C++ cannot overload a data member with a function.
    QFont digitFontAt(qreal size) const;

    // The text as the case rule says, e.g. for nameCase and labelCase.
    static QString applyCase(TextCase textCase, const QString &text);

    // The fill of row `index`: its tint where the theme tints rows, else rowFill.
    QColor rowFillAt(int index) const;
    // The running play/pause button's fill in row `index`: runningFill, or, where a tinting
    // theme leaves runningFill invalid, a darker shade of that row's tint.
    QColor runningFillAt(int index) const;
};

} // namespace tock
