#include "controlserver.h"

#include "appmodel.h"
#include "terminal.h"

#include <QJsonObject>
#include <QLocalServer>
#include <QLocalSocket>
#include <QPointer>
#include <QTimer>

#include <unistd.h>

namespace tock {

namespace {

// Requests come one at a time, each waiting for its reply; a client that piles up more than
// this unread is not following the protocol.
constexpr qsizetype maxPendingBytes = 4 * ControlSocket::maxLineBytes;

// A client that hung up before its reply gets none (writing to it would only warn).
void send(QLocalSocket *socket, const QByteArray &message)
{
    if (socket && socket->state() == QLocalSocket::ConnectedState)
        socket->write(message);
}

} // namespace

// One client: what it sent that is not handled yet, and the timer that drops it when it stalls.
// A child of its socket, so both go together.
class ControlServer::Connection : public QObject {
public:
    explicit Connection(QLocalSocket *s) : QObject(s), socket(s) { stall.setSingleShot(true); }

    QLocalSocket *socket;
    QTimer stall;
    QByteArray pending;
    bool busy = false;    // a handler is running (it might turn the event loop)
    bool closing = false; // refused or dropped: nothing more is read
};

ControlServer::ControlServer(QString path, QObject *parent)
    : QObject(parent), path_(std::move(path)), server_(new QLocalServer(this))
{
    connect(server_, &QLocalServer::newConnection, this, &ControlServer::acceptPending);
}

ControlServer::~ControlServer()
{
    // Its sockets go first, while the client count they update still exists.
    delete server_;
}

bool ControlServer::listen()
{
    if (path_.isEmpty())
        return false;
    QLocalServer::removeServer(path_);
    // Access is limited by the private folder; the option that widens it replaces the socket
    // file under a live server and is never used.
    server_->setSocketOptions(QLocalServer::NoOptions);
    return server_->listen(path_);
}

bool ControlServer::isListening() const
{
    return server_->isListening();
}

QString ControlServer::errorString() const
{
    if (path_.isEmpty())
        return QStringLiteral("no private folder for the control socket");
    return server_->errorString();
}

void ControlServer::acceptPending()
{
    // Beyond the limit, connections wait in the queue; the stall timeout frees a place soon.
    while (clients_ < maxClients_) {
        QLocalSocket *socket = server_->nextPendingConnection();
        if (!socket)
            break;
        const std::optional<uid_t> peer = ControlSocket::peerUser(socket->socketDescriptor());
        if (!peer || !ControlSocket::peerAllowed(*peer, ::geteuid())) {
            socket->abort();
            socket->deleteLater();
            continue;
        }
        adopt(socket);
    }
}

void ControlServer::adopt(QLocalSocket *socket)
{
    ++clients_;
    connect(socket, &QObject::destroyed, this, [this] {
        --clients_;
        QMetaObject::invokeMethod(this, &ControlServer::acceptPending, Qt::QueuedConnection);
    });
    auto *connection = new Connection(socket);
    connection->stall.setInterval(stallMs_);
    connect(&connection->stall, &QTimer::timeout, socket, [socket] {
        socket->abort();
        socket->deleteLater();
    });
    connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
    const auto read = [this, connection] {
        const QByteArray data = connection->socket->readAll();
        if (connection->closing)
            return;
        connection->pending += data;
        serveNext(connection);
    };
    connect(socket, &QLocalSocket::readyRead, connection, read);
    connection->stall.start();
    // A connection that waited its turn may have sent its request already.
    if (socket->bytesAvailable() > 0)
        QTimer::singleShot(0, connection, read);
}

void ControlServer::serveNext(Connection *connection)
{
    if (connection->busy || connection->closing)
        return;
    const qsizetype end = connection->pending.indexOf('\n');
    if ((end < 0 ? connection->pending.size() : end) > ControlSocket::maxLineBytes) {
        refuse(connection, QStringLiteral("line too long"));
        return;
    }
    if (connection->pending.size() > maxPendingBytes) {
        refuse(connection, QStringLiteral("too many requests at once"));
        return;
    }
    if (end < 0)
        return;
    const QByteArray line = connection->pending.left(end);
    connection->pending.remove(0, end + 1);
    connection->stall.start();

    const QPointer<Connection> alive(connection);
    connection->busy = true;
    handle(connection, line);
    if (!alive)
        return;
    connection->busy = false;
    // One request per turn of the event loop, so a client with a backlog cannot hold it.
    if (!connection->closing && connection->pending.contains('\n'))
        QTimer::singleShot(0, connection, [this, connection] { serveNext(connection); });
}

void ControlServer::handle(Connection *connection, const QByteArray &line)
{
    const std::optional<QJsonObject> message = ControlSocket::decode(line);
    const QString op = message ? message->value(QStringLiteral("op")).toString() : QString();
    const QPointer<QLocalSocket> socket(connection->socket);
    if (op == QLatin1String("ping")) {
        send(socket, ControlSocket::okReply(true));
    } else if (op == QLatin1String("raise")) {
        const bool canRaise = bool(onRaise_);
        if (canRaise)
            onRaise_(ControlSocket::tokensFrom(*message));
        send(socket, ControlSocket::okReply(canRaise));
    } else if (op == QLatin1String("run") && message->value(QStringLiteral("line")).isString()) {
        const QString text = message->value(QStringLiteral("line")).toString();
        const Reply reply = onRun_ ? onRun_(text) : Reply{{QStringLiteral("this copy of Tock runs no commands")}, true, true, false};
        send(socket, ControlSocket::runReply(reply));
    } else {
        connection->closing = true;
        socket->abort();
        socket->deleteLater();
    }
}

void ControlServer::refuse(Connection *connection, const QString &reason)
{
    connection->closing = true;
    connection->pending.clear();
    send(connection->socket, ControlSocket::refusal(reason));
    // Closes once the refusal is out; the stall timer ends a client that never reads it.
    connection->socket->disconnectFromServer();
    connection->stall.start();
}

ControlServer::Reply ControlServer::runOnModel(AppModel &model, const QString &line)
{
    // `exit` ends the caller's session; the window stays.
    const ShellSession::Result result = model.shell().run(line);
    Reply reply{result.lines, result.failed, result.failed, result.exit};
    // Answered only once the change is on disk, or with why it is not.
    if (!result.exit && !model.saveNow()) {
        reply.saved = false;
        reply.unsaved = unsavedChangeLines(model);
    }
    return reply;
}

} // namespace tock
