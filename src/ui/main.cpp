// The tock executable: the window by default, the terminal with --shell, the self-check with
// --selftest, still renders with --screenshots and the rendering benchmark with --bench. The
// terminal and the self-check run on Qt Core alone, without any display; the modes that draw
// are in the window module (windowmain.h), opened only for them.
#include "reportmode.h"
#include "selftest.h"
#include "startup.h"
#include "terminal.h"

#ifdef TOCK_WINDOW_LINKED
#include "windowmain.h"
#elif defined(TOCK_WINDOW_MODULE)
#include "windowmain.h"

#include <climits>
#include <dlfcn.h>
#include <string>
#include <unistd.h>
#endif

#include <QCoreApplication>
#include <QTextStream>

namespace {

QStringList argumentsOf(int argc, char **argv)
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    return arguments;
}

#ifdef TOCK_WINDOW_MODULE
// The module's file: where an install puts it relative to the executable, else beside the
// executable (the build tree).
std::string windowModulePath()
{
    char buffer[PATH_MAX];
    const ssize_t size = ::readlink("/proc/self/exe", buffer, sizeof buffer - 1);
    if (size <= 0)
        return TOCK_WINDOW_MODULE;
    const std::string executable(buffer, size_t(size));
    const std::string folder = executable.substr(0, executable.rfind('/') + 1);
    const std::string installed = folder + TOCK_WINDOW_INSTALLED "/" TOCK_WINDOW_MODULE;
    return ::access(installed.c_str(), F_OK) == 0 ? installed : folder + TOCK_WINDOW_MODULE;
}

int runWindowModule(int argc, char **argv)
{
    const std::string path = windowModulePath();
    // Bound lazily, as the executable's own symbols were when it linked the window itself.
    void *module = ::dlopen(path.c_str(), RTLD_LAZY | RTLD_LOCAL);
    const auto entry = module ? reinterpret_cast<TockWindowMain>(::dlsym(module, TOCK_WINDOW_ENTRY)) : nullptr;
    if (!entry) {
        QTextStream(stderr) << "tock: the window cannot be loaded (" << ::dlerror()
                            << "); run `tock --shell` to use your timers in this terminal\n";
        return 1;
    }
    return entry(argc, argv);
}
#endif

} // namespace

int main(int argc, char **argv)
{
    const tock::StartupMode mode = tock::StartupMode::parse(argumentsOf(argc, argv));
    [[maybe_unused]] const bool windowless = std::holds_alternative<tock::StartupMode::SelfTest>(mode.value)
                         || std::holds_alternative<tock::StartupMode::Shell>(mode.value)
                         || std::holds_alternative<tock::StartupMode::Report>(mode.value)
                         || std::holds_alternative<tock::StartupMode::Export>(mode.value);
#ifdef TOCK_WINDOW_LINKED
    if (!windowless)
        return tockWindowMain(argc, argv);
#elif defined(TOCK_WINDOW_MODULE)
    if (!windowless)
        return runWindowModule(argc, argv);
#endif
    QCoreApplication application(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("Tock"));
    QCoreApplication::setApplicationName(QStringLiteral("Tock"));
    return std::visit(
        [](const auto &m) -> int {
            using M = std::decay_t<decltype(m)>;
            if constexpr (std::is_same_v<M, tock::StartupMode::Bench>) {
                QTextStream(stdout) << "this build of Tock has no window, so it has no rendering benchmark\n";
                return 0;
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
                // A build without the window keeps the terminal as its only interface.
                return tock::runTerminal({});
            }
        },
        mode.value);
}
