// Costs of persistence: encoding and decoding the snapshot, a save while timers run (the file
// flushed and renamed, the folder left alone), a start (loading, then a save that changes a
// name and so flushes the folder too) and a backup rotation, for small and very large boards.
#include "snapshot.h"
#include "store.h"

#include <QTemporaryDir>
#include <QTest>
#include <QTimeZone>

using namespace tock;

namespace {

Snapshot boardOf(int count)
{
    Snapshot s;
    s.savedAt = QDateTime::fromSecsSinceEpoch(1794772403, QTimeZone::utc());
    s.style = QStringLiteral("flap");
    for (int i = 0; i < count; ++i)
        s.timers.append({QUuid::createUuid(), QStringLiteral("Timer %1").arg(i + 1), i * 1.25, i % 2 == 0});
    return s;
}

void sizes()
{
    QTest::addColumn<int>("count");
    QTest::newRow("10 timers") << 10;
    QTest::newRow("1000 timers") << 1000;
    QTest::newRow("10000 timers") << 10000;
}

} // namespace

class PersistBench : public QObject {
    Q_OBJECT
private slots:
    void encode_data() { sizes(); }
    void encode()
    {
        QFETCH(int, count);
        const Snapshot s = boardOf(count);
        QBENCHMARK {
            s.encoded();
        }
    }

    void decode_data() { sizes(); }
    void decode()
    {
        QFETCH(int, count);
        const QByteArray data = boardOf(count).encoded();
        QBENCHMARK {
            Snapshot::decode(data);
        }
    }

    void save_data() { sizes(); }
    void save()
    {
        QFETCH(int, count);
        QTemporaryDir dir;
        Store store(dir.path(), 5, 1e9);
        const Snapshot s = boardOf(count);
        store.save(s, 0);  // the first save rotates; the measured ones only write
        QBENCHMARK {
            store.save(s, 1);
        }
    }

    void loadAndSave_data() { sizes(); }
    void loadAndSave()
    {
        QFETCH(int, count);
        QTemporaryDir dir;
        Store store(dir.path(), 5, 1e9);
        Snapshot s = boardOf(count);
        store.save(s, 0);
        int round = 0;
        QBENCHMARK {
            store.load(0);
            s.timers.first().name = QStringLiteral("Renamed %1").arg(++round);
            store.save(s, 1);
        }
    }

    void rotateBackups_data() { sizes(); }
    void rotateBackups()
    {
        QFETCH(int, count);
        QTemporaryDir dir;
        Store store(dir.path(), 5, 0);
        store.write(boardOf(count));
        for (int i = 0; i < 5; ++i)
            store.rotateBackups();
        QBENCHMARK {
            store.rotateBackups();
        }
    }
};

QTEST_GUILESS_MAIN(PersistBench)
#include "persist_bench.moc"
