// Other programs for the tests that start them: the real executable run to its end, the timers
// it saved, a virtual display, folders of their own, and stopping what a test started.
#pragma once

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStringList>
#include <QTemporaryFile>
#include <QTest>

#include <cmath>

namespace tock::testing {

// What a program printed and how it ended; status -1 when it did not end normally in time.
struct Run {
    QString out, err;
    int status = -1;

    // Output lines, then error lines marked "! ", then "exit N".
    QStringList lines() const
    {
        if (status < 0)
            return {QStringLiteral("did not end normally")};
        QStringList result;
        for (const auto &[text, mark] : {std::pair{out, ""}, std::pair{err, "! "}}) {
            for (const QString &line : text.split(QLatin1Char('\n')).mid(0, text.count(QLatin1Char('\n'))))
                result << QLatin1String(mark) + line;
        }
        return result << QStringLiteral("exit %1").arg(status);
    }
};

inline Run run(const QString &program, const QStringList &arguments, const QProcessEnvironment &environment,
               const QByteArray &input = {}, int ms = 60000)
{
    QProcess p;
    p.setProcessEnvironment(environment);
    p.start(program, arguments);
    p.write(input);
    p.closeWriteChannel();
    if (!p.waitForFinished(ms)) {
        p.kill();
        p.waitForFinished();
    }
    return {QString::fromUtf8(p.readAllStandardOutput()), QString::fromUtf8(p.readAllStandardError()),
            p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1};
}

// The saved timers as "name=seconds" in order, '>' for '=' on a running one; empty while there
// is no readable file.
inline QStringList savedTimers(const QString &folder)
{
    QFile file(folder + QStringLiteral("/timers.json"));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QStringList out;
    for (const QJsonValue &v : QJsonDocument::fromJson(file.readAll()).object().value(QStringLiteral("timers")).toArray()) {
        const QJsonObject t = v.toObject();
        out << t.value(QStringLiteral("name")).toString() + (t.value(QStringLiteral("wasRunning")).toBool() ? ">" : "=")
                   + QString::number(std::floor(t.value(QStringLiteral("seconds")).toDouble()));
    }
    return out;
}

// Ends a program the test started: politely, then by force.
inline void stop(QProcess &p)
{
    if (p.state() == QProcess::NotRunning)
        return;
    p.terminate();
    if (!p.waitForFinished(5000)) {
        p.kill();
        p.waitForFinished();
    }
}

// Starts Xvfb on a display number it picks itself and, once the server takes connections (it
// says so by printing the number), points `environment` at it instead of the offscreen platform;
// false when it did not come.
inline bool startXvfb(QProcess &xvfb, const QString &program, QProcessEnvironment &environment)
{
    xvfb.start(program, {"-displayfd", "1", "-noreset", "-screen", "0", "1024x768x24", "-nolisten", "tcp"});
    if (!xvfb.waitForStarted())
        return false;
    QByteArray said;
    (void)QTest::qWaitFor([&] {
        said += xvfb.readAllStandardOutput();
        return said.contains('\n') || xvfb.state() == QProcess::NotRunning;
    }, 20000);
    bool ok = false;
    const int display = said.trimmed().toInt(&ok);
    environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
    environment.insert(QStringLiteral("DISPLAY"), QStringLiteral(":%1").arg(display));
    return ok && xvfb.state() == QProcess::Running;
}

// Gives the programs started with `environment` folders of their own under `home`: the data,
// the settings, and a private runtime folder for the control socket.
inline void useHome(QProcessEnvironment &environment, const QString &home)
{
    environment.insert(QStringLiteral("TOCK_DATA_DIR"), home + QStringLiteral("/data"));
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home + QStringLiteral("/config"));
    const QString runtime = home + QStringLiteral("/run");
    QDir().mkpath(runtime);
    QFile(runtime).setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime);
}

// Leaks the leak checker should not blame on Tock (libraries that keep buffers to the end), for
// the programs started with `environment`.
inline void suppressLeaks(QTemporaryFile &file, QProcessEnvironment &environment, const QStringList &libraries)
{
    if (!file.open())
        return;
    for (const QString &library : libraries)
        file.write("leak:" + library.toUtf8() + '\n');
    file.flush();
    environment.insert(QStringLiteral("LSAN_OPTIONS"),
                       environment.value(QStringLiteral("LSAN_OPTIONS")) + QStringLiteral(":suppressions=") + file.fileName());
}

} // namespace tock::testing
