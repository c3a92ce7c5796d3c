#include "snapshot.h"
#include "timevalues.h"

#include <QJsonDocument>
#include <QTest>
#include <QTimeZone>

#include <cmath>
#include <limits>

using namespace tock;

namespace {

const QUuid idA = QUuid::fromString(QStringLiteral("0b6f5c3e-8d1a-4c2b-9e7f-1a2b3c4d5e6f"));
const QUuid idB = QUuid::fromString(QStringLiteral("f0e1d2c3-b4a5-4697-8877-665544332211"));

// 2026-11-15T19:53:23Z
constexpr Instant savedInstant = 1794772403;

QDateTime utc(qint64 secs) { return QDateTime::fromSecsSinceEpoch(secs, QTimeZone::utc()); }

Snapshot sample(std::optional<QString> style)
{
    Snapshot s;
    s.savedAt = utc(qint64(savedInstant));
    s.style = std::move(style);
    s.timers = {{idA, QStringLiteral("Écriture \"draft\""), 90.25, true}, {idB, QString(), 0, false}};
    return s;
}

// A valid document with one field replaced by raw JSON text.
QByteArray document(const QByteArray &format = "1", const QByteArray &app = "\"Tock\"",
                    const QByteArray &seconds = "12.5", const QByteArray &secondId = "")
{
    QByteArray timers = "{\"id\": \"0B6F5C3E-8D1A-4C2B-9E7F-1A2B3C4D5E6F\", \"name\": \"a\", "
                        "\"seconds\": " + seconds + ", \"wasRunning\": false}";
    if (!secondId.isEmpty())
        timers += ", {\"id\": \"" + secondId + "\", \"name\": \"b\", \"seconds\": 1, \"wasRunning\": true}";
    return "{\"app\": " + app + ", \"format\": " + format
           + ", \"savedAt\": \"2026-11-15T19:53:23Z\", \"timers\": [" + timers + "]}";
}

QString decodeFailure(const QByteArray &data)
{
    try {
        Snapshot::decode(data);
    } catch (const StoreError &e) {
        return QStringLiteral("store: ") + e.description();
    } catch (const JsonError &e) {
        return QStringLiteral("json: ") + e.description;
    }
    return QStringLiteral("decoded");
}

} // namespace

class SnapshotTest : public QObject {
    Q_OBJECT
private slots:
    void encodesTheExactFileText()
    {
        const QByteArray expected =
            "{\n"
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
        QCOMPARE(sample(QStringLiteral("gameboy")).encoded(), expected);
    }

    void leavesOutAnAbsentStyle()
    {
        const QByteArray bytes = sample(std::nullopt).encoded();
        QVERIFY(!bytes.contains("style"));
        QCOMPARE(Snapshot::decode(bytes).style, std::nullopt);
    }

    void dropsFractionsOfASecondFromTheDate()
    {
        Snapshot s = sample(std::nullopt);
        s.savedAt = QDateTime::fromMSecsSinceEpoch(qint64(savedInstant) * 1000 + 999, QTimeZone::utc());
        QVERIFY(s.encoded().contains("\"savedAt\": \"2026-11-15T19:53:23Z\""));
    }

    void refusesToEncodeWhatJsonCannotCarry()
    {
        Snapshot s = sample(std::nullopt);
        s.timers[1].seconds = std::numeric_limits<double>::quiet_NaN();
        QVERIFY_THROWS_EXCEPTION(JsonError, s.encoded());
        QVERIFY_THROWS_EXCEPTION(JsonError, Snapshot().encoded());
    }

    void buildsFromABoardClampingOnWrite()
    {
        const Instant now = savedInstant;
        Board board({
            {idA, QStringLiteral("long run"), HMS::maxSeconds - 10.0, now - 3600},   // over the limit
            {idB, QStringLiteral("future"), 42.5, now + 100},                        // start after now
            {QUuid::createUuid(), QStringLiteral("paused"), 7.75, std::nullopt},
            {QUuid::createUuid(), QStringLiteral("running"), 1, now - 2.5},
        });
        const Snapshot s(board, QStringLiteral("amber"), now);
        QCOMPARE(s.format, 1);
        QCOMPARE(s.app, QStringLiteral("Tock"));
        QCOMPARE(s.savedAt, utc(qint64(now)));
        QCOMPARE(s.style, QStringLiteral("amber"));
        QCOMPARE(s.timers.size(), 4);
        QCOMPARE(s.timers[0], (Snapshot::Entry{idA, QStringLiteral("long run"), 3599999, true}));
        QCOMPARE(s.timers[1], (Snapshot::Entry{idB, QStringLiteral("future"), 42.5, true}));
        QCOMPARE(s.timers[2].seconds, 7.75);
        QCOMPARE(s.timers[2].wasRunning, false);
        QCOMPARE(s.timers[3].seconds, 3.5);
        // What is written always reads back.
        QCOMPARE(Snapshot::decode(s.encoded()), s);
    }

    void aSavedBoardComesBackPausedAtItsShownTimes()
    {
        Board board;
        const QUuid a = board.add().id, b = board.add(QStringLiteral("Focus")).id;
        board.add();
        board.toggle(a, 1000);
        board.toggle(b, 1000);
        board.toggle(b, 1100.5);
        board.pauseAll(1200);
        board.toggle(a, 1300);
        const Instant now = 1345;
        const Board loaded = Snapshot::decode(Snapshot(board, std::nullopt, now).encoded()).board();
        QCOMPARE(loaded.timers.size(), 3);
        for (qsizetype i = 0; i < 3; ++i) {
            QCOMPARE(loaded.timers[i].id, board.timers[i].id);
            QCOMPARE(loaded.timers[i].name, board.timers[i].name);
            QCOMPARE(loaded.timers[i].accumulated, board.timers[i].elapsed(now));
        }
        QVERIFY(!loaded.anyRunning());
        QCOMPARE(loaded.epoch(), 0);
    }

    void rebuildsABoardWithEveryTimerPaused()
    {
        Snapshot s = sample(std::nullopt);
        s.timers.append({QUuid::createUuid(), QStringLiteral("neg zero"), -0.0, true});
        const Board board = s.board();
        QCOMPARE(board.timers.size(), 3);
        QVERIFY(board.pauseHistory.isEmpty());
        for (qsizetype i = 0; i < board.timers.size(); ++i) {
            QCOMPARE(board.timers[i].id, s.timers[i].id);
            QCOMPARE(board.timers[i].name, s.timers[i].name);
            QCOMPARE(board.timers[i].accumulated, s.timers[i].seconds);
            QVERIFY(!board.timers[i].startedAt);
        }
        QVERIFY(!std::signbit(board.timers[2].accumulated));
    }

    void decodeChecks_data()
    {
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<QString>("outcome");
        const QString implausible = QStringLiteral("store: Implausible timer values");
        QTest::newRow("valid") << document() << "decoded";
        QTest::newRow("the limit") << document("1", "\"Tock\"", "3599999") << "decoded";
        QTest::newRow("negative zero") << document("1", "\"Tock\"", "-0.0") << "decoded";
        QTest::newRow("over the limit") << document("1", "\"Tock\"", "3599999.5") << implausible;
        QTest::newRow("negative") << document("1", "\"Tock\"", "-1") << implausible;
        QTest::newRow("format 2") << document("2") << "store: Unsupported file format 2";
        QTest::newRow("foreign app") << document("1", "\"Tick\"") << "store: Unsupported file format 1";
        QTest::newRow("format checked before values")
            << document("7", "\"Tock\"", "-5") << "store: Unsupported file format 7";
        QTest::newRow("same id twice")
            << document("1", "\"Tock\"", "1", "0b6f5c3e-8d1a-4c2b-9e7f-1a2b3c4d5e6f") << implausible;
        QTest::newRow("distinct ids")
            << document("1", "\"Tock\"", "1", "F0E1D2C3-B4A5-4697-8877-665544332211") << "decoded";
        QTest::newRow("values checked before ids")
            << document("1", "\"Tock\"", "-1", "0B6F5C3E-8D1A-4C2B-9E7F-1A2B3C4D5E6F") << implausible;
        QTest::newRow("format as text")
            << document("\"1\"") << "json: \"format\" should be an integer but is a string";
        QTest::newRow("fractional format")
            << document("1.5") << "json: \"format\" should be a whole number that fits in 64 bits but is 1.5";
        QTest::newRow("seconds as text")
            << document("1", "\"Tock\"", "\"12\"") << "json: \"timers\"[0] \"seconds\" should be a number but is a string";
        QTest::newRow("bad uuid")
            << document("1", "\"Tock\"", "1", "not-a-uuid")
            << "json: \"timers\"[1] \"id\" should be a UUID but is \"not-a-uuid\"";
        QTest::newRow("braced uuid")
            << document("1", "\"Tock\"", "1", "{F0E1D2C3-B4A5-4697-8877-665544332211}")
            << "json: \"timers\"[1] \"id\" should be a UUID but is \"{F0E1D2C3-B4A5-4697-8877-665544332211}\"";
        QTest::newRow("missing key")
            << QByteArray("{\"app\": \"Tock\", \"format\": 1, \"timers\": []}") << "json: \"savedAt\" is missing";
        QTest::newRow("date with fraction")
            << QByteArray("{\"app\": \"Tock\", \"format\": 1, \"savedAt\": \"2026-11-15T19:53:23.5Z\", \"timers\": []}")
            << "json: \"savedAt\" should be an ISO 8601 date-time such as 2026-11-15T19:53:23Z but is "
               "\"2026-11-15T19:53:23.5Z\"";
        QTest::newRow("month 13")
            << QByteArray("{\"app\": \"Tock\", \"format\": 1, \"savedAt\": \"2026-13-15T19:53:23Z\", \"timers\": []}")
            << "json: \"savedAt\" should be an ISO 8601 date-time such as 2026-11-15T19:53:23Z but is "
               "\"2026-13-15T19:53:23Z\"";
        QTest::newRow("entry not an object")
            << QByteArray("{\"app\": \"Tock\", \"format\": 1, \"savedAt\": \"2026-11-15T19:53:23Z\", \"timers\": [3]}")
            << "json: \"timers\"[0] should be an object but is a number";
        QTest::newRow("style not text")
            << QByteArray("{\"app\": \"Tock\", \"format\": 1, \"savedAt\": \"2026-11-15T19:53:23Z\", "
                          "\"style\": 3, \"timers\": []}")
            << "json: \"style\" should be a string but is a number";
        QTest::newRow("array document") << QByteArray("[]") << "json: the document should be an object but is an array";
        QTest::newRow("empty file") << QByteArray() << "json: illegal value at byte 0";
        QTest::newRow("truncated") << document().left(20) << "json: unterminated string at byte 21";
    }
    void decodeChecks()
    {
        QFETCH(QByteArray, data);
        QFETCH(QString, outcome);
        QCOMPARE(decodeFailure(data), outcome);
    }

    void decodesWhatOtherWritersMayProduce()
    {
        // A null style, an offset date, lower-case ids, unknown keys, an empty list.
        const Snapshot s = Snapshot::decode(
            "{\"app\": \"Tock\", \"format\": 1, \"savedAt\": \"2026-11-15T20:53:23+01:00\", \"style\": null,"
            " \"extra\": {\"nested\": [1, 2]}, \"timers\": [{\"id\": \"0b6f5c3e-8d1a-4c2b-9e7f-1a2b3c4d5e6f\","
            " \"name\": \"\", \"seconds\": 0, \"wasRunning\": true, \"colour\": \"red\"}]}");
        QCOMPARE(s.savedAt, utc(qint64(savedInstant)));
        QCOMPARE(s.style, std::nullopt);
        QCOMPARE(s.timers, (QList<Snapshot::Entry>{{idA, QString(), 0, true}}));
        QCOMPARE(Snapshot::decode("{\"app\": \"Tock\", \"format\": 1, \"savedAt\": \"2026-11-15T19:53:23Z\","
                                  " \"timers\": []}").timers.size(),
                 0);
    }

    void survivesAFileCutAtEveryByte()
    {
        const QByteArray full = sample(QStringLiteral("classic")).encoded();
        for (qsizetype n = 0; n < full.size(); ++n) {
            const QString outcome = decodeFailure(full.left(n));
            // Only the closing newline may go without losing anything.
            if (n == full.size() - 1)
                QCOMPARE(outcome, QStringLiteral("decoded"));
            else
                QVERIFY2(outcome.startsWith(QLatin1String("json: ")), qPrintable(QString::number(n) + outcome));
        }
    }
};

QTEST_GUILESS_MAIN(SnapshotTest)
#include "snapshot_test.moc"
