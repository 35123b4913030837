#pragma once

#include <QWidget>

class CClassTreeCtrl;
class CVelmarManagerDoc;
class MembershipPositionModel;
class MessageService;
class QMenu;
class QTableView;
class QToolButton;

// The position view: the position list as a tree on the left ("等级目录")
// and, on the right ("登记编辑"), every membership of the organisation tree
// with its position, changed through the drop-down of the position column or
// the grid's pop-up over the selected rows. Both are views over the document;
// every change is an editor operation.
class CPositionFormView final : public QWidget
{
    Q_OBJECT

public:
    CPositionFormView(
        CVelmarManagerDoc &document, MessageService &messages, QWidget *parent = nullptr);

    CClassTreeCtrl *tree() const { return m_tree; }
    QTableView *grid() const { return m_grid; }
    MembershipPositionModel *gridModel() const { return m_gridModel; }

    // The grid's pop-up: "无等级" (command 200), then each position in list
    // order (201, 202, ...), applied to every selected row.
    QMenu *createGridMenu(QWidget *parent);
    // A grid pop-up command over the selected rows.
    void applyGridCommand(int command);

protected:
    void showEvent(QShowEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void fitColumns();

    CVelmarManagerDoc &m_document;
    MessageService &m_messages;
    CClassTreeCtrl *m_tree;
    QToolButton *m_addButton = nullptr;
    MembershipPositionModel *m_gridModel;
    QTableView *m_grid;
};
