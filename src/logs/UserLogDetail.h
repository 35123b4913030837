#pragma once

#include <QList>
#include <QString>
#include <QStringList>

// What the user log's detail pane shows for one stored row.
struct UserLogDetail
{
    struct File
    {
        QString name;
        bool isFolder = false; // the name holds a backslash
    };

    QString header; // "Date\t: ...\r\n" ... "Data\t:\r\n<block>\r\n"
    QList<File> files; // from "FILES:"
    QString sessionId; // from "SESSIONID:", cut before "@"; only kept when there are files
    QString message; // from "MESSAGE: " up to ".END_OF_DATA" CR LF
    bool richText = false; // the message begins with "{\rtf1"

    // The "打开..." button is enabled only for a record with files.
    bool canOpenUploadFolder() const { return !files.isEmpty(); }

    // fields: UserLogRows::fields (header fields, data block last).
    static UserLogDetail fromFields(const QStringList &fields);
    static QList<File> parseFiles(const QString &list);
};
