// The 帮助 menu's online entries on a real frame, their settings dialog, and
// the update dialog against a release feed served from a local HTTP server:
// a verified download, a checksum that does not match, a feed that is not
// well-formed and a console without a feed address.

#include "OnlineCommands.h"

#include "AppTestSupport.h"
#include "COnlineSettingsDlg.h"
#include "LocalHttpServer.h"
#include "OnlineAddresses.h"
#include "UpdateDialog.h"

#include <memory>
#include <optional>
#include <QAction>
#include <QApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>

using namespace Qt::StringLiterals;

namespace {
QByteArray feedFor(const QUrl &file, const QByteArray &content, const QString &version)
{
    return u"{\"releases\": [{\"product\": \"VelmarManager\", \"version\": \"%1\", \"url\": "
           u"\"%2\", "
           "\"sha256\": \"%3\"}, {\"product\": \"VelmarManager\", \"version\": \"0.0.1\", "
           "\"url\": \"%2\", \"sha256\": \"%3\"}]}"_s
               .arg(version, file.toString(),
                   QString::fromLatin1(
                       QCryptographicHash::hash(content, QCryptographicHash::Sha256).toHex()))
               .toUtf8();
}

const QHash<QString, QVersionNumber> Installed { { u"VelmarManager"_s, QVersionNumber(0, 1) } };

// The update dialog on the feed of a local server, downloading into a folder.
struct UpdateRun
{
    LocalHttpServer server;
    QTemporaryDir folder;
    ScriptedMessageService messages;
    std::unique_ptr<UpdateDialog> dialog;

    // Opens the dialog and checks the feed; true when the check ended.
    bool check()
    {
        dialog = std::make_unique<UpdateDialog>(server.url(u"/feed.json"_s), Installed, messages,
            [this](QWidget *, const QString &) { return folder.path(); });
        QSignalSpy checked(dialog.get(), &UpdateDialog::checked);
        dialog->check();
        return checked.wait(10000);
    }
    // Presses the download button; the download's outcome, or nothing when it never ended.
    std::optional<bool> download()
    {
        QSignalSpy finished(dialog.get(), &UpdateDialog::downloadFinished);
        QTest::mouseClick(dialog->findChild<QPushButton *>(u"downloadButton"_s), Qt::LeftButton);
        if (!finished.wait(10000))
            return std::nullopt;
        return finished.at(0).at(0).toBool();
    }
};
} // namespace

class OnlineCommandsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void entriesFollowTheAddresses();
    void settingsDialogRefusesOtherAddresses();
    void updateDownloadsAndVerifies();
    void updateReportsBadFeedAndWrongChecksum();
    void updateWithoutFeedSaysHowToSetOne();
};

void OnlineCommandsTest::entriesFollowTheAddresses()
{
    FrameFixture f;
    CMainFrame &frame = f.makeFrame();
    auto *homePage = frame.findChild<QAction *>(u"onlineHomePage"_s);
    auto *sms = frame.findChild<QAction *>(u"onlineSmsPortal"_s);
    auto *help = frame.findChild<QAction *>(u"onlineHelp"_s);
    QVERIFY(homePage && sms && help);
    QVERIFY(!homePage->isEnabled());
    QVERIFY(!sms->isEnabled());
    QVERIFY(frame.findChild<QAction *>(u"onlineUpdate"_s)->isEnabled());
    auto *menu = frame.menuBar()->findChild<QMenu *>(u"menuHelp"_s);
    QVERIFY(menu->actions().contains(sms));
    QVERIFY(menu->actions().contains(frame.findChild<QAction *>(u"onlineSettings"_s)));

    // The build's copy of the handbook opens in the browser.
    help->trigger();
    QCOMPARE(f.openedUrls.size(), 1);
    QVERIFY(f.openedUrls[0].isLocalFile());
    QVERIFY(f.openedUrls[0].toLocalFile().endsWith(u"handbook/index.html"_s));

    OnlineAddresses addresses;
    addresses.homePage = QUrl(u"https://www.example.com/"_s);
    addresses.smsPortal = QUrl(u"https://sms.example.com/login"_s);
    FrameFixture g;
    QVERIFY(addresses.write(g.dir.hives()));
    CMainFrame &set = g.makeFrame();
    set.findChild<QAction *>(u"onlineHomePage"_s)->trigger();
    set.findChild<QAction *>(u"onlineSmsPortal"_s)->trigger();
    QCOMPARE(g.openedUrls, QList<QUrl>({ addresses.homePage, addresses.smsPortal }));
}

void OnlineCommandsTest::settingsDialogRefusesOtherAddresses()
{
    TempServerDir dir;
    ScriptedMessageService messages;
    COnlineSettingsDlg dialog(dir.hives(), messages);
    auto *feed = dialog.findChild<QLineEdit *>(u"updateFeedEdit"_s);
    auto *homePage = dialog.findChild<QLineEdit *>(u"homePageEdit"_s);
    QVERIFY(feed && homePage);
    QVERIFY(!feed->accessibleName().isEmpty());
    QTest::keyClicks(feed, u"ftp://files.example.com/feed.json"_s);
    QTest::mouseClick(dialog.findChild<QPushButton *>(u"okButton"_s), Qt::LeftButton);
    QCOMPARE(dialog.result(), int(QDialog::Rejected));
    QCOMPARE(messages.boxTexts().size(), 1);
    QVERIFY(OnlineAddresses::read(dir.hives()).updateFeed.isEmpty());

    feed->setText(u" https://www.example.com/releases.json "_s);
    QTest::mouseClick(dialog.findChild<QPushButton *>(u"okButton"_s), Qt::LeftButton);
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    const OnlineAddresses stored = OnlineAddresses::read(dir.hives());
    QCOMPARE(stored.updateFeed, QUrl(u"https://www.example.com/releases.json"_s));
    QVERIFY(stored.homePage.isEmpty());
}

void OnlineCommandsTest::updateDownloadsAndVerifies()
{
    UpdateRun run;
    const QByteArray setup = QByteArray("deb").repeated(10000);
    run.server.files.insert(u"/velmarmanager_9.0_amd64.deb"_s, setup);
    run.server.files.insert(u"/feed.json"_s,
        feedFor(run.server.url(u"/velmarmanager_9.0_amd64.deb"_s), setup, u"9.0"_s));
    QVERIFY(run.check());
    // Only the release newer than the installed one.
    QCOMPARE(run.dialog->releaseList()->topLevelItemCount(), 1);
    QCOMPARE(run.dialog->releaseList()->topLevelItem(0)->text(2), u"9.0"_s);
    QVERIFY(run.dialog->findChild<QPushButton *>(u"downloadButton"_s)->isEnabled());
    // What arrives, and its check, are the download's to test.
    QCOMPARE(run.download(), std::optional<bool>(true));
    QVERIFY(QFile::exists(run.folder.filePath(u"velmarmanager_9.0_amd64.deb"_s)));
    QCOMPARE(run.messages.boxes().size(), 1);
    QCOMPARE(run.messages.boxes().at(0).icon, MessageService::Icon::Information);
}

void OnlineCommandsTest::updateReportsBadFeedAndWrongChecksum()
{
    UpdateRun run;
    run.server.files.insert(u"/feed.json"_s, R"({"releases": [{"product": "VelmarManager", "ver)");
    QVERIFY(run.check());
    QCOMPARE(run.dialog->releaseList()->topLevelItemCount(), 0);
    QVERIFY2(run.dialog->statusLabel()->text().contains(u"JSON"_s),
        qPrintable(run.dialog->statusLabel()->text()));
    QVERIFY(!run.dialog->findChild<QPushButton *>(u"downloadButton"_s)->isEnabled());

    run.server.files.insert(u"/setup.deb"_s, "what arrived");
    run.server.files.insert(
        u"/feed.json"_s, feedFor(run.server.url(u"/setup.deb"_s), "what was published", u"9.0"_s));
    QVERIFY(run.check());
    QCOMPARE(run.download(), std::optional<bool>(false));
    QVERIFY2(run.messages.boxTexts().value(0).contains(u"SHA-256"_s),
        qPrintable(run.messages.boxTexts().value(0)));
}

void OnlineCommandsTest::updateWithoutFeedSaysHowToSetOne()
{
    ScriptedMessageService messages;
    UpdateDialog dialog(
        QUrl(), Installed, messages, [](QWidget *, const QString &) { return QString(); });
    dialog.check();
    QVERIFY2(dialog.statusLabel()->text().contains(u"在线服务设置"_s),
        qPrintable(dialog.statusLabel()->text()));
}

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    OnlineCommandsTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "OnlineCommandsTest.moc"
