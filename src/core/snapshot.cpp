#include "snapshot.h"

#include "timevalues.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>
#include <QJsonValue>
#include <QRegularExpression>
#include <QSet>
#include <QTimeZone>

#include <algorithm>
#include <cmath>

namespace tock {

QString StoreError::description() const
{
    if (kind == Kind::blocked)
        return QStringLiteral("Saving is paused because the existing data could not be read.");
    return message;
}

namespace {

constexpr double maxSeconds = double(HMS::maxSeconds);

QString typeName(const QJsonValue &v)
{
    switch (v.type()) {
    case QJsonValue::Null: return QStringLiteral("null");
    case QJsonValue::Bool: return QStringLiteral("a boolean");
    case QJsonValue::Double: return QStringLiteral("a number");
    case QJsonValue::String: return QStringLiteral("a string");
    case QJsonValue::Array: return QStringLiteral("an array");
    case QJsonValue::Object: return QStringLiteral("an object");
    case QJsonValue::Undefined: break;
    }
    return QStringLiteral("nothing");
}

[[noreturn]] void wrongType(const QString &path, const char *expected, const QJsonValue &found)
{
    throw StoreError::invalidContent(QStringLiteral("%1 should be %2 but is %3")
                        .arg(path, QLatin1String(expected), typeName(found)));
}

// Reads the members of one JSON object, naming the full path of anything missing or mistyped.
class Reader {
public:
    Reader(const QJsonObject &object, QString path) : object_(object), path_(std::move(path)) {}

    QJsonValue required(const char *key) const
    {
        const QJsonValue v = object_.value(QLatin1String(key));
        if (v.isUndefined())
            throw StoreError::invalidContent(QStringLiteral("%1 is missing").arg(name(key)));
        return v;
    }
    QString string(const char *key) const
    {
        const QJsonValue v = required(key);
        if (!v.isString())
            wrongType(name(key), "a string", v);
        return v.toString();
    }
    double number(const char *key) const
    {
        const QJsonValue v = required(key);
        if (!v.isDouble())
            wrongType(name(key), "a number", v);
        return v.toDouble();
    }
    int64_t integer(const char *key) const
    {
        const QJsonValue v = required(key);
        if (!v.isDouble())
            wrongType(name(key), "an integer", v);
        // toInteger gives the fallback for fractions and for values outside 64 bits; try two
        // different fallbacks so that a genuine value equal to one of them is still accepted.
        const qint64 a = v.toInteger(0), b = v.toInteger(1);
        if (a != b)
            throw StoreError::invalidContent(QStringLiteral("%1 should be a whole number that fits in 64 bits but is %2")
                                .arg(name(key), QString::number(v.toDouble(), 'g', 17)));
        return a;
    }
    bool boolean(const char *key) const
    {
        const QJsonValue v = required(key);
        if (!v.isBool())
            wrongType(name(key), "a boolean", v);
        return v.toBool();
    }
    std::optional<QString> optionalString(const char *key) const
    {
        const QJsonValue v = object_.value(QLatin1String(key));
        if (v.isUndefined() || v.isNull())
            return std::nullopt;
        if (!v.isString())
            wrongType(name(key), "a string", v);
        return v.toString();
    }
    QJsonArray array(const char *key) const
    {
        const QJsonValue v = required(key);
        if (!v.isArray())
            wrongType(name(key), "an array", v);
        return v.toArray();
    }
    QString name(const char *key) const
    {
        const QString quoted = QStringLiteral("\"%1\"").arg(QLatin1String(key));
        return path_.isEmpty() ? quoted : path_ + QLatin1Char(' ') + quoted;
    }

private:
    QJsonObject object_;
    QString path_;
};

QDateTime parseDate(const QString &text, const QString &path)
{
    // The internet date-time form only: whole seconds, "Z" or a numeric offset.
    static const QRegularExpression form(QStringLiteral(
        R"(^\d{4}-\d{2}-\d{2}T\d{2}:\d{2}:\d{2}(Z|[+-]\d{2}:\d{2})$)"));
    QDateTime date;
    if (form.match(text).hasMatch())
        date = QDateTime::fromString(text, Qt::ISODate);
    if (!date.isValid())
        throw StoreError::invalidContent(QStringLiteral("%1 should be an ISO 8601 date-time such as "
                                       "2026-11-15T19:53:23Z but is \"%2\"")
                            .arg(path, text));
    return date.toUTC();
}

QUuid parseUuid(const QString &text, const QString &path)
{
    static const QRegularExpression form(QStringLiteral(
        "^[0-9A-Fa-f]{8}-[0-9A-Fa-f]{4}-[0-9A-Fa-f]{4}-[0-9A-Fa-f]{4}-[0-9A-Fa-f]{12}$"));
    if (!form.match(text).hasMatch())
        throw StoreError::invalidContent(QStringLiteral("%1 should be a UUID but is \"%2\"").arg(path, text));
    return QUuid::fromString(text);
}

QString formatDate(const QDateTime &date)
{
    // Built by hand: Qt's ISO form for a zone-based UTC date ends in "+00:00", not "Z".
    return date.toUTC().toString(QStringLiteral("yyyy-MM-dd'T'HH:mm:ss")) + QLatin1Char('Z');
}

} // namespace

Snapshot::Snapshot(const Board &board, std::optional<QString> styleId, Instant now)
    : savedAt(QDateTime::fromMSecsSinceEpoch(std::llround(now * 1000.0), QTimeZone::utc())),
      style(std::move(styleId))
{
    timers.reserve(board.timers.size());
    for (const TimerItem &t : board.timers)
        timers.append({t.id, t.name, t.elapsed(now), t.isRunning()});
}

Board Snapshot::board() const
{
    QList<TimerItem> items;
    items.reserve(timers.size());
    for (const Entry &e : timers)
        items.append({e.id, e.name, e.seconds > 0 ? e.seconds : 0.0, std::nullopt});
    return Board(std::move(items));
}

QByteArray Snapshot::encoded() const
{
    if (!savedAt.isValid())
        throw StoreError::invalidContent(QStringLiteral("\"savedAt\" is not a valid date-time"));
    QJsonArray entries;
    for (qsizetype i = 0; i < timers.size(); ++i) {
        const Entry &e = timers.at(i);
        if (!std::isfinite(e.seconds))
            throw StoreError::invalidContent(QStringLiteral("\"timers\"[%1] \"seconds\" is not a finite number").arg(i));
        entries.append(QJsonObject{
            {QStringLiteral("id"), e.id.toString(QUuid::WithoutBraces).toUpper()},
            {QStringLiteral("name"), e.name},
            {QStringLiteral("seconds"), e.seconds},
            {QStringLiteral("wasRunning"), e.wasRunning},
        });
    }
    // QJsonObject keeps its keys sorted, which gives the stable key order of the file.
    QJsonObject root{
        {QStringLiteral("app"), app},
        {QStringLiteral("format"), qint64(format)},
        {QStringLiteral("savedAt"), formatDate(savedAt)},
        {QStringLiteral("timers"), entries},
    };
    if (style)
        root.insert(QStringLiteral("style"), *style);
    return QJsonDocument(root).toJson(QJsonDocument::Indented);
}

Snapshot Snapshot::decode(const QByteArray &data)
{
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(data, &parseError);
    if (parseError.error != QJsonParseError::NoError)
        throw StoreError::invalidContent(QStringLiteral("%1 at byte %2").arg(parseError.errorString()).arg(parseError.offset));
    if (!document.isObject())
        throw StoreError::invalidContent(QStringLiteral("the document should be an object but is an array"));

    const Reader root(document.object(), QString());
    Snapshot s;
    s.app = root.string("app");
    s.format = root.integer("format");
    s.savedAt = parseDate(root.string("savedAt"), root.name("savedAt"));
    s.style = root.optionalString("style");
    const QJsonArray entries = root.array("timers");
    s.timers.reserve(entries.size());
    for (qsizetype i = 0; i < entries.size(); ++i) {
        const QString path = QStringLiteral("\"timers\"[%1]").arg(i);
        const QJsonValue v = entries.at(i);
        if (!v.isObject())
            wrongType(path, "an object", v);
        const Reader entry(v.toObject(), path);
        Entry e;
        e.id = parseUuid(entry.string("id"), entry.name("id"));
        e.name = entry.string("name");
        e.seconds = entry.number("seconds");
        e.wasRunning = entry.boolean("wasRunning");
        s.timers.append(std::move(e));
    }

    // The format number is named even when it is the app tag that is foreign.
    if (s.app != QLatin1String("Tock") || s.format != currentFormat)
        throw StoreError::invalidContent(QStringLiteral("Unsupported file format %1").arg(s.format));
    const auto plausible = [](const Entry &e) {
        return std::isfinite(e.seconds) && e.seconds >= 0 && e.seconds <= maxSeconds;
    };
    if (!std::all_of(s.timers.cbegin(), s.timers.cend(), plausible))
        throw StoreError::invalidContent(QStringLiteral("Implausible timer values"));
    QSet<QUuid> ids;
    ids.reserve(s.timers.size());
    for (const Entry &e : s.timers)
        ids.insert(e.id);
    if (ids.size() < s.timers.size())
        throw StoreError::invalidContent(QStringLiteral("Implausible timer values"));
    return s;
}

} // namespace tock
