#pragma once

#include "DialogHelpers.h"
#include "LogSettings.h"

#include <QDialog>

class QCheckBox;
class QLineEdit;

// "日志 设置": where the daemons write their logs, how long they keep them and
// whether they log. Takes effect when the server service restarts.
class CLogManagerSettingDlg final : public QDialog
{
    Q_OBJECT

public:
    CLogManagerSettingDlg(
        RegistryHives &hives, const QString &programDirectory, QWidget *parent = nullptr);

    void setFolderChooser(DialogHelpers::FolderChooser chooser)
    {
        m_chooseFolder = std::move(chooser);
    }

public Q_SLOTS:
    void browseFolder();
    void accept() override;

private:
    LogSettings m_settings;
    QLineEdit *m_path;
    QCheckBox *m_delete;
    QLineEdit *m_days;
    QCheckBox *m_logEnable;
    DialogHelpers::FolderChooser m_chooseFolder;
};
