#include "controlclient.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QJsonObject>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace tock {

namespace {

// Far more than any reply of a command; a peer sending more is not a Tock window.
constexpr qsizetype maxReplyBytes = 1024 * 1024;

// Plain POSIX sockets: the terminal that asks a window to run its lines loads nothing beyond
// Qt Core.
#ifdef MSG_NOSIGNAL
constexpr int sendFlags = MSG_NOSIGNAL; // a window that hung up fails the write, not the process
#else
constexpr int sendFlags = 0; // SO_NOSIGPIPE is set on the socket instead
#endif

// Waits until `fd` is ready for `events` or the deadline passes; false on the deadline.
bool await(int fd, short events, const QDeadlineTimer &deadline)
{
    for (;;) {
        pollfd entry{fd, events, 0};
        const qint64 left = deadline.isForever() ? 60000 : std::clamp<qint64>(deadline.remainingTime(), 0, 60000);
        const int ready = ::poll(&entry, 1, int(left));
        if (ready > 0)
            return true;
        if (ready == 0 && deadline.hasExpired())
            return false;
        if (ready < 0 && errno != EINTR)
            return false;
    }
}

// One connection, asked one thing at a time, each with its own deadline.
class Exchange {
public:
    Exchange() = default;
    Exchange(const Exchange &) = delete;
    Exchange &operator=(const Exchange &) = delete;
    ~Exchange()
    {
        if (fd_ >= 0)
            ::close(fd_);
    }

    bool connect(const QString &path, const QDeadlineTimer &deadline)
    {
        const QByteArray name = QFile::encodeName(path);
        sockaddr_un address = {};
        if (name.isEmpty() || size_t(name.size()) >= sizeof address.sun_path)
            return false;
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path, name.constData(), size_t(name.size()));
        fd_ = ::socket(AF_UNIX, SOCK_STREAM, 0);
        if (fd_ < 0)
            return false;
        ::fcntl(fd_, F_SETFD, FD_CLOEXEC);
        ::fcntl(fd_, F_SETFL, ::fcntl(fd_, F_GETFL) | O_NONBLOCK);
#ifdef Q_OS_MACOS
        const int on = 1;
        ::setsockopt(fd_, SOL_SOCKET, SO_NOSIGPIPE, &on, sizeof on);
#endif
        for (;;) {
            if (::connect(fd_, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0)
                return true;
            if (errno == EINTR)
                continue;
            if (errno == EINPROGRESS) {
                int error = 0;
                socklen_t size = sizeof error;
                return await(fd_, POLLOUT, deadline) && ::getsockopt(fd_, SOL_SOCKET, SO_ERROR, &error, &size) == 0
                    && error == 0;
            }
            // A server whose queue of new connections is full: try again shortly.
            if (errno != EAGAIN || deadline.hasExpired())
                return false;
            ::poll(nullptr, 0, 10);
        }
    }

    std::optional<QJsonObject> ask(const QByteArray &request, const QDeadlineTimer &deadline)
    {
        for (qsizetype sent = 0; sent < request.size();) {
            const ssize_t count = ::send(fd_, request.constData() + sent, size_t(request.size() - sent), sendFlags);
            if (count > 0) {
                sent += count;
            } else if (count < 0 && errno == EINTR) {
                continue;
            } else if (count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
                if (!await(fd_, POLLOUT, deadline))
                    return std::nullopt;
            } else {
                return std::nullopt;
            }
        }
        qsizetype end;
        while ((end = received_.indexOf('\n')) < 0) {
            if (received_.size() > maxReplyBytes)
                return std::nullopt;
            char buffer[4096];
            const ssize_t count = ::recv(fd_, buffer, sizeof buffer, 0);
            if (count > 0) {
                received_.append(buffer, count);
            } else if (count < 0 && errno == EINTR) {
                continue;
            } else if (count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
                if (!await(fd_, POLLIN, deadline))
                    return std::nullopt;
            } else {
                return std::nullopt; // the window hung up
            }
        }
        const QByteArray line = received_.left(end);
        received_.remove(0, end + 1);
        return ControlSocket::decode(line);
    }

private:
    int fd_ = -1;
    QByteArray received_;
};

ControlReply failure(const QString &message)
{
    return {{message}, true, true, false};
}

} // namespace

bool ControlClient::ping(const QString &path, int timeoutMs)
{
    const QDeadlineTimer deadline(timeoutMs);
    Exchange exchange;
    if (!exchange.connect(path, deadline))
        return false;
    const std::optional<QJsonObject> answer = exchange.ask(ControlSocket::pingRequest(), deadline);
    return answer && answer->value(QStringLiteral("ok")).toBool();
}

std::optional<bool> ControlClient::raise(const QString &path, int timeoutMs, const ActivationTokens &tokens)
{
    const QDeadlineTimer deadline(timeoutMs);
    Exchange exchange;
    if (!exchange.connect(path, deadline))
        return std::nullopt;
    const std::optional<QJsonObject> answer = exchange.ask(ControlSocket::raiseRequest(tokens), deadline);
    if (!answer || !answer->value(QStringLiteral("ok")).isBool())
        return std::nullopt;
    return answer->value(QStringLiteral("ok")).toBool();
}

std::optional<QList<ControlReply>> ControlClient::run(const QString &path, const QStringList &lines, int timeoutMs)
{
    const QDeadlineTimer deadline(timeoutMs);
    Exchange exchange;
    if (!exchange.connect(path, deadline))
        return std::nullopt;
    const std::optional<QJsonObject> greeting = exchange.ask(ControlSocket::pingRequest(), deadline);
    if (!greeting || !greeting->value(QStringLiteral("ok")).toBool())
        return std::nullopt;

    QList<Reply> replies;
    for (const QString &line : lines) {
        const std::optional<QJsonObject> answer = exchange.ask(ControlSocket::runRequest(line), QDeadlineTimer(lineMs));
        if (!answer) {
            replies << failure(QStringLiteral("the running Tock stopped answering"));
            break;
        }
        if (const QJsonValue refused = answer->value(QStringLiteral("refused")); refused.isString()) {
            replies << failure(refused.toString());
            break;
        }
        const std::optional<Reply> reply = ControlSocket::runReplyFrom(*answer);
        if (!reply) {
            replies << failure(QStringLiteral("the running Tock sent a reply this copy cannot read"));
            break;
        }
        replies << *reply;
        if (reply->exit)
            break;
    }
    return replies;
}

} // namespace tock
