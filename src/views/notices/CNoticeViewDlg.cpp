#include "CNoticeViewDlg.h"

#include "CodePage.h"
#include "NoticeText.h"
#include "RtfReader.h"

#include <QFileInfo>
#include <QListWidget>
#include <QPushButton>
#include <QStyle>
#include <QTextBrowser>

using namespace Qt::StringLiterals;

namespace {
// The files column and the button below it, in pixels, as the panel is laid out.
constexpr int FilesWidth = 200;
constexpr int ButtonHeight = 30;
} // namespace

CNoticeViewDlg::CNoticeViewDlg(std::function<QString(const QString &)> uploadFolder,
    std::function<void(const QString &)> openFolder, QWidget *parent)
    : QWidget(parent)
    , m_uploadFolder(std::move(uploadFolder))
    , m_openFolder(std::move(openFolder))
    , m_text(new QTextBrowser(this))
    , m_files(new QListWidget(this))
    , m_open(new QPushButton(u"打开..."_s, this))
{
    setObjectName(u"noticePanel"_s);
    m_text->setObjectName(u"noticeText"_s);
    m_text->setAccessibleName(u"公告内容"_s);
    m_text->setOpenLinks(false);
    m_files->setObjectName(u"noticeFiles"_s);
    m_files->setAccessibleName(u"文件"_s);
    m_open->setObjectName(u"noticeOpenButton"_s);
    m_open->setAccessibleName(u"打开..."_s);
    m_open->setEnabled(false);
    connect(m_open, &QPushButton::clicked, this, &CNoticeViewDlg::openFolder);
}

void CNoticeViewDlg::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    // The text takes the width less 200 pixels; the files list the right-hand
    // 200 pixels less 30 at the bottom, where the button sits.
    const int w = width();
    const int h = height();
    const int filesLeft = std::max(0, w - FilesWidth);
    m_text->setGeometry(0, 0, filesLeft, h);
    m_files->setGeometry(filesLeft, 0, w - filesLeft, std::max(0, h - ButtonHeight));
    m_open->setGeometry(filesLeft, std::max(0, h - ButtonHeight), w - filesLeft, ButtonHeight);
}

void CNoticeViewDlg::clear()
{
    m_files->clear();
    m_text->clear();
    m_folder.clear();
    m_open->setEnabled(false);
}

void CNoticeViewDlg::showNotice(const NoticeRecord &record)
{
    m_files->clear();
    m_folder.clear();
    m_open->setEnabled(false);

    if (record.contents.isEmpty()) {
        m_text->clear();
    } else {
        const QString contents = NoticeText::unescapeForPanel(record.contents);
        if (NoticeText::isRichText(contents))
            m_text->setHtml(RtfReader(CodePage::system()).read(contents).toHtml());
        else
            m_text->setPlainText(contents);
    }

    if (record.fileList.isEmpty())
        return;
    for (const QString &name : NoticeText::shownFileNames(record.fileList)) {
        const QStyle::StandardPixmap icon
            = name.contains(u'\\') ? QStyle::SP_DirIcon : QStyle::SP_FileIcon;
        new QListWidgetItem(style()->standardIcon(icon), name, m_files);
    }
    if (!record.fileSessionId.isEmpty() && m_uploadFolder) {
        const QString folder = m_uploadFolder(record.fileSessionId);
        if (QFileInfo(folder).isDir())
            m_folder = folder;
    }
    m_open->setEnabled(!m_folder.isEmpty());
}

void CNoticeViewDlg::openFolder()
{
    if (!m_folder.isEmpty() && m_openFolder)
        m_openFolder(m_folder);
}
