#include "faultyfilesystem.h"
#include "snapshot.h"
#include "timevalues.h"

#include <QTest>
#include <QTimeZone>

#include <cmath>

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

// A document of format 1 with the other members given as raw JSON text.
QByteArray members(const QByteArray &rest) { return "{\"app\": \"Tock\", \"format\": 1, " + rest + "}"; }

} // namespace

class SnapshotTest : public QObject {
    Q_OBJECT
private slots:
    void encodesTheExactFileText()
    {
        QByteArray expected = "{\n"
                              "    \"app\": \"Tock\",\n"
                              "    \"format\": 1,\n"
                              "    \"savedAt\": \"2026-11-15T19:53:23Z\",\n"
                              "    \"style\": \"gameboy\",\n"
                              "    \"timers\": [\n"
                              "        {\n"
                              "            \"id\": \"0B6F5C3E-8D1A-4C2B-9E7F-1A2B3C4D5E6F\",\n"
                              "            \"name\": \"\xc3\x89" "criture \\\"draft\\\"\",\n"
                              "            \"seconds\": 90.25,\n"
                              "            \"wasRunning\": true\n"
                              "        },\n"
                              "        {\n"
                              "            \"id\": \"F0E1D2C3-B4A5-4697-8877-665544332211\",\n"
                              "            \"name\": \"\",\n"
                              "            \"seconds\": 0,\n"
                              "            \"wasRunning\": false\n"
                              "        }\n"
                              "    ]\n"
                              "}\n";
        Snapshot s = sample(QStringLiteral("gameboy"));
        QCOMPARE(s.encoded(), expected);
        QCOMPARE(Snapshot::decode(expected), s);
        s.style.reset();
        expected.replace("    \"style\": \"gameboy\",\n", "");
        QCOMPARE(s.encoded(), expected);
        QCOMPARE(Snapshot::decode(expected), s);
        s.savedAt = QDateTime();
        QCOMPARE(failure([&] { s.encoded(); }), QStringLiteral("\"savedAt\" is not a valid date-time"));
        s = sample(std::nullopt);
        s.timers[1].seconds = std::nan("");
        QCOMPARE(failure([&] { s.encoded(); }), QStringLiteral("\"timers\"[1] \"seconds\" is not a finite number"));
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
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<QString>("outcome");
        const QString implausible = QStringLiteral("Implausible timer values");
        const QString notADate = QStringLiteral("\"savedAt\" should be an ISO 8601 date-time such as 2026-11-15T19:53:23Z but is ");
        // clang-format off
        QTest::newRow("valid") << document() << "";
        QTest::newRow("hand-edited") << members("\"savedAt\": \"2026-11-15T20:53:23+01:00\", \"style\": null, \"extra\": {\"a\": [1]}, \"timers\": [{\"id\": \"0b6f5c3e-8d1a-4c2b-9e7f-1a2b3c4d5e6f\", \"name\": \"\", \"seconds\": 0, \"wasRunning\": true, \"colour\": \"red\"}]") << "";
        QTest::newRow("the limit") << document("1", "\"Tock\"", "3599999") << "";
        QTest::newRow("over the limit") << document("1", "\"Tock\"", "3599999.5") << implausible;
        QTest::newRow("negative") << document("1", "\"Tock\"", "-1") << implausible;
        QTest::newRow("same id twice") << document("1", "\"Tock\"", "1", "0b6f5c3e-8d1a-4c2b-9e7f-1a2b3c4d5e6f") << implausible;
        QTest::newRow("format 2") << document("2") << "Unsupported file format 2";
        QTest::newRow("foreign app") << document("1", "\"Tick\"") << "Unsupported file format 1";
        QTest::newRow("format before values") << document("7", "\"Tock\"", "-5") << "Unsupported file format 7";
        QTest::newRow("format as text") << document("\"1\"") << "\"format\" should be an integer but is a string";
        QTest::newRow("fractional format") << document("1.5") << "\"format\" should be a whole number that fits in 64 bits but is 1.5";
        QTest::newRow("seconds as text") << document("1", "\"Tock\"", "\"12\"") << "\"timers\"[0] \"seconds\" should be a number but is a string";
        QTest::newRow("bad uuid") << document("1", "\"Tock\"", "1", "not-a-uuid") << "\"timers\"[1] \"id\" should be a UUID but is \"not-a-uuid\"";
        QTest::newRow("braced uuid") << document("1", "\"Tock\"", "1", "{F0E1D2C3-B4A5-4697-8877-665544332211}") << "\"timers\"[1] \"id\" should be a UUID but is \"{F0E1D2C3-B4A5-4697-8877-665544332211}\"";
        QTest::newRow("missing key") << members("\"timers\": []") << "\"savedAt\" is missing";
        QTest::newRow("date with fraction") << members("\"savedAt\": \"2026-11-15T19:53:23.5Z\", \"timers\": []") << notADate + "\"2026-11-15T19:53:23.5Z\"";
        QTest::newRow("month 13") << members("\"savedAt\": \"2026-13-15T19:53:23Z\", \"timers\": []") << notADate + "\"2026-13-15T19:53:23Z\"";
        QTest::newRow("entry not an object") << members("\"savedAt\": \"2026-11-15T19:53:23Z\", \"timers\": [3]") << "\"timers\"[0] should be an object but is a number";
        QTest::newRow("style not text") << members("\"savedAt\": \"2026-11-15T19:53:23Z\", \"style\": 3, \"timers\": []") << "\"style\" should be a string but is a number";
        QTest::newRow("array document") << QByteArray("[]") << "the document should be an object but is an array";
        QTest::newRow("empty file") << QByteArray() << "illegal value at byte 0";
        // clang-format on
    }
    void decodeChecks()
    {
        QFETCH(QByteArray, data);
        QFETCH(QString, outcome);
        QCOMPARE(failure([&] { Snapshot::decode(data); }), outcome);
    }
};

QTEST_GUILESS_MAIN(SnapshotTest)
#include "snapshot_test.moc"
