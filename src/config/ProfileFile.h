#pragma once

#include "CodePage.h"

#include <QList>
#include <QString>

// The server information file with the private-profile semantics administrators
// know from Windows: case-insensitive names, first match wins, values trimmed and
// unquoted, cut to the caller's buffer; writes keep the rest of the file, its
// encoding and its line endings, and replace it atomically.
class ProfileFile
{
public:
    explicit ProfileFile(QString path, CodePage codePage = CodePage::system());

    QString path() const { return m_path; }

    // bufferSize counts bytes in the code page, terminator included.
    QString readString(const QString &section, const QString &key, const QString &defaultValue,
        int bufferSize) const;
    // Plain decimal conversion: optional sign, digits up to the first other
    // character, 0 when there are none; defaultValue when the key is absent.
    int readInt(const QString &section, const QString &key, int defaultValue) const;
    // Refused (false, the file untouched) while the file has damaged lines:
    // the administrator agrees to a rewrite with commentOutDamagedLines().
    bool writeString(const QString &section, const QString &key, const QString &value);

    // Lines neither a section header nor a key can be made of (a '[' line
    // without ']', control characters, undecodable bytes): reads skip them.
    struct Damage
    {
        int line = 0; // 1-based
        QString text;
    };
    QList<Damage> damagedLines() const;
    // Turns every damaged line into a comment (";" + its text, control
    // characters as '?'), after which the file is whole again.
    bool commentOutDamagedLines();

    static int parseDecimal(QStringView text);

private:
    QString m_path;
    CodePage m_codePage;
};
