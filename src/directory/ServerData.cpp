#include "ServerData.h"

#include "Directory.h"
#include "NoticeListModel.h"
#include "PositionListModel.h"
#include "ServerDataSet.h"

ServerData::ServerData(QObject *parent)
    : QObject(parent)
    , m_directory(new Directory(this))
    , m_positions(new PositionListModel(this))
    , m_notices(new NoticeListModel(this))
{
    m_directory->setPositions(m_positions);
    // Resetting the models while adopting a load is no edit.
    const auto edited = [this] {
        if (!m_adopting)
            setModified(true);
    };
    connect(m_directory, &Directory::edited, this, edited);
    connect(m_positions, &PositionListModel::positionsChanged, this, edited);
    connect(m_notices, &NoticeListModel::documentModified, this, edited);
}

ServerData::~ServerData() = default;

const QList<qint32> &ServerData::createdMemberIds() const
{
    return m_directory->createdMemberIds();
}

const QList<qint32> &ServerData::deletedMemberIds() const
{
    return m_directory->deletedMemberIds();
}

void ServerData::adopt(ServerDataSet data, LoadState state)
{
    m_adopting = true;
    m_positions->setList(std::move(data.positions));
    m_directory->adopt(std::move(data.directory));
    m_permissions = std::move(data.permissions);
    m_voipPool = std::move(data.voipPool);
    m_fileBox = std::move(data.fileBox);
    m_notices->setRecords(std::move(data.notices));
    m_adopting = false;
    m_loadState = state;
    // What was just read equals the database: nothing to save yet.
    m_permissions.setModified(false);
    m_fileBox.setModified(false);
    const bool wasModified = m_modified;
    m_modified = false;
    if (wasModified)
        Q_EMIT modifiedChanged(false);
    Q_EMIT adopted();
}

bool ServerData::isModified() const
{
    return m_modified || m_permissions.isModified() || m_fileBox.isModified();
}

void ServerData::setModified(bool modified)
{
    if (m_modified == modified)
        return;
    m_modified = modified;
    Q_EMIT modifiedChanged(modified);
}

void ServerData::markSaved()
{
    m_directory->markSaved();
    m_permissions.setModified(false);
    m_fileBox.setModified(false);
    setModified(false);
}
