#include "ServerDataSaver.h"

#include "DbConnection.h"
#include "DbSession.h"
#include "Directory.h"
#include "DirectoryWriter.h"
#include "MessageService.h"
#include "NoticeListModel.h"
#include "PositionListModel.h"
#include "ProfileFile.h"
#include "ServerData.h"
#include "ServerNotifier.h"

#include <QThread>

using namespace Qt::StringLiterals;

namespace {

// The first member row without login name or password, in the regular list
// and then the guest list.
bool findIncompleteMember(const Directory &directory, bool &guest, int &row)
{
    for (const bool g : { false, true }) {
        const MemberList &members = directory.members(g)->members();
        for (int i = 0; i < members.size(); ++i) {
            if (members[i].loginName.isEmpty() || members[i].password.isEmpty()) {
                guest = g;
                row = i;
                return true;
            }
        }
    }
    return false;
}

} // namespace

ServerDataSaver::ServerDataSaver(ServerData &data, DbSession &session, MessageService &messages,
    QString profilePath, RegistryHives &hives, QString programDir)
    : m_data(data)
    , m_session(session)
    , m_messages(messages)
    , m_profilePath(std::move(profilePath))
    , m_hives(hives)
    , m_programDir(std::move(programDir))
    , m_pause([](int ms) { QThread::msleep(ulong(ms)); })
{ }

void ServerDataSaver::setPause(Pause pause)
{
    m_pause = std::move(pause);
}

QString ServerDataSaver::confirmText()
{
    return u"确定要保存?"_s;
}

QString ServerDataSaver::closeQuestionText()
{
    return u"确定要保存编辑的内容?"_s;
}

QString ServerDataSaver::dataErrorText()
{
    return u"当前编辑的数据发生错误."_s;
}

QString ServerDataSaver::memberErrorText()
{
    return u"用户ID和密码为空."_s;
}

QString ServerDataSaver::databaseErrorText()
{
    return u"数据库发生错误."_s;
}

void ServerDataSaver::balloon(const QString &text)
{
    MessageService::Balloon tip;
    tip.text = text;
    tip.icon = MessageService::Icon::Exclamation;
    tip.timeoutMs = 3000;
    m_messages.showBalloon(tip);
}

int ServerDataSaver::bumpVersion(const QString &profilePath)
{
    ProfileFile profile(profilePath);
    int version = profile.readInt(u"GroupInfo"_s, u"Version"_s, 0) + 1;
    if (version > 9999)
        version = 1;
    profile.writeString(u"GroupInfo"_s, u"Version"_s, QString::asprintf("%04d", version));
    return version;
}

ServerDataSaver::Result ServerDataSaver::save(bool confirmed)
{
    Result result;
    if (!confirmed) {
        MessageService::Box box;
        box.text = confirmText();
        box.buttons = MessageService::Buttons::YesNo;
        box.icon = MessageService::Icon::Question;
        if (m_messages.showMessage(box) != MessageService::Yes) {
            result.outcome = Outcome::Declined;
            return result;
        }
    }

    if (m_data.loadState() != ServerData::LoadState::Complete) {
        balloon(dataErrorText());
        result.outcome = Outcome::DataError;
        return result;
    }

    Directory &directory = *m_data.directory();
    if (findIncompleteMember(directory, result.memberIsGuest, result.memberRow)) {
        balloon(memberErrorText());
        result.outcome = Outcome::MemberMissing;
        return result;
    }

    // An empty handle (failed open, remote DBAddr) fails at its first use.
    DbConnection connection = m_session.OpenDBConnection();
    Step step = Step::DeletedMembers;
    try {
        DirectoryWriter::writeDeletedMembers(connection, directory.deletedMemberIds());

        step = Step::Directory;
        DirectoryWriter::writeDirectory(connection, directory.content());

        step = Step::Positions;
        m_data.positions()->list().save(connection);

        step = Step::Permissions;
        m_data.permissions().save(connection);

        step = Step::FileBox;
        m_data.fileBox().save(connection);

        result.version = bumpVersion(m_profilePath);

        step = Step::VoipPool;
        m_data.voipPool().save(connection);
    } catch (const DbException &e) {
        m_session.recordError(e.error());
        balloon(databaseErrorText());
        result.outcome = Outcome::DatabaseError;
        result.failedStep = step;
        result.error = e.error();
        return result;
    }

    // A failing DELETE of one notice does not stop the others; each failure
    // is reported as the database session reports errors.
    const QList<NoticeBoard::Failure> noticeFailures
        = m_data.notices()->commit(connection, m_hives, m_programDir, &m_session);
    for (const NoticeBoard::Failure &failure : noticeFailures) {
        MessageService::Box box;
        box.text = failure.error.formatted();
        box.title = failure.error.systemMessage();
        box.buttons = MessageService::Buttons::Ok;
        m_messages.showMessage(box);
    }
    result.failedNoticeDeletes = int(noticeFailures.size());
    connection = DbConnection();

    ServerNotifier notifier(m_messages);
    if (ProfileFile(m_profilePath).readInt(u"ServerInfo"_s, u"UseDist"_s, 0) != 0) {
        notifier.notify(ServerNotification::DistributionPort);
        m_pause(NotificationPauseMs);
    }
    notifier.notify(ServerNotification::ServerPort);

    m_data.markSaved();
    return result;
}

bool ServerDataSaver::saveOnClose()
{
    if (!m_data.isModified())
        return true;
    MessageService::Box box;
    box.text = closeQuestionText();
    box.buttons = MessageService::Buttons::YesNoCancel;
    box.icon = MessageService::Icon::Question;
    switch (m_messages.showMessage(box)) {
    case MessageService::Yes:
        return save(true).ok();
    case MessageService::No:
        return true;
    default:
        return false;
    }
}
