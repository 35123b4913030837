#include "CVelmarManagerDoc.h"

#include "Directory.h"
#include "DocumentUndoStack.h"
#include "NoticeListModel.h"
#include "PositionListModel.h"
#include "ServerDataSet.h"

using namespace Qt::StringLiterals;

const QString CVelmarManagerDoc::TemplateString
    = u"VelmarManager\n\nVelmarMa\n\n\nVelmarManager.Document\nVelmarMa Document"_s;

QString CVelmarManagerDoc::templateField(TemplateField field)
{
    const QStringList fields = TemplateString.split(u'\n');
    const int index = int(field);
    return index < fields.size() ? fields.at(index) : QString();
}

CVelmarManagerDoc::CVelmarManagerDoc(QObject *parent)
    : QObject(parent)
    , m_directory(new Directory(this))
    , m_positions(new PositionListModel(this))
    , m_notices(new NoticeListModel(this))
    , m_undo(new DocumentUndoStack(this))
    , m_editor(*this, MemberRules(CodePage::system()))
{
    setObjectName(u"document"_s);
    m_directory->setPositions(m_positions);
    m_directory->regularMembers()->setEditor(&m_editor);
    m_directory->guestMembers()->setEditor(&m_editor);
    m_directory->regularTree()->setEditor(&m_editor);
    m_directory->guestTree()->setEditor(&m_editor);
    m_positions->setEditor(&m_editor);
    connect(m_undo, &DocumentUndoStack::cleanChanged, this, &CVelmarManagerDoc::updateModified);
}

CVelmarManagerDoc::~CVelmarManagerDoc()
{
    // The commands hold nodes and records of the data sets: they go first,
    // quietly, as the window that listens may be half gone already.
    m_undo->blockSignals(true);
    m_undo->clear();
}

const QList<qint32> &CVelmarManagerDoc::createdMemberIds() const
{
    return m_directory->createdMemberIds();
}

const QList<qint32> &CVelmarManagerDoc::deletedMemberIds() const
{
    return m_directory->deletedMemberIds();
}

void CVelmarManagerDoc::adopt(ServerDataSet data, LoadState state)
{
    // Commands point into the data they change: they cannot outlive it.
    m_undo->clear();
    m_positions->setList(std::move(data.positions));
    m_directory->adopt(std::move(data.directory));
    m_permissions = std::move(data.permissions);
    m_voipPool = std::move(data.voipPool);
    m_fileBox = std::move(data.fileBox);
    m_notices->setRecords(std::move(data.notices));
    m_loadState = state;
    m_origin = std::move(data.origin);
    // What was just read equals the database: nothing to save yet.
    m_permissions.setModified(false);
    m_fileBox.setModified(false);
    updateModified();
    Q_EMIT adopted();
}

QStringList CVelmarManagerDoc::journal() const
{
    QStringList lines;
    lines.reserve(m_undo->index());
    for (int i = 0; i < m_undo->index(); ++i)
        lines.append(m_undo->text(i));
    return lines;
}

void CVelmarManagerDoc::push(
    const QString &text, std::function<void()> redo, std::function<void()> undo)
{
    m_undo->push(text, std::move(redo), std::move(undo));
}

bool CVelmarManagerDoc::writeDefaultPosition(qint32 positionId)
{
    return !m_defaultPositionWriter || m_defaultPositionWriter(positionId);
}

void CVelmarManagerDoc::updateModified()
{
    const bool modified = !m_undo->isClean();
    if (modified == m_modified)
        return;
    m_modified = modified;
    Q_EMIT modifiedChanged(modified);
}

void CVelmarManagerDoc::markSaved()
{
    m_directory->markSaved();
    m_permissions.setModified(false);
    m_fileBox.setModified(false);
    // The journal lists the changes since the last save; undo past a save
    // would leave memory and database apart without the modified marker.
    m_undo->clear();
    updateModified();
}
