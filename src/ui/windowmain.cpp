#include "windowmain.h"

#include "appinfo.h"
#include "controlsocket.h"
#include "flipdemo.h"
#include "fontloader.h"
#include "renderbench.h"
#include "screenshots.h"
#include "startup.h"
#include "store.h"
#include "windowapp.h"

#include <QApplication>
#include <QTextStream>

#include <algorithm>

int tockWindowMain(int argc, char **argv)
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    const tock::StartupMode mode = tock::StartupMode::parse(arguments);
    // Before the GUI starts: the X11 platform takes the startup id out of the environment.
    const tock::ActivationTokens launchTokens = tock::ActivationTokens::fromEnvironment();
    if (std::holds_alternative<tock::StartupMode::Screenshots>(mode.value)
        || std::holds_alternative<tock::StartupMode::Bench>(mode.value)) {
        // Still renders and the benchmark need no screen; without one they draw offscreen.
        if (tock::displayMissing())
            qputenv("QT_QPA_PLATFORM", "offscreen");
    } else if (std::holds_alternative<tock::StartupMode::Normal>(mode.value) && tock::displayMissing()) {
        QTextStream(stderr) << tock::noDisplayMessage() << '\n';
        return 1;
    }
    QApplication application(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("Tock"));
    QCoreApplication::setApplicationName(QStringLiteral("Tock"));
    // The Wayland app id: desktops match it to the installed entry, case-sensitively.
    QGuiApplication::setDesktopFileName(tock::AppInfo::appId());
    tock::FontLoader::registerBundledFonts();
    tock::FontLoader::quietMissingScriptWarnings();
    return std::visit(
        [&launchTokens](const auto &m) -> int {
            using M = std::decay_t<decltype(m)>;
            if constexpr (std::is_same_v<M, tock::StartupMode::Bench>) {
                QTextStream out(stdout);
                return tock::RenderBench::run(m.style, int(std::clamp<int64_t>(m.count, 0, 10000)), m.value, out);
            } else if constexpr (std::is_same_v<M, tock::StartupMode::FlipDemo>) {
                return tock::runFlipDemo();
            } else if constexpr (std::is_same_v<M, tock::StartupMode::Screenshots>) {
                QTextStream err(stderr);
                return tock::Screenshots::writeAll(m.directory, err);
            } else {
                return tock::runWindow(tock::Store::defaultDirectory(), launchTokens);
            }
        },
        mode.value);
}
