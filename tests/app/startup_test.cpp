// Start-up without windows: the command-line switches and their argument rules, the model's
// starting values for each load result, and the launch and ending over a temporary data folder.
#include "snapshot.h"
#include "startup.h"
#include "virtualservices.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace tock;

namespace {

QString describe(const StartupMode &mode)
{
    return std::visit(
        [](const auto &m) -> QString {
            using M = std::decay_t<decltype(m)>;
            if constexpr (std::is_same_v<M, StartupMode::Bench>)
                return QStringLiteral("bench %1 %2 %3").arg(StyleIDs::rawValue(m.style)).arg(m.count).arg(m.value);
            else if constexpr (std::is_same_v<M, StartupMode::FlipDemo>)
                return QStringLiteral("flipdemo");
            else if constexpr (std::is_same_v<M, StartupMode::SelfTest>)
                return QStringLiteral("selftest");
            else if constexpr (std::is_same_v<M, StartupMode::Screenshots>)
                return QStringLiteral("screenshots ") + m.directory;
            else if constexpr (std::is_same_v<M, StartupMode::Shell>)
                return QStringLiteral("shell [") + m.lines.join(QStringLiteral("|")) + QLatin1Char(']');
            else
                return QStringLiteral("normal");
        },
        mode.value);
}

void writeFile(const QString &path, const QByteArray &data)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(data);
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

Snapshot snapshotOf(const QStringList &names, std::optional<QString> style)
{
    Board board;
    for (const QString &name : names)
        board.add(name);
    return Snapshot(board, std::move(style), 1'700'000'000);
}

QStringList namesOf(const Board &board)
{
    QStringList names;
    for (const TimerItem &timer : board.timers)
        names << timer.name;
    return names;
}

} // namespace

class StartupTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void switches_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("mode");
        QTest::newRow("none") << QStringList{} << "normal";
        QTest::newRow("unknown") << QStringList{"-psn_0_42"} << "normal";
        QTest::newRow("bench") << QStringList{"--bench", "classic", "10", "2.5"} << "bench classic 10 2.5";
        QTest::newRow("bench signed, exponent") << QStringList{"--bench", "flap", "-3", "1e2"} << "bench flap -3 100";
        QTest::newRow("bench word count") << QStringList{"--bench", "classic", "ten", "2.5"} << "normal";
        QTest::newRow("bench empty count") << QStringList{"--bench", "classic", "", "2.5"} << "normal";
        QTest::newRow("bench unknown style") << QStringList{"--bench", "nosuchstyle", "10", "2.5"} << "normal";
        QTest::newRow("bench display name") << QStringList{"--bench", "Neo Classic", "10", "2.5"} << "normal";
        QTest::newRow("bench bad number") << QStringList{"--bench", "classic", "10", "x"} << "normal";
        QTest::newRow("bench infinite") << QStringList{"--bench", "classic", "10", "inf"} << "normal";
        QTest::newRow("bench short") << QStringList{"--bench", "classic", "10"} << "normal";
        QTest::newRow("bench before selftest") << QStringList{"--selftest", "--bench", "amber", "1", "0"}
                                               << "bench amber 1 0";
        QTest::newRow("invalid bench, selftest") << QStringList{"--bench", "x", "1", "1", "--selftest"} << "selftest";
        QTest::newRow("flipdemo before selftest") << QStringList{"--selftest", "--flipdemo"} << "flipdemo";
        QTest::newRow("selftest before screenshots") << QStringList{"--screenshots", "out", "--selftest"}
                                                     << "selftest";
        QTest::newRow("screenshots") << QStringList{"--screenshots", "/tmp/shots"} << "screenshots /tmp/shots";
        QTest::newRow("screenshots last") << QStringList{"--screenshots"} << "normal";
        QTest::newRow("shell") << QStringList{"--shell"} << "shell []";
        QTest::newRow("shell lines") << QStringList{"--shell", "add A", "--selftest", "rm 1"}
                                     << "shell [add A|--selftest|rm 1]";
        QTest::newRow("switch before shell") << QStringList{"--selftest", "--shell", "help"} << "selftest";
        QTest::newRow("shell line not taken as a folder") << QStringList{"--screenshots", "--shell", "x"}
                                                          << "shell [x]";
    }

    void switches()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, mode);
        QCOMPARE(describe(StartupMode::parse(arguments)), mode);
    }

    void startingValues()
    {
        const Snapshot amber = snapshotOf({"A", "B"}, QStringLiteral("amber"));
        const StartingValues loaded = StartingValues::from({Store::LoadResult::Loaded{amber}}, false);
        QCOMPARE(loaded.board, amber.board());
        QCOMPARE(loaded.style, std::optional(StyleID::amber));
        QVERIFY(!loaded.notice);

        const Snapshot foreign = snapshotOf({"A"}, QStringLiteral("holographic"));
        QVERIFY(!StartingValues::from({Store::LoadResult::Loaded{foreign}}, false).style);

        const Store::LoadResult recovered{Store::LoadResult::Recovered{amber, "timers-2.json", {}}};
        const StartingValues restored = StartingValues::from(recovered, false);
        QCOMPARE(restored.board, amber.board());
        QCOMPARE(restored.style, std::optional(StyleID::amber));
        QCOMPARE(restored.notice, std::optional(StorageNotice::recovered("timers-2.json")));
        QCOMPARE(StartingValues::from(recovered, true).notice, std::optional(StorageNotice::saveFailed(archiveFailedMessage())));

        const StartingValues unreadable =
            StartingValues::from({Store::LoadResult::Unreadable{{"/d/timers.json"}, {"timers.json: bad"}}}, false);
        QVERIFY(unreadable.board.timers.isEmpty());
        QVERIFY(!unreadable.style);
        QCOMPARE(unreadable.notice, std::optional(StorageNotice::unreadable({"timers.json: bad"})));

        const StartingValues fresh = StartingValues::from({Store::LoadResult::Fresh{}}, false);
        QCOMPARE(namesOf(fresh.board), QStringList({"Timer 1", "Timer 2", "Timer 3"}));
        QVERIFY(!fresh.board.anyRunning());
        QVERIFY(!fresh.style && !fresh.notice);
    }

    void launchOnAnEmptyFolder()
    {
        QTemporaryDir root;
        const QString folder = root.filePath("data"); // not there yet
        VirtualServices virt;
        {
            AppSession app(folder, virt.services());
            QCOMPARE(app.start(), AppSession::Start::started);
            QVERIFY(app.lock().isHeld());
            QCOMPARE(namesOf(app.model()->board()), QStringList({"Timer 1", "Timer 2", "Timer 3"}));
            QVERIFY(!app.model()->notice());
            QVERIFY(!app.startingNotice());
            QVERIFY(app.model()->undoManager() == app.undoManager());
            app.model()->toggle(app.model()->board().timers.at(1).id);
            virt.clock->advance(5);
            app.end();
            QVERIFY(!app.lock().isHeld());
            QVERIFY(!app.model()->board().anyRunning());
        }
        const Snapshot saved = Snapshot::decode(readFile(folder + "/timers.json"));
        QCOMPARE(saved.timers.size(), 3);
        QCOMPARE(saved.timers.at(1).seconds, 5.0);
        QVERIFY(!saved.timers.at(1).wasRunning);
    }

    void launchLoadsAndRotatesOnce()
    {
        QTemporaryDir folder;
        const QByteArray data = snapshotOf({"Focus", "Mail"}, QStringLiteral("flap")).encoded();
        writeFile(folder.filePath("timers.json"), data);
        VirtualServices virt;
        AppSession app(folder.path(), virt.services());
        QCOMPARE(app.start(), AppSession::Start::started);
        QCOMPARE(namesOf(app.model()->board()), QStringList({"Focus", "Mail"}));
        QVERIFY(app.model()->style() == StyleID::flap);
        QVERIFY(!app.model()->notice());
        QCOMPARE(readFile(folder.filePath("Backups/timers-1.json")), data);
        QVERIFY(!QFile::exists(folder.filePath("Backups/timers-2.json")));
    }

    void launchRecoversFromABackup()
    {
        QTemporaryDir folder;
        writeFile(folder.filePath("timers.json"), "{ not json");
        writeFile(folder.filePath("Backups/timers-1.json"), snapshotOf({"Saved"}, std::nullopt).encoded());
        VirtualServices virt;
        AppSession app(folder.path(), virt.services());
        QCOMPARE(app.start(), AppSession::Start::started);
        QCOMPARE(namesOf(app.model()->board()), QStringList{"Saved"});
        QCOMPARE(app.model()->notice(), std::optional(StorageNotice::recovered("timers-1.json")));
        QCOMPARE(app.startingNotice(), app.model()->notice());
    }

    void launchKeepsUnreadableDataUntouched()
    {
        QTemporaryDir folder;
        writeFile(folder.filePath("timers.json"), "{ not json");
        VirtualServices virt;
        {
            AppSession app(folder.path(), virt.services());
            QCOMPARE(app.start(), AppSession::Start::started);
            QVERIFY(app.model()->board().timers.isEmpty());
            QVERIFY(app.model()->notice());
            QVERIFY(std::holds_alternative<StorageNotice::Unreadable>(app.model()->notice()->value));
            app.model()->addTimer();
        }
        QCOMPARE(readFile(folder.filePath("timers.json")), QByteArray("{ not json"));
        QVERIFY(!QFile::exists(folder.filePath("Backups/timers-1.json")));
    }

    void launchRefusedWhileAnotherCopyHoldsTheFolder()
    {
        QTemporaryDir folder;
        InstanceLock other(folder.path());
        QVERIFY(other.acquire());
        VirtualServices virt;
        {
            AppSession app(folder.path(), virt.services());
            QCOMPARE(app.start(), AppSession::Start::alreadyRunning);
            QVERIFY(!app.model());
            QVERIFY(!app.store());
        }
        QCOMPARE(QDir(folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                 QStringList{".lock"});
        QVERIFY(virt.settings->writes().isEmpty());
        other.release();
        AppSession app(folder.path(), virt.services());
        QCOMPARE(app.start(), AppSession::Start::started);
    }

    void endingCommitsAnOpenEdit()
    {
        QTemporaryDir folder;
        VirtualServices virt;
        AppSession app(folder.path(), virt.services());
        QCOMPARE(app.start(), AppSession::Start::started);
        AppModel &model = *app.model();
        model.beginEdit(model.board().timers.at(0).id);
        TimeEditDraft draft = *model.draft();
        draft.set(TimeField::minutes, QStringLiteral("5"));
        model.setDraft(draft);
        app.end();
        app.end(); // harmless twice
        QVERIFY(!model.editingID());
        QCOMPARE(Snapshot::decode(readFile(folder.filePath("timers.json"))).timers.at(0).seconds, 300.0);
    }
};

QTEST_GUILESS_MAIN(StartupTest)
#include "startup_test.moc"
