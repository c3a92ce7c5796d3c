// The tock executable: the window by default, the terminal with --shell, the self-check with
// --selftest, still renders with --screenshots and the rendering benchmark with --bench. Only the modes that draw create a GUI
// application, so the terminal and the self-check run without any display.
#include "reportmode.h"
#include "selftest.h"
#include "startup.h"
#include "store.h"
#include "terminal.h"
#ifdef TOCK_WITH_UI
#include "flipdemo.h"
#include "fontloader.h"
#include "renderbench.h"
#include "screenshots.h"
#include "windowapp.h"

#include <QApplication>
#endif

#include <QCoreApplication>
#include <QTextStream>

#include <algorithm>
#include <memory>

namespace {

int notYetBuilt(const QString &mode)
{
    QTextStream(stdout) << mode << " comes in a later build\n";
    return 0;
}

void nameApplication()
{
    QCoreApplication::setOrganizationName(QStringLiteral("Tock"));
    QCoreApplication::setApplicationName(QStringLiteral("Tock"));
}

QStringList argumentsOf(int argc, char **argv)
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    return arguments;
}

} // namespace

int main(int argc, char **argv)
{
    const tock::StartupMode mode = tock::StartupMode::parse(argumentsOf(argc, argv));
    [[maybe_unused]] const bool windowless = std::holds_alternative<tock::StartupMode::SelfTest>(mode.value)
                         || std::holds_alternative<tock::StartupMode::Shell>(mode.value)
                         || std::holds_alternative<tock::StartupMode::Report>(mode.value)
                         || std::holds_alternative<tock::StartupMode::Export>(mode.value);
#ifdef TOCK_WITH_UI
    if (!windowless) {
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
        nameApplication();
        tock::FontLoader::registerBundledFonts();
        tock::FontLoader::quietMissingScriptWarnings();
        return std::visit(
            [](const auto &m) -> int {
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
                    return tock::runWindow(tock::Store::defaultDirectory());
                }
            },
            mode.value);
    }
#endif
    QCoreApplication application(argc, argv);
    nameApplication();
    return std::visit(
        [](const auto &m) -> int {
            using M = std::decay_t<decltype(m)>;
            if constexpr (std::is_same_v<M, tock::StartupMode::Bench>) {
                return notYetBuilt(QStringLiteral("the rendering benchmark"));
            } else if constexpr (std::is_same_v<M, tock::StartupMode::SelfTest>) {
                QTextStream out(stdout);
                return tock::SelfTest::run(out);
            } else if constexpr (std::is_same_v<M, tock::StartupMode::Shell>) {
                return tock::runTerminal(m.lines);
            } else if constexpr (std::is_same_v<M, tock::StartupMode::Report>) {
                return tock::runReport(m.range);
            } else if constexpr (std::is_same_v<M, tock::StartupMode::Export>) {
                return tock::runExport(m.format, m.range);
            } else {
                // A build without widgets keeps the terminal as its only interface.
                return tock::runTerminal({});
            }
        },
        mode.value);
}
