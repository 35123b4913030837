#include "ServerFolderDialog.h"

#include "MessageService.h"
#include "NewServerFolder.h"
#include "ServerFolder.h"
#include "ServerFolderChoice.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {
template<typename W> W *named(W *widget, const QString &objectName, const QString &title)
{
    widget->setObjectName(objectName);
    widget->setAccessibleName(title);
    return widget;
}
} // namespace

ServerFolderDialog::ServerFolderDialog(RegistryHives &hives, MessageService &messages,
    DialogHelpers::FolderChooser chooseFolder, const QString &current, QWidget *parent)
    : QDialog(parent)
    , m_hives(hives)
    , m_messages(messages)
    , m_chooseFolder(std::move(chooseFolder))
    , m_open(named(new QRadioButton(u"打开已有的服务器文件夹(&O)"_s, this), u"openRadio"_s,
          u"打开已有的服务器文件夹"_s))
    , m_create(named(new QRadioButton(u"在文件夹中新建空服务器(&N)"_s, this), u"createRadio"_s,
          u"在文件夹中新建空服务器"_s))
    , m_folder(named(new QLineEdit(current, this), u"folderEdit"_s, u"文件夹"_s))
    , m_database(named(new QComboBox(this), u"databaseCombo"_s, u"数据库"_s))
    , m_postgres(new QWidget(this))
    , m_host(named(new QLineEdit(u"localhost"_s, m_postgres), u"hostEdit"_s, u"服务器"_s))
    , m_port(named(new QSpinBox(m_postgres), u"portSpin"_s, u"端口"_s))
    , m_databaseName(named(new QLineEdit(m_postgres), u"databaseNameEdit"_s, u"数据库名"_s))
    , m_user(named(new QLineEdit(m_postgres), u"userEdit"_s, u"用户"_s))
    , m_password(named(new QLineEdit(m_postgres), u"passwordEdit"_s, u"密码"_s))
{
    setObjectName(u"serverFolderDialog"_s);
    setWindowTitle(u"服务器文件夹"_s);
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);

    auto *intro = new QLabel(u"VelmarManager 管理一个服务器文件夹 (其中有 Serverinfo.ini). "
                             "请选择已有的服务器文件夹, 或在一个文件夹中新建空服务器."_s,
        this);
    intro->setWordWrap(true);
    m_open->setChecked(true);

    auto *browse = named(new QPushButton(u"浏览(&B)..."_s, this), u"browseButton"_s, u"浏览..."_s);
    connect(browse, &QPushButton::clicked, this, [this] {
        const QString folder = m_chooseFolder(this, u"服务器文件夹"_s);
        if (!folder.isEmpty())
            m_folder->setText(folder);
    });
    auto *folderRow = new QHBoxLayout;
    folderRow->addWidget(m_folder, 1);
    folderRow->addWidget(browse);

    m_database->addItem(u"SQLite (文件夹中的 VelmarDB.mdb)"_s);
    m_database->addItem(u"PostgreSQL (管理员已建立的空数据库)"_s);
    m_port->setRange(1, 65535);
    m_port->setValue(5432);
    m_password->setEchoMode(QLineEdit::Password);
    auto *postgres = new QFormLayout(m_postgres);
    postgres->setContentsMargins(0, 0, 0, 0);
    postgres->addRow(u"服务器:"_s, m_host);
    postgres->addRow(u"端口:"_s, m_port);
    postgres->addRow(u"数据库名:"_s, m_databaseName);
    postgres->addRow(u"用户:"_s, m_user);
    postgres->addRow(u"密码:"_s, m_password);

    auto *form = new QFormLayout;
    form->addRow(u"文件夹:"_s, folderRow);
    form->addRow(u"数据库:"_s, m_database);

    auto *buttons = new QDialogButtonBox(this);
    QPushButton *ok = named(
        buttons->addButton(u"确定"_s, QDialogButtonBox::AcceptRole), u"okButton"_s, u"确定"_s);
    ok->setDefault(true);
    named(
        buttons->addButton(u"取消"_s, QDialogButtonBox::RejectRole), u"cancelButton"_s, u"取消"_s);
    connect(buttons, &QDialogButtonBox::accepted, this, &ServerFolderDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(intro);
    layout->addWidget(m_open);
    layout->addWidget(m_create);
    layout->addLayout(form);
    layout->addWidget(m_postgres);
    layout->addWidget(buttons);

    connect(m_create, &QRadioButton::toggled, this, &ServerFolderDialog::updateFields);
    connect(m_database, &QComboBox::currentIndexChanged, this, &ServerFolderDialog::updateFields);
    updateFields();
    resize(480, sizeHint().height());
}

void ServerFolderDialog::updateFields()
{
    m_database->setEnabled(m_create->isChecked());
    m_postgres->setVisible(m_create->isChecked() && m_database->currentIndex() == 1);
}

void ServerFolderDialog::refuse(const QString &text)
{
    m_messages.showMessage({ text, u"VelmarManager"_s, MessageService::Buttons::Ok,
        MessageService::Icon::Exclamation, this });
}

void ServerFolderDialog::accept()
{
    const QString text = m_folder->text().trimmed();
    if (text.isEmpty()) {
        refuse(u"请选择一个文件夹."_s);
        m_folder->setFocus();
        return;
    }
    const QString directory = ServerFolder::cleanDirectory(text);
    if (m_open->isChecked()) {
        if (!ServerFolderChoice::holdsServer(directory)) {
            refuse(
                u"%1 不是服务器文件夹: 其中没有 %2.\n请选择安装服务器时的文件夹, 或新建空服务器."_s
                    .arg(directory, ServerFolder::ProfileFileName));
            m_folder->setFocus();
            return;
        }
    } else if (!createServer(directory)) {
        return;
    }
    m_directory = directory;
    QDialog::accept();
}

bool ServerFolderDialog::createServer(const QString &directory)
{
    QString postgres;
    if (m_database->currentIndex() == 1) {
        if (m_databaseName->text().trimmed().isEmpty()) {
            refuse(u"请输入 PostgreSQL 数据库名."_s);
            m_databaseName->setFocus();
            return false;
        }
        postgres
            = NewServerFolder::postgresConnectionString(m_host->text().trimmed(), m_port->value(),
                m_databaseName->text().trimmed(), m_user->text().trimmed(), m_password->text());
    }
    QString error;
    if (!NewServerFolder::create(ServerFolder(directory), m_hives, postgres, &error)) {
        refuse(error);
        return false;
    }
    return true;
}
