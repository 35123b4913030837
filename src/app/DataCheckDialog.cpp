#include "DataCheckDialog.h"

#include "CVelmarManagerDoc.h"
#include "DbConnection.h"
#include "DbSession.h"
#include "ServerFolderLock.h"

#include <QDialogButtonBox>
#include <QGuiApplication>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QStandardItemModel>
#include <QTableView>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

DataCheckDialog::DataCheckDialog(
    CVelmarManagerDoc &document, DbSession &session, QString profilePath, QWidget *parent)
    : QDialog(parent)
    , m_document(document)
    , m_session(session)
    , m_profilePath(std::move(profilePath))
    , m_model(new QStandardItemModel(0, 4, this))
    , m_table(new QTableView(this))
    , m_status(new QLabel(this))
    , m_repair(new QPushButton(repairText(), this))
{
    setObjectName(u"dataCheckDialog"_s);
    setWindowTitle(titleText());
    setAccessibleName(titleText());
    m_model->setHorizontalHeaderLabels({ u"问题"_s, u"数量"_s, u"例子"_s, u"保存后修复"_s });
    m_table->setObjectName(u"findingsTable"_s);
    m_table->setAccessibleName(titleText());
    m_table->setModel(m_model);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->verticalHeader()->hide();
    m_table->horizontalHeader()->setStretchLastSection(false);
    m_table->horizontalHeader()->setSectionResizeMode(2, QHeaderView::Stretch);
    m_status->setObjectName(u"statusLabel"_s);
    m_status->setWordWrap(true);
    m_repair->setObjectName(u"repairButton"_s);
    m_repair->setAccessibleName(repairText());
    connect(m_repair, &QPushButton::clicked, this, &DataCheckDialog::repair);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    buttons->addButton(m_repair, QDialogButtonBox::ActionRole);
    if (QPushButton *close = buttons->button(QDialogButtonBox::Close)) {
        close->setText(u"关闭"_s);
        close->setObjectName(u"closeButton"_s);
        close->setAccessibleName(u"关闭"_s);
    }
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_table);
    layout->addWidget(m_status);
    layout->addWidget(buttons);
    resize(860, 480);
    examine();
}

QString DataCheckDialog::titleText()
{
    return u"数据检查"_s;
}

QString DataCheckDialog::repairText()
{
    return u"修复"_s;
}

QString DataCheckDialog::statusText() const
{
    return m_status->text();
}

void DataCheckDialog::examine()
{
    m_findings.clear();
    m_model->removeRows(0, m_model->rowCount());
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    {
        // Between two saves, never in the middle of one.
        ServerFolderLock lock(ServerFolderLock::savePathFor(m_profilePath));
        if (lock.acquire(ServerFolderLock::Mode::Shared, ServerFolderLock::waitUpTo(10000))
            == ServerFolderLock::Status::GaveUp) {
            QGuiApplication::restoreOverrideCursor();
            m_status->setText(u"另一个程序正在保存这个服务器的数据, 请稍后再检查."_s);
            m_repair->setEnabled(false);
            return;
        }
        DbConnection connection = m_session.OpenDBConnection();
        try {
            if (!connection.isNull())
                m_findings = DataDoctor::examine(connection);
        } catch (const DbException &e) {
            m_session.recordError(e.error());
            m_status->setText(e.error().formatted());
        }
        m_findings += DataDoctor::examine(m_document, connection.dialect());
    }
    QGuiApplication::restoreOverrideCursor();
    for (const DataDoctor::Finding &finding : std::as_const(m_findings)) {
        if (finding.count == 0)
            continue;
        auto *count = new QStandardItem(QString::number(finding.count));
        count->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
        m_model->appendRow({ new QStandardItem(finding.title), count,
            new QStandardItem(finding.examples.join(u", "_s)),
            new QStandardItem(finding.repairedBySave ? u"是"_s : u"否"_s) });
    }
    m_table->resizeColumnToContents(0);
    m_table->resizeColumnToContents(1);
    m_table->resizeColumnToContents(3);
    const qint64 total = DataDoctor::total(m_findings);
    if (m_status->text().isEmpty() || total > 0 || m_model->rowCount() == 0)
        m_status->setText(total == 0
                ? u"没有发现问题."_s
                : u"共 %1 处问题. \"保存后修复\" 为 \"是\" 的问题在修复并保存后消失."_s.arg(total));
    // Repairs are edits of a working copy read whole.
    m_repair->setEnabled(
        total > 0 && m_document.loadState() == CVelmarManagerDoc::LoadState::Complete);
}

void DataCheckDialog::repair()
{
    const int steps = DataDoctor::repair(m_document);
    m_status->setText(
        u"已添加 %1 个修复步骤 (可以撤销). 保存后, 可由保存修复的问题会消失."_s.arg(steps));
    m_repair->setEnabled(false);
}
