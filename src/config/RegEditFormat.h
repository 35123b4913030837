#pragma once

#include "RegistryKey.h"

#include <QByteArray>
#include <QList>
#include <QString>

// The REGEDIT4 text a hive is kept in: "REGEDIT4", a blank line, then per key a
// "[ROOT\path]" line followed by its values ("Name"="text", "Name"=dword:...,
// hex(N):... with continuation lines; @ for the default value). Files exported by
// regedit in its version 5 format (UTF-16) are read as well; writing always
// produces REGEDIT4 in UTF-8.
class RegEditFormat
{
public:
    struct Skipped
    {
        int line = 0; // 1-based
        QString reason;
    };
    // ok: the file is a hive; the lines in skipped (damaged: a key line cut
    // short, a value that cannot be read) are left out with the values of a
    // skipped key. Not ok: no hive at all (errorLine, errorReason).
    struct ParseResult
    {
        bool ok = false;
        RegistryKey root;
        QList<Skipped> skipped;
        int errorLine = 0; // 1-based
        QString errorReason;
    };

    // rootName is the only root key the file may hold (one file per root key).
    static ParseResult parse(QByteArrayView bytes, const QString &rootName);
    // Every key of the tree, depth first; the root's own line only when it has values.
    static QByteArray serialize(const RegistryKey &root, const QString &rootName);

    // A key name part as the registry accepts it: 1 to 255 characters, no
    // backslash, nothing that would break a line of the file.
    static bool isValidKeyName(QStringView name);
    static bool isValidValueName(QStringView name);

    static constexpr int MaxKeyNameLength = 255;
    static constexpr int MaxValueNameLength = 16383;
};
