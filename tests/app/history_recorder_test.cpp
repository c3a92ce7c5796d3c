// What the model's edits leave in the history, in virtual time, and the terminal's report and
// export over it through the real executable.
#include "files.h"
#include "historyrecorder.h"
#include "modelfixture.h"
#include "run.h"
#include "startup.h"

#include <QRandomGenerator>
#include <QTest>

using namespace tock;

namespace {

struct Recorded {
    double intervals = 0;
    double adjustments = 0;
    qsizetype open = 0;
};

// A fixture whose model records into a history in its own folder.
struct HistoryFixture : ModelFixture {
    std::shared_ptr<HistoryRecorder> recorder;

    // Without a store: nothing ticks or saves, so virtual hours pass at no cost.
    explicit HistoryFixture(const QStringList &names = {"A", "B"}) : ModelFixture(WithStore::no, names)
    {
        HistoryRecorder::Opening opening = HistoryRecorder::open(dir.path(), QStringLiteral("stamp"),
                                                                 HistoryRecorder::Check::full);
        recorder = opening.recorder;
        recorder->start(model->board(), std::nullopt, v.clock->now());
        model->setHistory(recorder);
    }
    History &h() { return recorder->history(); }
    Recorded of(const QUuid &id)
    {
        Recorded r;
        const Instant now = v.clock->now();
        for (const History::Interval &i : h().intervals()) {
            if (i.timer != id)
                continue;
            r.intervals += i.end.value_or(now) - i.start;
            r.open += i.end ? 0 : 1;
        }
        for (const History::Adjustment &a : h().adjustments()) {
            if (a.timer == id)
                r.adjustments += a.seconds;
        }
        return r;
    }
    double recordedTotal(const QUuid &id)
    {
        const Recorded r = of(id);
        return r.intervals + r.adjustments;
    }
};

} // namespace

class HistoryRecorderTest : public QObject {
    Q_OBJECT
private slots:
    void totalsEqualTheHistoryOverRandomSessions()
    {
        for (quint32 seed = 1; seed <= 12; ++seed) {
            QRandomGenerator random(seed);
            HistoryFixture f;
            QSet<QUuid> wasReset;
            qsizetype adjustments = 0;
            for (int step = 0; step < 150; ++step) {
                const qsizetype n = f.count();
                const qsizetype i = n ? random.bounded(int(n)) : 0;
                switch (random.bounded(13)) {
                case 0: f.m().addTimer(QStringLiteral("T%1").arg(step)); break;
                case 1: case 2: if (n) f.m().toggle(f.id(i)); break;
                case 3: f.m().pauseAll(); break;
                case 4: if (n) f.set(i, random.bounded(36000)); break;
                case 5: if (n) { f.m().deleteTimer(f.id(i)); } break;
                case 6: case 7: f.undo.canUndo() ? f.undo.undo() : void(); break;
                case 8: f.undo.canRedo() ? f.undo.redo() : void(); break;
                case 9: if (n) { wasReset << f.id(i); f.m().reset(f.id(i)); } break;
                case 10: if (n) f.m().rename(f.id(i), QStringLiteral("R%1").arg(step)); break;
                case 11:
                    // The time mask: an edit of the minutes field, committed.
                    if (n) {
                        f.m().beginEdit(f.id(i));
                        TimeEditDraft draft = *f.m().draft();
                        draft.set(TimeField::minutes, QString::number(random.bounded(60)));
                        f.m().setDraft(draft);
                        f.m().commitEdit();
                    }
                    break;
                default: break;
                }
                // The history only grows: an undone set is one more adjustment, not one less.
                QVERIFY(f.h().adjustments().size() >= adjustments);
                adjustments = f.h().adjustments().size();
                // Minutes to hours, so runs cross midnight now and then.
                f.advance(random.bounded(4000) + random.bounded(1000) / 1000.0);
                for (const TimerItem &t : f.m().board().timers) {
                    if (wasReset.contains(t.id))
                        continue;
                    const double expected = t.elapsed(f.v.clock->now());
                    QVERIFY2(qAbs(f.recordedTotal(t.id) - expected) < 1e-3,
                             qPrintable(QStringLiteral("seed %1 step %2: %3 has %4 s, its history %5 s")
                                            .arg(seed).arg(step).arg(t.name).arg(expected).arg(f.recordedTotal(t.id))));
                    QCOMPARE(f.of(t.id).open, t.isRunning() ? 1 : 0);
                }
                // A deleted timer stays in the history, marked until an undo brings it back.
                for (const History::Timer &t : f.h().timers())
                    QCOMPARE(t.deleted, !f.m().board().timer(t.id));
            }
        }
    }

    void resetsAreEventsThatKeepTheWork()
    {
        HistoryFixture f;
        const QUuid a = f.id(0);
        f.m().toggle(a);
        f.advance(60);
        f.m().reset(a);
        QCOMPARE(f.m().board().timer(a)->elapsed(f.v.clock->now()), 0.0);
        QCOMPARE(f.recordedTotal(a), 60.0); // the minute worked stays in the reports
        f.m().undoToast();
        QCOMPARE(f.h().adjustments().size(), 0);
        QCOMPARE(f.h().eventCount(), 2);
    }

    void editsThatChangeNoTimeWriteNothing()
    {
        HistoryFixture f;
        f.m().moveTimer(f.id(0), 1);
        f.m().pauseAll(); // nothing runs
        QCOMPARE(f.h().intervals().size() + f.h().adjustments().size() + f.h().eventCount(), 0);
    }

    void aRunLeftOpenEndsWhenTimersJsonWasLastWritten()
    {
        HistoryFixture f;
        const Instant started = f.v.clock->now();
        f.m().toggle(f.id(0));
        // The copy died; the next one loads every timer paused and starts the history again.
        HistoryRecorder next(std::make_unique<History>(f.dir.filePath(History::fileName()), History::Access::write));
        next.start(ModelFixture::board({"A", "B"}), started + 2.5, started + 3600);
        QCOMPARE(next.history().intervals(), (QList<History::Interval>{{f.id(0), started, started + 2.5}}));
    }

    void aDamagedHistoryIsSetAside()
    {
        VirtualServices v;
        QTemporaryDir dir;
        testing::writeFile(dir.filePath(History::fileName()), QByteArray(8192, '\x5a'));
        AppSession session(dir.path(), v.services());
        QCOMPARE(session.start(), AppSession::Start::started);
        session.openHistory(HistoryRecorder::Check::full);
        QVERIFY(session.model()->historyRecorder());
        const std::optional<StorageNotice> notice = session.model()->notice();
        QVERIFY(notice);
        QCOMPARE(notice->title(), QStringLiteral("History started anew"));
        const QStringList damaged = QDir(dir.filePath(QStringLiteral("Damaged"))).entryList(QDir::Files);
        QCOMPARE(damaged.size(), 1);
        QVERIFY(damaged.first().endsWith(QLatin1String("-history.db")));
        QVERIFY(notice->detail().contains(damaged.first()));
    }

    void terminalReportAndExport()
    {
        QTemporaryDir dir;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("TOCK_DATA_DIR"), dir.path());
        env.insert(QStringLiteral("TZ"), QStringLiteral("UTC"));
        const auto run = [&](const QStringList &arguments, int *status = nullptr) {
            const testing::Run ran = testing::run(QStringLiteral(TOCK_BINARY), arguments, env);
            if (status)
                *status = ran.status;
            return ran.out + ran.err;
        };
        // Before any run there is nothing to report, and nothing is created.
        QCOMPARE(run({"--export", "csv"}), QStringLiteral("timer_id,timer,start,end,seconds,kind\r\n"));
        QVERIFY(!QFile::exists(dir.filePath(History::fileName())));
        run({"--shell", "add Focus", "start focus", "pause focus", "set focus +15m"});
        const QString report = run({"--report"});
        QVERIFY2(report.contains(QRegularExpression(QStringLiteral("\nFocus +00:15:0[01]\n"))), qPrintable(report));
        const QStringList csv = run({"--export", "csv", "all"}).split(QStringLiteral("\r\n"));
        QCOMPARE(csv.size(), 4); // header, interval, adjustment, the empty end
        QVERIFY2(csv.at(1).endsWith(QLatin1String(",interval")), qPrintable(csv.at(1)));
        QVERIFY2(csv.at(2).endsWith(QLatin1String(",900,adjustment")), qPrintable(csv.at(2)));
        int status = 0;
        const QString unknown = run({"--report", "someday"}, &status); // the words: history_test
        QVERIFY2(unknown.startsWith(QLatin1String("tock: unknown range")), qPrintable(unknown));
        QCOMPARE(status, 1);
        QCOMPARE(run({"--export", "xml"}, &status),
                 QStringLiteral("tock: export writes csv or json: tock --export csv|json [RANGE]\n"));
        QCOMPARE(status, 1);
        testing::writeFile(dir.filePath(History::fileName()), QByteArray(8192, 'x'));
        QVERIFY(run({"--report", "week"}, &status).startsWith(QLatin1String("tock: could not read history.db: ")));
        QCOMPARE(status, 1);
    }
};

QTEST_GUILESS_MAIN(HistoryRecorderTest)
#include "history_recorder_test.moc"
