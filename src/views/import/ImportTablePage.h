#pragma once

#include <QWizardPage>

class ImportTableModel;
class ImportWizard;
class QLabel;
class QListWidget;
class QTableView;

// The wizard's second page, "查询原始数据 - 选择数据表": the tables of the
// opened source, and the first rows of the chosen one as they are read.
// "下一步" waits for a table whose rows could be read.
class ImportTablePage final : public QWizardPage
{
    Q_OBJECT

public:
    // How many rows the preview reads.
    static constexpr int PreviewRows = 50;

    explicit ImportTablePage(ImportWizard &wizard);

    QString tableName() const;
    ImportTableModel *previewModel() const { return m_model; }

    void initializePage() override;
    bool isComplete() const override;

private:
    void showTable(const QString &name);

    ImportWizard &m_wizard;
    QListWidget *m_tables = nullptr;
    QTableView *m_preview = nullptr;
    ImportTableModel *m_model = nullptr;
    QLabel *m_status = nullptr;
    bool m_readable = false;
};
