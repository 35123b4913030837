#pragma once

#include "EnterKeyLatch.h"

#include <QDialog>

// Base of the two password dialogs. Enter and Escape are taken before any
// control sees them: Escape does nothing, so the dialog cannot be left with
// it; Enter goes through the latch and runs confirm() once per press, whichever
// control has the focus. The window's close button cancels.
class EnterLatchDialog : public QDialog
{
    Q_OBJECT

public:
    explicit EnterLatchDialog(QWidget *parent = nullptr);

    const EnterKeyLatch &enterLatch() const { return m_latch; }

public Q_SLOTS:
    // Escape and any other route to reject() leave the dialog open; the
    // cancel button and the close button end it with cancelDialog().
    void reject() override;
    virtual void confirm() = 0;
    void cancelDialog();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void childEvent(QChildEvent *event) override;

private:
    bool handleKey(QKeyEvent *event);

    EnterKeyLatch m_latch;
};
