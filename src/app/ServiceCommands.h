#pragma once

#include "ProgramLauncher.h"
#include "ServerServices.h"
#include "ServiceClock.h"
#include "ServiceControl.h"

#include <memory>
#include <QList>
#include <QObject>
#include <QPointer>

class CMainFrame;
class QThread;
class QTimer;

// The "服务管理(&M)" commands of the main window: start (32801, on a thread of
// its own), stop (32802, on the user-interface thread behind a progress
// dialog), their enable states, and the database-settings command (32823). It
// also keeps the dashboard's service states current.
class ServiceCommands final : public QObject
{
    Q_OBJECT

public:
    // manager: the service manager to use; nullptr: the platform's own.
    ServiceCommands(CMainFrame &frame, ServiceManager *manager);
    ~ServiceCommands() override;

    ServerServices &services() { return m_services; }
    // True while a start thread of this window runs.
    bool startThreadRunning() const { return !m_startThreads.isEmpty(); }
    // The dashboard shows states read from the manager (not the placeholders).
    bool statesShown() const { return m_statesShown; }

    // How often the dashboard's states are read again.
    static constexpr int RefreshIntervalMs = 3000;
    // The status-bar text while a daemon is being started.
    static QString startingText(const QString &name);
    static QString stoppingText(const QString &name);
    static QString databaseUpdatedText();

    // The port the database-settings command notifies; tests point it at a
    // port that cannot be sent to, to take the restart path.
    void setNotificationPort(quint16 port) { m_notificationPort = port; }

public Q_SLOTS:
    void startServices();
    void stopServices();
    void changeDatabaseSettings();
    // The designed enable handlers of 32801 and 32802.
    void updateCommandStates();
    // Reads every daemon's state on a worker and shows it on the dashboard.
    void refreshStates();

Q_SIGNALS:
    void serviceStarting(const QString &name);
    void startFinished();
    void stopFinished();
    void statesRefreshed();

private:
    void showStates(const QList<QPair<QString, ServiceControl::State>> &states);

    CMainFrame &m_frame;
    std::unique_ptr<ServiceManager> m_ownManager;
    ServiceManager &m_manager;
    EventLoopClock m_clock;
    DetachedProcessLauncher m_launcher;
    ServiceControl m_control;
    ServerServices m_services;
    QList<QThread *> m_startThreads;
    QPointer<QThread> m_refreshThread;
    QTimer *m_refreshTimer;
    quint16 m_notificationPort;
    bool m_settingsToolRunning = false;
    bool m_statesShown = false;
};
