#include "CRegistry.h"

#include "RegistryHive.h"
#include "RegistryHives.h"

namespace {

constexpr quint32 ReaderBufferSize = 1024;

bool isText(quint32 type)
{
    return type == RegistryType::String || type == RegistryType::ExpandString;
}

// The size the registry reports for a value, in bytes of the code page;
// text includes its terminating zero.
quint32 storedSize(const RegistryHive::Value &value, const CodePage &codePage)
{
    if (isText(value.type))
        return quint32(codePage.byteLength(value.text) + 1);
    if (value.type == RegistryType::DWord)
        return 4;
    return quint32(value.raw.size());
}

// A value of the wrong type never hands its bytes out as the wanted type.
// When its data would not even fit the caller's buffer, the status is MoreData,
// exactly what a query into that buffer reports; when it would fit, the query
// fails with UnsupportedType (as a type-restricted registry read does) instead
// of passing text bytes off as a number or a number's bytes off as text.
qint32 wrongTypeStatus(quint32 size, quint32 bufferSize)
{
    return size > bufferSize ? RegistryStatus::MoreData : RegistryStatus::UnsupportedType;
}

} // namespace

CRegistry::CRegistry(RegistryHives &hives, RegistryRoot root, CodePage codePage)
    : m_hives(hives)
    , m_codePage(std::move(codePage))
    , m_hive(&hives.hive(root))
    , m_root(root)
{ }

CRegistry::~CRegistry()
{
    close();
}

bool CRegistry::createKey(RegistryRoot root, const QString &subKey, bool isVolatile)
{
    close();
    m_lastType = RegistryType::None;
    m_lastSize = 0;
    RegistryHive &hive = m_hives.hive(root);
    m_lastResult = hive.createKey(subKey, isVolatile);
    if (m_lastResult != RegistryStatus::Success)
        return false;
    m_hive = &hive;
    m_root = root;
    m_openPath = subKey;
    return true;
}

bool CRegistry::openKey(RegistryRoot root, const QString &subKey)
{
    m_keyName = subKey;
    close();
    m_lastType = RegistryType::None;
    m_lastSize = 0;
    RegistryHive &hive = m_hives.hive(root);
    m_lastResult = hive.keyExists(subKey);
    if (m_lastResult != RegistryStatus::Success)
        return false;
    m_hive = &hive;
    m_root = root;
    m_openPath = subKey;
    return true;
}

void CRegistry::close()
{
    m_hive = nullptr;
    m_openPath.clear();
}

bool CRegistry::writeNumber(const QString &name, qint32 value)
{
    m_lastResult = writeNumberQuietly(name, value);
    m_lastType = RegistryType::DWord;
    m_lastSize = 4;
    return m_lastResult == RegistryStatus::Success;
}

qint32 CRegistry::writeNumberQuietly(const QString &name, qint32 value)
{
    if (!m_hive)
        return RegistryStatus::InvalidHandle;
    RegistryHive::Value stored;
    stored.type = RegistryType::DWord;
    stored.number = quint32(value);
    return m_hive->setValue(m_openPath, name, stored);
}

bool CRegistry::writeString(const QString &name, const QString &value)
{
    m_lastType = RegistryType::String;
    m_lastSize = quint32(m_codePage.byteLength(value) + 1);
    if (!m_hive) {
        m_lastResult = RegistryStatus::InvalidHandle;
        return false;
    }
    RegistryHive::Value stored;
    stored.type = RegistryType::String;
    stored.text = value;
    m_lastResult = m_hive->setValue(m_openPath, name, stored);
    return m_lastResult == RegistryStatus::Success;
}

bool CRegistry::queryStored(const QString &name, RegistryHive::Value *stored)
{
    m_lastType = RegistryType::None;
    m_lastSize = 0;
    if (!m_hive) {
        m_lastResult = RegistryStatus::InvalidHandle;
        return false;
    }
    m_lastResult = m_hive->queryValue(m_openPath, name, stored);
    if (m_lastResult != RegistryStatus::Success)
        return false;
    m_lastType = stored->type;
    m_lastSize = storedSize(*stored, m_codePage);
    return true;
}

bool CRegistry::readNumber(const QString &name, qint32 &value)
{
    RegistryHive::Value stored;
    if (!queryStored(name, &stored))
        return false;
    if (stored.type != RegistryType::DWord) {
        m_lastResult = wrongTypeStatus(m_lastSize, 4);
        return false;
    }
    value = qint32(stored.number);
    return true;
}

bool CRegistry::readString(const QString &name, QString &value)
{
    RegistryHive::Value stored;
    if (!queryStored(name, &stored))
        return false;
    if (!isText(stored.type)) {
        m_lastResult = wrongTypeStatus(m_lastSize, ReadBufferSize);
        return false;
    }
    if (m_lastSize > quint32(ReadBufferSize)) {
        m_lastResult = RegistryStatus::MoreData;
        return false;
    }
    value = stored.text;
    return true;
}

int readRegistryString(const RegistryHives &hives, RegistryRoot root, const QString &subKey,
    const QString &name, QString &value)
{
    const RegistryHive &hive = hives.hive(root);
    if (hive.keyExists(subKey) != RegistryStatus::Success)
        return -1;
    RegistryHive::Value stored;
    if (hive.queryValue(subKey, name, &stored) != RegistryStatus::Success || !isText(stored.type))
        return -1;
    if (storedSize(stored, CodePage::system()) > ReaderBufferSize)
        return -1;
    value = stored.text;
    return 1;
}
