#pragma once

#include <QDialog>

// Base of the two password dialogs. Enter and Escape are taken before any
// control sees them: Escape does nothing, so the dialog cannot be left with
// it; Enter runs confirm() once per press, whichever control has the focus.
// The window's close button cancels.
//
// The Enter latch: the system these dialogs come from hands them two messages
// per Enter press (the key-down and the character), and the latch lets only
// every second one through, so one press confirms once. Each press is fed
// through it twice, which keeps that alternation.
class EnterLatchDialog : public QDialog
{
    Q_OBJECT

public:
    explicit EnterLatchDialog(QWidget *parent = nullptr);

    // Set between presses; clear only inside one, between its two messages.
    bool enterLatchSet() const { return m_latchSet; }

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

    // True when this message runs the confirm action (the latch was set and
    // is now clear); false when it only sets the latch again.
    bool feedEnterLatch();

    bool m_latchSet = true;
};
