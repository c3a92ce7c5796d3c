#include "endingsignals.h"

#include <QSocketNotifier>

#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

namespace tock {

namespace {
constexpr int endingSignals[] = {SIGINT, SIGTERM, SIGHUP};
} // namespace

EndingSignals::EndingSignals(QObject *context, std::function<void()> onSignal)
{
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, fds_) != 0)
        return;
    notifier_ = std::make_unique<QSocketNotifier>(fds_[1], QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, context, std::move(onSignal));
    writeEnd_ = fds_[0];
    for (const int signal : endingSignals) {
        struct sigaction action = {};
        action.sa_handler = &EndingSignals::handle;
        sigemptyset(&action.sa_mask);
        action.sa_flags = SA_RESTART;
        ::sigaction(signal, &action, nullptr);
    }
}

EndingSignals::~EndingSignals()
{
    if (!notifier_)
        return;
    for (const int signal : endingSignals)
        ::signal(signal, SIG_DFL);
    writeEnd_ = -1;
    notifier_.reset();
    ::close(fds_[0]);
    ::close(fds_[1]);
}

void EndingSignals::handle(int)
{
    const char byte = 1;
    if (writeEnd_ >= 0) {
        const ssize_t written = ::write(writeEnd_, &byte, 1);
        (void)written; // nothing sensible to do in a handler if the socket is full
    }
}

} // namespace tock
