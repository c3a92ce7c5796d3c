#include "lineeditor.h"

#include "text.h"

namespace tock::LineEditor {

namespace {

bool isWide(char32_t c)
{
    // The East Asian wide and full-width blocks, and the pictographs terminals draw as emoji.
    static constexpr std::pair<char32_t, char32_t> ranges[] = {
        {0x1100, 0x115f},   {0x231a, 0x231b},   {0x2329, 0x232a},   {0x23e9, 0x23ec},   {0x23f0, 0x23f0},
        {0x23f3, 0x23f3},   {0x25fd, 0x25fe},   {0x2614, 0x2615},   {0x2648, 0x2653},   {0x267f, 0x267f},
        {0x2693, 0x2693},   {0x26a1, 0x26a1},   {0x26aa, 0x26ab},   {0x26bd, 0x26be},   {0x26c4, 0x26c5},
        {0x26ce, 0x26ce},   {0x26d4, 0x26d4},   {0x26ea, 0x26ea},   {0x26f2, 0x26f3},   {0x26f5, 0x26f5},
        {0x26fa, 0x26fa},   {0x26fd, 0x26fd},   {0x2705, 0x2705},   {0x270a, 0x270b},   {0x2728, 0x2728},
        {0x274c, 0x274c},   {0x274e, 0x274e},   {0x2753, 0x2755},   {0x2757, 0x2757},   {0x2795, 0x2797},
        {0x27b0, 0x27b0},   {0x27bf, 0x27bf},   {0x2b1b, 0x2b1c},   {0x2b50, 0x2b50},   {0x2b55, 0x2b55},
        {0x2e80, 0x303e},   {0x3041, 0x33ff},   {0x3400, 0x4dbf},   {0x4e00, 0x9fff},   {0xa000, 0xa4cf},
        {0xa960, 0xa97f},   {0xac00, 0xd7a3},   {0xf900, 0xfaff},   {0xfe10, 0xfe19},   {0xfe30, 0xfe6f},
        {0xff00, 0xff60},   {0xffe0, 0xffe6},   {0x16fe0, 0x16fe4}, {0x17000, 0x18cff}, {0x1b000, 0x1b2ff},
        {0x1f004, 0x1f004}, {0x1f0cf, 0x1f0cf}, {0x1f18e, 0x1f18e}, {0x1f191, 0x1f19a}, {0x1f1e6, 0x1f1ff}, {0x1f200, 0x1f2ff},
        {0x1f300, 0x1f64f}, {0x1f680, 0x1f6ff}, {0x1f7e0, 0x1f7eb}, {0x1f90c, 0x1f9ff}, {0x1fa70, 0x1faff},
        {0x20000, 0x3fffd},
    };
    for (const auto &[first, last] : ranges) {
        if (c < first)
            return false;
        if (c <= last)
            return true;
    }
    return false;
}

} // namespace

int graphemeWidth(const QString &grapheme)
{
    const QList<uint> points = grapheme.toUcs4();
    if (points.isEmpty())
        return 0;
    const char32_t first = points.first();
    if (first < 0x20 || (first >= 0x7f && first < 0xa0))
        return 0;
    // A variation selector asking for emoji presentation makes a narrow symbol wide.
    if (isWide(first) || points.contains(0xfe0f))
        return 2;
    const QChar::Category category = QChar::category(first);
    if (category == QChar::Mark_NonSpacing || category == QChar::Mark_Enclosing || category == QChar::Other_Format)
        return 0;
    return 1;
}

int width(const QString &text)
{
    int columns = 0;
    for (const QString &grapheme : Text::graphemes(text))
        columns += graphemeWidth(grapheme);
    return columns;
}

QByteArray render(const QString &prompt, const QString &text, qsizetype caret, int columns)
{
    const QStringList graphemes = Text::graphemes(text);
    caret = std::clamp<qsizetype>(caret, 0, graphemes.size());
    const int promptWidth = width(prompt);
    // The last column stays free so the cursor never wraps onto the next line.
    const int room = columns > 0 ? std::max(1, columns - 1 - promptWidth) : std::numeric_limits<int>::max();

    qsizetype first = 0;
    int beforeCaret = 0;
    for (qsizetype i = 0; i < caret; ++i)
        beforeCaret += graphemeWidth(graphemes.at(i));
    while (beforeCaret > room && first < caret)
        beforeCaret -= graphemeWidth(graphemes.at(first++));

    QString shown;
    int used = 0;
    for (qsizetype i = first; i < graphemes.size(); ++i) {
        const int w = graphemeWidth(graphemes.at(i));
        if (used + w > room)
            break;
        shown += graphemes.at(i);
        used += w;
    }

    QByteArray bytes = "\r" + prompt.toUtf8() + shown.toUtf8() + "\x1b[K\r";
    const int column = promptWidth + beforeCaret;
    if (column > 0)
        bytes += "\x1b[" + QByteArray::number(column) + 'C';
    return bytes;
}

} // namespace tock::LineEditor
