// Test double for the store's file system: the real one in a temporary folder, plus failures
// injected by operation and path, as a full disk or a refusing folder would produce them.
#pragma once

#include "files.h"
#include "filesystem.h"
#include "storeerror.h"

#include <QDir>
#include <QFile>
#include <QList>
#include <QString>

#include <functional>

namespace tock::testing {

class FaultyFileSystem final : public FileSystem {
public:
    // `write` fails halfway through the data, `flush` after all of it has been written.
    enum class Op { createDirectories, read, createFile, write, flush, rename, move, copy, remove, setPermissions };

    struct Fault {
        Op op;
        QString pathEnding;  // matches either path of the call; empty matches every call
        QString reason;
    };
    QList<Fault> faults;
    int calls = 0;  // operations that change something or read a file's content
    // What reaches the device, and what is read back (every read is decoded).
    int fileFlushes = 0, folderFlushes = 0, renames = 0, reads = 0;

    void failOn(Op op, const QString &pathEnding = {}, const QString &reason = QStringLiteral("No space left on device"))
    {
        faults.append({op, pathEnding, reason});
    }

    bool exists(const QString &path) override { return real_->exists(path); }
    Kind kind(const QString &path) override { return real_->kind(path); }
    QStringList list(const QString &folder) override { return real_->list(folder); }
    QString resolveLinks(const QString &path) override { return real_->resolveLinks(path); }
    std::optional<int> permissions(const QString &path) override { return real_->permissions(path); }
    std::optional<Instant> modified(const QString &path) override { return real_->modified(path); }
    void setPermissions(const QString &path, int permissions) override
    {
        check(Op::setPermissions, path);
        real_->setPermissions(path, permissions);
    }
    void createDirectories(const QString &path) override { check(Op::createDirectories, path); real_->createDirectories(path); }
    QByteArray read(const QString &path) override
    {
        check(Op::read, path);
        ++reads;
        return real_->read(path);
    }
    void createFile(const QString &path) override { check(Op::createFile, path); real_->createFile(path); }
    void writeSynced(const QString &path, const QByteArray &data) override
    {
        if (const Fault *f = match(Op::write, path)) {
            real_->writeSynced(path, data.left(data.size() / 2));
            throw FileSystemError{f->reason};
        }
        real_->writeSynced(path, data);
        check(Op::flush, path);
        ++fileFlushes;
    }
    void rename(const QString &from, const QString &to) override
    {
        check(Op::rename, from, to);
        real_->rename(from, to);
        ++renames;
    }
    void move(const QString &from, const QString &to) override { check(Op::move, from, to); real_->move(from, to); }
    void copy(const QString &from, const QString &to) override { check(Op::copy, from, to); real_->copy(from, to); }
    void remove(const QString &path) override { check(Op::remove, path); real_->remove(path); }
    void syncDirectory(const QString &path) override
    {
        ++folderFlushes;
        real_->syncDirectory(path);
    }

private:
    const Fault *match(Op op, const QString &a, const QString &b = {})
    {
        ++calls;
        for (const Fault &f : faults)
            if (f.op == op && (f.pathEnding.isEmpty() || a.endsWith(f.pathEnding) || (!b.isEmpty() && b.endsWith(f.pathEnding))))
                return &f;
        return nullptr;
    }
    void check(Op op, const QString &a, const QString &b = {})
    {
        if (const Fault *f = match(op, a, b))
            throw FileSystemError{f->reason};
    }

    std::shared_ptr<FileSystem> real_ = FileSystem::real();
};

// What `action` threw: a StoreError's description; empty when it threw nothing.
inline QString failure(const std::function<void()> &action)
{
    try {
        action();
    } catch (const StoreError &e) {
        return e.description();
    }
    return QString();
}

} // namespace tock::testing
