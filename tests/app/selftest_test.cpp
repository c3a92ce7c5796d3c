// The built-in checks (`tock --selftest`) as one data row per scenario, so a failure names it.
#include "selftest.h"

#include <QTest>

using namespace tock;

class SelfTestTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void scenarios_data()
    {
        QTest::addColumn<QString>("failure");
        for (const SelfTest::Outcome &outcome : SelfTest::runAll())
            QTest::newRow(qPrintable(outcome.name)) << outcome.failure;
    }
    void scenarios()
    {
        QFETCH(QString, failure);
        QVERIFY2(failure.isEmpty(), qPrintable(failure));
    }
};

QTEST_GUILESS_MAIN(SelfTestTest)
#include "selftest_test.moc"
