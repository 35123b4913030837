#pragma once

#include <QString>

// One notice of the CONTENTS table, in the form the console keeps it: title,
// contents and file list unescaped, the dates in their shown forms.
struct NoticeRecord
{
    qint32 id = 0; // OCONTENTSID
    QString title; // TITLE, unescaped
    QString written; // WRITEDATE, "-" shown as "/"
    qint32 writerNumber = 0; // OMEMBERID
    QString writerMemberId; // MEMBERID
    QString writerName; // MEMBERNAME
    QString contents; // CONTENTS, unescaped
    QString fileList; // FilePath, unescaped
    QString fileSessionId; // FileSessionID
    QString endDate; // WriteEndDate with its slashes inserted

    bool operator==(const NoticeRecord &) const = default;
};
