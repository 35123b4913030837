#include "NoticeBoard.h"

#include "CRegistry.h"
#include "DbConnection.h"
#include "DbSession.h"
#include "NoticeText.h"
#include "Recordset.h"
#include "RegistryHives.h"
#include "SqlTemplate.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;

QString NoticeBoard::selectStatement()
{
    return u"SELECT OCONTENTSID, TITLE, WRITEDATE, OMEMBERID, MEMBERID, MEMBERNAME,            "
           "CONTENTS, FilePath, FileSessionID, WriteEndDate \t\tFROM CONTENTS ORDER BY WRITEDATE DESC;"_s;
}

QString NoticeBoard::deleteStatement(qint32 noticeId)
{
    static const SqlTemplate remove(u"DELETE FROM CONTENTS where OCONTENTSID=%d;");
    return remove.format({ qint64(noticeId) });
}

NoticeRecord NoticeBoard::fromStored(qint32 id, const QString &title, const QString &writeDate,
    qint32 writerNumber, const QString &writerMemberId, const QString &writerName,
    const QString &contents, const QString &filePath, const QString &fileSessionId,
    const QString &writeEndDate)
{
    NoticeRecord record;
    record.id = id;
    record.title = NoticeText::unescapeStored(title);
    record.written = NoticeText::writtenForm(writeDate);
    record.writerNumber = writerNumber;
    record.writerMemberId = writerMemberId;
    record.writerName = writerName;
    record.contents = NoticeText::unescapeStored(contents);
    record.fileList = NoticeText::unescapeStored(filePath);
    record.fileSessionId = fileSessionId;
    record.endDate = NoticeText::endDateForm(writeEndDate);
    return record;
}

QList<NoticeRecord> NoticeBoard::load(DbConnection &connection)
{
    QList<NoticeRecord> records;
    Recordset set = connection.execute(selectStatement());
    if (set.isEOF())
        return records;
    const int id = set.fieldIndex(u"OCONTENTSID"), title = set.fieldIndex(u"TITLE"),
              written = set.fieldIndex(u"WRITEDATE"), writer = set.fieldIndex(u"OMEMBERID"),
              writerId = set.fieldIndex(u"MEMBERID"), writerName = set.fieldIndex(u"MEMBERNAME"),
              contents = set.fieldIndex(u"CONTENTS"), files = set.fieldIndex(u"FilePath"),
              session = set.fieldIndex(u"FileSessionID"), endDate = set.fieldIndex(u"WriteEndDate");
    while (!set.isEOF()) {
        records.append(fromStored(set.intField(id, 0), set.textField(title), set.textField(written),
            set.intField(writer, 0), set.textField(writerId), set.textField(writerName),
            set.textField(contents), set.textField(files), set.textField(session),
            set.textField(endDate)));
        set.moveNext();
    }
    set.close();
    return records;
}

QString NoticeBoard::uploadFolder(RegistryHives &hives, const QString &programDir)
{
    QString folder;
    CRegistry registry(hives, RegistryRoot::LocalMachine);
    if (registry.openKey(
            RegistryRoot::LocalMachine, u"SOFTWARE\\Velmar\\Services\\SessionFolder"_s)) {
        if (!registry.readString(u"UploadPath"_s, folder))
            folder.clear();
        registry.close();
    }
    if (folder.isEmpty()) {
        // The default is the "VelmarFile2Upload" folder beside the console,
        // whether or not the caller's folder ends in a separator.
        folder = programDir;
        if (!folder.endsWith(u'/') && !folder.endsWith(QDir::separator()))
            folder += u'/';
        folder += u"VelmarFile2Upload"_s;
    }
    return folder;
}

QString NoticeBoard::uploadedItemTarget(const QString &sessionId)
{
    // The id names the item in the working directory; anything that is not a
    // single plain name could reach outside it, so it is never acted on.
    if (sessionId.isEmpty() || sessionId == u"."_s || sessionId == u".."_s
        || sessionId.contains(u'/') || sessionId.contains(u'\\') || sessionId.contains(QChar(0)))
        return {};
    // The upload folder is where the test looks, but the item removed is the
    // one named by the bare id relative to the working directory; the server
    // side relies on exactly this pair of paths.
    return QDir::current().absoluteFilePath(sessionId);
}

bool NoticeBoard::removeUploadedItem(const QString &testPath, const QString &target)
{
    if (target.isEmpty() || !QFileInfo::exists(testPath))
        return false;
    const QFileInfo info(target);
    if (info.isSymLink() || !info.isDir())
        return QFile::remove(target);
    return QDir(target).removeRecursively();
}

bool NoticeBoard::removeUploadedFiles(const QString &uploadFolder, const QString &sessionId)
{
    return removeUploadedItem(uploadFolder + u'/' + sessionId, uploadedItemTarget(sessionId));
}

QList<NoticeBoard::Failure> NoticeBoard::deleteNotices(DbConnection &connection,
    const QList<NoticeRecord> &records, RegistryHives &hives, const QString &programDir,
    DbSession *session)
{
    QList<Failure> failures;
    for (const NoticeRecord &record : records) {
        try {
            connection.execute(deleteStatement(record.id));
        } catch (const DbException &e) {
            failures.append({ record.id, e.error() });
            if (session)
                session->recordError(e.error());
            continue;
        }
        if (!record.fileSessionId.isEmpty())
            removeUploadedFiles(uploadFolder(hives, programDir), record.fileSessionId);
    }
    return failures;
}
