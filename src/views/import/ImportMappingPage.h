#pragma once

#include <QList>
#include <QStringList>
#include <QTimer>
#include <QWizardPage>

class ImportPreviewModel;
class ImportWizard;
class QCheckBox;
class QComboBox;
class QLabel;
class QTableView;

// The wizard's third page, "查询原始数据 - 设置数据单项": the source column
// of each of the fourteen member fields ("不导入" for none), first as the
// column names suggest, and a preview of every row: the member it would
// become, or why it would be refused. Nothing changes before "完成".
class ImportMappingPage final : public QWizardPage
{
    Q_OBJECT

public:
    explicit ImportMappingPage(ImportWizard &wizard);

    // The source column of each target field, -1 for none.
    QList<int> mapping() const;
    QComboBox *fieldBox(int field) const { return m_boxes.value(field); }
    ImportPreviewModel *previewModel() const { return m_preview; }
    QTableView *previewView() const { return m_view; }
    bool skipRefused() const;
    // Says that the import was cancelled from its progress dialog.
    void noteCancelled();

    void initializePage() override;
    bool isComplete() const override;

Q_SIGNALS:
    // The preview shows the current mapping.
    void previewUpdated();

private:
    void updatePreview();
    void updateSummary();

    ImportWizard &m_wizard;
    QList<QComboBox *> m_boxes;
    QCheckBox *m_skip = nullptr;
    QLabel *m_summary = nullptr;
    QTableView *m_view = nullptr;
    ImportPreviewModel *m_preview = nullptr;
    QTimer m_previewTimer;
    bool m_filling = false;
    bool m_tableRead = false;
    QStringList m_columns; // of the table the choices were made for
};
