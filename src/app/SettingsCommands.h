#pragma once

#include <QObject>
#include <QPointer>

class CMainFrame;
class QAction;
class QDialog;

// The server settings dialogs of the main window: the file service (32825),
// the client's site list (32820), caption bar (32821) and mail (32826), and the
// file-box server and log settings, which have no command id of their own and
// sit in the "服务设置(&D)" menu and in the outlook bar's "BOX编辑" and "日志管理"
// groups. All stay disabled until the administrator is let in.
class SettingsCommands final : public QObject
{
    Q_OBJECT

public:
    explicit SettingsCommands(CMainFrame &frame);

    // Outlook-bar items that open a dialog instead of a view.
    static constexpr int VelmarboxSettingsItem = 100;
    static constexpr int LogSettingsItem = 101;

    QAction *velmarboxSettingsAction() const { return m_velmarbox; }
    QAction *logSettingsAction() const { return m_logSettings; }
    // The dialog a command opened last, while it is open.
    QDialog *openDialog() const { return m_dialog; }

public Q_SLOTS:
    void showFileServerSettings();
    void showHomepageSettings();
    void showCaptionBarSettings();
    void showMailSettings();
    void showVelmarboxSettings();
    void showLogSettings();

private:
    void enable();
    void openModal(QDialog *dialog);
    void outlookItemChosen(int itemId);

    CMainFrame &m_frame;
    QAction *m_velmarbox;
    QAction *m_logSettings;
    QPointer<QDialog> m_dialog;
};
