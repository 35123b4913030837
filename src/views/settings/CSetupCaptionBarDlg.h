#pragma once

#include "CaptionBarSettings.h"
#include "DialogHelpers.h"

#include <QDialog>

class MessageService;
class QLineEdit;
class QPushButton;
class QRadioButton;

// "版本设置": the client's caption-bar name, icon and left logo picture. The
// dialog only collects the values; the command that opened it saves them and
// notifies the server once it closed with OK.
class CSetupCaptionBarDlg final : public QDialog
{
    Q_OBJECT

public:
    CSetupCaptionBarDlg(const QString &programDirectory, const CaptionBarSettings::Values &values,
        MessageService &messages, QWidget *parent = nullptr);

    CaptionBarSettings::Values values() const;
    void setFileChooser(DialogHelpers::FileChooser chooser) { m_chooseFile = std::move(chooser); }

public Q_SLOTS:
    void browseIcon();
    void browseLogo();

private:
    void updateEnabled();

    QString m_programDirectory;
    MessageService &m_messages;
    QRadioButton *m_defaultIcon;
    QRadioButton *m_customIcon;
    QLineEdit *m_iconPath;
    QPushButton *m_iconBrowse;
    QLineEdit *m_captionName;
    QRadioButton *m_defaultLogo;
    QRadioButton *m_customLogo;
    QLineEdit *m_logoPath;
    QPushButton *m_logoBrowse;
    DialogHelpers::FileChooser m_chooseFile;
};
