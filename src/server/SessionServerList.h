#pragma once

#include <functional>
#include <QHostAddress>
#include <QList>
#include <QString>

class RegistryHives;

// One session server of the file-transfer side.
struct SessionServerEntry
{
    QString address;
    quint16 port = 0;
    bool enabled = false;
};

// The session servers (registry, machine hive), how long transferred files are
// kept (registry) and the largest file a member may send (Serverinfo.ini). The
// daemons read these when they start.
class SessionServerList final
{
public:
    SessionServerList(RegistryHives &hives, QString profilePath);

    static const QString InfoKeyPath; // SOFTWARE\Velmar\Services\SessionDInfo
    static const QString FolderKeyPath; // Software\Velmar\Services\SessionFolder
    // The session-server port is fixed; whatever was stored, the list shows this.
    static constexpr quint16 SessionPort = 55056;
    static const QString PortText; // "55056"
    static const QString EnabledText; // "使用者"
    static const QString DisabledText; // "内部使用"
    static QString enabledText(bool enabled) { return enabled ? EnabledText : DisabledText; }

    // The machine's first IPv4 address that is neither loopback nor link-local;
    // the last one looked at when none qualifies; empty when the host name
    // does not resolve.
    static QString GetLocalServerAddress();
    static QString pickServerAddress(const QList<QHostAddress> &addresses);
    // Dotted IPv4 printed again; a text that does not parse is 255.255.255.255.
    static QString normalizeAddress(const QString &address);

    // The first missing value makes the read fail; nothing after it is read.
    bool ReadSessionServerEntry(int index, SessionServerEntry &entry) const;
    // Nothing is written when the key cannot be opened.
    bool WriteSessionServerEntry(int index, const SessionServerEntry &entry);

    // The rows of the list: creates the key and, on a server without entries,
    // the default one (localAddress(), 55056, enabled) at once.
    QList<SessionServerEntry> LoadSessionServerList(const std::function<QString()> &localAddress);

    // 0 when the key or the value is missing.
    qint32 keepingDuration() const;
    // FileTransMaxSize in megabytes; 0 (no limit) when absent.
    int fileTransMaxSize() const;

    // The OK of the dialog: every row as entry 0.., the count, the keeping
    // time and the size limit. Entries beyond the new count stay as they were.
    // False, with nothing written, when the list's key cannot be opened.
    bool save(const QList<SessionServerEntry> &rows, qint32 keepingDays, int maxSizeMb);

private:
    RegistryHives &m_hives;
    QString m_profilePath;
};
