#include "CAccessOverviewPanel.h"

#include "AccessOverview.h"
#include "AccessOverviewModel.h"
#include "CVelmarManagerDoc.h"
#include "Directory.h"
#include "FolderListModel.h"
#include "MessageService.h"

#include <QComboBox>
#include <QFileDialog>
#include <QGridLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSaveFile>
#include <QSortFilterProxyModel>
#include <QTableView>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

CAccessOverviewPanel::CAccessOverviewPanel(CVelmarManagerDoc &document, FolderListModel *folders,
    MessageService &messages, QWidget *parent)
    : QWidget(parent)
    , m_document(document)
    , m_messages(messages)
    , m_model(new AccessOverviewModel(document, this))
{
    setObjectName(u"accessOverview"_s);

    auto *memberLabel = new QLabel(u"用户ID:"_s, this);
    m_memberField = new QLineEdit(this);
    m_memberField->setObjectName(u"overviewMemberField"_s);
    m_memberField->setAccessibleName(u"用户ID"_s);
    memberLabel->setBuddy(m_memberField);
    m_memberButton = new QPushButton(u"查看用户"_s, this);
    m_memberButton->setObjectName(u"overviewMemberButton"_s);
    m_memberButton->setAccessibleName(u"查看用户"_s);

    auto *folderLabel = new QLabel(u"文件夹:"_s, this);
    m_folderCombo = new QComboBox(this);
    m_folderCombo->setObjectName(u"overviewFolderCombo"_s);
    m_folderCombo->setAccessibleName(u"文件夹"_s);
    m_folderCombo->setModel(folders);
    m_folderCombo->setModelColumn(FolderListModel::PathColumn);
    m_folderCombo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m_folderCombo->setMinimumContentsLength(24);
    folderLabel->setBuddy(m_folderCombo);
    m_folderButton = new QPushButton(u"查看文件夹"_s, this);
    m_folderButton->setObjectName(u"overviewFolderButton"_s);
    m_folderButton->setAccessibleName(u"查看文件夹"_s);

    m_summary = new QLabel(this);
    m_summary->setObjectName(u"overviewSummary"_s);
    m_summary->setAccessibleName(u"结果"_s);

    m_table = new QTableView(this);
    m_table->setObjectName(u"overviewTable"_s);
    m_table->setAccessibleName(u"访问概览"_s);
    auto *proxy = new QSortFilterProxyModel(m_table);
    proxy->setSourceModel(m_model);
    m_table->setModel(proxy);
    m_table->setSortingEnabled(true);
    m_table->sortByColumn(-1, Qt::AscendingOrder); // the computed order until a title is clicked
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->verticalHeader()->hide();
    m_table->verticalHeader()->setDefaultSectionSize(m_table->fontMetrics().height() + 6);
    m_table->horizontalHeader()->setStretchLastSection(true);
    m_table->horizontalHeader()->setDefaultSectionSize(180);

    m_exportButton = new QPushButton(u"导出 CSV..."_s, this);
    m_exportButton->setObjectName(u"overviewExportButton"_s);
    m_exportButton->setAccessibleName(u"导出 CSV..."_s);
    m_exportButton->setEnabled(false);

    auto *grid = new QGridLayout;
    grid->addWidget(memberLabel, 0, 0);
    grid->addWidget(m_memberField, 0, 1);
    grid->addWidget(m_memberButton, 0, 2);
    grid->addWidget(folderLabel, 1, 0);
    grid->addWidget(m_folderCombo, 1, 1);
    grid->addWidget(m_folderButton, 1, 2);
    grid->setColumnStretch(1, 1);
    auto *bottom = new QHBoxLayout;
    bottom->addWidget(m_summary, 1);
    bottom->addWidget(m_exportButton);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(grid);
    layout->addWidget(m_table, 1);
    layout->addLayout(bottom);

    connect(m_memberButton, &QPushButton::clicked, this,
        [this] { showMember(m_memberField->text().trimmed()); });
    connect(m_memberField, &QLineEdit::returnPressed, m_memberButton, &QPushButton::click);
    connect(m_folderButton, &QPushButton::clicked, this, [this] {
        const int row = m_folderCombo->currentIndex();
        if (row >= 0)
            showFolder(m_folderCombo->itemData(row, FolderListModel::FolderIdRole).toInt());
    });
    // Choosing a folder in the list shows it at once.
    connect(m_folderCombo, &QComboBox::activated, m_folderButton, &QPushButton::click);
    connect(m_exportButton, &QPushButton::clicked, this, &CAccessOverviewPanel::chooseExportFile);
    connect(m_model, &QAbstractItemModel::modelReset, this, &CAccessOverviewPanel::updateSummary);
    updateSummary();
}

bool CAccessOverviewPanel::showMember(const QString &loginName)
{
    const UserInfo *member = AccessOverview::memberByLoginName(*m_document.directory(), loginName);
    if (!member) {
        MessageService::Balloon balloon;
        balloon.title = u"访问概览"_s;
        balloon.text = u"没有这个用户."_s;
        balloon.anchor = m_memberField;
        m_messages.showBalloon(balloon);
        return false;
    }
    m_model->showMember(member->id);
    m_table->resizeColumnToContents(0);
    return true;
}

void CAccessOverviewPanel::showFolder(qint32 folderId)
{
    const int row = m_folderCombo->findData(folderId, FolderListModel::FolderIdRole);
    if (row >= 0)
        m_folderCombo->setCurrentIndex(row);
    m_model->showFolder(folderId);
}

void CAccessOverviewPanel::updateSummary()
{
    const auto rows = m_model->rowCount();
    m_exportButton->setEnabled(m_model->mode() != AccessOverviewModel::Mode::None);
    switch (m_model->mode()) {
    case AccessOverviewModel::Mode::None:
        m_summary->setText(u"输入用户ID或选择文件夹, 查看权限来自哪里."_s);
        break;
    case AccessOverviewModel::Mode::Member: {
        const UserInfo *member = m_document.directory()->findMember(m_model->subjectId());
        m_summary->setText(u"%1 (%2): %3 项权限"_s.arg(member ? member->loginName : QString(),
            member ? member->displayName : QString(), QString::number(rows)));
        break;
    }
    case AccessOverviewModel::Mode::Folder:
        m_summary->setText(u"%1: %2 行"_s.arg(
            m_document.fileBox().pathByFolderId(m_model->subjectId()), QString::number(rows)));
        break;
    }
}

void CAccessOverviewPanel::chooseExportFile()
{
    const QString path
        = QFileDialog::getSaveFileName(this, u"导出 CSV"_s, u"access.csv"_s, u"CSV (*.csv)"_s);
    if (!path.isEmpty())
        exportCsv(path);
}

bool CAccessOverviewPanel::exportCsv(const QString &path)
{
    QSaveFile file(path);
    // A byte-order mark, so that spreadsheet programs read the Chinese texts as UTF-8.
    const QByteArray bytes = "\xEF\xBB\xBF" + m_model->toCsv().toUtf8();
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit()) {
        MessageService::Box box;
        box.text = u"无法写入 %1: %2"_s.arg(path, file.errorString());
        box.icon = MessageService::Icon::Exclamation;
        box.parent = this;
        m_messages.showMessage(box);
        return false;
    }
    return true;
}
