// The model's actions and interface state: the edit mask around commits, swipes, zoom,
// settings, names and the storage banner texts. Everything runs in virtual time.
#include "modelfixture.h"

using namespace tock;

Q_DECLARE_METATYPE(tock::StorageNotice)

namespace {

TimeEditDraft draftOf(const QString &h, const QString &m, const QString &s)
{
    TimeEditDraft d(0);
    d.set(TimeField::hours, h);
    d.set(TimeField::minutes, m);
    d.set(TimeField::seconds, s);
    return d;
}

} // namespace

class AppModelTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    // --- Construction and settings ---------------------------------------------------------

    void constructionReadsSettings()
    {
        ModelFixture f;
        f.v.settings->setValue("zoomDefaultV3", true);
        f.v.settings->setValue("zoom", 1.4);
        f.v.settings->setValue("style", "amber");
        f.v.settings->setValue("shellHistory", QStringList{"add", "ls"});
        f.make(ModelFixture::board({"A"}));
        QCOMPARE(f.m().zoom(), 1.4);
        QCOMPARE(f.m().style(), StyleID::amber);
        QCOMPARE(f.m().history().entries(), (QStringList{"add", "ls"}));
        QCOMPARE(f.m().history().limit(), 50);

        f.make(ModelFixture::board({"A"}), std::nullopt, StyleID::flap); // explicit wins
        QCOMPARE(f.m().style(), StyleID::flap);
        f.v.settings->setValue("style", "no-such-style");
        f.make(ModelFixture::board({"A"}));
        QCOMPARE(f.m().style(), StyleID::classic);
    }

    void olderZoomIsResetOnce()
    {
        ModelFixture f;
        f.v.settings->remove("zoomDefaultV3");
        f.v.settings->setValue("zoom", 1.4);
        f.make(ModelFixture::board({"A"}));
        QCOMPARE(f.m().zoom(), AppModel::defaultZoom);
        QCOMPARE(f.v.settings->value("zoomDefaultV3"), std::optional<QVariant>(true));
        QVERIFY(!f.v.settings->value("zoom"));

        f.m().setZoom(1.25);
        f.make(ModelFixture::board({"A"})); // the second start keeps the user's choice
        QCOMPARE(f.m().zoom(), 1.25);

        f.v.settings->setValue("zoom", -1);
        f.make(ModelFixture::board({"A"}));
        QCOMPARE(f.m().zoom(), AppModel::defaultZoom);
    }

    void withoutAStoreNothingTicksSavesOrWritesSettings()
    {
        ModelFixture f(WithStore::no);
        f.v.settings->setValue("zoomDefaultV3", true);
        f.v.settings->setValue("zoom", 1.4);
        f.make(ModelFixture::board({"A", "B"}));
        const qsizetype writesBefore = f.v.settings->writes().size();
        QCOMPARE(f.m().zoom(), 1.0);

        f.m().toggle(f.id(0));
        QVERIFY(f.timer(0).isRunning());
        QVERIFY(!f.m().isTicking());
        QCOMPARE(f.v.scheduler->repeatingCount(), 0);
        f.m().setStyle(StyleID::gameboy);
        f.m().zoomIn();
        f.m().rename(f.id(1), "X");
        f.m().pauseAll();
        f.advance(5);
        QCOMPARE(f.m().displayTick()->tick(), 0);
        QCOMPARE(f.v.settings->writes().size(), writesBefore);
        QCOMPARE(f.v.scheduler->pendingCount(), 0);
    }

    void settersNotifyOnlyOnChange()
    {
        ModelFixture f;
        SignalCounter counter(f.model.get());
        f.m().setHoveredID(f.id(0));
        f.m().setHoveredID(f.id(0));
        f.m().setScreenHeight(800);
        f.m().setStyleMenuOpen(true);
        f.m().setStyleMenuOpen(true);
        f.m().setIsEditingName(false);
        f.m().setStyle(StyleID::classic);
        f.m().setZoom(f.m().zoom());
        QCOMPARE(counter.emitted(), (QStringList{"hoveredIDChanged()", "styleMenuOpenChanged()"}));
        QCOMPARE(f.v.settings->writes(), (QStringList{"zoom", "zoomDefaultV3"})); // construction only
    }

    void styleAndZoomArePersisted()
    {
        ModelFixture f;
        f.m().setStyle(StyleID::braun);
        f.m().setZoom(1.6);
        QCOMPARE(f.v.settings->value("style"), std::optional<QVariant>("braun"));
        QCOMPARE(f.v.settings->value("zoom"), std::optional<QVariant>(1.6));
        f.advance(0.3); // the file carries the style as well
        QCOMPARE(f.saved()->style, std::optional<QString>("braun"));
    }

    // --- Zoom ------------------------------------------------------------------------------

    void zoomCommands_data()
    {
        QTest::addColumn<double>("from");
        QTest::addColumn<double>("in");
        QTest::addColumn<double>("out");
        QTest::addColumn<double>("large");
        QTest::newRow("smallest") << 0.7 << 0.8 << 0.7 << 1.1;
        QTest::newRow("default") << 0.8 << 0.9 << 0.7 << 1.1;
        QTest::newRow("between steps") << 0.85 << 0.9 << 0.8 << 0.8;
        QTest::newRow("nearly on a step") << 0.8005 << 0.9 << 0.7 << 1.1;
        QTest::newRow("one") << 1.0 << 1.1 << 0.9 << 0.8;
        QTest::newRow("largest") << 1.8 << 1.8 << 1.6 << 0.8;
        QTest::newRow("above the steps") << 2.5 << 2.5 << 1.8 << 0.8;
        QTest::newRow("below the steps") << 0.5 << 0.7 << 0.5 << 1.1;
    }
    void zoomCommands()
    {
        QFETCH(double, from);
        QFETCH(double, in);
        QFETCH(double, out);
        QFETCH(double, large);
        ModelFixture f;
        f.m().setZoom(from);
        f.m().zoomIn();
        QCOMPARE(f.m().zoom(), in);
        f.m().setZoom(from);
        f.m().zoomOut();
        QCOMPARE(f.m().zoom(), out);
        f.m().setZoom(from);
        f.m().toggleLarge();
        QCOMPARE(f.m().zoom(), large);
        f.m().zoomReset();
        QCOMPARE(f.m().zoom(), 0.8);
        QCOMPARE(f.v.settings->value("zoom"), std::optional<QVariant>(0.8));
    }

    // --- Actions ---------------------------------------------------------------------------

    void addTimerFocusesTheNewName()
    {
        ModelFixture f(WithStore::yes, {"Timer 1"});
        f.m().addTimer();
        QCOMPARE(f.names(), (QStringList{"Timer 1", "Timer 2"}));
        QCOMPARE(f.m().nameFocusID(), f.id(1));
        QVERIFY(!f.undo.canUndo()); // adding is not undoable
    }

    void moveTimer_data()
    {
        QTest::addColumn<int>("from");
        QTest::addColumn<int>("to");
        QTest::addColumn<QStringList>("expected");
        QTest::addColumn<bool>("registered");
        QTest::newRow("down") << 0 << 2 << QStringList{"B", "C", "A"} << true;
        QTest::newRow("up") << 2 << 0 << QStringList{"C", "A", "B"} << true;
        QTest::newRow("one down") << 0 << 1 << QStringList{"B", "A", "C"} << true;
        QTest::newRow("beyond the end") << 0 << 99 << QStringList{"B", "C", "A"} << true;
        QTest::newRow("negative") << 2 << -4 << QStringList{"C", "A", "B"} << true;
        QTest::newRow("same place") << 1 << 1 << QStringList{"A", "B", "C"} << false;
        QTest::newRow("clamped to the same place") << 2 << 7 << QStringList{"A", "B", "C"} << false;
    }
    void moveTimer()
    {
        QFETCH(int, from);
        QFETCH(int, to);
        QFETCH(QStringList, expected);
        QFETCH(bool, registered);
        ModelFixture f;
        f.m().moveTimer(f.id(from), to);
        QCOMPARE(f.names(), expected);
        QCOMPARE(f.undo.canUndo(), registered);
        if (registered) {
            QCOMPARE(f.undo.undoMenuItemTitle(), QStringLiteral("Undo Move Timer"));
            f.undo.undo();
            QCOMPARE(f.names(), (QStringList{"A", "B", "C"}));
            f.undo.redo();
            QCOMPARE(f.names(), expected);
        }
    }

    void unknownIdsDoNothing()
    {
        ModelFixture f;
        const Board before = f.m().board();
        const QUuid stranger = QUuid::createUuid();
        SignalCounter counter(f.model.get());
        f.m().toggle(stranger);
        f.m().reset(stranger);
        f.m().deleteTimer(stranger);
        f.m().rename(stranger, "X");
        f.m().moveTimer(stranger, 0);
        f.m().beginEdit(stranger);
        f.m().beginSwipe(stranger);
        QCOMPARE(f.m().board(), before);
        QCOMPARE(counter.emitted(), QStringList());
        QVERIFY(!f.m().toast());
        QCOMPARE(f.v.scheduler->pendingCount(), 0);
    }

    void names_data()
    {
        QTest::addColumn<QList<int>>("indexes");
        QTest::addColumn<bool>("stranger");
        QTest::addColumn<QString>("expected");
        QTest::newRow("one") << QList<int>{0} << false << QString::fromUtf8("“Write”");
        QTest::newRow("empty name") << QList<int>{1} << false << QString::fromUtf8("“Untitled”");
        QTest::newRow("unknown") << QList<int>{} << true << QStringLiteral("Untitled");
        QTest::newRow("several") << QList<int>{0, 1, 2} << false << QStringLiteral("3 timers");
        QTest::newRow("none") << QList<int>{} << false << QStringLiteral("0 timers");
    }
    void names()
    {
        QFETCH(QList<int>, indexes);
        QFETCH(bool, stranger);
        QFETCH(QString, expected);
        ModelFixture f(WithStore::no, {"Write", "", "Read"});
        QList<QUuid> ids;
        for (int i : indexes)
            ids << f.id(i);
        if (stranger)
            ids << QUuid::createUuid();
        QCOMPARE(f.m().names(ids), expected);
    }

    // --- The time edit mask ----------------------------------------------------------------

    void addTimerWithAnInvalidTimeEditOpenKeepsOneEditState()
    {
        ModelFixture f;
        f.m().beginEdit(f.id(0));
        f.m().setDraft(draftOf("0", "75", "0"));
        f.m().addTimer();
        QCOMPARE(f.m().board().timers.size(), 3);
        QCOMPARE(f.m().editingID(), f.id(0));
        QCOMPARE(f.m().draft(), draftOf("0", "75", "0"));
        QCOMPARE(*f.v.beeps, 1);
        QVERIFY(!f.m().nameFocusID());
    }

    void invalidTimeEditSurvivesSwitchingRowsAndNameClicks()
    {
        ModelFixture f;
        f.m().beginEdit(f.id(0));
        f.m().setDraft(draftOf("1000", "0", "0")); // three digits kept: 100 hours is fine
        QVERIFY(f.m().draft()->isValid());
        f.m().setDraft(draftOf("0", "60", "0"));
        f.m().beginEdit(f.id(1));
        QCOMPARE(f.m().editingID(), f.id(0));
        QVERIFY(!f.m().canBeginEditingName());
        QCOMPARE(f.m().editingID(), f.id(0));
        QCOMPARE(*f.v.beeps, 2);
        QCOMPARE(f.elapsed(0), 0.0);
    }

    void validTimeIsSavedByANameClick()
    {
        ModelFixture f;
        f.m().beginEdit(f.id(1));
        f.m().setDraft(draftOf("1", "02", "03"));
        QVERIFY(f.m().canBeginEditingName());
        QVERIFY(!f.m().isEditOpen());
        QCOMPARE(f.elapsed(1), 3723.0);
        f.advance(0.3);
        QCOMPARE(f.saved()->timers.at(1).seconds, 3723.0);
    }

    void nameClickIsRefusedWhileInvalid()
    {
        ModelFixture f;
        f.m().beginEdit(f.id(0));
        f.m().setDraft(draftOf("0", "0", "99"));
        QVERIFY(!f.m().canBeginEditingName());
        QVERIFY(f.m().isEditOpen());
        QCOMPARE(*f.v.beeps, 1);
    }

    void noNameFocusWhileTheMaskIsOpen()
    {
        ModelFixture f;
        f.m().addTimer();
        QCOMPARE(f.m().nameFocusID(), f.id(3));
        f.m().beginEdit(f.id(0)); // the mask takes the keyboard from the name
        QVERIFY(!f.m().nameFocusID());
        f.m().setNameFocusID(f.id(1));
        QVERIFY(!f.m().nameFocusID());
        f.m().cancelEdit();
        f.m().setNameFocusID(f.id(1));
        QCOMPARE(f.m().nameFocusID(), f.id(1));
    }

    void editStartsFromTheElapsedTime()
    {
        ModelFixture f;
        f.m().toggle(f.id(0));
        f.advance(65.5);
        f.m().beginEdit(f.id(0));
        QCOMPARE(f.m().draft(), TimeEditDraft(65.5));
        f.m().beginEdit(f.id(0)); // a second click keeps what was typed
        f.m().setDraft(draftOf("0", "0", "7"));
        f.m().beginEdit(f.id(0));
        QCOMPARE(f.m().draft(), draftOf("0", "0", "7"));
        QVERIFY(f.m().commitEdit());
        QCOMPARE(f.elapsed(0), 7.0);
        QVERIFY(f.timer(0).isRunning()); // a running timer keeps running
    }

    void commitWithoutAnEditSucceeds()
    {
        ModelFixture f;
        QVERIFY(f.m().commitEdit());
        f.m().setDraft(draftOf("0", "0", "1")); // ignored: no edit open
        QVERIFY(!f.m().draft());
        QCOMPARE(*f.v.beeps, 0);
    }

    void editIsDiscardedByResetAndDelete_data()
    {
        QTest::addColumn<bool>("remove");
        QTest::newRow("reset") << false;
        QTest::newRow("delete") << true;
    }
    void editIsDiscardedByResetAndDelete()
    {
        QFETCH(bool, remove);
        ModelFixture f;
        f.m().setTime(f.id(0), 50, f.timer(0), f.v.clock->now());
        f.m().beginEdit(f.id(0));
        f.m().setDraft(draftOf("0", "99", "0"));
        remove ? f.m().deleteTimer(f.id(0)) : f.m().reset(f.id(0));
        QVERIFY(!f.m().editingID());
        QVERIFY(!f.m().draft());
        QCOMPARE(*f.v.beeps, 0);
    }

    void toggleCommitsItsOwnEditFirst()
    {
        ModelFixture f;
        f.m().beginEdit(f.id(0));
        f.m().setDraft(draftOf("0", "1", "0"));
        f.m().toggle(f.id(0));
        QVERIFY(!f.m().isEditOpen());
        QVERIFY(f.timer(0).isRunning());
        QCOMPARE(f.elapsed(0), 60.0);

        f.m().beginEdit(f.id(1));
        f.m().setDraft(draftOf("0", "88", "0"));
        f.m().toggle(f.id(1)); // refused commit, toggle still happens
        QVERIFY(f.m().isEditOpen());
        QVERIFY(f.timer(1).isRunning());
    }

    // --- Swipe to delete -------------------------------------------------------------------

    void swipeThresholds_data()
    {
        QTest::addColumn<QList<double>>("deltas");
        QTest::addColumn<double>("zoom");
        QTest::addColumn<QString>("outcome");
        QTest::newRow("-36 reveals") << QList<double>{-20, -16} << 1.0 << "revealed";
        QTest::newRow("-35 snaps back") << QList<double>{-35} << 1.0 << "closed";
        QTest::newRow("right is clamped") << QList<double>{50, -35} << 1.0 << "closed";
        QTest::newRow("half the row reveals") << QList<double>{-150} << 1.0 << "revealed";
        QTest::newRow("past half deletes") << QList<double>{-100, -51} << 1.0 << "deleted";
        QTest::newRow("zoomed deltas are unzoomed") << QList<double>{-28.8} << 0.8 << "revealed";
        QTest::newRow("zoomed short") << QList<double>{-28} << 0.8 << "closed";
    }
    void swipeThresholds()
    {
        QFETCH(QList<double>, deltas);
        QFETCH(double, zoom);
        QFETCH(QString, outcome);
        ModelFixture f;
        f.m().setZoom(zoom);
        const QUuid b = f.id(1);
        f.m().beginSwipe(b);
        QCOMPARE(f.m().swipeID(), b);
        for (double d : deltas)
            f.m().swipe(d);
        QVERIFY(f.m().swipeOffset() <= 0);
        QCOMPARE(f.m().rowOffset(b), f.m().swipeOffset());
        QCOMPARE(f.m().rowOffset(f.id(0)), 0.0);
        f.m().endSwipe(300);
        if (outcome == "deleted") {
            QCOMPARE(f.m().swipeOffset(), -330.0);
            QCOMPARE(f.m().board().timers.size(), 3);
            f.advance(0.125);
            QCOMPARE(f.m().board().timers.size(), 3);
            f.advance(0.015625);
            QCOMPARE(f.names(), (QStringList{"A", "C"}));
            QVERIFY(!f.m().swipeID());
            QCOMPARE(f.m().swipeOffset(), 0.0);
            QVERIFY(!f.m().revealedID());
            QCOMPARE(f.m().toast()->entry.message(), QString::fromUtf8("Deleted “B”"));
            f.undo.undo(); // undoable like any other deletion
            QCOMPARE(f.names(), (QStringList{"A", "B", "C"}));
            return;
        }
        QVERIFY(!f.m().swipeID());
        QCOMPARE(f.m().swipeOffset(), 0.0);
        if (outcome == "revealed") {
            QCOMPARE(f.m().revealedID(), b);
            QCOMPARE(f.m().rowOffset(b), -AppModel::revealWidth);
        } else {
            QVERIFY(!f.m().revealedID());
            QCOMPARE(f.m().rowOffset(b), 0.0);
        }
        QCOMPARE(f.v.scheduler->pendingCount(), 0);
    }

    void swipeStartsFromTheRevealAndClosesOthers()
    {
        ModelFixture f;
        f.m().setZoom(1.0);
        f.m().beginSwipe(f.id(0));
        f.m().swipe(-50);
        f.m().endSwipe(300);
        QCOMPARE(f.m().revealedID(), f.id(0));

        f.m().beginSwipe(f.id(0)); // the revealed row continues from its open position
        QCOMPARE(f.m().swipeOffset(), -AppModel::revealWidth);
        f.m().swipe(40);
        f.m().endSwipe(300);
        QCOMPARE(f.m().revealedID(), f.id(0)); // -44 stays open

        f.m().beginSwipe(f.id(2));
        QVERIFY(!f.m().revealedID());
        QCOMPARE(f.m().swipeOffset(), 0.0);
        f.m().endSwipe(300);

        f.m().beginEdit(f.id(1));
        f.m().beginSwipe(f.id(1)); // the row being edited does not swipe
        QVERIFY(!f.m().swipeID());
        f.m().swipe(-100);
        f.m().endSwipe(300);
        QCOMPARE(f.m().board().timers.size(), 3);
    }

    void actionsCloseTheReveal()
    {
        ModelFixture f;
        f.m().beginSwipe(f.id(0));
        f.m().swipe(-60);
        f.m().endSwipe(300);
        f.m().toggle(f.id(1));
        QVERIFY(!f.m().revealedID());

        f.m().beginSwipe(f.id(0));
        f.m().swipe(-60);
        f.m().endSwipe(300);
        QVERIFY(f.m().deleteHovered()); // nothing hovered: the revealed row goes
        QCOMPARE(f.names(), (QStringList{"B", "C"}));
        QVERIFY(!f.m().revealedID());
    }

    void deleteHovered()
    {
        ModelFixture f;
        QVERIFY(!f.m().deleteHovered());
        f.m().setHoveredID(f.id(2));
        f.m().beginEdit(f.id(0));
        QVERIFY(!f.m().deleteHovered()); // the mask has the keys
        f.m().cancelEdit();
        QVERIFY(f.m().deleteHovered());
        QCOMPARE(f.names(), (QStringList{"A", "B"}));
        QVERIFY(!f.m().hoveredID());
        QVERIFY(!f.m().deleteHovered());
    }

    // --- Storage notices -------------------------------------------------------------------

    void noticeTexts_data()
    {
        QTest::addColumn<StorageNotice>("notice");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("detail");
        QTest::newRow("recovered") << StorageNotice::recovered("timers-2.json") << "Restored from backup"
                                   << "The main data file was damaged. Tock loaded timers-2.json instead and "
                                      "kept the damaged file in the Damaged folder.";
        QTest::newRow("unreadable") << StorageNotice::unreadable({"timers.json: Implausible timer values", "x"})
                                    << "Saved timers could not be read"
                                    << "Nothing has been overwritten and saving is paused. timers.json: "
                                       "Implausible timer values";
        QTest::newRow("unreadable without reasons") << StorageNotice::unreadable({})
                                                    << "Saved timers could not be read"
                                                    << "Nothing has been overwritten and saving is paused. ";
        QTest::newRow("save failed") << StorageNotice::saveFailed("Disk full") << "Changes are not being saved"
                                     << "Disk full";
    }
    void noticeTexts()
    {
        QFETCH(StorageNotice, notice);
        QFETCH(QString, title);
        QFETCH(QString, detail);
        QCOMPARE(notice.title(), title);
        QCOMPARE(notice.detail(), detail);
    }

    void deferredWorkDiesWithTheModel()
    {
        ModelFixture f;
        f.m().toggle(f.id(0));
        f.m().reset(f.id(1));
        f.m().beginSwipe(f.id(2));
        f.m().swipe(-200);
        f.m().endSwipe(300);
        QVERIFY(f.v.scheduler->pendingCount() >= 3);
        f.model.reset();
        QCOMPARE(f.v.scheduler->pendingCount(), 0);
        f.undo.undo(); // its handler finds no model
        f.advance(20);
    }
};

QTEST_GUILESS_MAIN(AppModelTest)
#include "appmodel_test.moc"
