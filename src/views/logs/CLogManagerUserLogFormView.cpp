#include "CLogManagerUserLogFormView.h"

#include "CLogManagerFilterDlg.h"
#include "CodePage.h"
#include "Directory.h"
#include "DirectoryNode.h"
#include "GroupTreeModel.h"
#include "LogLocations.h"
#include "RtfReader.h"
#include "UserLogModel.h"

#include <QFileInfo>
#include <QGridLayout>
#include <QLabel>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSplitter>
#include <QStyle>
#include <QTableView>
#include <QTextBrowser>
#include <QTreeView>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

CLogManagerUserLogFormView::CLogManagerUserLogFormView(
    const LogViewContext &context, QWidget *parent)
    : LogFormView(new UserLogModel, context, parent)
{
    setObjectName(u"userLogView"_s);

    auto *splitter = new QSplitter(Qt::Horizontal, this);
    splitter->setObjectName(u"userLogSplitter"_s);
    splitter->setChildrenCollapsible(false);

    m_tree = new QTreeView(splitter);
    m_tree->setObjectName(u"memberTree"_s);
    m_tree->setHeaderHidden(true);
    m_tree->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_tree->setDragEnabled(false);
    if (context.directory) {
        GroupTreeModel *tree = context.directory->regularTree();
        m_tree->setModel(tree);
        m_tree->expand(tree->rootIndex());
        connect(m_tree->selectionModel(), &QItemSelectionModel::currentChanged, this,
            &CLogManagerUserLogFormView::treeItemSelected);
        connect(tree, &QAbstractItemModel::modelReset, m_tree,
            [this, tree] { m_tree->expand(tree->rootIndex()); });
    }

    auto *right = new QWidget(splitter);
    m_header = new QPlainTextEdit(right);
    m_header->setObjectName(u"headerText"_s);
    m_header->setReadOnly(true);
    m_header->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_message = new QTextBrowser(right);
    m_message->setObjectName(u"messageText"_s);
    m_message->setOpenLinks(false);
    m_files = new QListWidget(right);
    m_files->setObjectName(u"filesList"_s);
    m_open = new QPushButton(u"打开..."_s, right);
    m_open->setObjectName(u"openButton"_s);
    m_open->setEnabled(false);
    connect(m_open, &QPushButton::clicked, this, &CLogManagerUserLogFormView::openUploadFolder);

    // Below the list: the header on the left; the message with the files
    // and the open button under it on the right.
    auto *detail = new QWidget(right);
    auto *detailLayout = new QGridLayout(detail);
    detailLayout->setContentsMargins(0, 4, 0, 0);
    detailLayout->setSpacing(4);
    detailLayout->addWidget(m_header, 0, 0, 2, 1);
    detailLayout->addWidget(m_message, 0, 1, 1, 2);
    detailLayout->addWidget(m_files, 1, 1);
    detailLayout->addWidget(m_open, 1, 2, Qt::AlignTop);
    detailLayout->setColumnStretch(0, 2);
    detailLayout->setColumnStretch(1, 3);
    detailLayout->setRowStretch(0, 3);
    detailLayout->setRowStretch(1, 1);
    m_files->setMinimumHeight(40);

    list()->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Ignored);
    detail->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Ignored);
    auto *rightLayout = new QVBoxLayout(right);
    rightLayout->setContentsMargins(0, 0, 0, 0);
    rightLayout->setSpacing(0);
    rightLayout->addWidget(listHeader());
    rightLayout->addWidget(list(), 1);
    rightLayout->addWidget(detail, 1);

    splitter->addWidget(m_tree);
    splitter->addWidget(right);
    splitter->setStretchFactor(0, 0);
    splitter->setStretchFactor(1, 1);
    splitter->setSizes({ 180, 700 });

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(titleCaption());
    layout->addWidget(filterPanel());
    layout->addWidget(splitter, 1);
}

UserLogModel *CLogManagerUserLogFormView::userModel() const
{
    return static_cast<UserLogModel *>(model());
}

void CLogManagerUserLogFormView::treeItemSelected(const QModelIndex &index)
{
    if (!index.isValid())
        return;
    const auto kind = DirectoryNode::Kind(index.data(GroupTreeModel::NodeKindRole).toInt());
    // A member shows its own rows, the root all of them; a group changes nothing.
    if (kind == DirectoryNode::Kind::Membership)
        userModel()->showMember(index.data(GroupTreeModel::MemberIdRole).toInt());
    else if (kind == DirectoryNode::Kind::Root)
        userModel()->showAll();
}

void CLogManagerUserLogFormView::rowSelected(int row)
{
    m_files->clear();
    m_sessionId.clear();
    m_open->setEnabled(false);

    const UserLogDetail detail = userModel()->detail(row);
    QString header = detail.header;
    header.replace(u"\r\n"_s, u"\n"_s);
    m_header->setPlainText(header);

    if (!detail.files.isEmpty()) {
        m_sessionId = detail.sessionId;
        for (const UserLogDetail::File &file : detail.files) {
            const QStyle::StandardPixmap icon
                = file.isFolder ? QStyle::SP_DirIcon : QStyle::SP_FileIcon;
            new QListWidgetItem(style()->standardIcon(icon), file.name, m_files);
        }
        m_open->setEnabled(detail.canOpenUploadFolder());
    }

    if (detail.richText)
        m_message->setHtml(RtfReader(CodePage::system()).read(detail.message).toHtml());
    else
        m_message->setPlainText(detail.message);
}

void CLogManagerUserLogFormView::openUploadFolder()
{
    if (m_sessionId.isEmpty())
        return;
    const QString folder = LogLocations::sessionUploadFolder(
        context().hives, context().programDirectory, m_sessionId);
    if (!QFileInfo::exists(folder) || !context().openFolder)
        return;
    context().openFolder(folder);
}

int CLogManagerUserLogFormView::firstRichTextRow(bool withFiles) const
{
    for (int row = 0; row < userModel()->rowCount(); ++row) {
        const UserLogDetail detail = userModel()->detail(row);
        if (detail.richText && (!withFiles || !detail.files.isEmpty()))
            return row;
    }
    return -1;
}
