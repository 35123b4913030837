#pragma once

#include "ServerFolderLock.h"

#include <QPointer>
#include <QString>

class QProgressDialog;
class QWidget;

// The console's waiting state while another program's save holds the
// server folder: a dialog that says so, with a cancel, shown from the first
// wait on, while the user-interface thread keeps painting. wait() is what
// the save (or the recovery) is given to wait with.
class SaveWaitDialog final
{
public:
    explicit SaveWaitDialog(QWidget *parent);
    ~SaveWaitDialog();
    SaveWaitDialog(const SaveWaitDialog &) = delete;
    SaveWaitDialog &operator=(const SaveWaitDialog &) = delete;

    ServerFolderLock::Wait wait();

    static QString labelText(); // "另一个程序正在保存这个服务器的数据, 正在等待它完成..."
    static QString cancelText(); // "取消"

private:
    bool poll();

    QWidget *m_parent;
    QPointer<QProgressDialog> m_dialog;
};
