// Where the copy holding a data folder listens for its other copies, who may talk to it, and the
// messages they exchange. The server and the client both build on this so they cannot disagree.
//
// The protocol is JSON lines over a local stream socket: every message is one compact JSON
// object encoded as UTF-8 and ended by a line feed ("\n"), and no line may exceed
// ControlSocket::maxLineBytes. A client sends a request, waits for its one reply, and may then
// send the next on the same connection.
//
//   requests   {"op":"ping"}                    is a window answering at all?
//              {"op":"raise"}                   bring the window to the front; may carry the
//                                               asker's "token" (XDG_ACTIVATION_TOKEN) and
//                                               "startupId" (DESKTOP_STARTUP_ID)
//              {"op":"run","line":"add Lunch"}  run one line as if typed at the prompt
//   replies    {"ok":true}                      to ping and raise (false: this copy cannot raise)
//              {"lines":["..."],"isError":false,"failed":false,"exit":false,"saved":true,"unsaved":[]}
//                                               to run; "saved" false when a change is not on
//                                               disk, "unsaved" then says why (error lines)
//              {"refused":"line too long"}      then the server closes the connection
//
// Anything else (not JSON, not an object, an unknown op, a run without a line) makes the server
// close the connection without a reply.
#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <optional>
#include <sys/types.h>

namespace tock {

// What running one line produced. `lines` go to standard output, or to standard error when
// `isError`; `failed` makes the terminal's exit status 1; `exit` ends the terminal's session
// (the window stays open).
struct ControlReply {
    QStringList lines;
    bool isError = false;
    bool failed = false;
    bool exit = false;
    // Every change is on disk (the window saved before answering); else `unsaved` holds the
    // lines the terminal prints to standard error for it, and the terminal's status is 1.
    bool saved = true;
    QStringList unsaved = {};
    bool operator==(const ControlReply &) const = default;
};

// What a desktop gave a second copy at launch so that the window it activates may take the
// focus: a Wayland compositor's activation token and an X11 startup-notification id. The copy
// that raises its window uses them instead of its own, which were used up at its start.
struct ActivationTokens {
    QString xdgActivationToken;
    QString startupId;
    bool operator==(const ActivationTokens &) const = default;

    // From XDG_ACTIVATION_TOKEN and DESKTOP_STARTUP_ID; read them before the GUI starts, as it
    // takes the startup id out of the environment.
    static ActivationTokens fromEnvironment();
};

namespace ControlSocket {

inline constexpr qsizetype maxLineBytes = 64 * 1024;
// Local socket addresses are short (104 bytes on some systems, with the terminating zero).
inline constexpr qsizetype maxPathBytes = 100;

// The socket for a data folder: "tock-<hash of the canonical folder>.sock" in a folder only
// this user can enter (the runtime folder, else "tock-<uid>" made with mode 0700 in the temp
// folder). Empty when no such folder is found or the path would be too long: then copies
// cannot talk, and a second copy acts as if none answered.
QString path(const QString &dataDir);
// The same, with why no folder could be had ("/tmp/tock-1000 belongs to another user") when
// `path` is empty.
struct Location {
    QString path;
    QString problem;
};
Location locate(const QString &dataDir);

// Whether a connection from user `peer` may talk to a server run by user `self`.
bool peerAllowed(uid_t peer, uid_t self);
// The user at the other end of a connected local socket; absent when the system will not say.
std::optional<uid_t> peerUser(qintptr socketDescriptor);

// Messages, each already ended by a line feed.
QByteArray pingRequest();
QByteArray raiseRequest(const ActivationTokens &tokens = {});
QByteArray runRequest(const QString &line);
QByteArray okReply(bool ok);
QByteArray runReply(const ControlReply &reply);
QByteArray refusal(const QString &reason);

// One line without its line feed as a JSON object; absent when it is not one.
std::optional<QJsonObject> decode(const QByteArray &line);
// The tokens a raise request carries (empty strings where it has none).
ActivationTokens tokensFrom(const QJsonObject &message);
// A run reply; absent when `message` is not one.
std::optional<ControlReply> runReplyFrom(const QJsonObject &message);

} // namespace ControlSocket

} // namespace tock
