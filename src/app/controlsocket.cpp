#include "controlsocket.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QStandardPaths>

#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tock::ControlSocket {

namespace {

// Empty for a real folder (not a link to one) of this user that nobody else may enter, list or
// write; else what is wrong with it.
QString folderProblem(const QString &folder)
{
    struct stat status = {};
    if (::lstat(QFile::encodeName(folder).constData(), &status) != 0)
        return QStringLiteral("%1 cannot be made").arg(folder);
    if (S_ISLNK(status.st_mode))
        return QStringLiteral("%1 is a symbolic link").arg(folder);
    if (!S_ISDIR(status.st_mode))
        return QStringLiteral("%1 is not a folder").arg(folder);
    if (status.st_uid != ::geteuid())
        return QStringLiteral("%1 belongs to another user").arg(folder);
    if ((status.st_mode & 077) != 0)
        return QStringLiteral("%1 is open to other users").arg(folder);
    return {};
}

QString runtimeFolder()
{
#ifndef Q_OS_MACOS
    // Without the variable the lookup warns on standard error and makes a folder of its own;
    // ours below is made and checked the same way, quietly.
    if (qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR"))
        return {};
#endif
    return QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
}

QString madeTempFolder()
{
    const QString folder = QDir::tempPath() + QStringLiteral("/tock-") + QString::number(::geteuid());
    // Made with the final mode at once, so it is never open to others; one that exists already
    // is judged by isPrivateFolder like any other.
    ::mkdir(QFile::encodeName(folder).constData(), 0700);
    return folder;
}

QString canonicalFolder(const QString &dataDir)
{
    const QFileInfo info(dataDir);
    const QString canonical = info.canonicalFilePath();
    return canonical.isEmpty() ? QDir::cleanPath(info.absoluteFilePath()) : canonical;
}

QByteArray line(const QJsonObject &message)
{
    return QJsonDocument(message).toJson(QJsonDocument::Compact) + '\n';
}

} // namespace

QString path(const QString &dataDir)
{
    return locate(dataDir).path;
}

Location locate(const QString &dataDir)
{
    const QByteArray hash = QCryptographicHash::hash(canonicalFolder(dataDir).toUtf8(), QCryptographicHash::Sha256);
    const QString name = QStringLiteral("tock-") + QString::fromLatin1(hash.toHex().left(16)) + QStringLiteral(".sock");
    const auto inside = [&](const QString &folder) -> Location {
        if (folder.isEmpty())
            return {};
        const QString candidate = QDir::cleanPath(folder) + QLatin1Char('/') + name;
        if (QFile::encodeName(candidate).size() > maxPathBytes)
            return {{}, QStringLiteral("the path in %1 would be too long").arg(folder)};
        if (const QString problem = folderProblem(folder); !problem.isEmpty())
            return {{}, problem};
        return {candidate, {}};
    };
    const Location runtime = inside(runtimeFolder());
    return runtime.path.isEmpty() ? inside(madeTempFolder()) : runtime;
}

bool peerAllowed(uid_t peer, uid_t self)
{
    return peer == self;
}

std::optional<uid_t> peerUser(qintptr socketDescriptor)
{
    const int fd = int(socketDescriptor);
#ifdef Q_OS_MACOS
    uid_t uid = 0;
    gid_t gid = 0;
    if (::getpeereid(fd, &uid, &gid) != 0)
        return std::nullopt;
    return uid;
#else
    struct ucred credentials = {};
    socklen_t size = sizeof credentials;
    if (::getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &credentials, &size) != 0 || size != sizeof credentials)
        return std::nullopt;
    return credentials.uid;
#endif
}

QByteArray pingRequest()
{
    return line({{QStringLiteral("op"), QStringLiteral("ping")}});
}

QByteArray raiseRequest(const ActivationTokens &tokens)
{
    QJsonObject message{{QStringLiteral("op"), QStringLiteral("raise")}};
    if (!tokens.xdgActivationToken.isEmpty())
        message.insert(QStringLiteral("token"), tokens.xdgActivationToken);
    if (!tokens.startupId.isEmpty())
        message.insert(QStringLiteral("startupId"), tokens.startupId);
    return line(message);
}

ActivationTokens tokensFrom(const QJsonObject &message)
{
    return {message.value(QStringLiteral("token")).toString(), message.value(QStringLiteral("startupId")).toString()};
}

QByteArray runRequest(const QString &text)
{
    return line({{QStringLiteral("op"), QStringLiteral("run")}, {QStringLiteral("line"), text}});
}

QByteArray okReply(bool ok)
{
    return line({{QStringLiteral("ok"), ok}});
}

QByteArray runReply(const ControlReply &reply)
{
    return line({{QStringLiteral("lines"), QJsonArray::fromStringList(reply.lines)},
                 {QStringLiteral("isError"), reply.isError},
                 {QStringLiteral("failed"), reply.failed},
                 {QStringLiteral("exit"), reply.exit},
                 {QStringLiteral("saved"), reply.saved},
                 {QStringLiteral("unsaved"), QJsonArray::fromStringList(reply.unsaved)}});
}

QByteArray refusal(const QString &reason)
{
    return line({{QStringLiteral("refused"), reason}});
}

std::optional<QJsonObject> decode(const QByteArray &text)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(text, &error);
    if (error.error != QJsonParseError::NoError || !document.isObject())
        return std::nullopt;
    return document.object();
}

std::optional<ControlReply> runReplyFrom(const QJsonObject &message)
{
    const QJsonValue lines = message.value(QStringLiteral("lines"));
    if (!lines.isArray())
        return std::nullopt;
    ControlReply reply;
    for (const QJsonValue &value : lines.toArray()) {
        if (!value.isString())
            return std::nullopt;
        reply.lines << value.toString();
    }
    reply.isError = message.value(QStringLiteral("isError")).toBool();
    reply.failed = message.value(QStringLiteral("failed")).toBool();
    reply.exit = message.value(QStringLiteral("exit")).toBool();
    reply.saved = message.value(QStringLiteral("saved")).toBool(true);
    for (const QJsonValue &value : message.value(QStringLiteral("unsaved")).toArray())
        reply.unsaved << value.toString();
    return reply;
}

} // namespace tock::ControlSocket

namespace tock {

ActivationTokens ActivationTokens::fromEnvironment()
{
    return {qEnvironmentVariable("XDG_ACTIVATION_TOKEN"), qEnvironmentVariable("DESKTOP_STARTUP_ID")};
}

} // namespace tock
