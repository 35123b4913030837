#pragma once

#include "RegistryTypes.h"

#include <QString>

class RegistryHive;
class RegistryHives;

// The registry wrapper most settings go through. Every operation returns true on
// success and records its status; value reads and writes also record type and size.
class CRegistry
{
public:
    CRegistry(RegistryHives &hives, RegistryRoot root);
    ~CRegistry();
    CRegistry(const CRegistry &) = delete;
    CRegistry &operator=(const CRegistry &) = delete;

    bool createKey(RegistryRoot root, const QString &subKey, bool isVolatile = false);
    bool openKey(RegistryRoot root, const QString &subKey);
    void close();

    bool writeNumber(const QString &name, qint32 value);
    // The same write without recording anything; returns the raw status.
    qint32 writeNumberQuietly(const QString &name, qint32 value);
    // Stores the terminating zero: the recorded size is the byte length + 1.
    bool writeString(const QString &name, const QString &value);
    // The out value is set only on success.
    bool readNumber(const QString &name, qint32 &value);
    // Reads into a 200-byte buffer: a value of 200 bytes or more (terminator
    // included) fails with MoreData and leaves value unchanged.
    bool readString(const QString &name, QString &value);

    qint32 lastResult() const { return m_lastResult; }
    quint32 lastType() const { return m_lastType; }
    quint32 lastSize() const { return m_lastSize; }
    bool isOpen() const { return m_hive != nullptr; }
    QString keyName() const { return m_keyName; }

    static constexpr int ReadBufferSize = 200;

private:
    RegistryHives &m_hives;
    qint32 m_lastResult = RegistryStatus::Success;
    quint32 m_lastType = RegistryType::None;
    quint32 m_lastSize = 0;
    RegistryHive *m_hive = nullptr; // the open key's hive; nullptr when closed
    RegistryRoot m_root;
    QString m_keyName;
};

// The read-only reader (read access, 1024-byte buffer): 1 on success, -1 on any failure.
int readRegistryString(const RegistryHives &hives, RegistryRoot root, const QString &subKey,
                       const QString &name, QString &value);
