#pragma once

#include "MessageService.h"

#include <memory>
#include <QObject>
#include <QPointer>

class BalloonTip;
class QIcon;
class QWidget;

// The real message boxes (QMessageBox) and the one shared balloon tip. Create
// it on the user-interface thread; a call from another thread (the loading
// worker) waits there until the box is answered, a call on the user-interface
// thread shows the box directly. A worker must therefore never call it while
// the user-interface thread is blocked waiting for that worker.
class QtMessageService : public QObject, public MessageService
{
    Q_OBJECT

public:
    explicit QtMessageService(QObject *parent = nullptr);
    ~QtMessageService() override;

    int showMessage(const Box &box) override;
    void showBalloon(const Balloon &balloon) override;
    void hideHint() override;

    // What a balloon without an anchor points at.
    void setMainWindow(QWidget *window);
    // The balloon-tip switch ("BalloonHelp"): while it is off hints are not
    // shown; refusals and errors always are.
    bool balloonsEnabled() const { return m_balloonsEnabled; }
    void setBalloonsEnabled(bool enabled);
    // The shared tip; created with the first balloon.
    BalloonTip *balloonTip() const { return m_balloon.get(); }

    // A box without a title carries the application's name, as the system's boxes do.
    static QString defaultTitle();
    static QIcon iconFor(Icon icon);

private:
    int showMessageHere(const Box &box);
    void showBalloonHere(const Balloon &balloon);

    QPointer<QWidget> m_mainWindow;
    bool m_balloonsEnabled = true;
    bool m_balloonIsHint = false; // what the tip on screen shows
    std::unique_ptr<BalloonTip> m_balloon;
};
