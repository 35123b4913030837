#pragma once

#include <QString>

class RegistryHives;

// The administrator password values under Software\Velmar\VelmarManager of
// the machine hive: AdmPassword (the MD5 digest) and AdmPasswordState (1: the
// console asks for it at start). Every call opens the key afresh and never
// creates it: the application creates it at start, and a key that cannot be
// opened means "no lock" and "nothing stored".
class AdminPasswordStore
{
public:
    explicit AdminPasswordStore(RegistryHives &hives);

    // MD5 over the text's bytes in the system code page, exactly as typed, as
    // 32 lower-case hexadecimal digits.
    static QString digest(const QString &text);
    // Stored digests may be in either letter case.
    static bool digestsMatch(const QString &a, const QString &b);

    bool keyOpens() const;
    // Empty when the key cannot be opened or the value is absent.
    QString storedDigest() const;
    // 0 when the key cannot be opened or the value is absent.
    qint32 state() const;
    // Both return false when the key cannot be opened; nothing is written then.
    bool writeState(qint32 state);
    bool writeDigest(const QString &digest);

    // The start-up check: true (and the digest) only when the key opens, the
    // state is non-zero and a digest is stored.
    bool promptNeeded(QString *expectedDigest) const;

private:
    RegistryHives &m_hives;
};
