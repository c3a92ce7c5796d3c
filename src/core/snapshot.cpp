#include "snapshot.h"

#include "timevalues.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>
#include <QJsonValue>
#include <QSet>
#include <QTimeZone>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>

namespace tock {

QString StoreError::description() const
{
    if (kind == Kind::blocked)
        return QStringLiteral("Saving is paused because the existing data could not be read.");
    if (kind == Kind::folderGone)
        return QStringLiteral("The Tock data folder %1 was moved or deleted. Your timers are kept in this window and "
                              "nothing is written until you press Retry, which saves them in %1 again.")
            .arg(message);
    if (kind == Kind::backupsFailed)
        return QStringLiteral("Your timers are saved, but the backups are not being refreshed: %1").arg(message);
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
// The path is only spelled out for a message: decoding thousands of entries must not format
// thousands of them.
class Reader {
public:
    // `index`: the entry's place in "timers", or -1 for the document itself.
    Reader(const QJsonObject &object, qsizetype index) : object_(object), index_(index) {}

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
        return index_ < 0 ? quoted : entryPath(index_) + QLatin1Char(' ') + quoted;
    }
    static QString entryPath(qsizetype index) { return QStringLiteral("\"timers\"[%1]").arg(index); }

private:
    const QJsonObject &object_;
    qsizetype index_;
};

// The internet date-time form only: whole seconds, "Z" or a numeric offset. Checked by hand: a
// regular expression would be compiled at every load, a good part of a short terminal run.
bool isInternetDateTime(QStringView text)
{
    const std::u16string_view form = text.size() == 20 ? u"dddd-dd-ddTdd:dd:ddZ" : u"dddd-dd-ddTdd:dd:dd+dd:dd";
    if (size_t(text.size()) != form.size())
        return false;
    for (size_t i = 0; i < form.size(); ++i) {
        const char16_t c = text[qsizetype(i)].unicode();
        const bool fits = form[i] == u'd' ? c >= u'0' && c <= u'9' : form[i] == u'+' ? c == u'+' || c == u'-' : c == form[i];
        if (!fits)
            return false;
    }
    return true;
}

QDateTime parseDate(const QString &text, const QString &path)
{
    QDateTime date;
    if (isInternetDateTime(text))
        date = QDateTime::fromString(text, Qt::ISODate);
    if (!date.isValid())
        throw StoreError::invalidContent(QStringLiteral("%1 should be an ISO 8601 date-time such as "
                                       "2026-11-15T19:53:23Z but is \"%2\"")
                            .arg(path, text));
    return date.toUTC();
}

// 8-4-4-4-12 hexadecimal digits, nothing around them.
bool isUuidText(QStringView text)
{
    if (text.size() != 36)
        return false;
    for (qsizetype i = 0; i < 36; ++i) {
        const char16_t c = text[i].unicode();
        const bool dash = i == 8 || i == 13 || i == 18 || i == 23;
        const bool hex = (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'f') || (c >= u'A' && c <= u'F');
        if (dash ? c != u'-' : !hex)
            return false;
    }
    return true;
}

QUuid parseUuid(const Reader &entry)
{
    const QString text = entry.string("id");
    if (!isUuidText(text))
        throw StoreError::invalidContent(QStringLiteral("%1 should be a UUID but is \"%2\"").arg(entry.name("id"), text));
    return QUuid::fromString(text);
}

// A JSON string as the document writer would put it: plain printable ASCII as it is, anything
// else (quotes, controls, other scripts) through the writer itself so its escaping is kept.
void appendString(QByteArray &out, const QString &text)
{
    const bool plain = std::all_of(text.cbegin(), text.cend(), [](QChar c) {
        return c.unicode() >= 0x20 && c.unicode() < 0x7f && c != QLatin1Char('"') && c != QLatin1Char('\\');
    });
    if (plain) {
        out += '"';
        out += text.toLatin1();
        out += '"';
        return;
    }
    const QByteArray array = QJsonDocument(QJsonArray{text}).toJson(QJsonDocument::Compact);
    out += QByteArrayView(array).sliced(1, array.size() - 2);
}

QString formatDate(const QDateTime &date)
{
    // Built by hand: Qt's ISO form for a zone-based UTC date ends in "+00:00", not "Z".
    return date.toUTC().toString(QStringLiteral("yyyy-MM-dd'T'HH:mm:ss")) + QLatin1Char('Z');
}

// Reads the file exactly as encoded() lays it out, with plain ASCII strings: what this program
// writes, read without building a document tree. Anything else, however slight the difference,
// gives nothing and the caller takes the general path, which also words every error.
class LayoutReader {
public:
    explicit LayoutReader(const QByteArray &data) : p_(data.cbegin()), end_(data.cend()) {}

    std::optional<Snapshot> read()
    {
        Snapshot s;
        QString savedAt;
        std::optional<int64_t> format;
        if (!(literal("{\n    \"app\": ") && string(s.app) && literal(",\n    \"format\": ") && (format = integer())
              && literal(",\n    \"savedAt\": ") && string(savedAt) && literal(",\n    ")))
            return std::nullopt;
        if (literal("\"style\": ")) {
            QString style;
            if (!string(style) || !literal(",\n    "))
                return std::nullopt;
            s.style = std::move(style);
        }
        if (!literal("\"timers\": [\n"))
            return std::nullopt;
        s.format = *format;
        try {
            s.savedAt = parseDate(savedAt, QString());
        } catch (const StoreError &) {
            return std::nullopt; // worded by the general path, after any syntax error
        }
        s.timers.reserve((end_ - p_) / 140);
        bool more = !literal("    ]\n}\n");
        while (more) {
            Entry e;
            QString id;
            std::optional<double> seconds;
            std::optional<bool> running;
            if (!(literal("        {\n            \"id\": ") && string(id) && isUuidText(id)
                  && literal(",\n            \"name\": ") && string(e.name)
                  && literal(",\n            \"seconds\": ") && (seconds = number())
                  && literal(",\n            \"wasRunning\": ") && (running = boolean()) && literal("\n        }")))
                return std::nullopt;
            e.id = QUuid::fromString(id);
            e.seconds = *seconds;
            e.wasRunning = *running;
            s.timers.append(std::move(e));
            if (literal(",\n"))
                continue;
            if (!literal("\n    ]\n}\n"))
                return std::nullopt;
            more = false;
        }
        if (p_ != end_)
            return std::nullopt;
        return s;
    }

private:
    using Entry = Snapshot::Entry;

    bool literal(std::string_view text)
    {
        if (end_ - p_ < qsizetype(text.size()) || std::string_view(p_, text.size()) != text)
            return false;
        p_ += text.size();
        return true;
    }
    // An out-parameter rather than an optional: GCC's optimiser misreads optional<QString> here.
    bool string(QString &out)
    {
        if (p_ == end_ || *p_ != '"')
            return false;
        const char *begin = ++p_;
        while (p_ != end_ && *p_ != '"') {
            const auto c = static_cast<unsigned char>(*p_);
            if (c < 0x20 || c >= 0x7f || c == '\\')
                return false;
            ++p_;
        }
        if (p_ == end_)
            return false;
        out = QString::fromLatin1(begin, p_++ - begin);
        return true;
    }
    // A JSON number's text without a sign: (0|[1-9][0-9]*)(.[0-9]+)?([eE][+-]?[0-9]+)?
    // Negative numbers (and "-0") are never written and take the general path.
    std::optional<std::string_view> numberText()
    {
        const char *begin = p_;
        const auto digits = [&] {
            const char *from = p_;
            while (p_ != end_ && *p_ >= '0' && *p_ <= '9')
                ++p_;
            return p_ - from;
        };
        const char *integral = p_;
        const auto count = digits();
        if (count == 0 || (count > 1 && *integral == '0'))
            return std::nullopt;
        if (p_ != end_ && *p_ == '.') {
            ++p_;
            if (digits() == 0)
                return std::nullopt;
        }
        if (p_ != end_ && (*p_ == 'e' || *p_ == 'E')) {
            ++p_;
            if (p_ != end_ && (*p_ == '+' || *p_ == '-'))
                ++p_;
            if (digits() == 0)
                return std::nullopt;
        }
        return std::string_view(begin, p_ - begin);
    }
    std::optional<double> number()
    {
        const std::optional<std::string_view> text = numberText();
        if (!text)
            return std::nullopt;
        double value = 0;
        const auto [at, error] = std::from_chars(text->data(), text->data() + text->size(), value);
        if (error != std::errc() || at != text->data() + text->size() || !std::isfinite(value))
            return std::nullopt;
        return value;
    }
    // Small whole numbers only: larger ones and fractions take the general path.
    std::optional<int64_t> integer()
    {
        const std::optional<std::string_view> text = numberText();
        if (!text || text->size() > 15)
            return std::nullopt;
        int64_t value = 0;
        const auto [at, error] = std::from_chars(text->data(), text->data() + text->size(), value);
        if (error != std::errc() || at != text->data() + text->size())
            return std::nullopt;
        return value;
    }
    std::optional<bool> boolean()
    {
        if (literal("true"))
            return true;
        if (literal("false"))
            return false;
        return std::nullopt;
    }

    const char *p_;
    const char *end_;
};

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
    // Written directly in the layout a sorted, indented JSON document has (4 spaces, keys in
    // order), rather than through a document tree: a save a second must stay cheap for
    // thousands of timers.
    QByteArray out;
    out.reserve(160 + timers.size() * 150);
    out += "{\n    \"app\": ";
    appendString(out, app);
    out += ",\n    \"format\": ";
    out += QByteArray::number(qint64(format));
    out += ",\n    \"savedAt\": ";
    appendString(out, formatDate(savedAt));
    if (style) {
        out += ",\n    \"style\": ";
        appendString(out, *style);
    }
    out += ",\n    \"timers\": [\n";
    for (qsizetype i = 0; i < timers.size(); ++i) {
        const Entry &e = timers.at(i);
        if (!std::isfinite(e.seconds))
            throw StoreError::invalidContent(QStringLiteral("\"timers\"[%1] \"seconds\" is not a finite number").arg(i));
        out += "        {\n            \"id\": \"";
        out += e.id.toByteArray(QUuid::WithoutBraces).toUpper();
        out += "\",\n            \"name\": ";
        appendString(out, e.name);
        out += ",\n            \"seconds\": ";
        out += QByteArray::number(e.seconds, 'g', QLocale::FloatingPointShortest);
        out += e.wasRunning ? ",\n            \"wasRunning\": true\n        }"
                            : ",\n            \"wasRunning\": false\n        }";
        out += i + 1 < timers.size() ? ",\n" : "\n";
    }
    out += "    ]\n}\n";
    return out;
}

Snapshot Snapshot::decode(const QByteArray &data)
{
    std::optional<Snapshot> read = LayoutReader(data).read();
    Snapshot s = read ? std::move(*read) : decodeDocument(data);
    checkValues(s);
    return s;
}

Snapshot Snapshot::decodeDocument(const QByteArray &data)
{
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(data, &parseError);
    if (parseError.error != QJsonParseError::NoError)
        throw StoreError::invalidContent(QStringLiteral("%1 at byte %2").arg(parseError.errorString()).arg(parseError.offset));
    if (!document.isObject())
        throw StoreError::invalidContent(QStringLiteral("the document should be an object but is an array"));

    const QJsonObject rootObject = document.object();
    const Reader root(rootObject, -1);
    Snapshot s;
    s.app = root.string("app");
    s.format = root.integer("format");
    s.savedAt = parseDate(root.string("savedAt"), root.name("savedAt"));
    s.style = root.optionalString("style");
    const QJsonArray entries = root.array("timers");
    s.timers.reserve(entries.size());
    for (qsizetype i = 0; i < entries.size(); ++i) {
        const QJsonValue v = entries.at(i);
        if (!v.isObject())
            wrongType(Reader::entryPath(i), "an object", v);
        const QJsonObject object = v.toObject();
        const Reader entry(object, i);
        Entry e;
        e.id = parseUuid(entry);
        e.name = entry.string("name");
        e.seconds = entry.number("seconds");
        e.wasRunning = entry.boolean("wasRunning");
        s.timers.append(std::move(e));
    }
    return s;
}

void Snapshot::checkValues(const Snapshot &s)
{
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
}

} // namespace tock
