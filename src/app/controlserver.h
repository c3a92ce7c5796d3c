// The listening end of the control socket, owned by the copy that holds the data folder's lock:
// a second `tock` asks it to come to the front, and `tock --shell` has it run command lines at
// its prompt. It lives in the window's event loop and never waits on a client: requests are
// read as they arrive, a line over 64 KB is refused, malformed input and clients that stall or
// belong to another user are dropped, and only a few clients are served at once. The protocol
// is described in controlsocket.h.
#pragma once

#include "controlsocket.h"

#include <QObject>
#include <QString>

#include <functional>

class QLocalServer;
class QLocalSocket;

namespace tock {

class AppModel;

class ControlServer : public QObject {
    Q_OBJECT
public:
    using Reply = ControlReply;

    // Short, so that idle connections cannot crowd out a real client, which waits
    // ControlClient::answerMs for its first answer.
    static constexpr int defaultStallMs = 1000;
    static constexpr int defaultMaxClients = 8;

    // Does not listen yet. `path` is normally ControlSocket::path(the data folder).
    explicit ControlServer(QString path, QObject *parent = nullptr);
    ~ControlServer() override;

    // Replaces whatever is at the path (a socket left by a copy that died: only the lock holder
    // may call this, as it cuts off a live server) and listens. False, with errorString(), when
    // the path is empty or listening fails.
    bool listen();
    bool isListening() const;
    QString errorString() const;
    const QString &path() const { return path_; }

    // What a raise request does (show, raise, activate, with the asker's tokens). Without it
    // raise answers false.
    void setOnRaise(std::function<void(const ActivationTokens &)> handler) { onRaise_ = std::move(handler); }
    // What a run request does. Without it every line fails.
    void setOnRun(std::function<Reply(const QString &line)> handler) { onRun_ = std::move(handler); }

    // A client is dropped when this long passes without a complete request (also while a
    // refusal waits to be read).
    void setStallTimeout(int milliseconds) { stallMs_ = milliseconds; }
    // Connections beyond this many wait unread until one of the others ends.
    void setMaxClients(int count) { maxClients_ = count; }
    int clientCount() const { return clients_; }

    // Runs `line` through the model's shell session (ShellSession::run: history, undo and
    // output are the window's; whatever the user was typing stays). Saves before answering:
    // `saved` says whether every change is on disk. `exit` is only reported: it ends the
    // caller's session and must not close the window. Install with
    //     server.setOnRun([&model](const QString &l) { return ControlServer::runOnModel(model, l); });
    static Reply runOnModel(AppModel &model, const QString &line);

private:
    class Connection;

    void acceptPending();
    void adopt(QLocalSocket *socket);
    void serveNext(Connection *connection);
    void handle(Connection *connection, const QByteArray &line);
    void refuse(Connection *connection, const QString &reason);

    QString path_;
    QLocalServer *server_;
    std::function<void(const ActivationTokens &)> onRaise_;
    std::function<Reply(const QString &)> onRun_;
    int stallMs_ = defaultStallMs;
    int maxClients_ = defaultMaxClients;
    int clients_ = 0;
};

} // namespace tock
