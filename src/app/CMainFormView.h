#pragma once

#include <QDateTime>
#include <QList>
#include <QPair>
#include <QPointer>
#include <QWidget>

class CMainFrame;
class QAction;
class QFormLayout;
class QGroupBox;
class QLabel;
class QPushButton;
class QThread;

// The home view: what an administrator checks first. The server folder, the
// database the console uses and whether it opens, the services and the
// directory's size. The database check opens a connection of its own on a
// worker thread, so a slow server never freezes the window and a failure is
// written here instead of popping up a message box at every visit. Until the
// administrator is let in (the frame's startupReady) it shows nothing of the
// server and opens nothing.
class CMainFormView : public QWidget
{
    Q_OBJECT

public:
    enum class DatabaseState { Unchecked, Checking, Opens, Fails, Disabled };

    explicit CMainFormView(CMainFrame &frame, QWidget *parent = nullptr);
    ~CMainFormView() override;

    DatabaseState databaseState() const { return m_state; }
    QString databaseStateText() const;
    QString databaseDetail() const; // the failure text, or the driver that opened it
    QString shownConnectionString() const;
    QDateTime lastCheck() const { return m_lastCheck; }

    // Label and count per row ("成员", 1234); shown as given.
    void setDirectoryCounts(const QList<QPair<QString, qint64>> &counts);
    // Service name and state text per row ("VelmarD", "运行中").
    void setServiceStates(const QList<QPair<QString, QString>> &states);
    // Buttons under the service states that run the menu's start and stop commands.
    void setServiceActions(QAction *start, QAction *stop);

public Q_SLOTS:
    // Re-reads the settings and checks the database again (unless a check
    // runs); nothing before unlock().
    void refresh();
    // The administrator is in: show the settings and check the database.
    void unlock();

Q_SIGNALS:
    void databaseChecked(CMainFormView::DatabaseState state);

protected:
    void showEvent(QShowEvent *event) override;

private:
    void showSettings();
    void startCheck();
    void finishCheck(bool opened, const QString &detail);
    static void fillRows(
        QFormLayout *form, const QList<QPair<QString, QString>> &rows, const QString &namePrefix);

    CMainFrame &m_frame;
    QLabel *m_programDirectory;
    QLabel *m_profileFile;
    QLabel *m_databaseType;
    QLabel *m_connectionString;
    QLabel *m_databaseState;
    QLabel *m_databaseDetail;
    QLabel *m_checkedAt;
    QPushButton *m_refreshButton;
    QFormLayout *m_servicesForm;
    QGroupBox *m_servicesSection = nullptr;
    QFormLayout *m_directoryForm;

    DatabaseState m_state = DatabaseState::Unchecked;
    QString m_detail;
    QDateTime m_lastCheck;
    QPointer<QThread> m_checkThread;
    bool m_unlocked = false;
};
