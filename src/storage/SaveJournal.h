#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QStringEncoder>
#include <QStringView>

// Everything needed to finish a save from its first statement: the database
// it runs against, every statement in the order the save sends them, where
// the organisation version is written and with which value, the notices'
// uploaded items to remove, and which notification ports to tell. It is
// written whole and synced before the save's first statement, so that a save
// cut short by a crash, a kill or a power cut can be run again to the end;
// every statement in it is safe to run twice (partitions are emptied before
// they are filled, updates set fixed values).
//
// File format (UTF-8 text, one record per line, fields separated by a tab
// and escaped as LineEscape writes them):
//   VELMAR-SAVE-JOURNAL 1
//   header lines: "connection", "created", "notify" (the ports, comma-separated)
//   "body" and then the actions, each a line starting with its kind letter;
//   a statement line is "Q <n> <text>": the first n characters of the
//   statement before it, then text
//   "end" <bytes before this line> <MD5 of those bytes, hex>
// A file that is cut short, altered or padded fails the last line's check.
class SaveJournal final
{
public:
    enum class Kind : char {
        Step = 'S', // the save step the following statements belong to
        Statement = 'Q', // a statement whose failure stops the save
        NoticeDelete = 'N', // a notice's DELETE: failure is reported, the save goes on
        ProfileWrite = 'P', // a value written to the server information file
    };

    // One action as read back from the body.
    struct Action
    {
        Kind kind = Kind::Statement;
        QString text; // the statement, the step name, or the profile section
        QString key; // ProfileWrite: key; NoticeDelete: the notice id
        QString value; // ProfileWrite: value; NoticeDelete: the uploaded item's test path
        QString target; // NoticeDelete: the uploaded item to remove ("" when none)
    };

    enum class ReadStatus { Ok, Missing, Unreadable, Corrupt };

    SaveJournal();

    // The journal file of a server folder: beside the server information file.
    static QString pathFor(const QString &profilePath);
    static QString fileName(); // "VelmarManager.savejournal"

    QString connectionString() const { return m_connectionString; }
    void setConnectionString(const QString &connectionString);
    QDateTime created() const { return m_created; }
    void setCreated(const QDateTime &created) { m_created = created; }
    // The notification ports told once every action has run, in order.
    QList<quint16> notifyPorts() const { return m_notifyPorts; }
    void setNotifyPorts(const QList<quint16> &ports) { m_notifyPorts = ports; }

    void addStep(QStringView name);
    void addStatement(QStringView sql);
    void addNoticeDelete(
        qint32 noticeId, QStringView sql, QStringView testPath, QStringView target);
    void addProfileWrite(QStringView section, QStringView key, QStringView value);

    qsizetype statementCount() const { return m_statementCount; }
    qsizetype actionCount() const { return m_actionCount; }
    const QByteArray &body() const { return m_body; }

    // Where a reading of the body is: statements are written relative to the
    // one before them.
    struct Cursor
    {
        qsizetype offset = 0;
        QString previous;
    };
    // Reads the body's actions in order; false at its end (or at a record
    // that cannot be read).
    bool nextAction(Cursor &cursor, Action &action) const;

    // Writes the journal to path whole and durably: into a temporary file,
    // synced, renamed into place, and the folder synced. Any existing
    // journal is replaced. False with errorString set when it cannot be done;
    // then nothing at path has changed.
    bool write(const QString &path, QString *errorString = nullptr) const;

    // Reads and checks a journal file. Corrupt covers a wrong header, a
    // missing or failing end line and a body that cannot be parsed.
    static ReadStatus read(
        const QString &path, SaveJournal &journal, QString *errorString = nullptr);

    // Deletes the journal at path; true when none is left.
    static bool remove(const QString &path, QString *errorString = nullptr);

private:
    void appendLine(
        char kind, std::initializer_list<QStringView> fields, char16_t separator = u'\t');
    void appendField(QStringView text);
    QByteArray serialise() const;

    QString m_connectionString;
    QDateTime m_created;
    QList<quint16> m_notifyPorts;
    QByteArray m_body;
    QStringEncoder m_encoder;
    QString m_previous; // the statement before, for front coding
    qsizetype m_statementCount = 0;
    qsizetype m_actionCount = 0;
};
