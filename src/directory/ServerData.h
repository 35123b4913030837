#pragma once

#include "AccessTokenTable.h"
#include "FileBoxRights.h"
#include "VoipAccountPool.h"

#include <QList>
#include <QObject>

class Directory;
class NoticeListModel;
class PositionListModel;
struct ServerDataSet;

// The working copy of everything the console edits: the directory (member
// lists, group trees, memberships, created and deleted members), the
// positions, the feature permissions with the VoIP accounts, the VoIP account
// pool, the file-box rights and the notices. Lives on the user-interface
// thread; the document owns it, the views edit it, the save writes it.
class ServerData : public QObject
{
    Q_OBJECT

public:
    // How much of the database the working copy holds. Only a complete copy
    // may be saved: the save rewrites whole tables, so saving what a failed
    // load left would delete every row that was not read.
    enum class LoadState { NotLoaded, Partial, Complete };

    explicit ServerData(QObject *parent = nullptr);
    ~ServerData() override;

    Directory *directory() const { return m_directory; }
    PositionListModel *positions() const { return m_positions; }
    NoticeListModel *notices() const { return m_notices; }
    AccessTokenTable &permissions() { return m_permissions; }
    const AccessTokenTable &permissions() const { return m_permissions; }
    VoipAccountPool &voipPool() { return m_voipPool; }
    const VoipAccountPool &voipPool() const { return m_voipPool; }
    FileBoxRights &fileBox() { return m_fileBox; }
    const FileBoxRights &fileBox() const { return m_fileBox; }

    // Members created and deleted since the last successful save.
    const QList<qint32> &createdMemberIds() const;
    const QList<qint32> &deletedMemberIds() const;

    // Replaces everything by what a load read (views reset) and clears the
    // modified flag and the created and deleted lists.
    void adopt(ServerDataSet data, LoadState state);
    LoadState loadState() const { return m_loadState; }

    // Edits through the directory, position and notice models set the flag
    // themselves; the permission and file-box editors work on plain tables,
    // whose own flags count too.
    bool isModified() const;
    void setModified(bool modified = true);

    // After a successful save: not modified, created and deleted lists empty.
    void markSaved();

Q_SIGNALS:
    void modifiedChanged(bool modified);
    // After adopt(): the views may refill themselves from the models.
    void adopted();

private:
    Directory *m_directory;
    PositionListModel *m_positions;
    NoticeListModel *m_notices;
    AccessTokenTable m_permissions;
    VoipAccountPool m_voipPool;
    FileBoxRights m_fileBox;
    LoadState m_loadState = LoadState::NotLoaded;
    bool m_modified = false;
    bool m_adopting = false;
};
