#pragma once

#include "EditRefusal.h"
#include "FileBoxEditor.h"

#include <functional>
#include <QWidget>

class CAccessOverviewPanel;
class CVelmarManagerDoc;
class Directory;
class FolderListModel;
class FolderRightsModel;
class MessageService;
class QLabel;
class QLineEdit;
class QMimeData;
class QPushButton;
class QTabWidget;
class QTableView;
class QTreeView;

// The file box under "BOX编辑": the shared folders (add with a path or the
// folder picker, remove with the rights on them), the rights on the folder
// chosen (a drop-down per right, removal, new ones dragged from the group
// trees and member lists beside it or picked in a dialog) and, on its second
// page, the access overview, which a double-click on a folder or a member's
// right opens. Every change is an edit of the document.
class CFileBoxFormView final : public QWidget
{
    Q_OBJECT

public:
    // homeDirectory: the file-box server's home folder, where the picker
    // starts and against which picked folders are made relative.
    CFileBoxFormView(CVelmarManagerDoc &document, MessageService &messages,
        std::function<QString()> homeDirectory, QWidget *parent = nullptr);

    qint32 currentFolderId() const;
    bool selectFolder(qint32 folderId);

    // The path field's folder; false when the document refused it (shown).
    bool addFolder();
    // The chosen folder, after the question naming how many rights go with it.
    bool removeFolder();
    // The rights selected in the rights table, as one edit.
    bool removeSelectedRights();
    // The picker dialog, then the new rights as one edit.
    void addRightsWithPicker();
    // Groups or members of a drag (member-drag format or a node of either
    // tree) get a read-only right on the folder, as one edit.
    bool dropRights(qint32 folderId, const QMimeData *data);
    // The owners a drag names; empty when it names none.
    static QList<FileBoxEditor::Owner> ownersOf(const Directory &directory, const QMimeData *data);
    // A folder picked on disk as the file box names it: below the home folder
    // as "\a\b" relative to it, elsewhere the whole path, with backslashes.
    static QString folderPathFor(const QString &picked, const QString &home);

    QTabWidget *pages() const { return m_pages; }
    QTableView *folderTable() const { return m_folderTable; }
    QLineEdit *pathField() const { return m_pathField; }
    QPushButton *browseButton() const { return m_browseButton; }
    QPushButton *addFolderButton() const { return m_addFolderButton; }
    QPushButton *removeFolderButton() const { return m_removeFolderButton; }
    QLabel *rightsTitle() const { return m_rightsTitle; }
    QTableView *rightsTable() const { return m_rightsTable; }
    QPushButton *addRightButton() const { return m_addRightButton; }
    QPushButton *removeRightButton() const { return m_removeRightButton; }
    QTreeView *groupTree(bool guest) const { return guest ? m_guestTree : m_regularTree; }
    QTableView *memberList(bool guest) const { return guest ? m_guestMembers : m_regularMembers; }
    FolderListModel *folderModel() const { return m_folders; }
    FolderRightsModel *rightsModel() const { return m_rights; }
    CAccessOverviewPanel *accessOverview() const { return m_overview; }

private:
    QWidget *makeFolderPane();
    QWidget *makeRightsPane();
    QWidget *makeSourcePane();
    QTreeView *makeSourceTree(bool guest, QWidget *parent);
    QTableView *makeSourceMembers(bool guest, QWidget *parent);
    void folderChanged();
    void openAuthorityEditors();
    void updateButtons();
    void browse();
    void showRefusal(const EditRefusal &refusal, QWidget *anchor);

    CVelmarManagerDoc &m_document;
    MessageService &m_messages;
    std::function<QString()> m_homeDirectory;
    FolderListModel *m_folders;
    FolderRightsModel *m_rights;
    QTabWidget *m_pages = nullptr;
    QTableView *m_folderTable = nullptr;
    QLineEdit *m_pathField = nullptr;
    QPushButton *m_browseButton = nullptr;
    QPushButton *m_addFolderButton = nullptr;
    QPushButton *m_removeFolderButton = nullptr;
    QLabel *m_rightsTitle = nullptr;
    QTableView *m_rightsTable = nullptr;
    QPushButton *m_addRightButton = nullptr;
    QPushButton *m_removeRightButton = nullptr;
    QTreeView *m_regularTree = nullptr;
    QTreeView *m_guestTree = nullptr;
    QTableView *m_regularMembers = nullptr;
    QTableView *m_guestMembers = nullptr;
    CAccessOverviewPanel *m_overview = nullptr;
    qint32 m_folderBeforeReset = -1;
};
