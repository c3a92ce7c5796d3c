// The window's layout in every style and at the zoom extremes: parts of a row, the title and
// the menu never collide or leave the window; every still scene renders; the start refuses to
// open a window without a display.
#include "draw.h"
#include "modelfixture.h"
#include "namefield.h"
#include "rootview.h"
#include "rowlist.h"
#include "screenshots.h"
#include "stylemenu.h"
#include "table.h"
#include "deletereveal.h"
#include "livetimebutton.h"
#include "timerrow.h"
#include "stylebutton.h"
#include "titlebar.h"
#include "windowbuttons.h"
#include "tockwindow.h"
#include "windowapp.h"

#include <QtTest>

#include <memory>

using namespace tock;

namespace {

struct Built {
    ModelFixture f;
    std::unique_ptr<TockWindow> window;
    Built(StyleID style, double zoom, const QStringList &names)
        : f(WithStore::no, names)
    {
        f.m().setStyle(style);
        f.m().setZoom(zoom);
        window = std::make_unique<TockWindow>(f.model.get(), [] {});
        window->setAnimated(false);
        window->fitToContent();
    }
    RootView *root() const { return window->rootView(); }
};

void addStyles()
{
    QTest::addColumn<StyleID>("style");
    QTest::addColumn<double>("zoom");
    for (const StyleID style : StyleIDs::allCases()) {
        for (const double zoom : {0.7, 0.8, 1.8}) {
            const QByteArray name = StyleIDs::rawValue(style).toUtf8() + ' ' + QByteArray::number(zoom);
            QTest::newRow(name.constData()) << style << zoom;
        }
    }
}

} // namespace

class LayoutTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // Parts of a row, the title and its controls, the window buttons and the menu: apart and
    // inside their parent, whatever the style and zoom.
    void partsStayApartAndInside_data() { addStyles(); }
    void partsStayApartAndInside()
    {
        QFETCH(StyleID, style);
        QFETCH(double, zoom);
        Built b(style, zoom, {"Deep work", "A name far too long to fit in any row of any style"});
        b.f.set(0, 360000); // 100:00:00, the widest time
        for (TimerRow *row : b.root()->rowList()->rows()) {
            const QList<QWidget *> parts{row->nameField(), row->timeButton(), row->playButton(), row->resetButton()};
            const QRect face(QPoint(0, 0), row->face()->size());
            for (qsizetype i = 0; i < parts.size(); ++i) {
                const QRect a = parts.at(i)->geometry();
                QVERIFY2(face.contains(a), qPrintable(parts.at(i)->metaObject()->className()));
                QVERIFY(a.width() > 0 && a.height() > 0);
                for (qsizetype j = i + 1; j < parts.size(); ++j)
                    QVERIFY2(!a.intersects(parts.at(j)->geometry()),
                             qPrintable(QStringLiteral("%1 meets %2").arg(i).arg(j)));
            }
            // The time is never cut: its box holds the widest time the row shows.
            const QString shown = row->timeButton()->text();
            QVERIFY(row->timeButton()->width() + 1 >= LiveTimeButton::widthFor(b.root()->theme(), shown) * zoom);
        }

        TitleBar *bar = b.root()->titleBar();
        const QRectF title = bar->titleRect();
        const Theme &theme = b.root()->theme();
        const qreal needed = Draw::textWidth(Draw::tracked(theme.titleFont, theme.titleTracking), theme.titleText);
        QVERIFY2(title.width() >= needed, qPrintable(QStringLiteral("%1 < %2").arg(title.width()).arg(needed)));
        for (const QWidget *control : {static_cast<QWidget *>(bar->styleButton()), static_cast<QWidget *>(bar->windowButtons())}) {
            const QRectF points(QPointF(control->geometry().topLeft()) / zoom, QSizeF(control->size()) / zoom);
            QVERIFY(!title.intersects(points));
            QVERIFY(QRectF(QPointF(0, 0), bar->unzoomedSize()).contains(points.adjusted(1, 1, -1, -1)));
        }
        // Pixels are rounded once for the whole window: a view never ends past its parent's edge
        // (the third title-bar light was cut by a pixel at the default zoom).
        WindowButtons *group = bar->windowButtons();
        for (const auto action : {WindowButton::Action::close, WindowButton::Action::minimize, WindowButton::Action::zoom})
            QVERIFY2(group->rect().contains(group->button(action)->geometry()), qPrintable(QString::number(int(action))));

        Built empty(style, zoom, {}); // the smallest window
        empty.f.m().setStyleMenuOpen(true);
        StyleMenu *menu = empty.root()->styleMenu();
        // The menu's body; its soft shadow may be cut by the window's edge.
        const QRectF body = QRectF(menu->geometry()).marginsRemoved(menu->shadowRoom() * zoom);
        QVERIFY(QRectF(QPoint(0, 0), empty.root()->size()).contains(body.adjusted(1, 1, -1, -1)));
        // Items in menu order, one under the other.
        int y = -1;
        for (const StyleID s : StyleIDs::allCases()) {
            QVERIFY(menu->item(s)->y() > y);
            y = menu->item(s)->y();
        }
    }

    void aLongerTimeWidensItsDisplay()
    {
        Built b(StyleID::classic, 1.0, {"A"});
        TimerRow *row = b.root()->rowList()->rows().first();
        const int before = row->timeButton()->width();
        b.f.set(0, 360000);
        QVERIFY(row->timeButton()->width() > before);
        QVERIFY(row->nameField()->geometry().right() < row->timeButton()->x());
    }

    void hoverAndRevealFollowTheModel()
    {
        Built b(StyleID::classic, 1.0, {"A", "B"});
        TimerRow *row = b.root()->rowList()->row(b.f.id(1));
        QEnterEvent enter(QPointF(5, 5), QPointF(5, 5), QPointF(5, 5));
        QCoreApplication::sendEvent(row, &enter);
        QCOMPARE(b.f.m().hoveredID(), std::optional<QUuid>(b.f.id(1)));
        QEvent leave(QEvent::Leave);
        QCoreApplication::sendEvent(row, &leave);
        QCOMPARE(b.f.m().hoveredID(), std::nullopt);

        b.f.swipeRow(1, -60); // revealed
        QCOMPARE(row->face()->x(), -qRound(AppModel::revealWidth));
        QVERIFY(row->deleteReveal()->isVisibleTo(row));
        b.window->show();
        QVERIFY(QTest::qWaitForWindowExposed(b.window.get()));
        QTest::mouseClick(row->deleteReveal(), Qt::LeftButton, {}, row->deleteReveal()->rect().center());
        QCOMPARE(b.f.names(), QStringList{"A"});
    }

    void flapTilesComeAndGoWithTheStyle()
    {
        Built b(StyleID::flap, 1.0, {"A", "B"});
        for (TimerRow *row : b.root()->rowList()->rows())
            QVERIFY(row->timeButton()->flapText());
        b.f.m().setStyle(StyleID::classic);
        for (TimerRow *row : b.root()->rowList()->rows())
            QVERIFY(!row->timeButton()->flapText());
    }

    void everySceneRenders_data()
    {
        QTest::addColumn<StyleID>("style");
        QTest::addColumn<QString>("scene");
        for (const StyleID style : StyleIDs::allCases()) {
            for (const QString &scene : Screenshots::scenes())
                QTest::newRow(qPrintable(StyleIDs::rawValue(style) + ' ' + scene)) << style << scene;
        }
    }
    void everySceneRenders()
    {
        QFETCH(StyleID, style);
        QFETCH(QString, scene);
        UndoManager undo;
        std::unique_ptr<AppModel> model = Screenshots::sceneModel(scene, style, undo);
        const QImage image = Screenshots::render(*model, 2, false);
        const qreal zoom = scene == QLatin1String("zoom") ? 1.8 : scene == QLatin1String("default") ? 0.8 : 1.0;
        QVERIFY(image.width() >= qRound(Theme::contentWidth * zoom * 2));
        // The card is opaque in its middle and the corners outside the shadow are clear.
        QCOMPARE(qAlpha(image.pixel(image.width() / 2, image.height() / 2)), 255);
        QCOMPARE(qAlpha(image.pixel(0, 0)), 0);
        if (scene == QLatin1String("toast"))
            QVERIFY(model->toast());
        if (scene.startsWith(QLatin1String("edit")) || scene == QLatin1String("invalid"))
            QVERIFY(model->isEditOpen());
    }

    void noDisplayIsNoticedBeforeQt_data()
    {
        table<QString, QByteArray, QByteArray, QByteArray, bool>({"case", "display", "wayland", "platform", "missing"}, {
            {"nothing", {}, {}, {}, true},
            {"x11", QByteArray(":0"), {}, {}, false},
            {"wayland", {}, QByteArray("wayland-0"), {}, false},
            {"platform asked", {}, {}, QByteArray("offscreen"), false},
        });
    }
    void noDisplayIsNoticedBeforeQt()
    {
        QFETCH(QByteArray, display);
        QFETCH(QByteArray, wayland);
        QFETCH(QByteArray, platform);
        QFETCH(bool, missing);
        const QByteArray saved[3] = {qgetenv("DISPLAY"), qgetenv("WAYLAND_DISPLAY"), qgetenv("QT_QPA_PLATFORM")};
        qputenv("DISPLAY", display);
        qputenv("WAYLAND_DISPLAY", wayland);
        qputenv("QT_QPA_PLATFORM", platform);
        const bool result = displayMissing();
        qputenv("DISPLAY", saved[0]);
        qputenv("WAYLAND_DISPLAY", saved[1]);
        qputenv("QT_QPA_PLATFORM", saved[2]);
        QCOMPARE(result, missing);
        QVERIFY(noDisplayMessage().contains(QStringLiteral("tock --shell")));
    }
};

QTEST_MAIN(LayoutTest)
#include "layout_test.moc"
