// The name field against real widgets in an offscreen window: how a rename starts and ends, the
// model's say on starting one, focus for a new timer, and the label text.
#include "modelfixture.h"
#include "namefield.h"
#include "theme.h"
#include "table.h"

#include <QLineEdit>
#include <QVBoxLayout>
#include <QtTest>

using namespace tock;

class NameFieldTest : public QObject {
    Q_OBJECT

private:
    struct Scene {
        ModelFixture f{WithStore::no, {"Deep work", "Design"}};
        QWidget host;
        NameField *field = nullptr;
        QLineEdit *other = nullptr;

        Scene()
        {
            auto *layout = new QVBoxLayout(&host);
            field = add(f.id(0));
            other = new QLineEdit(&host);
            layout->addWidget(other);
            host.resize(260, 120);
            host.show();
            host.activateWindow();
        }
        NameField *add(const QUuid &id)
        {
            auto *name = new NameField(f.model.get(), id, &host);
            host.layout()->addWidget(name);
            return name;
        }
        bool ready() { return QTest::qWaitForWindowActive(&host); }
        void click(NameField *name) { QTest::mouseClick(name, Qt::LeftButton, {}, name->rect().center()); }
    };

private Q_SLOTS:
    void renameEnds_data()
    {
        table<QString, QString, QString>({"case", "end", "name"}, {
            {"return commits", "return", "Reading"},
            {"focus loss commits", "focus", "Reading"},
            {"escape restores", "escape", "Deep work"},
        });
    }

    void renameEnds()
    {
        QFETCH(QString, end);
        QFETCH(QString, name);
        Scene s;
        QVERIFY(s.ready());
        s.click(s.field);
        QVERIFY(s.field->isEditing());
        QVERIFY(s.f.m().isEditingName());
        QTRY_VERIFY(s.field->editor()->hasFocus());
        QTest::keyClicks(s.field->editor(), QStringLiteral("Reading")); // replaces the selected name
        if (end == "return")
            QTest::keyClick(s.field->editor(), Qt::Key_Return);
        else if (end == "escape")
            QTest::keyClick(s.field->editor(), Qt::Key_Escape);
        else
            s.other->setFocus();
        QVERIFY(!s.field->isEditing());
        QVERIFY(!s.f.m().isEditingName());
        QCOMPARE(s.f.names().at(0), name);
        QCOMPARE(s.field->shownText(), name);
    }

    void clickAsksTheOpenTimeEdit_data()
    {
        table<QString, QString, bool>({"case", "minutes", "renames"}, {
            {"invalid edit refuses", "75", false},
            {"valid edit commits first", "30", true},
        });
    }

    void clickAsksTheOpenTimeEdit()
    {
        QFETCH(QString, minutes);
        QFETCH(bool, renames);
        Scene s;
        QVERIFY(s.ready());
        s.f.m().beginEdit(s.f.id(1));
        TimeEditDraft draft = *s.f.m().draft();
        draft.set(TimeField::minutes, minutes);
        s.f.m().setDraft(draft);
        s.click(s.field);
        QCOMPARE(s.field->isEditing(), renames);
        QCOMPARE(s.f.m().isEditOpen(), !renames);
        QCOMPARE(s.f.elapsed(1), renames ? 30 * 60.0 : 0.0);
    }

    void newTimerTakesNameFocus()
    {
        Scene s;
        QVERIFY(s.ready());
        NameField *added = nullptr;
        // The row appears with the board change, before the model asks for its name's focus.
        connect(s.f.model.get(), &AppModel::boardChanged, &s.host, [&] {
            if (!added && s.f.m().board().timers.size() == 3)
                added = s.add(s.f.id(2));
        });
        s.f.m().addTimer();
        QVERIFY(added);
        QTRY_VERIFY(added->isEditing() && added->editor()->hasFocus());
        QVERIFY(!s.f.m().nameFocusID());
        QVERIFY(!s.field->isEditing());
        QTest::keyClicks(added->editor(), QStringLiteral("Lunch"));
        QTest::keyClick(added->editor(), Qt::Key_Return);
        QCOMPARE(s.f.names(), QStringList({"Deep work", "Design", "Lunch"}));
    }

    void shownText_data()
    {
        table<QString, QString, QString>({"case", "name", "shown"}, {
            {"plain", "Design", "Design"},
            {"empty is untitled", "", "Untitled"},
            {"long is elided", QString(200, 'W'), "…"},
            {"huge is elided", QString(200000, QChar(0x05D0)), "…"},
            {"emoji is elided", QString::fromUtf8("🙂").repeated(5000), "…"},
        });
    }

    void shownText()
    {
        QFETCH(QString, name);
        QFETCH(QString, shown);
        Scene s;
        s.f.m().rename(s.f.id(0), name);
        if (shown != "…") {
            QCOMPARE(s.field->shownText(), shown);
            return;
        }
        const QString text = s.field->shownText();
        QVERIFY(text.endsWith(QChar(0x2026)));
        QVERIFY(text.size() < 100);
        QVERIFY(!text.at(text.size() - 2).isHighSurrogate()); // no half emoji before the ellipsis
    }
};

QTEST_MAIN(NameFieldTest)
#include "namefield_test.moc"
