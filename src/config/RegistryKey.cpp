#include "RegistryKey.h"

#include <algorithm>
#include <utility>

namespace {

bool sameName(QStringView a, QStringView b)
{
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

} // namespace

RegistryKey::RegistryKey(QString name, bool isVolatile)
    : m_name(std::move(name))
    , m_volatile(isVolatile)
{ }

RegistryKey *RegistryKey::child(QStringView name)
{
    for (RegistryKey &key : m_children) {
        if (sameName(key.m_name, name))
            return &key;
    }
    return nullptr;
}

const RegistryKey *RegistryKey::child(QStringView name) const
{
    return const_cast<RegistryKey *>(this)->child(name);
}

RegistryKey &RegistryKey::ensureChild(const QString &name, bool isVolatile, bool *created)
{
    if (RegistryKey *existing = child(name)) {
        if (created)
            *created = false;
        return *existing;
    }
    if (created)
        *created = true;
    m_children.emplace_back(name, isVolatile);
    return m_children.back();
}

bool RegistryKey::removeChild(QStringView name)
{
    const auto it = std::find_if(m_children.begin(), m_children.end(),
        [&](const RegistryKey &key) { return sameName(key.m_name, name); });
    if (it == m_children.end())
        return false;
    m_children.erase(it);
    return true;
}

RegistryKey *RegistryKey::find(const QStringList &path)
{
    RegistryKey *key = this;
    for (const QString &part : path) {
        key = key->child(part);
        if (!key)
            return nullptr;
    }
    return key;
}

const RegistryKey *RegistryKey::find(const QStringList &path) const
{
    return const_cast<RegistryKey *>(this)->find(path);
}

const RegistryHive::Value *RegistryKey::value(QStringView name) const
{
    for (const NamedValue &entry : m_values) {
        if (sameName(entry.name, name))
            return &entry.value;
    }
    return nullptr;
}

bool RegistryKey::setValue(const QString &name, const RegistryHive::Value &value)
{
    const RegistryHive::Value stored = normalized(value);
    for (NamedValue &entry : m_values) {
        if (sameName(entry.name, name)) {
            if (sameValue(entry.value, stored))
                return false;
            entry.value = stored; // the name keeps the case it was created with
            return true;
        }
    }
    m_values.push_back({ name, stored });
    return true;
}

bool RegistryKey::removeValue(QStringView name)
{
    const auto it = std::find_if(m_values.begin(), m_values.end(),
        [&](const NamedValue &entry) { return sameName(entry.name, name); });
    if (it == m_values.end())
        return false;
    m_values.erase(it);
    return true;
}

RegistryHive::Value RegistryKey::normalized(const RegistryHive::Value &value)
{
    RegistryHive::Value result;
    result.type = value.type;
    switch (value.type) {
    case RegistryType::String:
    case RegistryType::ExpandString:
        result.text = value.text;
        break;
    case RegistryType::DWord:
        result.number = value.number;
        break;
    default:
        result.raw = value.raw;
        break;
    }
    return result;
}

bool RegistryKey::sameValue(const RegistryHive::Value &a, const RegistryHive::Value &b)
{
    return a.type == b.type && a.text == b.text && a.number == b.number && a.raw == b.raw;
}
