#include "EnterLatchDialog.h"

#include <QCloseEvent>
#include <QKeyEvent>
#include <QPointer>

EnterLatchDialog::EnterLatchDialog(QWidget *parent)
    : QDialog(parent)
{ }

void EnterLatchDialog::reject() { }

void EnterLatchDialog::cancelDialog()
{
    done(QDialog::Rejected);
}

bool EnterLatchDialog::feedEnterLatch()
{
    m_latchSet = !m_latchSet;
    return !m_latchSet;
}

bool EnterLatchDialog::handleKey(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Escape:
        return true;
    case Qt::Key_Return:
    case Qt::Key_Enter: {
        // The confirm action may end (and delete) the dialog half-way.
        QPointer<EnterLatchDialog> guard(this);
        for (int message = 0; message < 2 && guard; ++message) {
            if (feedEnterLatch())
                confirm();
        }
        return true;
    }
    default:
        return false;
    }
}

bool EnterLatchDialog::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::KeyPress && watched->isWidgetType()
        && static_cast<QWidget *>(watched)->window() == this) {
        if (handleKey(static_cast<QKeyEvent *>(event)))
            return true;
    }
    // A control must not claim Enter or Escape as a shortcut of its own.
    if (event->type() == QEvent::ShortcutOverride) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Escape) {
            event->accept();
            return false;
        }
    }
    return QDialog::eventFilter(watched, event);
}

void EnterLatchDialog::keyPressEvent(QKeyEvent *event)
{
    if (!handleKey(event))
        QDialog::keyPressEvent(event);
}

void EnterLatchDialog::closeEvent(QCloseEvent *event)
{
    if (isVisible())
        cancelDialog();
    event->accept();
}

void EnterLatchDialog::showEvent(QShowEvent *event)
{
    // Controls made after construction are watched as well.
    const QList<QWidget *> children = findChildren<QWidget *>();
    for (QWidget *child : children)
        child->installEventFilter(this);
    QDialog::showEvent(event);
}

void EnterLatchDialog::childEvent(QChildEvent *event)
{
    if (event->added() && event->child()->isWidgetType())
        event->child()->installEventFilter(this);
    QDialog::childEvent(event);
}
