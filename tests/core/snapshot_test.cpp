#include "faultyfilesystem.h"
#include "snapshot.h"
#include "timevalues.h"
#include "table.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTest>
#include <QTimeZone>

#include <cmath>
#include <variant>

using namespace tock;
using namespace tock::testing;

namespace {

const QUuid idA = QUuid::fromString(QStringLiteral("0b6f5c3e-8d1a-4c2b-9e7f-1a2b3c4d5e6f"));
const QUuid idB = QUuid::fromString(QStringLiteral("f0e1d2c3-b4a5-4697-8877-665544332211"));
constexpr Instant savedInstant = 1794772403;  // 2026-11-15T19:53:23Z
const QDateTime savedAt = QDateTime::fromSecsSinceEpoch(qint64(savedInstant), QTimeZone::utc());

Snapshot sample(std::optional<QString> style)
{
    Snapshot s;
    s.savedAt = savedAt;
    s.style = std::move(style);
    s.timers = {{idA, QStringLiteral("Écriture \"draft\""), 90.25, true}, {idB, QString(), 0, false}};
    return s;
}

// A valid document with one timer, and a second one when `secondId` is given.
QByteArray document(const QByteArray &format = "1", const QByteArray &app = "\"Tock\"", const QByteArray &seconds = "12.5",
                    const QByteArray &secondId = "")
{
    QByteArray timers = "{\"id\": \"0B6F5C3E-8D1A-4C2B-9E7F-1A2B3C4D5E6F\", \"name\": \"a\", \"seconds\": " + seconds
                        + ", \"wasRunning\": false}";
    if (!secondId.isEmpty())
        timers += ", {\"id\": \"" + secondId + "\", \"name\": \"b\", \"seconds\": 1, \"wasRunning\": true}";
    return "{\"app\": " + app + ", \"format\": " + format + ", \"savedAt\": \"2026-11-15T19:53:23Z\", \"timers\": [" + timers + "]}";
}

// The file text as a JSON document tree writes it: the encoder writes the same bytes by hand.
QByteArray treeEncoded(const Snapshot &s)
{
    QJsonArray entries;
    for (const Snapshot::Entry &e : s.timers)
        entries.append(QJsonObject{{QStringLiteral("id"), e.id.toString(QUuid::WithoutBraces).toUpper()},
                                   {QStringLiteral("name"), e.name},
                                   {QStringLiteral("seconds"), e.seconds},
                                   {QStringLiteral("wasRunning"), e.wasRunning}});
    QJsonObject root{{QStringLiteral("app"), s.app},
                     {QStringLiteral("format"), qint64(s.format)},
                     {QStringLiteral("savedAt"), s.savedAt.toUTC().toString(QStringLiteral("yyyy-MM-dd'T'HH:mm:ss'Z'"))},
                     {QStringLiteral("timers"), entries}};
    if (s.style)
        root.insert(QStringLiteral("style"), *s.style);
    return QJsonDocument(root).toJson(QJsonDocument::Indented);
}

// A file in the layout this program writes, two timers, with raw JSON text for some values.
QByteArray laidOut(const QByteArray &seconds, const QByteArray &name = "\"a\"", const QByteArray &secondId = "F0E1D2C3-B4A5-4697-8877-665544332211",
                   const QByteArray &savedAtText = "2026-11-15T19:53:23Z", const QByteArray &format = "1")
{
    return "{\n    \"app\": \"Tock\",\n    \"format\": " + format + ",\n    \"savedAt\": \"" + savedAtText
           + "\",\n    \"style\": \"amber\",\n    \"timers\": [\n"
             "        {\n            \"id\": \"0B6F5C3E-8D1A-4C2B-9E7F-1A2B3C4D5E6F\",\n            \"name\": " + name
           + ",\n            \"seconds\": " + seconds + ",\n            \"wasRunning\": true\n        },\n"
             "        {\n            \"id\": \"" + secondId + "\",\n            \"name\": \"b\",\n            \"seconds\": 3,\n"
             "            \"wasRunning\": false\n        }\n    ]\n}\n";
}

// A document of format 1 with the other members given as raw JSON text.
QByteArray members(const QByteArray &rest) { return "{\"app\": \"Tock\", \"format\": 1, " + rest + "}"; }

} // namespace

class SnapshotTest : public QObject {
    Q_OBJECT
private slots:
    // The layout is the document writer's (below); what it cannot write it refuses by name.
    void encoding()
    {
        QCOMPARE(Snapshot::decode(laidOut("1.25")).encoded(), laidOut("1.25"));
        Snapshot s = sample(QStringLiteral("gameboy"));
        s.savedAt = QDateTime();
        QCOMPARE(failure([&] { s.encoded(); }), QStringLiteral("\"savedAt\" is not a valid date-time"));
        s = sample(std::nullopt);
        s.timers[1].seconds = std::nan("");
        QCOMPARE(failure([&] { s.encoded(); }), QStringLiteral("\"timers\"[1] \"seconds\" is not a finite number"));
    }

    void encodesAsTheDocumentWriter_data()
    {
        table<QString, QString, double, int>({"case", "name", "seconds", "count"}, {
            {"no timers", QString(), 0.0, 0},
            {"plain", QStringLiteral("Write ~ report {1}"), 1.25, 3},
            {"escapes", QStringLiteral("a\"b\\c/d\te\nf\x01g\x7f"), 0.1, 2},
            {"other scripts", QStringLiteral("日本 ☕ \U0001F600 é"), 1e-7, 2},
            {"lone surrogate", QString(QChar(0xD800)), 123456789.123, 1},
            {"whole large", QStringLiteral("x"), double(HMS::maxSeconds), 2},
            {"tiny", QStringLiteral("x"), 5e-324, 1},
            {"huge", QStringLiteral("x"), 1e300, 1},
            {"2^53+2", QStringLiteral("x"), 9007199254740994.0, 1},
            {"negative zero", QStringLiteral("x"), -0.0, 1},
        });
    }
    void encodesAsTheDocumentWriter()
    {
        QFETCH(QString, name);
        QFETCH(double, seconds);
        QFETCH(int, count);
        for (const std::optional<QString> &style : {std::optional<QString>(), std::optional<QString>(name)}) {
            Snapshot s;
            s.savedAt = savedAt;
            s.style = style;
            for (int i = 0; i < count; ++i)
                s.timers.append({QUuid::createUuid(), name, seconds * i, i % 2 == 1});
            QCOMPARE(s.encoded(), treeEncoded(s));
        }
    }

    // A file laid out as this program writes it is read without a document tree; with one more
    // space at its end it takes the general path. Both must agree on every value and error.
    void theWrittenLayoutReadsAsAnyDocument_data()
    {
        const QByteArray plain = laidOut("1.25");
        table<QString, QByteArray>({"case", "data"}, {
            {"plain", plain},
            {"no style", QByteArray(plain).replace("    \"style\": \"amber\",\n", "")},
            {"no timers", QByteArray(plain).left(plain.indexOf("[\n") + 2) + "    ]\n}\n"},
            {"truncated", plain.chopped(3)},
            {"exponent", laidOut("1e-07")},
            {"long integer", laidOut("12345678901234567")},
            {"long fraction", laidOut("0.10000000000000000555")},
            {"overflow", laidOut("1e400")},
            {"underflow", laidOut("1e-400")},
            {"leading zero", laidOut("01")},
            {"bare point", laidOut("1.")},
            {"negative zero", laidOut("-0")},
            {"too large", laidOut("360000000")},
            {"string seconds", laidOut("\"1\"")},
            {"escaped name", laidOut("1", "\"a\\\"\\u00e9\"")},
            {"UTF-8 name", laidOut("1", "\"\xc3\xa9\"")},
            {"invalid UTF-8", laidOut("1", "\"\xff\"")},
            {"raw tab", laidOut("1", "\"a\tb\"")},
            {"lower-case id", laidOut("1", "\"a\"", "f0e1d2c3-b4a5-4697-8877-665544332211")},
            {"bad id", laidOut("1", "\"a\"", "F0E1D2C3-B4A5-4697-8877-66554433221")},
            {"repeated id", laidOut("1", "\"a\"", "0B6F5C3E-8D1A-4C2B-9E7F-1A2B3C4D5E6F")},
            {"bad date", laidOut("1", "\"a\"", "F0E1D2C3-B4A5-4697-8877-665544332211", "2026-13-01T00:00:00Z")},
            {"offset date", laidOut("1", "\"a\"", "F0E1D2C3-B4A5-4697-8877-665544332211", "2026-11-15T19:53:23+02:00")},
            {"format 2", laidOut("1", "\"a\"", "F0E1D2C3-B4A5-4697-8877-665544332211", "2026-11-15T19:53:23Z", "2")},
            {"fractional format", laidOut("1", "\"a\"", "F0E1D2C3-B4A5-4697-8877-665544332211", "2026-11-15T19:53:23Z", "1.0")},
        });
    }
    void theWrittenLayoutReadsAsAnyDocument()
    {
        QFETCH(QByteArray, data);
        const auto decoded = [](const QByteArray &bytes) -> std::variant<Snapshot, QString> {
            try {
                return Snapshot::decode(bytes);
            } catch (const StoreError &e) {
                // The added space moves where a syntax error is found.
                return e.description().remove(QRegularExpression(QStringLiteral(" at byte \\d+$")));
            }
        };
        const auto laid = decoded(data), general = decoded(data + ' ');
        QCOMPARE(laid, general);
        if (const Snapshot *s = std::get_if<Snapshot>(&laid); s && !s->timers.isEmpty())
            QCOMPARE(std::signbit(s->timers.first().seconds), std::signbit(std::get<Snapshot>(general).timers.first().seconds));
    }

    void buildsFromABoardAndBack()
    {
        const Instant now = savedInstant + 0.999;
        const QUuid idC = QUuid::createUuid(), idD = QUuid::createUuid();
        const Board board({{idA, QStringLiteral("long run"), HMS::maxSeconds - 10.0, now - 3600},
                           {idB, QStringLiteral("future"), 42.5, now + 100},
                           {idC, QStringLiteral("paused"), 7.75, std::nullopt}});
        const Snapshot s(board, QStringLiteral("amber"), now);
        QCOMPARE(s.timers, (QList<Snapshot::Entry>{{idA, QStringLiteral("long run"), 3599999, true},
                                                   {idB, QStringLiteral("future"), 42.5, true},
                                                   {idC, QStringLiteral("paused"), 7.75, false}}));
        Snapshot back = Snapshot::decode(s.encoded());
        QCOMPARE(back.savedAt, savedAt);  // whole seconds only
        back.savedAt = s.savedAt;
        QCOMPARE(back, s);
        // Loading restarts nothing, and a stored -0 must not show as a negative time.
        back.timers.append({idD, QStringLiteral("negative zero"), -0.0, true});
        const Board loaded = back.board();
        QCOMPARE(loaded, Board({{idA, QStringLiteral("long run"), 3599999, std::nullopt}, {idB, QStringLiteral("future"), 42.5, std::nullopt},
                                {idC, QStringLiteral("paused"), 7.75, std::nullopt}, {idD, QStringLiteral("negative zero"), 0, std::nullopt}}));
        QVERIFY(!std::signbit(loaded.timers.last().accumulated));
    }

    void decodeChecks_data()
    {
        const QString implausible = QStringLiteral("Implausible timer values");
        const QString notADate = QStringLiteral("\"savedAt\" should be an ISO 8601 date-time such as 2026-11-15T19:53:23Z but is ");
        table<QString, QByteArray, QString>({"case", "data", "outcome"}, {
            {"valid", document(), ""},
            {"hand-edited", members("\"savedAt\": \"2026-11-15T20:53:23+01:00\", \"style\": null, \"extra\": {\"a\": [1]}, \"timers\": [{\"id\": \"0b6f5c3e-8d1a-4c2b-9e7f-1a2b3c4d5e6f\", \"name\": \"\", \"seconds\": 0, \"wasRunning\": true, \"colour\": \"red\"}]"), ""},
            {"the limit", document("1", "\"Tock\"", "3599999"), ""},
            {"over the limit", document("1", "\"Tock\"", "3599999.5"), implausible},
            {"same id twice", document("1", "\"Tock\"", "1", "0b6f5c3e-8d1a-4c2b-9e7f-1a2b3c4d5e6f"), implausible},
            {"format 2", document("2"), "Unsupported file format 2"},
            {"foreign app", document("1", "\"Tick\""), "Unsupported file format 1"},
            {"format before values", document("7", "\"Tock\"", "-5"), "Unsupported file format 7"},
            {"format as text", document("\"1\""), "\"format\" should be an integer but is a string"},
            {"fractional format", document("1.5"), "\"format\" should be a whole number that fits in 64 bits but is 1.5"},
            {"seconds as text", document("1", "\"Tock\"", "\"12\""), "\"timers\"[0] \"seconds\" should be a number but is a string"},
            {"bad uuid", document("1", "\"Tock\"", "1", "not-a-uuid"), "\"timers\"[1] \"id\" should be a UUID but is \"not-a-uuid\""},
            {"missing key", members("\"timers\": []"), "\"savedAt\" is missing"},
            {"date with fraction", members("\"savedAt\": \"2026-11-15T19:53:23.5Z\", \"timers\": []"), notADate + "\"2026-11-15T19:53:23.5Z\""},
            {"entry not an object", members("\"savedAt\": \"2026-11-15T19:53:23Z\", \"timers\": [3]"), "\"timers\"[0] should be an object but is a number"},
            {"style not text", members("\"savedAt\": \"2026-11-15T19:53:23Z\", \"style\": 3, \"timers\": []"), "\"style\" should be a string but is a number"},
            {"array document", QByteArray("[]"), "the document should be an object but is an array"},
            {"empty file", QByteArray(), "illegal value at byte 0"},
        });
    }
    void decodeChecks()
    {
        QFETCH(QByteArray, data);
        QTEST(failure([&] { Snapshot::decode(data); }), "outcome");
    }
};

QTEST_GUILESS_MAIN(SnapshotTest)
#include "snapshot_test.moc"
