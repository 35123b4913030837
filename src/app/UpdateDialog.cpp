#include "UpdateDialog.h"

#include "MessageService.h"
#include "UpdateDownload.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QNetworkReply>
#include <QProgressBar>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

UpdateDialog::UpdateDialog(const QUrl &feed, const QHash<QString, QVersionNumber> &installed,
    MessageService &messages, DialogHelpers::FolderChooser chooseFolder, QWidget *parent)
    : QDialog(parent)
    , m_feed(feed)
    , m_installed(installed)
    , m_messages(messages)
    , m_chooseFolder(std::move(chooseFolder))
    , m_status(new QLabel(this))
    , m_list(new QTreeWidget(this))
    , m_progress(new QProgressBar(this))
    , m_downloadButton(new QPushButton(u"下载(&D)..."_s, this))
    , m_cancelButton(new QPushButton(u"取消下载(&C)"_s, this))
{
    setObjectName(u"updateDialog"_s);
    setWindowTitle(u"更新版本"_s);
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    m_status->setObjectName(u"statusLabel"_s);
    m_status->setWordWrap(true);
    m_list->setObjectName(u"releaseList"_s);
    m_list->setAccessibleName(u"更新版本"_s);
    m_list->setHeaderLabels({ u"程序"_s, u"已安装"_s, u"新版本"_s, u"文件"_s });
    m_list->setRootIsDecorated(false);
    m_list->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_progress->setObjectName(u"downloadProgress"_s);
    m_progress->setAccessibleName(u"下载进度"_s);
    m_progress->hide();
    m_downloadButton->setObjectName(u"downloadButton"_s);
    m_downloadButton->setAccessibleName(u"下载..."_s);
    m_cancelButton->setObjectName(u"cancelDownloadButton"_s);
    m_cancelButton->setAccessibleName(u"取消下载"_s);

    auto *buttons = new QDialogButtonBox(this);
    buttons->addButton(m_downloadButton, QDialogButtonBox::ActionRole);
    buttons->addButton(m_cancelButton, QDialogButtonBox::ActionRole);
    QPushButton *close = buttons->addButton(u"关闭"_s, QDialogButtonBox::RejectRole);
    close->setObjectName(u"closeButton"_s);
    close->setAccessibleName(u"关闭"_s);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_downloadButton, &QPushButton::clicked, this, &UpdateDialog::download);
    connect(m_cancelButton, &QPushButton::clicked, this, [this] {
        if (m_download)
            m_download->cancel();
    });
    connect(m_list, &QTreeWidget::itemSelectionChanged, this, &UpdateDialog::updateButtons);
    connect(this, &QDialog::rejected, this, [this] {
        if (m_download)
            m_download->cancel();
    });

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_status);
    layout->addWidget(m_list);
    layout->addWidget(m_progress);
    layout->addWidget(buttons);
    resize(620, 320);
    updateButtons();
}

void UpdateDialog::check()
{
    m_list->clear();
    m_offered.clear();
    if (m_feed.isEmpty()) {
        m_status->setText(u"没有设置发布列表的地址. 请在 \"帮助 → 在线服务设置...\" 中填写发布列表 "
                          "(JSON) 的网址, 然后再试."_s);
        updateButtons();
        Q_EMIT checked();
        return;
    }
    m_status->setText(u"正在读取 %1 ..."_s.arg(m_feed.toString()));
    QNetworkReply *reply = m_network.get(QNetworkRequest(m_feed));
    connect(reply, &QNetworkReply::finished, this, [this, reply] { feedArrived(reply); });
}

void UpdateDialog::feedArrived(QNetworkReply *reply)
{
    reply->deleteLater();
    if (reply->error() != QNetworkReply::NoError) {
        m_status->setText(
            u"无法读取发布列表 %1: %2"_s.arg(m_feed.toString(), reply->errorString()));
        Q_EMIT checked();
        return;
    }
    const UpdateFeed::Result feed = UpdateFeed::parse(reply->readAll());
    if (!feed.ok()) {
        m_status->setText(feed.error);
        Q_EMIT checked();
        return;
    }
    m_offered = UpdateFeed::newer(feed.releases, m_installed);
    for (const UpdateRelease &release : std::as_const(m_offered)) {
        new QTreeWidgetItem(m_list,
            { release.product, m_installed.value(release.product).toString(),
                release.version.toString(), release.url.fileName() });
    }
    m_status->setText(
        m_offered.isEmpty() ? u"已是最新版本."_s : u"有新版本: 选择一项, 然后 \"下载\"."_s);
    if (!m_offered.isEmpty())
        m_list->setCurrentItem(m_list->topLevelItem(0));
    updateButtons();
    Q_EMIT checked();
}

void UpdateDialog::updateButtons()
{
    const bool running = !m_download.isNull();
    m_downloadButton->setEnabled(!running && m_list->currentItem());
    m_cancelButton->setEnabled(running);
}

void UpdateDialog::download()
{
    const int row = m_list->indexOfTopLevelItem(m_list->currentItem());
    if (row < 0 || row >= m_offered.size())
        return;
    const QString folder = m_chooseFolder(this, u"保存到文件夹"_s);
    if (folder.isEmpty())
        return;
    m_download = new UpdateDownload(m_network, m_offered.at(row), folder, this);
    connect(m_download, &UpdateDownload::progress, this, [this](qint64 received, qint64 total) {
        // The size is not always known: the bar then only shows activity.
        m_progress->setRange(0, total > 0 ? 1000 : 0);
        if (total > 0)
            m_progress->setValue(int(received * 1000 / total));
    });
    connect(m_download, &UpdateDownload::finished, this, &UpdateDialog::downloadDone);
    m_progress->setRange(0, 0);
    m_progress->show();
    updateButtons();
    m_download->start();
}

void UpdateDialog::downloadDone(bool ok, const QString &message)
{
    m_download->deleteLater();
    m_download.clear();
    m_progress->hide();
    updateButtons();
    m_messages.showMessage({ ok ? u"已下载并核对校验和:\n%1"_s.arg(message) : message,
        u"更新版本"_s, MessageService::Buttons::Ok,
        ok ? MessageService::Icon::Information : MessageService::Icon::Exclamation, this });
    Q_EMIT downloadFinished(ok);
}
