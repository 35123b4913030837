#pragma once

#include "DbError.h"
#include "NoticeRecord.h"

#include <QList>
#include <QString>

class DbConnection;
class DbSession;
class RegistryHives;

// Reading the notices and deleting the ones the administrator removed,
// together with their uploaded files. No state of its own: the notice list
// model owns the records.
class NoticeBoard
{
public:
    // A DELETE that failed during a commit.
    struct Failure
    {
        qint32 noticeId = 0;
        DbError error;
    };

    // Every notice, newest first as the database orders them. Runs on the
    // loading worker. Raises DbException.
    static QList<NoticeRecord> load(DbConnection &connection);
    // The record of one CONTENTS row as read (texts unescaped, date forms).
    static NoticeRecord fromStored(qint32 id, const QString &title, const QString &writeDate,
        qint32 writerNumber, const QString &writerMemberId, const QString &writerName,
        const QString &contents, const QString &filePath, const QString &fileSessionId,
        const QString &writeEndDate);

    // For each record in order: "DELETE FROM CONTENTS where OCONTENTSID=%d;",
    // then removeUploadedFiles. A failing DELETE does not stop the ones after
    // it; its notice keeps its uploaded files (the notice is still in the
    // database) and the failure is returned, and recorded in session's error
    // text when a session is given.
    static QList<Failure> deleteNotices(DbConnection &connection,
        const QList<NoticeRecord> &records, RegistryHives &hives, const QString &programDir,
        DbSession *session = nullptr);

    // UploadPath of HKLM SOFTWARE\Velmar\Services\SessionFolder; when that
    // is empty or unreadable, "VelmarFile2Upload" in the program folder.
    static QString uploadFolder(RegistryHives &hives, const QString &programDir);

    // When uploadFolder/sessionId exists, deletes the item named by the
    // session id alone, relative to the process's working directory (not the
    // item in the upload folder), recursively and silently. Nothing happens
    // for an empty session id, a missing tested path, or a session id that is
    // not a single plain name ("..", "a/b", ...). Returns whether an item was
    // deleted.
    static bool removeUploadedFiles(const QString &uploadFolder, const QString &sessionId);
    // The two halves of removeUploadedFiles, for a save that fixes the paths
    // when it starts and removes the item later: the item a session id names
    // ("" when the id is not a plain name), and its removal when testPath exists.
    static QString uploadedItemTarget(const QString &sessionId);
    static bool removeUploadedItem(const QString &testPath, const QString &target);

    static QString selectStatement();
    static QString deleteStatement(qint32 noticeId);
};
