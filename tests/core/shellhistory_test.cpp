#include "shellhistory.h"

#include <QTest>

using namespace tock;

class ShellHistoryTest : public QObject {
    Q_OBJECT
private slots:
    void construction_data()
    {
        QTest::addColumn<QStringList>("given");
        QTest::addColumn<int>("limit");
        QTest::addColumn<QStringList>("kept");
        QTest::newRow("newest kept") << QStringList{"a", "b", "c", "d"} << 2 << QStringList{"c", "d"};
        QTest::newRow("limit zero") << QStringList{"a"} << 0 << QStringList{};
    }
    void construction()
    {
        QFETCH(QStringList, given);
        QFETCH(int, limit);
        QFETCH(QStringList, kept);
        const ShellHistory history(given, limit);
        QCOMPARE(history.entries(), kept);
        QCOMPARE(history.limit(), qsizetype(limit));
    }

    void defaultLimit() { QCOMPARE(ShellHistory().limit(), qsizetype(50)); }

    void record_data()
    {
        QTest::addColumn<QStringList>("lines");
        QTest::addColumn<int>("limit");
        QTest::addColumn<QStringList>("entries");
        QTest::newRow("repeat stored once") << QStringList{"ls", "ls", "  ls  "} << 50 << QStringList{"ls"};
        QTest::newRow("older repeat kept") << QStringList{"ls", "pwd", "ls"} << 50
                                           << QStringList{"ls", "pwd", "ls"};
        QTest::newRow("blank lines dropped") << QStringList{"", " \t ", "x"} << 50 << QStringList{"x"};
        QTest::newRow("spaces and tabs trimmed") << QStringList{"\tadd  x \t"} << 50
                                                 << QStringList{"add  x"};
        QTest::newRow("line breaks kept") << QStringList{"a\n", "\na"} << 50 << QStringList{"a\n", "\na"};
        QTest::newRow("oldest dropped") << QStringList{"a", "b", "c"} << 2 << QStringList{"b", "c"};
        QTest::newRow("limit zero") << QStringList{"a"} << 0 << QStringList{};
    }
    void record()
    {
        QFETCH(QStringList, lines);
        QFETCH(int, limit);
        QFETCH(QStringList, entries);
        ShellHistory history({}, limit);
        for (const QString &line : lines)
            history.record(line);
        QCOMPARE(history.entries(), entries);
    }

    void fiftyFirstLinePushesOutTheFirst()
    {
        ShellHistory history;
        for (int i = 1; i <= 51; ++i)
            history.record(QStringLiteral("line %1").arg(i));
        QCOMPARE(history.entries().size(), 50);
        QCOMPARE(history.entries().first(), QString("line 2"));
        QCOMPARE(history.entries().last(), QString("line 51"));
    }

    // Steps: "u:<current>" up, "d:<current>" down, "r:<line>" record, "x" reset browsing.
    // Each up/down step is followed in `results` by what it returned.
    void browsing_data()
    {
        QTest::addColumn<QStringList>("entries");
        QTest::addColumn<QStringList>("steps");
        QTest::addColumn<QStringList>("results");
        const QStringList abc{"a", "b", "c"};
        QTest::newRow("draft comes back") << abc << QStringList{"u:new", "u:c", "d:b", "d:c", "d:z"}
                                          << QStringList{"c", "b", "c", "new", "z"};
        QTest::newRow("stays at the oldest") << abc << QStringList{"u:", "u:", "u:", "u:", "d:"}
                                             << QStringList{"c", "b", "a", "a", "b"};
        QTest::newRow("no entries") << QStringList{} << QStringList{"u:x", "d:y"}
                                    << QStringList{"x", "y"};
        QTest::newRow("down when idle") << abc << QStringList{"d:typed"} << QStringList{"typed"};
        QTest::newRow("blank record ends browsing") << abc << QStringList{"u:t", "r: ", "d:now"}
                                                    << QStringList{"c", "now"};
        QTest::newRow("record then browse") << abc << QStringList{"u:t", "r:d", "u:e", "d:d"}
                                            << QStringList{"c", "d", "e"};
        QTest::newRow("reset keeps draft until next up")
            << abc << QStringList{"u:one", "x", "d:z", "u:two", "d:c"}
            << QStringList{"c", "z", "c", "two"};
        QTest::newRow("reset then up starts at newest") << abc << QStringList{"u:", "u:", "x", "u:"}
                                                        << QStringList{"c", "b", "c"};
    }
    void browsing()
    {
        QFETCH(QStringList, entries);
        QFETCH(QStringList, steps);
        QFETCH(QStringList, results);
        ShellHistory history(entries);
        QStringList returned;
        for (const QString &step : steps) {
            const QString arg = step.mid(2);
            if (step.startsWith(u"u:"))
                returned.append(history.up(arg));
            else if (step.startsWith(u"d:"))
                returned.append(history.down(arg));
            else if (step.startsWith(u"r:"))
                history.record(arg);
            else
                history.resetBrowsing();
        }
        QCOMPARE(returned, results);
    }

    void equalityIncludesBrowsingState()
    {
        ShellHistory one({"a", "b"});
        ShellHistory two({"a", "b"});
        QVERIFY(one == two);
        one.up("draft");
        QVERIFY(one != two);
        two.up("other draft");
        QVERIFY(one != two); // same position, different draft
        two.resetBrowsing();
        two.up("draft");
        QVERIFY(one == two);
    }
};

QTEST_APPLESS_MAIN(ShellHistoryTest)
#include "shellhistory_test.moc"
