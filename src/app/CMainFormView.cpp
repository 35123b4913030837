#include "CMainFormView.h"

#include "CMainFrame.h"
#include "ConnectionStringMask.h"
#include "CRegistry.h"
#include "DbConnection.h"
#include "ProfileFile.h"
#include "ServerFolder.h"

#include <memory>
#include <QDir>
#include <QFileInfo>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QThread>
#include <QToolButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {
const QString Unknown = u"—"_s;

// The daemons of a server installation, in their start order.
const QStringList &serviceNames()
{
    static const QStringList names = { u"VelmarD"_s, u"GroupD"_s, u"VelmarboxServerManager"_s,
        u"RelayD"_s, u"CheckD"_s, u"FileDispatchD"_s, u"FileSessionD"_s, u"ChatD"_s };
    return names;
}

QLabel *valueLabel(const QString &objectName, QWidget *parent)
{
    auto *label = new QLabel(Unknown, parent);
    label->setObjectName(objectName);
    label->setTextFormat(Qt::PlainText);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->setWordWrap(true);
    return label;
}

struct CheckResult
{
    bool opened = false;
    QString detail;
};
} // namespace

CMainFormView::CMainFormView(CMainFrame &frame, QWidget *parent)
    : QWidget(parent)
    , m_frame(frame)
    , m_programDirectory(valueLabel(u"programDirectoryValue"_s, this))
    , m_profileFile(valueLabel(u"profileFileValue"_s, this))
    , m_databaseType(valueLabel(u"databaseTypeValue"_s, this))
    , m_connectionString(valueLabel(u"connectionStringValue"_s, this))
    , m_databaseState(valueLabel(u"databaseStateValue"_s, this))
    , m_databaseDetail(valueLabel(u"databaseDetailValue"_s, this))
    , m_checkedAt(valueLabel(u"checkedAtValue"_s, this))
    , m_refreshButton(new QPushButton(u"重新检查(&R)"_s, this))
{
    setObjectName(u"mainFormView"_s);

    auto *title = new QLabel(u"VelmarManager"_s, this);
    title->setObjectName(u"dashboardTitle"_s);
    QFont titleFont = title->font();
    titleFont.setPointSizeF(titleFont.pointSizeF() * 1.8);
    titleFont.setBold(true);
    title->setFont(titleFont);
    auto *subtitle = new QLabel(u"Velmar Messenger 服务器管理"_s, this);
    subtitle->setObjectName(u"dashboardSubtitle"_s);

    auto *server = new QGroupBox(u"服务器"_s, this);
    server->setObjectName(u"serverSection"_s);
    auto *serverForm = new QFormLayout(server);
    serverForm->addRow(u"服务器文件夹:"_s, m_programDirectory);
    serverForm->addRow(u"服务器信息文件:"_s, m_profileFile);

    auto *database = new QGroupBox(u"数据库"_s, this);
    database->setObjectName(u"databaseSection"_s);
    auto *databaseForm = new QFormLayout(database);
    databaseForm->addRow(u"数据库类型:"_s, m_databaseType);
    databaseForm->addRow(u"连接字符串:"_s, m_connectionString);
    databaseForm->addRow(u"状态:"_s, m_databaseState);
    databaseForm->addRow(QString(), m_databaseDetail);
    databaseForm->addRow(u"检查时间:"_s, m_checkedAt);
    m_refreshButton->setObjectName(u"refreshButton"_s);
    auto *refreshRow = new QHBoxLayout;
    refreshRow->addWidget(m_refreshButton);
    refreshRow->addStretch();
    databaseForm->addRow(QString(), refreshRow);
    connect(m_refreshButton, &QPushButton::clicked, this, &CMainFormView::refresh);
    QFont stateFont = m_databaseState->font();
    stateFont.setBold(true);
    m_databaseState->setFont(stateFont);

    auto *services = new QGroupBox(u"服务"_s, this);
    services->setObjectName(u"servicesSection"_s);
    m_servicesSection = services;
    m_servicesForm = new QFormLayout;
    (new QVBoxLayout(services))->addLayout(m_servicesForm);
    QList<QPair<QString, QString>> unknownServices;
    for (const QString &name : serviceNames())
        unknownServices.append({ name, Unknown });
    fillRows(m_servicesForm, unknownServices, u"service"_s);

    auto *directory = new QGroupBox(u"组织目录"_s, this);
    directory->setObjectName(u"directorySection"_s);
    m_directoryForm = new QFormLayout(directory);
    fillRows(m_directoryForm, { { u"成员"_s, Unknown }, { u"群组"_s, Unknown } }, u"directory"_s);

    auto *grid = new QGridLayout;
    grid->addWidget(server, 0, 0, 1, 2);
    grid->addWidget(database, 1, 0, 1, 2);
    grid->addWidget(services, 2, 0);
    grid->addWidget(directory, 2, 1);
    grid->setColumnStretch(0, 1);
    grid->setColumnStretch(1, 1);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(24, 18, 24, 18);
    layout->addWidget(title);
    layout->addWidget(subtitle);
    layout->addSpacing(12);
    layout->addLayout(grid);
    layout->addStretch();

    connect(&m_frame, &CMainFrame::startupReady, this, &CMainFormView::unlock);
}

CMainFormView::~CMainFormView()
{
    if (m_checkThread) {
        // A check still running holds no reference to this view; let it end.
        m_checkThread->wait();
        delete m_checkThread;
    }
}

void CMainFormView::fillRows(
    QFormLayout *form, const QList<QPair<QString, QString>> &rows, const QString &namePrefix)
{
    while (form->rowCount() > 0)
        form->removeRow(0);
    for (int i = 0; i < rows.size(); ++i) {
        auto *value = valueLabel(u"%1Value%2"_s.arg(namePrefix).arg(i), form->parentWidget());
        value->setText(rows.at(i).second);
        form->addRow(rows.at(i).first + u':', value);
    }
}

void CMainFormView::setDirectoryCounts(const QList<QPair<QString, qint64>> &counts)
{
    QList<QPair<QString, QString>> rows;
    for (const auto &count : counts)
        rows.append({ count.first, QString::number(count.second) });
    fillRows(m_directoryForm, rows, u"directory"_s);
}

void CMainFormView::setServiceStates(const QList<QPair<QString, QString>> &states)
{
    fillRows(m_servicesForm, states, u"service"_s);
}

void CMainFormView::setServiceActions(QAction *start, QAction *stop)
{
    auto *row = new QHBoxLayout;
    for (QAction *action : { start, stop }) {
        auto *button = new QToolButton(m_servicesSection);
        button->setObjectName(action == start ? u"startServicesButton"_s : u"stopServicesButton"_s);
        button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
        button->setDefaultAction(action);
        row->addWidget(button);
    }
    row->addStretch();
    qobject_cast<QVBoxLayout *>(m_servicesSection->layout())->addLayout(row);
}

QString CMainFormView::databaseStateText() const
{
    return m_databaseState->text();
}

QString CMainFormView::databaseDetail() const
{
    return m_detail;
}

QString CMainFormView::shownConnectionString() const
{
    return m_connectionString->text();
}

void CMainFormView::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    refresh();
}

void CMainFormView::unlock()
{
    m_unlocked = true;
    if (isVisible())
        refresh();
}

void CMainFormView::refresh()
{
    if (!m_unlocked)
        return;
    showSettings();
    if (m_checkThread)
        return;
    startCheck();
}

void CMainFormView::showSettings()
{
    m_programDirectory->setText(QDir::toNativeSeparators(m_frame.programDirectory()));
    const QString profile = QDir::toNativeSeparators(m_frame.profilePath());
    m_profileFile->setText(
        QFileInfo::exists(m_frame.profilePath()) ? profile : u"%1 (不存在)"_s.arg(profile));
    QString type;
    if (readRegistryString(m_frame.hives(), RegistryRoot::LocalMachine,
            ServerFolder::DatabaseKeyPath, u"SetDBType"_s, type)
            != 1
        || type.isEmpty())
        type = Unknown;
    m_databaseType->setText(type);
    m_connectionString->setText(
        maskConnectionStringPassword(m_frame.dbSession().connectionString()));
}

void CMainFormView::startCheck()
{
    // A remote database address switches the console's database access off.
    const QString remote
        = ProfileFile(m_frame.profilePath()).readString(u"DBInfo"_s, u"DBAddr"_s, QString(), 128);
    if (!remote.isEmpty()) {
        m_state = DatabaseState::Disabled;
        m_detail
            = u"Serverinfo.ini 的 DBAddr 为 %1: 数据库在其他服务器上, 本程序不连接数据库."_s.arg(
                remote);
        m_databaseState->setText(u"不连接"_s);
        m_databaseState->setStyleSheet(QString());
        m_databaseDetail->setText(m_detail);
        m_lastCheck = m_frame.now();
        m_checkedAt->setText(m_lastCheck.toString(u"yyyy-MM-dd HH:mm:ss"_s));
        Q_EMIT databaseChecked(m_state);
        return;
    }

    m_state = DatabaseState::Checking;
    m_databaseState->setText(u"正在检查…"_s);
    m_databaseState->setStyleSheet(QString());
    m_databaseDetail->setText(QString());
    m_refreshButton->setEnabled(false);

    const QString connectionString = m_frame.dbSession().connectionString();
    auto result = std::make_shared<CheckResult>();
    // The connection is opened and dropped on the worker: a connection
    // belongs to the thread that opened it.
    QThread *thread = QThread::create([connectionString, result] {
        try {
            DbConnection connection = DbConnection::open(connectionString);
            result->opened = !connection.isNull();
            result->detail = connection.source();
        } catch (const DbException &exception) {
            result->detail = exception.error().formatted();
        } catch (const std::exception &exception) {
            result->detail = QString::fromLocal8Bit(exception.what());
        }
    });
    thread->setObjectName(u"databaseCheck"_s);
    connect(thread, &QThread::finished, this, [this, thread, result] {
        m_checkThread = nullptr;
        thread->deleteLater();
        finishCheck(result->opened, result->detail);
    });
    m_checkThread = thread;
    thread->start();
}

void CMainFormView::finishCheck(bool opened, const QString &detail)
{
    m_state = opened ? DatabaseState::Opens : DatabaseState::Fails;
    m_detail = detail;
    m_detail.replace(u"\r\n"_s, u"\n"_s);
    m_databaseState->setText(opened ? u"可以打开"_s : u"无法打开"_s);
    m_databaseState->setStyleSheet(opened ? u"color: #1a7f37;"_s : u"color: #c62828;"_s);
    m_databaseDetail->setText(opened ? u"驱动: %1"_s.arg(m_detail) : m_detail);
    m_lastCheck = m_frame.now();
    m_checkedAt->setText(m_lastCheck.toString(u"yyyy-MM-dd HH:mm:ss"_s));
    m_refreshButton->setEnabled(true);
    Q_EMIT databaseChecked(m_state);
}
