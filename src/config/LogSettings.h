#pragma once

#include <QString>

class RegistryHives;

// Where the daemons write their logs, whether they log, and how long log files
// are kept: SOFTWARE\Velmar\LogManager of the machine hive. The console itself
// only reads LogPath (its log root); the daemons read the rest when they start.
class LogSettings final
{
public:
    struct Values
    {
        QString logPath; // empty when not set
        bool deleteAfterDuration = true;
        qint32 keepingDuration = 0;
        // Stored as the check box stands: checked writes 1.
        bool logEnable = false;
    };

    LogSettings(RegistryHives &hives, QString programDirectory);

    static const QString KeyPath; // SOFTWARE\Velmar\LogManager

    // Missing key or values give the defaults above.
    Values load() const;
    // What the path field shows: the stored path, else the program folder + "LogFiles".
    QString shownPath(const Values &values) const;
    // The days as the field's text reads with a plain prefix conversion ("30abc" is 30).
    static qint32 daysFromText(const QString &text);
    // Writes the four values exactly as given; false, with nothing written,
    // when the key cannot be created.
    bool save(const Values &values);

private:
    RegistryHives &m_hives;
    QString m_programDirectory;
};
