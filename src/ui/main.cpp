// The tock executable. Until the main window exists it runs without one: the self-check, the
// terminal mode, the split-flap demonstration and the parsing of the window's tool switches.
#include "selftest.h"
#include "startup.h"
#include "terminal.h"
#ifdef TOCK_WITH_UI
#include "flipdemo.h"
#include "fontloader.h"
#include <QApplication>
#endif

#include <QCoreApplication>
#include <QTextStream>

#include <memory>

namespace {

int notYetBuilt(const QString &mode)
{
    QTextStream(stdout) << mode << " comes with the window, which this build does not have yet\n";
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    const tock::StartupMode mode = tock::StartupMode::parse(arguments);

    // Only the modes that open a window need a display.
#ifdef TOCK_WITH_UI
    const bool windowed = std::holds_alternative<tock::StartupMode::FlipDemo>(mode.value);
    const std::unique_ptr<QCoreApplication> application =
        windowed ? std::make_unique<QApplication>(argc, argv) : std::make_unique<QCoreApplication>(argc, argv);
#else
    const auto application = std::make_unique<QCoreApplication>(argc, argv);
#endif
    QCoreApplication::setOrganizationName(QStringLiteral("Tock"));
    QCoreApplication::setApplicationName(QStringLiteral("Tock"));
#ifdef TOCK_WITH_UI
    // Before any mode draws; a windowless application object has no fonts and skips this.
    tock::FontLoader::registerBundledFonts();
#endif

    return std::visit(
        [](const auto &m) -> int {
            using M = std::decay_t<decltype(m)>;
            if constexpr (std::is_same_v<M, tock::StartupMode::Bench>) {
                return notYetBuilt(QStringLiteral("the rendering benchmark"));
            } else if constexpr (std::is_same_v<M, tock::StartupMode::FlipDemo>) {
#ifdef TOCK_WITH_UI
                return tock::runFlipDemo();
#else
                return notYetBuilt(QStringLiteral("the split-flap demonstration"));
#endif
            } else if constexpr (std::is_same_v<M, tock::StartupMode::Screenshots>) {
                return notYetBuilt(QStringLiteral("the screenshot writer"));
            } else if constexpr (std::is_same_v<M, tock::StartupMode::SelfTest>) {
                QTextStream out(stdout);
                return tock::SelfTest::run(out);
            } else if constexpr (std::is_same_v<M, tock::StartupMode::Shell>) {
                return tock::runTerminal(m.lines);
            } else {
                return tock::runTerminal({}); // the window's place, for now
            }
        },
        mode.value);
}
