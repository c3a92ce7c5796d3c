// Whole files and folders in and out, for tests that set up or inspect a data folder directly.
#pragma once

#include <QByteArray>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QString>

#include <sys/stat.h>

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

// The permission bits of `path` itself (a link is not followed); -1 when there is nothing.
inline int modeOf(const QString &path)
{
    struct stat st;
    return ::lstat(QFile::encodeName(path).constData(), &st) == 0 ? int(st.st_mode & 07777) : -1;
}

// Every entry under `root` (hidden ones included) by relative path with its content: "<dir>" for
// a folder, so that a vanished empty one shows too, and "<other>" for anything not a regular file.
inline QMap<QString, QByteArray> folderContents(const QString &root)
{
    QMap<QString, QByteArray> result;
    QDirIterator it(root, QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot | QDir::System, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        result.insert(QDir(root).relativeFilePath(path), it.fileInfo().isDir()    ? QByteArrayLiteral("<dir>")
                                                         : it.fileInfo().isFile() ? readFile(path)
                                                                                  : QByteArrayLiteral("<other>"));
    }
    return result;
}

} // namespace tock::testing
