#pragma once

#include "RegistryHive.h"

#include <QString>
#include <QStringList>
#include <vector>

// One key of a hive with its values and sub-keys. Names compare without regard
// to case and keep the case they were first created with; values and sub-keys
// keep their order, so a rewritten file differs from the old one only where
// something changed.
class RegistryKey
{
public:
    struct NamedValue
    {
        QString name; // empty: the key's default value
        RegistryHive::Value value;
    };

    RegistryKey() = default;
    explicit RegistryKey(QString name, bool isVolatile = false);

    QString name() const { return m_name; }
    bool isVolatile() const { return m_volatile; }
    void setVolatile(bool isVolatile) { m_volatile = isVolatile; }
    const std::vector<NamedValue> &values() const { return m_values; }
    const std::vector<RegistryKey> &children() const { return m_children; }
    bool isEmpty() const { return m_values.empty() && m_children.empty(); }

    RegistryKey *child(QStringView name);
    const RegistryKey *child(QStringView name) const;
    // The existing child of that name, else a new one at the end.
    RegistryKey &ensureChild(const QString &name, bool isVolatile = false, bool *created = nullptr);
    bool removeChild(QStringView name);

    // The key at path below this one (this one for an empty path), else nullptr.
    RegistryKey *find(const QStringList &path);
    const RegistryKey *find(const QStringList &path) const;

    const RegistryHive::Value *value(QStringView name) const;
    // Returns false when the value was already stored exactly so.
    bool setValue(const QString &name, const RegistryHive::Value &value);
    bool removeValue(QStringView name);

    // Only the fields that belong to the value's type, so that equal values compare equal.
    static RegistryHive::Value normalized(const RegistryHive::Value &value);
    static bool sameValue(const RegistryHive::Value &a, const RegistryHive::Value &b);

private:
    QString m_name;
    bool m_volatile = false;
    std::vector<NamedValue> m_values;
    std::vector<RegistryKey> m_children;
};
