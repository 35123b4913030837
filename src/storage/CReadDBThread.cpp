#include "CReadDBThread.h"

#include "CVelmarManagerDoc.h"
#include "DbSession.h"
#include "DeferredMessageService.h"
#include "LoadProgress.h"
#include "MessageService.h"

using namespace Qt::StringLiterals;

struct CReadDBThread::Deferred
{
    DeferredMessageService messages;
};

namespace {

// Turns the loader's progress calls into the thread's signals. A position is
// sent only when it has moved by a percent of the range (or reached its end):
// one queued event per row would flood the user-interface thread at 100,000
// members without showing anything more.
class SignalProgress : public LoadProgress
{
public:
    explicit SignalProgress(CReadDBThread &thread)
        : m_thread(thread)
    { }

    void setText(const QString &text) override { Q_EMIT m_thread.progressText(text); }
    void setRange(int maximum) override
    {
        m_maximum = maximum;
        m_step = qMax(1, maximum / 100);
        m_lastSent = 0;
        Q_EMIT m_thread.progressRange(maximum);
    }
    void setPosition(int position) override
    {
        if (position != m_maximum && position - m_lastSent < m_step && position > m_lastSent)
            return;
        m_lastSent = position;
        Q_EMIT m_thread.progressPosition(position);
    }

private:
    CReadDBThread &m_thread;
    int m_maximum = 0;
    int m_step = 1;
    int m_lastSent = 0;
};

} // namespace

CReadDBThread::CReadDBThread(const RegistryHives &hives, QString profilePath,
    QString accessDatabasePath, MessageService &messages, CVelmarManagerDoc &target,
    SqlTrace *trace, QObject *parent)
    : QThread(parent)
    , m_hives(hives)
    , m_profilePath(std::move(profilePath))
    , m_accessDatabasePath(std::move(accessDatabasePath))
    , m_messages(messages)
    , m_target(target)
    , m_trace(trace)
    , m_deferred(std::make_unique<Deferred>())
{
    connect(this, &QThread::finished, this, &CReadDBThread::onFinished);
}

CReadDBThread::~CReadDBThread()
{
    wait();
}

QString CReadDBThread::openFailedText()
{
    return u"打开数据库时发生错误."_s;
}

QString CReadDBThread::busyText()
{
    return u"另一个程序正在保存这个服务器的数据, 等待超时, 没有读取数据."_s;
}

QString CReadDBThread::readFailedText()
{
    return u"当读数据时发生错误."_s;
}

void CReadDBThread::run()
{
    m_data = ServerDataSet();
    m_result = {};
    // The session's own box (a failed open) must not be shown from this
    // thread: it is held and shown first when the run is over.
    DbSession session(m_hives, m_profilePath, m_accessDatabasePath, m_deferred->messages, m_trace);
    SignalProgress progress(*this);
    ServerDataLoader loader(session, m_profilePath);
    if (m_lockWait)
        loader.setLockWait(m_lockWait);
    m_result = loader.run(m_data, &progress);
}

void CReadDBThread::onFinished()
{
    // A failed open read nothing: whatever the working copy holds stays.
    if (m_result.outcome != ServerDataLoader::Outcome::OpenFailed
        && m_result.outcome != ServerDataLoader::Outcome::Busy) {
        m_target.adopt(std::exchange(m_data, ServerDataSet()),
            m_result.ok() ? CVelmarManagerDoc::LoadState::Complete
                          : CVelmarManagerDoc::LoadState::Partial);
    }

    m_deferred->messages.replay(m_messages);
    if (!m_result.ok()) {
        MessageService::Box box;
        box.text = m_result.outcome == ServerDataLoader::Outcome::OpenFailed ? openFailedText()
            : m_result.outcome == ServerDataLoader::Outcome::Busy            ? busyText()
                                                                             : readFailedText();
        box.buttons = MessageService::Buttons::Ok;
        box.icon = MessageService::Icon::Exclamation;
        m_messages.showMessage(box);
    }

    if (m_result.ok())
        Q_EMIT loadCompleted();
    Q_EMIT workerExited(resultFlag());
}
