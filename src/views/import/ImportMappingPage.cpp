#include "ImportMappingPage.h"

#include "ImportPreviewModel.h"
#include "ImportWizard.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGuiApplication>
#include <QHeaderView>
#include <QLabel>
#include <QTableView>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {
// The fields stand in two columns of label and choice.
constexpr int FieldRows = 7;
} // namespace

ImportMappingPage::ImportMappingPage(ImportWizard &wizard)
    : m_wizard(wizard)
{
    setObjectName(u"importMappingPage"_s);
    setTitle(ImportWizard::pageTitle(ImportWizard::MappingPage));
    setAccessibleName(title());

    auto *layout = new QVBoxLayout(this);
    auto *grid = new QGridLayout;
    grid->setHorizontalSpacing(8);
    grid->setVerticalSpacing(3);
    const QStringList names = ImportWizard::fieldNames();
    for (int field = 0; field < names.size(); ++field) {
        auto *label = new QLabel(names.at(field) + u":"_s, this);
        auto *box = new QComboBox(this);
        box->setObjectName(u"importField%1"_s.arg(field + 1));
        box->setAccessibleName(names.at(field));
        box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
        box->setMinimumContentsLength(12);
        label->setBuddy(box);
        const int row = field % FieldRows;
        const int column = (field / FieldRows) * 2;
        grid->addWidget(label, row, column);
        grid->addWidget(box, row, column + 1);
        connect(box, &QComboBox::currentIndexChanged, this, [this] {
            if (!m_filling)
                m_previewTimer.start();
        });
        m_boxes.append(box);
    }
    grid->setColumnStretch(1, 1);
    grid->setColumnStretch(3, 1);
    grid->setColumnMinimumWidth(2, 70);
    layout->addLayout(grid);

    const QString skipTitle = u"跳过不能导入的行 (完成后列出)"_s;
    m_skip = new QCheckBox(skipTitle, this);
    m_skip->setObjectName(u"importSkipRefused"_s);
    m_skip->setAccessibleName(skipTitle);
    m_skip->setChecked(false);
    layout->addWidget(m_skip);

    m_summary = new QLabel(this);
    m_summary->setObjectName(u"importPreviewSummary"_s);
    m_summary->setAccessibleName(u"导入预览摘要"_s);
    m_summary->setWordWrap(true);
    layout->addWidget(m_summary);

    m_preview = new ImportPreviewModel(names, this);
    m_view = new QTableView(this);
    m_view->setObjectName(u"importMemberPreview"_s);
    m_view->setAccessibleName(u"导入预览"_s);
    m_view->setModel(m_preview);
    m_view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_view->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_view->verticalHeader()->hide();
    m_view->verticalHeader()->setDefaultSectionSize(m_view->fontMetrics().height() + 6);
    m_view->horizontalHeader()->setStretchLastSection(true);
    layout->addWidget(m_view, 1);

    m_previewTimer.setSingleShot(true);
    m_previewTimer.setInterval(0);
    connect(&m_previewTimer, &QTimer::timeout, this, &ImportMappingPage::updatePreview);
    connect(m_skip, &QCheckBox::toggled, this, [this](bool skip) {
        m_preview->setSkipRefused(skip);
        updateSummary();
    });
}

void ImportMappingPage::initializePage()
{
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    QString error;
    m_tableRead = m_wizard.loadTable(&error);
    QGuiApplication::restoreOverrideCursor();

    const QStringList columns = m_wizard.table().columns;
    if (m_tableRead && !columns.isEmpty() && columns == m_columns) {
        // Back and forth over the same table: the choices made stay.
        updatePreview();
        return;
    }
    m_columns = columns;
    const QList<int> guessed = m_wizard.guessMapping();
    m_filling = true;
    for (int field = 0; field < m_boxes.size(); ++field) {
        QComboBox *box = m_boxes.at(field);
        box->clear();
        box->addItem(u"(不导入)"_s, -1);
        for (int column = 0; column < columns.size(); ++column)
            box->addItem(columns.at(column), column);
        const int column = guessed.value(field, -1);
        box->setCurrentIndex(column < 0 ? 0 : column + 1);
    }
    m_filling = false;
    if (!m_tableRead) {
        m_columns.clear();
        m_preview->setRows({});
        m_summary->setStyleSheet(u"color: #b00020;"_s);
        m_summary->setText(error);
        Q_EMIT completeChanged();
        return;
    }
    updatePreview();
}

QList<int> ImportMappingPage::mapping() const
{
    QList<int> columns;
    for (const QComboBox *box : m_boxes)
        columns.append(box->currentIndex() > 0 ? box->currentData().toInt() : -1);
    return columns;
}

bool ImportMappingPage::skipRefused() const
{
    return m_skip->isChecked();
}

void ImportMappingPage::updatePreview()
{
    m_previewTimer.stop();
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    m_preview->setRows(m_wizard.preview(mapping()));
    QGuiApplication::restoreOverrideCursor();
    m_view->resizeColumnsToContents();
    // A long refusal stays in its tool tip rather than pushing the fields out of sight.
    const int result = ImportPreviewModel::resultColumn();
    m_view->setColumnWidth(result, qMin(m_view->columnWidth(result), 230));
    updateSummary();
    Q_EMIT completeChanged();
    Q_EMIT previewUpdated();
}

void ImportMappingPage::updateSummary()
{
    if (!m_tableRead)
        return;
    if (mapping().value(0, -1) < 0) {
        m_summary->setStyleSheet(u"color: #b00020;"_s);
        m_summary->setText(u"请为 \"%1\" 选择一列."_s.arg(ImportWizard::fieldNames().value(0)));
        return;
    }
    const int rows = m_preview->rowCount();
    const int refused = m_preview->refusedCount();
    QString text = u"共 %1 行, 将添加 %2 个会员"_s.arg(rows).arg(m_preview->addedCount());
    if (refused > 0 && m_preview->skipRefused())
        text += u", 跳过 %1 行."_s.arg(refused);
    else if (refused > 0) {
        const ImportPreviewModel::Row &first = m_preview->rowAt(m_preview->firstRefusedRow());
        text += u"; 在第 %1 行停止: %2"_s.arg(first.sourceRow).arg(first.refusal->text);
    } else
        text += u"."_s;
    // The save turns down a member without a password; better to hear it now
    // than after the import.
    const int withoutPassword = m_preview->withoutPasswordCount();
    if (withoutPassword > 0)
        text += u"\n其中 %1 个会员没有密码: 保存前须在会员表中为他们填写密码."_s.arg(
            withoutPassword);
    m_summary->setStyleSheet(refused > 0 || withoutPassword > 0 ? u"color: #8a5a00;"_s : QString());
    m_summary->setText(text);
}

void ImportMappingPage::noteCancelled()
{
    m_summary->setStyleSheet(u"color: #8a5a00;"_s);
    m_summary->setText(u"导入已取消, 没有添加会员."_s);
}

bool ImportMappingPage::isComplete() const
{
    return m_tableRead && mapping().value(0, -1) >= 0;
}
