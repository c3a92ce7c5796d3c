// Mouse drags on the rows of a real window: up and down reorder (the others making room while
// dragging), left swipes, a press elsewhere closes the reveal, and a plain click on a name still
// renames.
#include "modelfixture.h"
#include "namefield.h"
#include "rootview.h"
#include "rowdragger.h"
#include "rowlist.h"
#include "timerrow.h"
#include "tockwindow.h"
#include "table.h"

#include <QtTest>

using namespace tock;

class RowDraggerTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void drags_data()
    {
        // The row pressed; the moves after the press ("dx,dy", x in points, y in rows); "reveal N"
        // or "name" (press on the name) first; the board afterwards; the revealed row; whether a
        // rename is open; where rows stood while dragging ("B:0": B where row 0 stood).
        table<QString, int, QString, QString, QString, int, bool, QString>(
            {"case", "row", "path", "setup", "names", "revealed", "renaming", "room"}, {
            {"down two places", 0, "0,0.5 0,1.2 0,2", "", "B C A", -1, false, "B:0 C:1"},
            {"up two places", 2, "0,-1 0,-2", "", "C A B", -1, false, "A:1 B:2"},
            {"past the end stops last", 0, "0,6", "", "B C A", -1, false, ""},
            {"a short drag stays", 1, "0,0.3", "", "A B C", -1, false, ""},
            {"left reveals", 1, "-20,0 -60,0", "", "A B C", 1, false, ""},
            {"far left deletes", 1, "-60,0 -250,0", "", "A C", -1, false, ""},
            {"right does nothing", 1, "60,0", "", "A B C", -1, false, ""},
            {"press elsewhere closes the reveal", 2, "", "reveal 0", "A B C", -1, false, ""},
            {"press on the revealed row keeps it", 0, "", "reveal 0", "A B C", 0, true, ""},
            {"drag from a name does not rename", 0, "0,1", "name", "B A C", -1, false, "B:0 C:2"},
            {"click on a name renames", 0, "", "name", "A B C", -1, true, ""},
        });
    }

    void drags()
    {
        QFETCH(int, row);
        QFETCH(QString, path);
        QFETCH(QString, setup);
        QFETCH(QString, names);
        QFETCH(int, revealed);
        QFETCH(QString, room);

        ModelFixture f(WithStore::no);
        AppModel &m = f.m();
        TockWindow window(&m, [] {});
        RowList *list = window.rootView()->rowList();
        RowDragger dragger(&m, list, [] { return 300.0; });
        dragger.attach(&window);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        if (setup.startsWith("reveal")) {
            f.swipeRow(setup.section(' ', 1).toInt(), -50);
            QVERIFY(m.revealedID());
        }

        TimerRow *target = list->row(f.id(row));
        QWidget *grip = setup == "name" ? static_cast<QWidget *>(target->nameField()) : target;
        const QPoint start = grip->mapTo(&window, QPoint(8, grip->height() / 2));
        const Theme &t = Theme::of(m.style());
        const double pitch = (t.rowHeight + t.rowSpacing) * m.zoom();
        QWindow *handle = window.windowHandle();
        const auto send = [&](QEvent::Type type, QPointF at, Qt::MouseButtons held) {
            QMouseEvent e(type, at, at, window.mapToGlobal(at), Qt::LeftButton, held, Qt::NoModifier);
            QCoreApplication::sendEvent(handle, &e);
        };
        QList<int> ys;
        for (TimerRow *r : list->rows())
            ys << r->y();
        send(QEvent::MouseButtonPress, start, Qt::LeftButton);
        QPointF at = start;
        for (const QString &step : path.split(' ', Qt::SkipEmptyParts)) {
            at = QPointF(start) + QPointF(step.section(',', 0, 0).toDouble(), step.section(',', 1).toDouble() * pitch);
            send(QEvent::MouseMove, at, Qt::LeftButton);
        }
        // While a row is carried, the rows it passed already sit one place nearer its old one.
        for (const QString &pair : room.split(' ', Qt::SkipEmptyParts)) {
            const int index = QStringList{"A", "B", "C"}.indexOf(pair.section(':', 0, 0));
            QCOMPARE(list->row(f.id(index))->y(), ys.at(pair.section(':', 1).toInt()));
        }
        send(QEvent::MouseButtonRelease, at, Qt::NoButton);
        f.advance(1);

        QCOMPARE(f.names().join(' '), names);
        QCOMPARE(m.revealedID(), revealed < 0 ? std::optional<QUuid>() : std::optional<QUuid>(f.id(revealed)));
        NameField *name = list->row(f.id(0)) ? list->row(f.id(0))->nameField() : nullptr;
        QTEST(name && name->isEditing(), "renaming");
        if (names == "A C") {
            m.undoManager().undo();
            QCOMPARE(f.names().join(' '), QString("A B C"));
        }
    }
};

QTEST_MAIN(RowDraggerTest)
#include "rowdragger_test.moc"
