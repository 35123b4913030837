#include "SaveWaitDialog.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QProgressDialog>
#include <QPushButton>
#include <QTimer>

using namespace Qt::StringLiterals;

SaveWaitDialog::SaveWaitDialog(QWidget *parent)
    : m_parent(parent)
{ }

SaveWaitDialog::~SaveWaitDialog()
{
    delete m_dialog;
}

QString SaveWaitDialog::labelText()
{
    return u"另一个程序正在保存这个服务器的数据, 正在等待它完成..."_s;
}

QString SaveWaitDialog::cancelText()
{
    return u"取消"_s;
}

ServerFolderLock::Wait SaveWaitDialog::wait()
{
    return [this](qint64) { return poll(); };
}

bool SaveWaitDialog::poll()
{
    if (!m_dialog) {
        m_dialog = new QProgressDialog(labelText(), cancelText(), 0, 0, m_parent);
        m_dialog->setObjectName(u"saveWaitDialog"_s);
        m_dialog->setAccessibleName(labelText());
        m_dialog->setWindowTitle(QCoreApplication::applicationName());
        m_dialog->setWindowModality(Qt::WindowModal);
        m_dialog->setMinimumDuration(0);
        m_dialog->setAutoClose(false);
        m_dialog->setAutoReset(false);
        if (auto *cancel = m_dialog->findChild<QPushButton *>()) {
            cancel->setObjectName(u"cancelButton"_s);
            cancel->setAccessibleName(cancelText());
        }
        m_dialog->show();
    }
    // The window keeps painting (and the cancel answering) between tries.
    QEventLoop loop;
    QTimer::singleShot(ServerFolderLock::PollMs, &loop, &QEventLoop::quit);
    loop.exec();
    return m_dialog && !m_dialog->wasCanceled();
}
