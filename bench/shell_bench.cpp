// How fast the prompt's text work is: tokenize+parse of typical lines and of a 100 KB line,
// and completion against a thousand timer names.
#include "shell.h"
#include "text.h"

#include <QTest>

using namespace tock;

namespace {

// About 100 KB: many plain words, or the same text inside one quoted run.
QString longLine(bool quoted)
{
    QString words;
    while (words.size() < 100 * 1024)
        words += QStringLiteral("lunch break caf\u00E9 ");
    return QStringLiteral("add ") + (quoted ? QStringLiteral("\"") + words + QStringLiteral("\"") : words);
}

QStringList thousandNames()
{
    QStringList names;
    for (int i = 0; i < 1000; ++i)
        names.append(QStringLiteral("Project %1 review").arg(i, 4, 10, QLatin1Char('0')));
    return names;
}

const QStringList styles{"classic", "color", "gameboy", "braun", "amber", "flap", "shell"};

} // namespace

class ShellBench : public QObject {
    Q_OBJECT
private slots:
    void parseLine_data()
    {
        QTest::addColumn<QString>("line");
        QTest::newRow("start 1") << "start 1";
        QTest::newRow("rename quoted") << "rename 2 \"Deep  work\"";
        QTest::newRow("set units") << "set Design +1h30m";
        QTest::newRow("set colon") << "set 3 1:30:00";
        QTest::newRow("add words") << "add my new timer";
        QTest::newRow("100 KB words") << longLine(false);
        QTest::newRow("100 KB quoted") << longLine(true);
    }
    void parseLine()
    {
        QFETCH(QString, line);
        QBENCHMARK {
            const auto command = Shell::parse(line);
            QVERIFY(command.has_value());
        }
    }

    // The floor under the tokenizer: walking the clusters of the same 100 KB line.
    void graphemeWalk()
    {
        const QString line = longLine(false);
        QBENCHMARK {
            QVERIFY(Text::graphemeCount(line) > 0);
        }
    }

    void complete_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<bool>("completes");
        QTest::newRow("command word") << "ren" << true;
        QTest::newRow("all thousand match") << "rm pro" << true;
        QTest::newRow("ten match, nothing to add") << "rm \"project 012\"" << false;
        QTest::newRow("one matches") << "rm \"project 0999\"" << true;
        QTest::newRow("none match") << "rm zzz" << false;
    }
    void complete()
    {
        QFETCH(QString, line);
        QFETCH(bool, completes);
        const QStringList names = thousandNames();
        QBENCHMARK {
            QCOMPARE(Shell::complete(line, names, styles).has_value(), completes);
        }
    }
};

QTEST_APPLESS_MAIN(ShellBench)
#include "shell_bench.moc"
