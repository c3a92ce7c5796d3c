#include "timeedit.h"

#include "text.h"

namespace tock {

namespace {

int indexOf(TimeField f)
{
    return static_cast<int>(f);
}

bool isAsciiDigit(QChar c)
{
    return c.unicode() >= u'0' && c.unicode() <= u'9';
}

bool isSeparator(QChar c)
{
    return c == u':' || c == u'.' || c == u' ';
}

// "%02d": at least two ASCII digits.
QString twoDigits(int64_t v)
{
    return QStringLiteral("%1").arg(v, 2, 10, QLatin1Char('0'));
}

} // namespace

QString TimeFields::label(TimeField field)
{
    switch (field) {
    case TimeField::hours: return QStringLiteral("Hours");
    case TimeField::minutes: return QStringLiteral("Minutes");
    case TimeField::seconds: break;
    }
    return QStringLiteral("Seconds");
}

int64_t TimeFields::maxValue(TimeField field)
{
    return field == TimeField::hours ? HMS::maxHours : 59;
}

int TimeFields::maxDigits(TimeField field)
{
    return field == TimeField::hours ? 3 : 2;
}

QString TimeFields::sanitize(TimeField field, const QString &text)
{
    const int limit = maxDigits(field);
    QString out;
    for (QChar c : text) {
        if (out.size() == limit)
            break;
        if (isAsciiDigit(c))
            out.append(c);
    }
    return out;
}

std::optional<int64_t> TimeFields::value(TimeField field, const QString &text)
{
    if (text.size() > maxDigits(field))
        return std::nullopt;
    if (text.isEmpty())
        return 0;
    const std::optional<int64_t> v = Text::decimal(text);
    if (!v || *v > maxValue(field))
        return std::nullopt;
    return v;
}

void MaskCursor::focus(TimeField f)
{
    field = f;
    fresh = true;
    justAdvanced = false;
}

void MaskCursor::next()
{
    if (field != TimeField::seconds)
        focus(TimeField(indexOf(field) + 1));
}

void MaskCursor::previous()
{
    if (field != TimeField::hours)
        focus(TimeField(indexOf(field) - 1));
}

TimeEditDraft::TimeEditDraft(double seconds)
{
    const HMS hms = HMS::fromTotalSeconds(seconds); // caps at 999:59:59 itself
    texts = {twoDigits(hms.hours), twoDigits(hms.minutes), twoDigits(hms.seconds)};
    original = texts;
}

void TimeEditDraft::set(TimeField f, const QString &text)
{
    texts[indexOf(f)] = TimeFields::sanitize(f, text);
}

bool TimeEditDraft::isValid(TimeField f) const
{
    return TimeFields::value(f, (*this)[f]).has_value();
}

bool TimeEditDraft::isValid() const
{
    for (TimeField f : TimeFields::all) {
        if (!isValid(f))
            return false;
    }
    return true;
}

std::optional<HMS> TimeEditDraft::value() const
{
    const auto h = TimeFields::value(TimeField::hours, texts[0]);
    const auto m = TimeFields::value(TimeField::minutes, texts[1]);
    const auto s = TimeFields::value(TimeField::seconds, texts[2]);
    if (!h || !m || !s)
        return std::nullopt;
    return HMS{*h, *m, *s};
}

bool TimeEditDraft::isUnchanged() const
{
    for (TimeField f : TimeFields::all) {
        const int i = indexOf(f);
        if (TimeFields::value(f, texts[i]) != TimeFields::value(f, original[i]))
            return false;
    }
    return true;
}

bool TimeEditDraft::type(QChar c, MaskCursor &cursor)
{
    if (isSeparator(c)) {
        if (cursor.justAdvanced) {
            // Confirms the move the full field already made.
            cursor.justAdvanced = false;
            return true;
        }
        cursor.next();
        return true;
    }
    if (!isAsciiDigit(c))
        return false;

    const TimeField f = cursor.field;
    const QString &current = (*this)[f];
    const bool restart = cursor.fresh || current.size() >= TimeFields::maxDigits(f);
    set(f, (restart ? QString() : current) + c);
    cursor.fresh = false;
    cursor.justAdvanced = false;

    // Hours advance only when all three digits are typed; a shorter hour needs a separator.
    if (f != TimeField::seconds && (*this)[f].size() == TimeFields::maxDigits(f)) {
        cursor.next();
        cursor.justAdvanced = true;
    }
    return true;
}

void TimeEditDraft::backspace(MaskCursor &cursor)
{
    const TimeField f = cursor.field;
    set(f, cursor.fresh ? QString() : (*this)[f].chopped(qMin<qsizetype>(1, (*this)[f].size())));
    cursor.fresh = false;
}

void TimeEditDraft::step(int64_t delta, MaskCursor &cursor)
{
    const TimeField f = cursor.field;
    const int64_t m = TimeFields::maxValue(f) + 1;
    const int64_t v = TimeFields::value(f, (*this)[f]).value_or(0);
    // Reducing delta first keeps the sum far from overflow for any delta.
    const int64_t n = v + delta % m;
    set(f, twoDigits(((n % m) + m) % m));
    cursor.fresh = true;
}

} // namespace tock
