#pragma once

#include <QWidget>

class AccessOverviewModel;
class CVelmarManagerDoc;
class FolderListModel;
class MessageService;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTableView;

// Who may reach what: pick a member by user ID and see every folder a right
// reaches it on, or pick a folder and see every member its rights reach,
// each row with where the right comes from. Sortable; exportable as CSV.
class CAccessOverviewPanel final : public QWidget
{
    Q_OBJECT

public:
    CAccessOverviewPanel(CVelmarManagerDoc &document, FolderListModel *folders,
        MessageService &messages, QWidget *parent = nullptr);

    // False (with a balloon at the field) when no member has the user ID.
    bool showMember(const QString &loginName);
    void showFolder(qint32 folderId);
    // Writes the title row and the rows (in their worked-out order, whatever
    // the sorting shown) to a UTF-8 CSV file; false with a message box
    // when it cannot be written.
    bool exportCsv(const QString &path);

    AccessOverviewModel *model() const { return m_model; }
    QLineEdit *memberField() const { return m_memberField; }
    QPushButton *memberButton() const { return m_memberButton; }
    QComboBox *folderCombo() const { return m_folderCombo; }
    QPushButton *folderButton() const { return m_folderButton; }
    QTableView *table() const { return m_table; }
    QLabel *summary() const { return m_summary; }
    QPushButton *exportButton() const { return m_exportButton; }

private:
    void updateSummary();
    void chooseExportFile();

    CVelmarManagerDoc &m_document;
    MessageService &m_messages;
    AccessOverviewModel *m_model;
    QLineEdit *m_memberField;
    QPushButton *m_memberButton;
    QComboBox *m_folderCombo;
    QPushButton *m_folderButton;
    QTableView *m_table;
    QLabel *m_summary;
    QPushButton *m_exportButton;
};
