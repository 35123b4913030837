#include "RegistryHive.h"

#include "RegEditFormat.h"
#include "RegistryKey.h"

#include <functional>
#include <optional>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QMutexLocker>
#include <QSaveFile>
#include <QThread>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

// A writer that holds the lock longer than this is taken for dead (a crashed
// process whose id was reused); QLockFile notices a dead owner by itself anyway.
constexpr int StaleLockMs = 30000;
// How long a write waits for another process's write before giving up.
constexpr int LockWaitMs = 10000;
constexpr int LockPollMs = 2;

// The parts of a sub-key path; nullopt when the path is not one the registry
// accepts (an empty part, a part over 255 characters). One trailing backslash
// is tolerated as the registry tolerates it.
std::optional<QStringList> splitPath(const QString &path)
{
    QString trimmed = path;
    if (trimmed.endsWith(u'\\'))
        trimmed.chop(1);
    if (trimmed.isEmpty())
        return QStringList();
    const QStringList parts = trimmed.split(u'\\');
    for (const QString &part : parts) {
        if (!RegEditFormat::isValidKeyName(part))
            return std::nullopt;
    }
    return parts;
}

} // namespace

struct RegistryHive::Private
{
    // Damaged: read without the lines that could not be parsed; such a file
    // is never written, as a Corrupt one (no hive at all) is not.
    enum class DiskState { Readable, Damaged, Unreadable, Corrupt };

    QString filePath;
    QString rootName;
    bool restrictive = false;

    mutable QMutex mutex;
    // The file as last read. Reads compare the bytes on disk with diskBytes and
    // parse again only when they differ, so a change by the server or a second
    // console is seen by the next read.
    mutable RegistryKey disk;
    mutable QByteArray diskBytes;
    mutable bool loaded = false;
    mutable bool fileExists = false;
    mutable DiskState state = DiskState::Readable;
    mutable QString parseError;
    mutable QString reportedError;

    // Volatile keys, which never reach the file. Keys on the way down to them
    // that live in the file appear here as non-volatile placeholders.
    RegistryKey volatileRoot;

    void refresh() const;
    // The volatile key at path, or nullptr when the path is not a volatile key.
    RegistryKey *volatileKey(const QStringList &path);
    const RegistryKey *diskKey(const QStringList &path) const;
    qint32 readFailure() const;
    bool readable() const { return state == DiskState::Readable || state == DiskState::Damaged; }
    // Runs change on a copy of the file's tree under the cross-process lock
    // and writes the result when change reports a modification.
    qint32 modifyFile(const std::function<qint32(RegistryKey &root, bool &changed)> &change);
};

void RegistryHive::Private::refresh() const
{
    QFile file(filePath);
    if (!file.exists()) {
        // A missing file is an empty hive; the first write creates it.
        disk = RegistryKey(rootName);
        diskBytes.clear();
        fileExists = false;
        loaded = true;
        state = DiskState::Readable;
        parseError.clear();
        return;
    }
    if (!file.open(QIODevice::ReadOnly)) {
        loaded = false;
        state = DiskState::Unreadable;
        return;
    }
    const QByteArray bytes = file.readAll();
    if (loaded && fileExists && bytes == diskBytes)
        return;

    diskBytes = bytes;
    fileExists = true;
    loaded = true;
    RegEditFormat::ParseResult result = RegEditFormat::parse(bytes, rootName);
    const QString where = QDir::toNativeSeparators(filePath);
    if (result.ok && result.skipped.isEmpty()) {
        disk = std::move(result.root);
        state = DiskState::Readable;
        parseError.clear();
        return;
    }
    if (result.ok) {
        disk = std::move(result.root);
        state = DiskState::Damaged;
        QStringList lines;
        for (const RegEditFormat::Skipped &skipped : std::as_const(result.skipped))
            lines << u"%1:%2: %3"_s.arg(where).arg(skipped.line).arg(skipped.reason);
        parseError = lines.join(u'\n');
    } else {
        disk = RegistryKey(rootName);
        state = DiskState::Corrupt;
        parseError = u"%1:%2: %3"_s.arg(where).arg(result.errorLine).arg(result.errorReason);
    }
    if (parseError != reportedError) {
        reportedError = parseError;
        qWarning("Registry hive cannot be parsed and will not be written: %s",
            qUtf8Printable(parseError));
    }
}

RegistryKey *RegistryHive::Private::volatileKey(const QStringList &path)
{
    RegistryKey *key = volatileRoot.find(path);
    return key && key->isVolatile() ? key : nullptr;
}

const RegistryKey *RegistryHive::Private::diskKey(const QStringList &path) const
{
    return state == DiskState::Readable || state == DiskState::Damaged ? disk.find(path) : nullptr;
}

qint32 RegistryHive::Private::readFailure() const
{
    // A hive that cannot be parsed reads as if the value were missing.
    return state == DiskState::Unreadable ? RegistryStatus::AccessDenied
                                          : RegistryStatus::FileNotFound;
}

qint32 RegistryHive::Private::modifyFile(
    const std::function<qint32(RegistryKey &root, bool &changed)> &change)
{
    const QFileInfo info(filePath);
    if (!QDir().mkpath(info.absolutePath()))
        return RegistryStatus::AccessDenied;

    QLockFile lock(filePath + u".lock"_s);
    lock.setStaleLockTime(StaleLockMs);
    // Polled in short steps: a write holds the lock for milliseconds, and the
    // lock's own waiting backs off to sleeps far longer than that.
    const QDeadlineTimer deadline(LockWaitMs);
    while (!lock.tryLock(0)) {
        if (lock.error() == QLockFile::PermissionError)
            return RegistryStatus::AccessDenied;
        if (deadline.hasExpired())
            return RegistryStatus::WriteFault;
        QThread::msleep(LockPollMs);
    }

    // Whatever another process wrote since our last read is the base of this change.
    refresh();
    if (state == DiskState::Corrupt || state == DiskState::Damaged)
        return RegistryStatus::BadDatabase;
    if (state == DiskState::Unreadable)
        return RegistryStatus::AccessDenied;

    RegistryKey updated = disk;
    bool changed = false;
    const qint32 status = change(updated, changed);
    if (status != RegistryStatus::Success || !changed)
        return status;

    const QByteArray bytes = RegEditFormat::serialize(updated, rootName);
    QSaveFile file(filePath);
    if (!file.open(QIODevice::WriteOnly))
        return RegistryStatus::AccessDenied;
    // Set on the temporary file, so the secrets are never readable by others,
    // not even for the moment between rename and chmod. An existing file keeps
    // whatever mode its owner gave it.
    if (restrictive && !fileExists)
        file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    if (file.write(bytes) != bytes.size() || !file.commit())
        return RegistryStatus::WriteFault;

    disk = std::move(updated);
    diskBytes = bytes;
    fileExists = true;
    loaded = true;
    return RegistryStatus::Success;
}

RegistryHive::RegistryHive(QString filePath, QString rootName, bool restrictive)
    : d(std::make_unique<Private>())
{
    d->filePath = std::move(filePath);
    d->rootName = std::move(rootName);
    d->restrictive = restrictive;
    d->disk = RegistryKey(d->rootName);
    d->volatileRoot = RegistryKey(d->rootName);
}

RegistryHive::~RegistryHive() = default;

QString RegistryHive::filePath() const
{
    return d->filePath;
}

QString RegistryHive::rootName() const
{
    return d->rootName;
}

qint32 RegistryHive::createKey(const QString &path, bool isVolatile)
{
    const std::optional<QStringList> parts = splitPath(path);
    if (!parts)
        return RegistryStatus::InvalidParameter;

    QMutexLocker locker(&d->mutex);
    if (d->volatileKey(*parts))
        return RegistryStatus::Success;
    d->refresh();
    if (d->diskKey(*parts))
        return RegistryStatus::Success; // an existing key is opened whatever the flag says

    // Below a volatile key only volatile keys may be made.
    bool underVolatile = false;
    {
        const RegistryKey *key = &d->volatileRoot;
        for (const QString &part : *parts) {
            key = key->child(part);
            if (!key)
                break;
            if (key->isVolatile()) {
                underVolatile = true;
                break;
            }
        }
    }
    if (underVolatile && !isVolatile)
        return RegistryStatus::ChildMustBeVolatile;

    if (isVolatile) {
        // Keys that exist in the file become placeholders; every missing one,
        // like the key itself, is created volatile.
        RegistryKey *key = &d->volatileRoot;
        const RegistryKey *onDisk = d->diskKey({});
        for (const QString &part : *parts) {
            onDisk = onDisk ? onDisk->child(part) : nullptr;
            const bool lasting = onDisk && !key->isVolatile();
            key = &key->ensureChild(onDisk ? onDisk->name() : part, !lasting);
            if (!lasting)
                key->setVolatile(true); // a placeholder whose key left the file
        }
        return RegistryStatus::Success;
    }

    return d->modifyFile([&](RegistryKey &root, bool &changed) {
        RegistryKey *key = &root;
        for (const QString &part : *parts) {
            bool created = false;
            key = &key->ensureChild(part, false, &created);
            changed = changed || created;
        }
        return RegistryStatus::Success;
    });
}

qint32 RegistryHive::keyExists(const QString &path) const
{
    const std::optional<QStringList> parts = splitPath(path);
    if (!parts)
        return RegistryStatus::InvalidParameter;

    QMutexLocker locker(&d->mutex);
    if (d->volatileKey(*parts))
        return RegistryStatus::Success;
    d->refresh();
    if (!d->readable())
        return d->readFailure();
    return d->diskKey(*parts) ? RegistryStatus::Success : RegistryStatus::FileNotFound;
}

qint32 RegistryHive::setValue(const QString &keyPath, const QString &name, const Value &value)
{
    const std::optional<QStringList> parts = splitPath(keyPath);
    if (!parts || !RegEditFormat::isValidValueName(name))
        return RegistryStatus::InvalidParameter;

    QMutexLocker locker(&d->mutex);
    if (RegistryKey *key = d->volatileKey(*parts)) {
        key->setValue(name, value);
        return RegistryStatus::Success;
    }
    return d->modifyFile([&](RegistryKey &root, bool &changed) {
        RegistryKey *key = root.find(*parts);
        if (!key)
            return RegistryStatus::FileNotFound; // deleted by another writer meanwhile
        changed = key->setValue(name, value);
        return RegistryStatus::Success;
    });
}

qint32 RegistryHive::queryValue(const QString &keyPath, const QString &name, Value *value) const
{
    const std::optional<QStringList> parts = splitPath(keyPath);
    if (!parts)
        return RegistryStatus::InvalidParameter;

    QMutexLocker locker(&d->mutex);
    const RegistryKey *key = d->volatileKey(*parts);
    if (!key) {
        d->refresh();
        if (!d->readable())
            return d->readFailure();
        key = d->diskKey(*parts);
    }
    const Value *stored = key ? key->value(name) : nullptr;
    if (!stored)
        return RegistryStatus::FileNotFound;
    if (value)
        *value = *stored;
    return RegistryStatus::Success;
}

qint32 RegistryHive::deleteValue(const QString &keyPath, const QString &name)
{
    const std::optional<QStringList> parts = splitPath(keyPath);
    if (!parts)
        return RegistryStatus::InvalidParameter;

    QMutexLocker locker(&d->mutex);
    if (RegistryKey *key = d->volatileKey(*parts))
        return key->removeValue(name) ? RegistryStatus::Success : RegistryStatus::FileNotFound;
    return d->modifyFile([&](RegistryKey &root, bool &changed) {
        RegistryKey *key = root.find(*parts);
        if (!key || !key->removeValue(name))
            return RegistryStatus::FileNotFound;
        changed = true;
        return RegistryStatus::Success;
    });
}

qint32 RegistryHive::deleteKey(const QString &path)
{
    const std::optional<QStringList> parts = splitPath(path);
    if (!parts)
        return RegistryStatus::InvalidParameter;
    if (parts->isEmpty())
        return RegistryStatus::AccessDenied; // the root key itself cannot go

    QMutexLocker locker(&d->mutex);
    const QStringList parentPath = parts->mid(0, parts->size() - 1);
    bool removed = false;
    if (RegistryKey *parent = d->volatileRoot.find(parentPath))
        removed = parent->removeChild(parts->last());

    d->refresh();
    if (d->diskKey(*parts) || d->state == Private::DiskState::Corrupt
        || d->state == Private::DiskState::Damaged) {
        const qint32 status = d->modifyFile([&](RegistryKey &root, bool &changed) {
            RegistryKey *parent = root.find(parentPath);
            changed = parent && parent->removeChild(parts->last());
            return changed ? RegistryStatus::Success : RegistryStatus::FileNotFound;
        });
        if (status != RegistryStatus::FileNotFound || !removed)
            return status;
    }
    return removed ? RegistryStatus::Success : RegistryStatus::FileNotFound;
}

QString RegistryHive::parseError() const
{
    QMutexLocker locker(&d->mutex);
    d->refresh();
    return d->state == Private::DiskState::Corrupt || d->state == Private::DiskState::Damaged
        ? d->parseError
        : QString();
}
