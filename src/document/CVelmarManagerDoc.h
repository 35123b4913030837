#pragma once

#include "AccessTokenTable.h"
#include "DatabaseFingerprint.h"
#include "DirectoryEditor.h"
#include "FileBoxRights.h"
#include "VoipAccountPool.h"

#include <functional>
#include <memory>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

class Directory;
class NoticeListModel;
class PositionListModel;
class DocumentUndoStack;
struct ServerDataSet;

// The one document of the console: the working copy of everything it edits,
// each data set held once. The directory (member lists, group trees,
// memberships, created and deleted members), the positions, the feature
// permissions with the VoIP accounts, the VoIP account pool, the file-box
// rights and the notices. The item models are views over it; every change
// goes through an editor operation, which is one step of the undo stack, so
// that the stack is the journal of the changes since the last save. Lives on
// the user-interface thread; the loader fills it, the save writes it.
class CVelmarManagerDoc : public QObject
{
    Q_OBJECT

public:
    // How much of the database the working copy holds. Only a complete copy
    // may be saved: the save rewrites whole tables, so saving what a failed
    // load left would delete every row that was not read.
    enum class LoadState { NotLoaded, Partial, Complete };

    // Fields of the template string, in the order they appear in it.
    enum TemplateField {
        WindowTitle,
        DocName,
        FileNewName,
        FilterName,
        FilterExt,
        RegFileTypeId,
        RegFileTypeName,
    };

    // "VelmarManager\n\nVelmarMa\n\n\nVelmarManager.Document\nVelmarMa Document"
    static const QString TemplateString;
    // One field of the template string; empty for a field it leaves empty.
    static QString templateField(TemplateField field);
    static QString windowTitle() { return templateField(WindowTitle); }
    // The template leaves its document-name field empty, so documents are
    // named by the name given to new ones: "VelmarMa".
    static QString documentName() { return templateField(FileNewName); }

    explicit CVelmarManagerDoc(QObject *parent = nullptr);
    ~CVelmarManagerDoc() override;

    Directory *directory() const { return m_directory; }
    PositionListModel *positions() const { return m_positions; }
    NoticeListModel *notices() const { return m_notices; }
    const AccessTokenTable &permissions() const { return m_permissions; }
    const VoipAccountPool &voipPool() const { return m_voipPool; }
    const FileBoxRights &fileBox() const { return m_fileBox; }
    // The tables as the save writes them, bypassing the journal: for the
    // save and for tests that prepare what a save meets.
    AccessTokenTable &permissionsForSave() { return m_permissions; }
    VoipAccountPool &voipPoolForSave() { return m_voipPool; }
    FileBoxRights &fileBoxForSave() { return m_fileBox; }

    DirectoryEditor &editor() { return m_editor; }

    // Members created and deleted since the last successful save.
    const QList<qint32> &createdMemberIds() const;
    const QList<qint32> &deletedMemberIds() const;

    // Replaces everything by what a load read (views reset), empties the
    // undo stack and clears the modified flag and the created and deleted
    // lists.
    void adopt(ServerDataSet data, LoadState state);
    LoadState loadState() const { return m_loadState; }
    // What the database held when the working copy was read or last saved;
    // the save compares it with the database before it writes anything.
    const DatabaseFingerprint &origin() const { return m_origin; }
    void setOrigin(DatabaseFingerprint origin) { m_origin = std::move(origin); }

    // The undo stack; its commands, oldest first, are the journal of the
    // changes since the last save (or load).
    DocumentUndoStack *undoStack() const { return m_undo; }
    QStringList journal() const;
    // Runs redo now and keeps the pair on the undo stack as one step.
    void push(const QString &text, std::function<void()> redo, std::function<void()> undo);

    // Where the default position goes at once when it changes (the server
    // information file in the console; velmarctl holds it until its batch
    // is accepted). Returns whether it was written.
    using DefaultPositionWriter = std::function<bool(qint32 positionId)>;
    void setDefaultPositionWriter(DefaultPositionWriter writer)
    {
        m_defaultPositionWriter = std::move(writer);
    }
    bool writeDefaultPosition(qint32 positionId);

    // Modified while the undo stack is away from its clean state (the last
    // save or load).
    bool isModified() const { return m_modified; }

    // After a successful save: not modified, journal empty, created and
    // deleted lists empty.
    void markSaved();

Q_SIGNALS:
    void modifiedChanged(bool modified);
    // After adopt(): the views may refill themselves from the models.
    void adopted();

private:
    // The editors are the only writers of the data sets.
    friend class DirectoryEditor;
    friend class PermissionEditor;
    friend class FileBoxEditor;
    friend class NoticeEditor;

    void updateModified();

    Directory *m_directory;
    PositionListModel *m_positions;
    NoticeListModel *m_notices;
    DocumentUndoStack *m_undo;
    AccessTokenTable m_permissions;
    VoipAccountPool m_voipPool;
    FileBoxRights m_fileBox;
    DirectoryEditor m_editor;
    DefaultPositionWriter m_defaultPositionWriter;
    LoadState m_loadState = LoadState::NotLoaded;
    DatabaseFingerprint m_origin;
    bool m_modified = false;
};
