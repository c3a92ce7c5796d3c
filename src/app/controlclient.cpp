#include "controlclient.h"

#include <QDeadlineTimer>
#include <QJsonObject>
#include <QLocalSocket>

#include <algorithm>
#include <limits>

namespace tock {

namespace {

// Far more than any reply of a command; a peer sending more is not a Tock window.
constexpr qsizetype maxReplyBytes = 1024 * 1024;

int remaining(const QDeadlineTimer &deadline)
{
    return int(std::clamp<qint64>(deadline.remainingTime(), 0, std::numeric_limits<int>::max()));
}

// One connection, asked one thing at a time, each with its own deadline.
class Exchange {
public:
    bool connect(const QString &path, const QDeadlineTimer &deadline)
    {
        if (path.isEmpty())
            return false;
        socket_.connectToServer(path);
        return socket_.waitForConnected(remaining(deadline));
    }

    std::optional<QJsonObject> ask(const QByteArray &request, const QDeadlineTimer &deadline)
    {
        socket_.write(request);
        while (socket_.bytesToWrite() > 0) {
            if (!socket_.waitForBytesWritten(remaining(deadline)))
                return std::nullopt;
        }
        qsizetype end;
        while ((end = received_.indexOf('\n')) < 0) {
            if (received_.size() > maxReplyBytes)
                return std::nullopt;
            if (!socket_.bytesAvailable() && !socket_.waitForReadyRead(remaining(deadline)) && !socket_.bytesAvailable())
                return std::nullopt;
            received_ += socket_.readAll();
        }
        const QByteArray line = received_.left(end);
        received_.remove(0, end + 1);
        return ControlSocket::decode(line);
    }

private:
    QLocalSocket socket_;
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
