#pragma once

#include <functional>
#include <QWidget>

class CNoticeViewDlg;
class CVelmarManagerDoc;
class QTableView;

// The notice board (CNoticeFormView): the notices newest first, four
// columns, whole rows selected. Delete removes the selected rows as one edit
// (undo puts them back); the save deletes them from the database.
// Double-clicking a row shows the notice in the panel in the bottom 200
// pixels.
class CNoticeFormView final : public QWidget
{
    Q_OBJECT

public:
    static constexpr int PanelHeight = 200;

    CNoticeFormView(CVelmarManagerDoc &document,
        std::function<QString(const QString &sessionId)> uploadFolder,
        std::function<void(const QString &folder)> openFolder, QWidget *parent = nullptr);

    // The selected rows, removed as one edit; false when none is selected.
    bool deleteSelected();
    // Shows a row's notice in the panel.
    void showRow(int row);

    QTableView *list() const { return m_list; }
    CNoticeViewDlg *panel() const { return m_panel; }

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    CVelmarManagerDoc &m_document;
    QTableView *m_list;
    CNoticeViewDlg *m_panel;
};
