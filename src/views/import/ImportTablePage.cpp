#include "ImportTablePage.h"

#include "ImportTableModel.h"
#include "ImportWizard.h"

#include <QGuiApplication>
#include <QHeaderView>
#include <QLabel>
#include <QListWidget>
#include <QSplitter>
#include <QTableView>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

ImportTablePage::ImportTablePage(ImportWizard &wizard)
    : m_wizard(wizard)
{
    setObjectName(u"importTablePage"_s);
    setTitle(ImportWizard::pageTitle(ImportWizard::TablePage));
    setAccessibleName(title());

    auto *layout = new QVBoxLayout(this);
    auto *splitter = new QSplitter(Qt::Horizontal, this);
    splitter->setChildrenCollapsible(false);

    auto *left = new QWidget(splitter);
    auto *leftLayout = new QVBoxLayout(left);
    leftLayout->setContentsMargins(0, 0, 0, 0);
    const QString tablesTitle = u"数据表"_s;
    auto *tablesLabel = new QLabel(tablesTitle + u":"_s, left);
    m_tables = new QListWidget(left);
    m_tables->setObjectName(u"importTableList"_s);
    m_tables->setAccessibleName(tablesTitle);
    tablesLabel->setBuddy(m_tables);
    leftLayout->addWidget(tablesLabel);
    leftLayout->addWidget(m_tables, 1);

    auto *right = new QWidget(splitter);
    auto *rightLayout = new QVBoxLayout(right);
    rightLayout->setContentsMargins(0, 0, 0, 0);
    const QString previewTitle = u"预览 (前 %1 行)"_s.arg(PreviewRows);
    auto *previewLabel = new QLabel(previewTitle + u":"_s, right);
    m_model = new ImportTableModel(this);
    m_preview = new QTableView(right);
    m_preview->setObjectName(u"importTablePreview"_s);
    m_preview->setAccessibleName(previewTitle);
    m_preview->setModel(m_model);
    m_preview->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_preview->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_preview->verticalHeader()->setDefaultSectionSize(m_preview->fontMetrics().height() + 6);
    previewLabel->setBuddy(m_preview);
    rightLayout->addWidget(previewLabel);
    rightLayout->addWidget(m_preview, 1);

    splitter->addWidget(left);
    splitter->addWidget(right);
    splitter->setStretchFactor(1, 1);
    splitter->setSizes({ 150, 450 });
    layout->addWidget(splitter, 1);

    m_status = new QLabel(this);
    m_status->setObjectName(u"importTableStatus"_s);
    m_status->setAccessibleName(u"数据表状态"_s);
    m_status->setWordWrap(true);
    layout->addWidget(m_status);

    connect(m_tables, &QListWidget::currentTextChanged, this, &ImportTablePage::showTable);
}

void ImportTablePage::initializePage()
{
    const QString previous = m_tables->currentItem() ? m_tables->currentItem()->text() : QString();
    m_tables->blockSignals(true);
    m_tables->clear();
    m_tables->addItems(m_wizard.sourceTables());
    m_tables->blockSignals(false);
    // The table chosen before (back and forth), else the only or first one.
    const QList<QListWidgetItem *> same = m_tables->findItems(previous, Qt::MatchExactly);
    if (!same.isEmpty())
        m_tables->setCurrentItem(same.first());
    else if (m_tables->count() > 0)
        m_tables->setCurrentRow(0);
    else
        showTable({});
}

void ImportTablePage::showTable(const QString &name)
{
    m_readable = false;
    m_model->setTable({});
    if (name.isEmpty()) {
        m_status->setText(m_tables->count() == 0 ? u"数据源中没有数据表."_s : QString());
        Q_EMIT completeChanged();
        return;
    }
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    QString error;
    std::optional<ImportTable> rows = m_wizard.readTable(name, PreviewRows, &error);
    QGuiApplication::restoreOverrideCursor();
    if (!rows) {
        m_status->setStyleSheet(u"color: #b00020;"_s);
        m_status->setText(error);
    } else {
        m_readable = true;
        const int columns = int(rows->columns.size());
        m_model->setTable(std::move(*rows));
        m_preview->resizeColumnsToContents();
        m_status->setStyleSheet({});
        m_status->setText(u"%1 列."_s.arg(columns));
    }
    Q_EMIT completeChanged();
}

QString ImportTablePage::tableName() const
{
    return m_tables->currentItem() && m_readable ? m_tables->currentItem()->text() : QString();
}

bool ImportTablePage::isComplete() const
{
    return m_readable;
}
