#include "SettingsCommands.h"

#include "CLogManagerSettingDlg.h"
#include "CMainFrame.h"
#include "CommandIds.h"
#include "CSetupCaptionBarDlg.h"
#include "CSetupFileServerDlg.h"
#include "CSetupHomepageDlg.h"
#include "CSetupMailDlg.h"
#include "CVelmarboxSettingDlg.h"
#include "OutlookBar.h"
#include "ServerNotifier.h"

#include <QAction>
#include <QMenu>
#include <QMenuBar>
#include <QStyle>

using namespace Qt::StringLiterals;

SettingsCommands::SettingsCommands(CMainFrame &frame)
    : QObject(&frame)
    , m_frame(frame)
    , m_velmarbox(new QAction(u"VelmarBox 设置"_s, &frame))
    , m_logSettings(new QAction(u"日志 设置"_s, &frame))
{
    setObjectName(u"settingsCommands"_s);
    m_velmarbox->setObjectName(u"velmarboxSettingsAction"_s);
    m_logSettings->setObjectName(u"logSettingsAction"_s);
    m_velmarbox->setEnabled(false);
    m_logSettings->setEnabled(false);

    auto connectCommand = [this](int id, void (SettingsCommands::*slot)()) {
        if (QAction *action = m_frame.commandAction(id))
            connect(action, &QAction::triggered, this, slot);
    };
    connectCommand(CommandId::FileServiceSettings, &SettingsCommands::showFileServerSettings);
    connectCommand(CommandId::HomePageSettings, &SettingsCommands::showHomepageSettings);
    connectCommand(CommandId::CaptionSettings, &SettingsCommands::showCaptionBarSettings);
    connectCommand(CommandId::MailSettings, &SettingsCommands::showMailSettings);
    connect(m_velmarbox, &QAction::triggered, this, &SettingsCommands::showVelmarboxSettings);
    connect(m_logSettings, &QAction::triggered, this, &SettingsCommands::showLogSettings);

    if (auto *menu = m_frame.menuBar()->findChild<QMenu *>(u"menuSettings"_s)) {
        menu->addSeparator();
        menu->addAction(m_velmarbox);
        menu->addAction(m_logSettings);
    }
    QStyle *style = m_frame.style();
    m_frame.outlookBar()->addItem(u"BOX编辑"_s, VelmarboxSettingsItem, u"VelmarBox 设置"_s,
        style->standardIcon(QStyle::SP_FileDialogDetailedView), false);
    m_frame.outlookBar()->addItem(u"日志管理"_s, LogSettingsItem, u"日志 设置"_s,
        style->standardIcon(QStyle::SP_FileDialogDetailedView), false);
    connect(m_frame.outlookBar(), &OutlookBar::viewSelected, this,
        &SettingsCommands::outlookItemChosen);

    // Nothing of the server is read before the administrator is let in.
    if (m_frame.isStartupReady())
        enable();
    else
        connect(&m_frame, &CMainFrame::startupReady, this, &SettingsCommands::enable);
}

void SettingsCommands::enable()
{
    for (int id : { CommandId::FileServiceSettings, CommandId::HomePageSettings,
             CommandId::CaptionSettings, CommandId::MailSettings }) {
        if (QAction *action = m_frame.commandAction(id))
            action->setEnabled(true);
    }
    m_velmarbox->setEnabled(true);
    m_logSettings->setEnabled(true);
    m_frame.outlookBar()->setItemEnabled(VelmarboxSettingsItem, true);
    m_frame.outlookBar()->setItemEnabled(LogSettingsItem, true);
}

void SettingsCommands::outlookItemChosen(int itemId)
{
    if (itemId != VelmarboxSettingsItem && itemId != LogSettingsItem)
        return;
    // The item opens a dialog; the pane keeps the view it shows.
    m_frame.outlookBar()->setCurrentView(m_frame.currentViewId());
    if (itemId == VelmarboxSettingsItem)
        showVelmarboxSettings();
    else
        showLogSettings();
}

void SettingsCommands::openModal(QDialog *dialog)
{
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    m_dialog = dialog;
    dialog->open();
}

void SettingsCommands::showFileServerSettings()
{
    openModal(new CSetupFileServerDlg(SessionServerList(m_frame.hives(), m_frame.profilePath()),
        m_frame.messages(), &SessionServerList::GetLocalServerAddress, &m_frame));
}

void SettingsCommands::showHomepageSettings()
{
    openModal(new CSetupHomepageDlg(m_frame.profilePath(), m_frame.messages(), &m_frame));
}

void SettingsCommands::showCaptionBarSettings()
{
    const QString profile = m_frame.profilePath();
    auto *dialog = new CSetupCaptionBarDlg(m_frame.programDirectory(),
        CaptionBarSettings(profile).load(), m_frame.messages(), &m_frame);
    connect(dialog, &QDialog::accepted, this, [this, dialog, profile] {
        CaptionBarSettings(profile).save(dialog->values());
        ServerNotifier(m_frame.messages())
            .notify(ServerNotification::CaptionPort, ServerNotification::PresentationChanged);
    });
    openModal(dialog);
}

void SettingsCommands::showMailSettings()
{
    openModal(new CSetupMailDlg(m_frame.profilePath(), &m_frame));
}

void SettingsCommands::showVelmarboxSettings()
{
    openModal(
        new CVelmarboxSettingDlg(VelmarBoxSettings(m_frame.hives(), m_frame.programDirectory()),
            m_frame.messages(), &m_frame));
}

void SettingsCommands::showLogSettings()
{
    openModal(new CLogManagerSettingDlg(m_frame.hives(), m_frame.programDirectory(), &m_frame));
}
