#pragma once

#include "FileBoxEditor.h"

#include <QDialog>
#include <QList>

class CVelmarManagerDoc;
class QComboBox;
class QLineEdit;
class QSortFilterProxyModel;
class QTabWidget;
class QTableView;
class QTreeView;

// Picks groups (of either tree) or members (of either list, narrowed by a
// filter on the user ID) for new rights on a folder, and the right
// they get. Shows the document's own tree and member models.
class CFolderRightPickerDlg final : public QDialog
{
    Q_OBJECT

public:
    CFolderRightPickerDlg(
        CVelmarManagerDoc &document, const QString &folderPath, QWidget *parent = nullptr);

    // The selected groups or members of the page shown.
    QList<FileBoxEditor::Owner> owners() const;
    qint32 authority() const;

    QTabWidget *pages() const { return m_pages; }
    QTreeView *groupTree(bool guest) const { return guest ? m_guestTree : m_regularTree; }
    QTableView *memberList(bool guest) const { return guest ? m_guestMembers : m_regularMembers; }
    QLineEdit *filterField() const { return m_filter; }

private:
    QTreeView *makeTree(bool guest);
    QTableView *makeMemberList(bool guest, QSortFilterProxyModel *&proxy);

    CVelmarManagerDoc &m_document;
    QTabWidget *m_pages;
    QTabWidget *m_memberPages;
    QTreeView *m_regularTree;
    QTreeView *m_guestTree;
    QTableView *m_regularMembers;
    QTableView *m_guestMembers;
    QSortFilterProxyModel *m_regularProxy = nullptr;
    QSortFilterProxyModel *m_guestProxy = nullptr;
    QLineEdit *m_filter;
    QComboBox *m_authority;
};
