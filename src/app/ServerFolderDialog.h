#pragma once

#include "DialogHelpers.h"

#include <QDialog>

class MessageService;
class QComboBox;
class QLineEdit;
class QRadioButton;
class QSpinBox;
class QWidget;
class RegistryHives;

// Asked when the console starts without a server folder, and by
// "文件 → 打开服务器文件夹…": an existing server folder (one that holds
// "Serverinfo.ini"), or a new, empty server created in a folder, its
// database a new SQLite file there or an empty PostgreSQL database.
class ServerFolderDialog final : public QDialog
{
    Q_OBJECT

public:
    ServerFolderDialog(RegistryHives &hives, MessageService &messages,
        DialogHelpers::FolderChooser chooseFolder, const QString &current = {},
        QWidget *parent = nullptr);

    // The folder chosen, once accepted.
    QString directory() const { return m_directory; }

    void accept() override;

private:
    void updateFields();
    bool createServer(const QString &directory);
    void refuse(const QString &text);

    RegistryHives &m_hives;
    MessageService &m_messages;
    DialogHelpers::FolderChooser m_chooseFolder;
    QString m_directory;

    QRadioButton *m_open;
    QRadioButton *m_create;
    QLineEdit *m_folder;
    QComboBox *m_database;
    QWidget *m_postgres;
    QLineEdit *m_host;
    QSpinBox *m_port;
    QLineEdit *m_databaseName;
    QLineEdit *m_user;
    QLineEdit *m_password;
};
