#include "ImportSourceThread.h"

using namespace Qt::StringLiterals;

ImportSourceThread::ImportSourceThread()
    : m_context(new QObject)
{
    m_thread.setObjectName(u"import source"_s);
    m_context->moveToThread(&m_thread);
    QObject::connect(&m_thread, &QThread::finished, m_context, &QObject::deleteLater);
    m_thread.start();
}

ImportSourceThread::~ImportSourceThread()
{
    m_thread.quit();
    m_thread.wait();
}

void ImportSourceThread::close(std::unique_ptr<ImportSource> source)
{
    if (!source)
        return;
    QMetaObject::invokeMethod(
        m_context, [&source] { source.reset(); }, Qt::BlockingQueuedConnection);
}
