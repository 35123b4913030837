#pragma once

#include "CodePage.h"
#include "RegistryHive.h"
#include "RegistryTypes.h"

#include <QString>

class RegistryHives;

// The registry wrapper most settings go through. Every operation returns true on
// success and records its status; value reads and writes also record type and size.
class CRegistry
{
public:
    // Like the registry's predefined handles, the new object stands on the root
    // key itself until a key is created or opened. Byte sizes count in codePage.
    CRegistry(RegistryHives &hives, RegistryRoot root, CodePage codePage = CodePage::system());
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
    // The out value is set only on success. A value of another type fails (see
    // the definition for the status).
    bool readNumber(const QString &name, qint32 &value);
    // Reads into a 200-byte buffer: 199 bytes of text plus the terminator fit;
    // a longer value fails with MoreData (lastSize() then says how much it
    // needs) and leaves value unchanged.
    bool readString(const QString &name, QString &value);

    qint32 lastResult() const { return m_lastResult; }
    quint32 lastType() const { return m_lastType; }
    quint32 lastSize() const { return m_lastSize; }
    bool isOpen() const { return m_hive != nullptr; }
    QString keyName() const { return m_keyName; }

    static constexpr int ReadBufferSize = 200;

private:
    // Reads the value and records its type and size; false (with the result
    // set) when there is no open key or no such value.
    bool queryStored(const QString &name, RegistryHive::Value *stored);

    RegistryHives &m_hives;
    CodePage m_codePage;
    qint32 m_lastResult = RegistryStatus::Success;
    quint32 m_lastType = RegistryType::None;
    quint32 m_lastSize = 0;
    RegistryHive *m_hive = nullptr; // the open key's hive; nullptr when closed
    RegistryRoot m_root;
    QString m_keyName; // the path given to the last openKey
    QString m_openPath; // the path of the key the handle stands for
};

// The read-only reader (read access, 1024-byte buffer): 1 on success, -1 on any failure.
int readRegistryString(const RegistryHives &hives, RegistryRoot root, const QString &subKey,
    const QString &name, QString &value);
