// Whole files in and out, for tests that set up or inspect a data folder directly.
#pragma once

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QString>

namespace tock::testing {

// Writes `data` to `path`, making its folder; a test that cannot set up its files stops here.
inline void writeFile(const QString &path, const QByteArray &data)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate) || f.write(data) != data.size())
        qFatal("cannot write test file %s", qPrintable(path));
}

// The file's bytes; empty when it cannot be read.
inline QByteArray readFile(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

} // namespace tock::testing
