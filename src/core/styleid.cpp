#include "styleid.h"

namespace tock {
namespace {

struct StyleInfo {
    StyleID id;
    const char16_t *raw;
    const char16_t *title;
};

constexpr StyleInfo kStyles[] = {
    {StyleID::classic, u"classic", u"Neo Classic"},
    {StyleID::color, u"color", u"Neo Color"},
    {StyleID::gameboy, u"gameboy", u"Play Kid"},
    {StyleID::braun, u"braun", u"Calculator"},
    {StyleID::amber, u"amber", u"Amber Terminal"},
    {StyleID::flap, u"flap", u"Split-Flap"},
    {StyleID::shell, u"shell", u"Shell"},
};

const StyleInfo &info(StyleID style)
{
    return kStyles[static_cast<int>(style)];
}

} // namespace

const QList<StyleID> &StyleIDs::allCases()
{
    static const QList<StyleID> all = [] {
        QList<StyleID> list;
        for (const auto &s : kStyles)
            list.append(s.id);
        return list;
    }();
    return all;
}

QString StyleIDs::rawValue(StyleID style)
{
    return QString::fromUtf16(info(style).raw);
}

std::optional<StyleID> StyleIDs::fromRawValue(const QString &raw)
{
    for (const auto &s : kStyles) {
        if (raw == QStringView(s.raw))
            return s.id;
    }
    return std::nullopt;
}

QString StyleIDs::displayName(StyleID style)
{
    return QString::fromUtf16(info(style).title);
}

} // namespace tock
