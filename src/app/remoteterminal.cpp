#include "remoteterminal.h"

#include "terminalsession.h"

#include <cerrno>
#include <unistd.h>

namespace tock {

namespace {

// Standard input one line at a time, blocking: this process has nothing else to do meanwhile.
class InputLines {
public:
    std::optional<QString> next()
    {
        for (;;) {
            const qsizetype end = pending_.indexOf('\n');
            if (end >= 0) {
                QByteArray line = pending_.left(end);
                pending_.remove(0, end + 1);
                return text(line);
            }
            if (ended_)
                return std::nullopt;
            char buffer[4096];
            const ssize_t count = ::read(STDIN_FILENO, buffer, sizeof buffer);
            if (count < 0 && errno == EINTR)
                continue;
            if (count <= 0) {
                ended_ = true;
                if (!pending_.isEmpty())
                    return text(std::exchange(pending_, {}));
                return std::nullopt;
            }
            pending_.append(buffer, count);
        }
    }

private:
    static QString text(QByteArray line)
    {
        if (line.endsWith('\r'))
            line.chop(1);
        return QString::fromUtf8(line);
    }

    QByteArray pending_;
    bool ended_ = false;
};

} // namespace

std::optional<int> runOnRunningCopy(const QStringList &lines, const QString &socketPath, QTextStream &out,
                                    QTextStream &err, int answerMs)
{
    if (!ControlClient::ping(socketPath, answerMs))
        return std::nullopt;

    bool failed = false;
    bool exited = false;
    QStringList lastUnsaved;
    // False once the window is gone or `exit` ran.
    const auto send = [&](const QStringList &batch) {
        const std::optional<QList<ControlReply>> replies = ControlClient::run(socketPath, batch, answerMs);
        if (!replies) {
            err << "the running Tock stopped answering\n";
            err.flush();
            failed = true;
            return false;
        }
        for (const ControlReply &reply : *replies) {
            QTextStream &stream = reply.isError ? err : out;
            for (const QString &line : reply.lines)
                stream << line << '\n';
            stream.flush();
            failed = failed || reply.failed || !reply.saved;
            // The window could not save the change: the same words as a terminal run's, once.
            if (reply.unsaved != lastUnsaved) {
                for (const QString &line : reply.unsaved)
                    err << line << '\n';
                err.flush();
                lastUnsaved = reply.unsaved;
            }
            exited = exited || reply.exit;
        }
        return !exited && replies->size() == batch.size();
    };

    if (!lines.isEmpty()) {
        send(lines);
    } else {
        const bool interactive = isatty(STDIN_FILENO);
        InputLines input;
        for (;;) {
            if (interactive) {
                out << "tock> ";
                out.flush();
            }
            const std::optional<QString> line = input.next();
            if (!line)
                break;
            if (!send({*line}))
                break;
        }
        if (interactive && !exited) {
            out << '\n';
            out.flush();
        }
    }
    return failed ? TerminalStatus::failed : TerminalStatus::succeeded;
}

} // namespace tock
