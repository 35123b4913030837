#pragma once

#include "DialogHelpers.h"
#include "VelmarBoxSettings.h"

#include <QDialog>

class MessageService;
class QLineEdit;

// "VelmarBox 设置": the file-box server's home folder and passive-mode address
// and port range. Opening writes every missing value's default at once.
class CVelmarboxSettingDlg final : public QDialog
{
    Q_OBJECT

public:
    CVelmarboxSettingDlg(
        VelmarBoxSettings settings, MessageService &messages, QWidget *parent = nullptr);

    static const QString HomeHintText;
    void setFolderChooser(DialogHelpers::FolderChooser chooser)
    {
        m_chooseFolder = std::move(chooser);
    }

public Q_SLOTS:
    void browseFolder();
    void accept() override;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void moveEvent(QMoveEvent *event) override;

private:
    void showHomeHint();

    VelmarBoxSettings m_settings;
    MessageService &m_messages;
    QLineEdit *m_home;
    QLineEdit *m_pasvIp;
    QLineEdit *m_minPort;
    QLineEdit *m_maxPort;
    DialogHelpers::FolderChooser m_chooseFolder;
};
