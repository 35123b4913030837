#include "AdminPasswordStore.h"

#include "CodePage.h"
#include "ConsoleRegistryKey.h"
#include "CRegistry.h"

#include <QCryptographicHash>

using namespace Qt::StringLiterals;

namespace {
const QString PasswordValue = u"AdmPassword"_s;
const QString StateValue = u"AdmPasswordState"_s;
} // namespace

AdminPasswordStore::AdminPasswordStore(RegistryHives &hives)
    : m_hives(hives)
{ }

QString AdminPasswordStore::digest(const QString &text)
{
    const QByteArray bytes = CodePage::system().encode(text);
    return QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Md5).toHex());
}

bool AdminPasswordStore::digestsMatch(const QString &a, const QString &b)
{
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

bool AdminPasswordStore::keyOpens() const
{
    CRegistry registry(m_hives, RegistryRoot::LocalMachine);
    return registry.openKey(RegistryRoot::LocalMachine, ConsoleRegistryKey);
}

QString AdminPasswordStore::storedDigest() const
{
    CRegistry registry(m_hives, RegistryRoot::LocalMachine);
    QString value;
    if (registry.openKey(RegistryRoot::LocalMachine, ConsoleRegistryKey))
        registry.readString(PasswordValue, value);
    return value;
}

qint32 AdminPasswordStore::state() const
{
    CRegistry registry(m_hives, RegistryRoot::LocalMachine);
    qint32 value = 0;
    if (registry.openKey(RegistryRoot::LocalMachine, ConsoleRegistryKey))
        registry.readNumber(StateValue, value);
    return value;
}

bool AdminPasswordStore::writeState(qint32 state)
{
    CRegistry registry(m_hives, RegistryRoot::LocalMachine);
    return registry.openKey(RegistryRoot::LocalMachine, ConsoleRegistryKey)
        && registry.writeNumber(StateValue, state);
}

bool AdminPasswordStore::writeDigest(const QString &digest)
{
    CRegistry registry(m_hives, RegistryRoot::LocalMachine);
    return registry.openKey(RegistryRoot::LocalMachine, ConsoleRegistryKey)
        && registry.writeString(PasswordValue, digest);
}

bool AdminPasswordStore::promptNeeded(QString *expectedDigest) const
{
    CRegistry registry(m_hives, RegistryRoot::LocalMachine);
    if (!registry.openKey(RegistryRoot::LocalMachine, ConsoleRegistryKey))
        return false;
    qint32 state = 0;
    registry.readNumber(StateValue, state);
    if (state == 0)
        return false;
    QString stored;
    registry.readString(PasswordValue, stored);
    if (stored.isEmpty())
        return false;
    if (expectedDigest)
        *expectedDigest = stored;
    return true;
}
