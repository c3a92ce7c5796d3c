// The tock executable. Until the window exists it runs without one: the self-check, the
// terminal mode, and the parsing of the window's tool switches.
#include "selftest.h"
#include "startup.h"
#include "terminal.h"
#ifdef TOCK_WITH_UI
#include "fontloader.h"
#endif

#include <QCoreApplication>
#include <QTextStream>

namespace {

int notYetBuilt(const QString &mode)
{
    QTextStream(stdout) << mode << " comes with the window, which this build does not have yet\n";
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("Tock"));
    QCoreApplication::setApplicationName(QStringLiteral("Tock"));
#ifdef TOCK_WITH_UI
    // Before any mode draws; a windowless application object has no fonts and skips this.
    tock::FontLoader::registerBundledFonts();
#endif

    const tock::StartupMode mode = tock::StartupMode::parse(QCoreApplication::arguments().mid(1));
    return std::visit(
        [](const auto &m) -> int {
            using M = std::decay_t<decltype(m)>;
            if constexpr (std::is_same_v<M, tock::StartupMode::Bench>) {
                return notYetBuilt(QStringLiteral("the rendering benchmark"));
            } else if constexpr (std::is_same_v<M, tock::StartupMode::FlipDemo>) {
                return notYetBuilt(QStringLiteral("the split-flap demonstration"));
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
