#pragma once

#include "RegistryTypes.h"

#include <memory>
#include <QByteArray>
#include <QDateTime>
#include <QMutex>
#include <QString>
#include <QStringList>
#include <QVariant>

// One root key's hive kept in a REGEDIT4 text file. Reads see the file as it is
// on disk now (the server and a second console write it too); every write takes
// the cross-process lock, re-reads, changes, and replaces the file atomically.
// Thread-safe: the loading worker reads the connection string through it.
class RegistryHive
{
public:
    struct Value
    {
        quint32 type = RegistryType::None;
        QString text; // String, ExpandString
        quint32 number = 0; // DWord
        QByteArray raw; // any other type, as stored
    };

    // restrictive: create the file with mode 0600 (the machine hive holds secrets).
    RegistryHive(QString filePath, QString rootName, bool restrictive);
    ~RegistryHive();

    QString filePath() const;
    QString rootName() const; // "HKEY_LOCAL_MACHINE" or "HKEY_CURRENT_USER"

    qint32 createKey(const QString &path, bool isVolatile);
    qint32 keyExists(const QString &path) const; // Success or FileNotFound
    qint32 setValue(const QString &keyPath, const QString &name, const Value &value);
    qint32 queryValue(const QString &keyPath, const QString &name, Value *value) const;
    qint32 deleteValue(const QString &keyPath, const QString &name);
    qint32 deleteKey(const QString &path); // with its sub-keys

    // "file:line: reason" when the file on disk cannot be parsed, one such
    // line per damaged line when it was read without them; else empty. Either
    // way the file is not written.
    QString parseError() const;

private:
    struct Private;
    std::unique_ptr<Private> d;
};
