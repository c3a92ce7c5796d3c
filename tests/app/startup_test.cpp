// Start-up without windows: the command-line switches, the launch for each load result over a
// temporary data folder, the refusal while another copy holds it, and the ending.
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
    if (const auto *bench = std::get_if<StartupMode::Bench>(&mode.value))
        return QStringLiteral("bench %1 %2 %3").arg(StyleIDs::rawValue(bench->style)).arg(bench->count).arg(bench->value);
    if (const auto *shots = std::get_if<StartupMode::Screenshots>(&mode.value))
        return QStringLiteral("screenshots ") + shots->directory;
    if (const auto *shell = std::get_if<StartupMode::Shell>(&mode.value))
        return QStringLiteral("shell [") + shell->lines.join(QLatin1Char('|')) + QLatin1Char(']');
    return QStringList{"", "flipdemo", "selftest", "", "", "normal"}.at(qsizetype(mode.value.index()));
}

QByteArray encoded(const QStringList &names, std::optional<QString> style = std::nullopt)
{
    Board board;
    for (const QString &name : names)
        board.add(name);
    return Snapshot(board, std::move(style), 1'700'000'000).encoded();
}

// A data folder ("data", not there until a file is written) and a session over it.
struct Launch {
    QTemporaryDir root;
    QString folder = root.filePath(QStringLiteral("data"));
    VirtualServices virt;
    std::optional<AppSession> app;

    explicit Launch(const QByteArray &main = {}, const QByteArray &backup = {})
    {
        for (const auto &[name, data] : {std::pair{"timers.json", main}, std::pair{"Backups/timers-1.json", backup}}) {
            QFile file(folder + QLatin1Char('/') + QLatin1String(name));
            if (!data.isNull() && QDir().mkpath(QFileInfo(file).path()) && file.open(QIODevice::WriteOnly))
                file.write(data);
        }
        app.emplace(folder, virt.services());
    }
    QByteArray read(const QString &name) const
    {
        QFile file(folder + QLatin1Char('/') + name);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    QStringList names() const
    {
        QStringList names;
        for (const TimerItem &timer : app->model()->board().timers)
            names << timer.name;
        return names;
    }
};

} // namespace

class StartupTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void switches_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("mode");
        QTest::newRow("unknown") << QStringList{"-psn_0_42"} << "normal";
        QTest::newRow("bench") << QStringList{"--bench", "classic", "10", "2.5"} << "bench classic 10 2.5";
        QTest::newRow("bench signed, exponent") << QStringList{"--bench", "flap", "-3", "1e2"} << "bench flap -3 100";
        QTest::newRow("bench word count") << QStringList{"--bench", "classic", "ten", "2.5"} << "normal";
        QTest::newRow("bench display name") << QStringList{"--bench", "Neo Classic", "10", "2.5"} << "normal";
        QTest::newRow("bench bad number") << QStringList{"--bench", "classic", "10", "x"} << "normal";
        QTest::newRow("bench infinite") << QStringList{"--bench", "classic", "10", "inf"} << "normal";
        QTest::newRow("bench short") << QStringList{"--bench", "classic", "10"} << "normal";
        QTest::newRow("bench before selftest") << QStringList{"--selftest", "--bench", "amber", "1", "0"} << "bench amber 1 0";
        QTest::newRow("invalid bench, selftest") << QStringList{"--bench", "x", "1", "1", "--selftest"} << "selftest";
        QTest::newRow("flipdemo before selftest") << QStringList{"--selftest", "--flipdemo"} << "flipdemo";
        QTest::newRow("selftest before screenshots") << QStringList{"--screenshots", "out", "--selftest"} << "selftest";
        QTest::newRow("screenshots") << QStringList{"--screenshots", "/tmp/shots"} << "screenshots /tmp/shots";
        QTest::newRow("screenshots last") << QStringList{"--screenshots"} << "normal";
        QTest::newRow("shell lines") << QStringList{"--shell", "add A", "--selftest", "rm 1"} << "shell [add A|--selftest|rm 1]";
        QTest::newRow("switch before shell") << QStringList{"--selftest", "--shell", "help"} << "selftest";
        QTest::newRow("line not a folder") << QStringList{"--screenshots", "--shell", "x"} << "shell [x]";
    }

    void switches()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, mode);
        QCOMPARE(describe(StartupMode::parse(arguments)), mode);
    }

    // What the launches below do not reach: a style this build lacks, a backup not yet archived.
    void startingValues()
    {
        const Snapshot foreign = Snapshot::decode(encoded({"A"}, QStringLiteral("holographic")));
        QVERIFY(!StartingValues::from({Store::LoadResult::Loaded{foreign}}, false).style);
        const Snapshot amber = Snapshot::decode(encoded({"A", "B"}, QStringLiteral("amber")));
        const StartingValues values = StartingValues::from({Store::LoadResult::Recovered{amber, "timers-2.json", {}}}, true);
        QCOMPARE(values.board, amber.board());
        QCOMPARE(values.style, std::optional(StyleID::amber));
        QCOMPARE(values.notice, std::optional(StorageNotice::saveFailed(archiveFailedMessage())));
    }

    // A fresh folder gets three paused timers; the ending commits an open edit, pauses, saves
    // and lets go of the folder.
    void freshLaunchAndEnding()
    {
        Launch launch;
        AppSession &app = *launch.app;
        QCOMPARE(app.start(), AppSession::Start::started);
        QVERIFY(app.lock().isHeld());
        QVERIFY(app.model()->undoManager() == app.undoManager());
        QCOMPARE(launch.names(), QStringList({"Timer 1", "Timer 2", "Timer 3"}));
        QVERIFY(!app.model()->board().anyRunning() && !app.model()->notice() && !app.startingNotice());
        AppModel &model = *app.model();
        model.beginEdit(model.board().timers.at(0).id);
        TimeEditDraft draft = *model.draft();
        draft.set(TimeField::minutes, QStringLiteral("5"));
        model.setDraft(draft);
        model.toggle(model.board().timers.at(1).id);
        launch.virt.clock->advance(5);
        app.end();
        app.end(); // harmless twice
        QVERIFY(!app.lock().isHeld() && !model.editingID() && !model.board().anyRunning());
        const Snapshot saved = Snapshot::decode(launch.read(QStringLiteral("timers.json")));
        QCOMPARE(saved.timers.size(), 3);
        QCOMPARE(saved.timers.at(0).seconds, 300.0);
        QVERIFY(saved.timers.at(1).seconds == 5.0 && !saved.timers.at(1).wasRunning);
    }

    void launchLoadsAndRotatesOnce()
    {
        const QByteArray data = encoded({"Focus", "Mail"}, QStringLiteral("flap"));
        Launch launch(data);
        QCOMPARE(launch.app->start(), AppSession::Start::started);
        QCOMPARE(launch.names(), QStringList({"Focus", "Mail"}));
        QCOMPARE(launch.app->model()->style(), StyleID::flap);
        QVERIFY(!launch.app->model()->notice());
        QCOMPARE(launch.read(QStringLiteral("Backups/timers-1.json")), data); // rotated once
        QVERIFY(launch.read(QStringLiteral("Backups/timers-2.json")).isNull());
    }

    void launchRecoversFromABackup()
    {
        Launch launch("{ not json", encoded({"Saved"}));
        QCOMPARE(launch.app->start(), AppSession::Start::started);
        QCOMPARE(launch.names(), QStringList{"Saved"});
        QCOMPARE(launch.app->model()->notice(), std::optional(StorageNotice::recovered("timers-1.json")));
        QCOMPARE(launch.app->startingNotice(), launch.app->model()->notice());
    }

    void launchKeepsUnreadableDataUntouched()
    {
        Launch launch("{ not json");
        QCOMPARE(launch.app->start(), AppSession::Start::started);
        QCOMPARE(launch.names(), QStringList());
        QVERIFY(std::holds_alternative<StorageNotice::Unreadable>(launch.app->model()->notice().value().value));
        launch.app->model()->addTimer();
        launch.app.reset();
        QCOMPARE(launch.read(QStringLiteral("timers.json")), QByteArray("{ not json"));
        QVERIFY(!QFile::exists(launch.folder + QStringLiteral("/Backups")));
    }

    void launchRefusedWhileAnotherCopyHoldsTheFolder()
    {
        Launch launch;
        InstanceLock other(launch.folder);
        QVERIFY(other.acquire());
        QCOMPARE(launch.app->start(), AppSession::Start::alreadyRunning);
        QVERIFY(!launch.app->model() && !launch.app->store());
        launch.app.reset(); // ending a refused session must not free the other copy's lock
        QCOMPARE(QDir(launch.folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot), QStringList{".lock"});
        QVERIFY(launch.virt.settings->writes().isEmpty());
        QCOMPARE(AppSession(launch.folder, launch.virt.services()).start(), AppSession::Start::alreadyRunning);
    }
};

QTEST_GUILESS_MAIN(StartupTest)
#include "startup_test.moc"
