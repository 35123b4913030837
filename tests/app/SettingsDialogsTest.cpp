// The server settings dialogs, driven through their controls on a temporary
// server folder; what they leave in the hives, in Serverinfo.ini and on the
// notification ports is read back afterwards. The menu commands that open
// them, and the password gate that keeps all of it shut until the
// administrator is in.

#include "AdminPasswordStore.h"
#include "AppTestSupport.h"
#include "CAboutDlg.h"
#include "CAdminLoginDlg.h"
#include "CEditFileServerDlg.h"
#include "CEditHomepageDlg.h"
#include "CLogManagerSettingDlg.h"
#include "CMainFormView.h"
#include "CommandIds.h"
#include "CSetupCaptionBarDlg.h"
#include "CSetupFileServerDlg.h"
#include "CSetupHomepageDlg.h"
#include "CSetupMailDlg.h"
#include "CVelmarboxSettingDlg.h"
#include "NotificationListeners.h"
#include "OutlookBar.h"
#include "ProfileFile.h"
#include "RegistryHives.h"
#include "ServerNotification.h"
#include "SessionServerList.h"
#include "SettingsCommands.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTest>
#include <QTreeWidget>

using namespace Qt::StringLiterals;

namespace {
const QString SessionKey = u"SOFTWARE\\Velmar\\Services\\SessionDInfo"_s;
const QString FolderKey = u"Software\\Velmar\\Services\\SessionFolder"_s;
const QString BoxKey = u"SOFTWARE\\Velmar\\VelmarBoxServer"_s;
const QString LogKey = u"SOFTWARE\\Velmar\\LogManager"_s;

template<typename T> T *child(QWidget *parent, const QString &name)
{
    T *widget = parent->findChild<T *>(name);
    if (!widget)
        qWarning("no child %s", qPrintable(name));
    return widget;
}

void click(QWidget *parent, const QString &name)
{
    QTest::mouseClick(child<QAbstractButton>(parent, name), Qt::LeftButton);
}

void type(QWidget *parent, const QString &name, const QString &text)
{
    auto *field = child<QLineEdit>(parent, name);
    field->selectAll();
    field->del();
    // Key clicks carry Latin-1 only; other text is typed as an input method would.
    bool latin = true;
    for (QChar c : text)
        latin = latin && c.unicode() < 0x80;
    if (latin)
        QTest::keyClicks(field, text);
    else
        field->insert(text);
}

QStringList rowTexts(const QTreeWidget *list)
{
    QStringList rows;
    for (int i = 0; i < list->topLevelItemCount(); ++i) {
        QStringList columns;
        for (int c = 0; c < list->columnCount(); ++c)
            columns << list->topLevelItem(i)->text(c);
        rows << columns.join(u'|');
    }
    return rows;
}

QString ini(const TempServerDir &dir, const QString &section, const QString &key)
{
    return ProfileFile(dir.iniPath()).readString(section, key, u"<absent>"_s, 6000);
}

QStringList inis(const TempServerDir &dir, const QString &section, const QStringList &keys)
{
    QStringList out;
    for (const QString &key : keys)
        out << key + u'=' + ini(dir, section, key);
    return out;
}

// "name=value" per value of a machine key: numbers bare, strings quoted, "-"
// when absent, so that one comparison shows the type as well.
QStringList stored(RegistryHives &hives, const QString &key, const QStringList &names)
{
    const auto root = RegistryRoot::LocalMachine;
    QStringList out;
    for (const QString &name : names) {
        if (const auto number = registryNumber(hives, root, key, name))
            out << u"%1=%2"_s.arg(name).arg(*number);
        else if (const auto text = registryString(hives, root, key, name))
            out << u"%1=\"%2\""_s.arg(name, *text);
        else
            out << name + u"=-"_s;
    }
    return out;
}

// The texts of the named line edits.
QStringList texts(QWidget *parent, const QStringList &names)
{
    QStringList out;
    for (const QString &name : names)
        out << child<QLineEdit>(parent, name)->text();
    return out;
}

const QStringList Box = { u"Home Directory"_s, u"Custom PASV min port"_s, u"Custom PASV max port"_s,
    u"Custom PASV IP"_s };
const QStringList BoxFields
    = { u"homeDirectoryEdit"_s, u"minPortEdit"_s, u"maxPortEdit"_s, u"pasvIpEdit"_s };
const QStringList Log
    = { u"LogPath"_s, u"DeleteLogAfterDuration"_s, u"KeepingDuration"_s, u"LogEnable"_s };

// The edit dialogs are modal; the tests answer them through the runner hook.
auto answerFileServer(const QString &address, bool use)
{
    return [address, use](CEditFileServerDlg &dialog) {
        const QStringList parts = address.split(u'.');
        for (int i = 0; i < 4; ++i) {
            auto *field = dialog.findChild<QLineEdit *>(u"addressField%1"_s.arg(i));
            field->setText(parts.value(i));
        }
        dialog.findChild<QCheckBox *>(u"useCheck"_s)->setChecked(use);
        dialog.findChild<QPushButton *>(u"okButton"_s)->click();
        return dialog.result();
    };
}
} // namespace

class SettingsDialogsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void serverAddressChoice();
    void fileServerFirstOpening();
    void fileServerEditRemoveSave();
    void fileServerBadStoredValues();
    void siteListMigratesAndSaves();
    void siteListLimitAndEditRefusals();
    void captionBarThroughMenu();
    void mailSettings();
    void velmarboxDefaultsOnOpening();
    void velmarboxPortChecks();
    void velmarboxHintIsAHint();
    void velmarboxKeepsValuesOfWrongType();
    void logSettings();
    void logSettingsKeepStoredOnCancel();
    void commandsOpenTheirDialogs();
    void aboutShowsVersions();
    void lockedConsoleTouchesNothing();
};

void SettingsDialogsTest::serverAddressChoice()
{
    auto pick = [](const QStringList &texts) {
        QList<QHostAddress> addresses;
        for (const QString &text : texts)
            addresses << QHostAddress(text);
        return SessionServerList::pickServerAddress(addresses);
    };
    QCOMPARE(
        pick({ u"127.0.0.1"_s, u"169.254.3.4"_s, u"10.0.0.5"_s, u"10.0.0.6"_s }), u"10.0.0.5"_s);
    // Only loopback and link-local: the last one looked at.
    QCOMPARE(pick({ u"127.0.0.1"_s, u"169.254.3.4"_s }), u"169.254.3.4"_s);
    QCOMPARE(pick({ u"169.254.3.4"_s, u"127.0.0.1"_s }), u"127.0.0.1"_s);
    // IPv6 addresses are not in the resolver's IPv4 list.
    QCOMPARE(pick({ u"::1"_s, u"192.168.1.9"_s }), u"192.168.1.9"_s);
    QCOMPARE(pick({}), QString());
}

void SettingsDialogsTest::fileServerFirstOpening()
{
    FrameFixture f;
    RegistryHives &hives = f.dir.hives();
    CSetupFileServerDlg dialog(
        SessionServerList(hives, f.dir.iniPath()), f.messages, [] { return u"192.168.7.20"_s; });
    QCOMPARE(dialog.windowTitle(), u"文件服务设置"_s);
    // The default entry is written at once.
    const QStringList names = { u"SessionD_0_Address"_s, u"SessionD_0_Port"_s,
        u"SessionD_0_Enable"_s, u"SessionDCount"_s, u"SessionDChanged"_s, u"SessionD_1_Address"_s };
    const QStringList defaults = { u"SessionD_0_Address=\"192.168.7.20\""_s,
        u"SessionD_0_Port=55056"_s, u"SessionD_0_Enable=1"_s, u"SessionDCount=1"_s,
        u"SessionDChanged=1"_s, u"SessionD_1_Address=-"_s };
    QCOMPARE(stored(hives, SessionKey, names), defaults);
    QTreeWidget *list = dialog.serverList();
    QCOMPARE(QStringList({ list->headerItem()->text(0), list->headerItem()->text(1),
                 list->headerItem()->text(2) }),
        QStringList({ u"IP 地址"_s, u"Port 端口"_s, u"是否使用"_s }));
    QCOMPARE(list->columnWidth(1), 0);
    QCOMPARE(rowTexts(list), QStringList({ u"192.168.7.20|55056|使用者"_s }));
    QCOMPARE(child<QLineEdit>(&dialog, u"keepingEdit"_s)->text(), u"0"_s);
    QVERIFY(!child<QCheckBox>(&dialog, u"sizeCheck"_s)->isChecked());
    QVERIFY(!child<QLineEdit>(&dialog, u"sizeEdit"_s)->isEnabled());

    // Cancel keeps only the default entry; an addition is dropped.
    dialog.setEditDialogRunner(answerFileServer(u"10.9.8.7"_s, true));
    click(&dialog, u"addButton"_s);
    QCOMPARE(list->topLevelItemCount(), 2);
    // A size that is no integer is refused, and the dialog stays.
    click(&dialog, u"sizeCheck"_s);
    type(&dialog, u"sizeEdit"_s, u"abc"_s);
    click(&dialog, u"okButton"_s);
    QCOMPARE(f.messages.boxTexts(), QStringList({ u"请输入一个整数。"_s }));
    QCOMPARE(dialog.result(), int(QDialog::Rejected));
    click(&dialog, u"cancelButton"_s);
    QCOMPARE(stored(hives, SessionKey, names), defaults);
    QCOMPARE(ini(f.dir, u"ServerInfo"_s, u"FileTransMaxSize"_s), u"<absent>"_s);
}

void SettingsDialogsTest::fileServerEditRemoveSave()
{
    FrameFixture f;
    RegistryHives &hives = f.dir.hives();
    const auto root = RegistryRoot::LocalMachine;
    const QStringList entries = { u"010.001.002.003"_s, u" 10.0.0.9"_s, u"not an address"_s };
    for (int i = 0; i < entries.size(); ++i) {
        QVERIFY(setRegistryString(
            hives, root, SessionKey, u"SessionD_%1_Address"_s.arg(i), entries[i]));
        QVERIFY(setRegistryNumber(hives, root, SessionKey, u"SessionD_%1_Port"_s.arg(i), 1234));
        QVERIFY(setRegistryNumber(hives, root, SessionKey, u"SessionD_%1_Enable"_s.arg(i), i % 2));
    }
    QVERIFY(setRegistryNumber(hives, root, SessionKey, u"SessionDCount"_s, 3));
    QVERIFY(setRegistryNumber(hives, root, FolderKey, u"KeepingDuration"_s, 7));
    QVERIFY(f.dir.writeFile(u"Serverinfo.ini"_s, "[ServerInfo]\r\nFileTransMaxSize=100\r\n"));

    CSetupFileServerDlg dialog(
        SessionServerList(hives, f.dir.iniPath()), f.messages, [] { return u"192.168.7.20"_s; });
    QTreeWidget *list = dialog.serverList();
    // Normalised addresses; the port column always shows the fixed port.
    QCOMPARE(rowTexts(list),
        QStringList({ u"10.1.2.3|55056|内部使用"_s, u"10.0.0.9|55056|使用者"_s,
            u"255.255.255.255|55056|内部使用"_s }));
    QCOMPARE(
        texts(&dialog, { u"keepingEdit"_s, u"sizeEdit"_s }), QStringList({ u"7"_s, u"100"_s }));
    QVERIFY(child<QCheckBox>(&dialog, u"sizeCheck"_s)->isChecked());

    // Remove rows 0 and 2, edit the one left, add one.
    list->topLevelItem(0)->setSelected(true);
    list->topLevelItem(2)->setSelected(true);
    click(&dialog, u"removeButton"_s);
    QCOMPARE(rowTexts(list), QStringList({ u"10.0.0.9|55056|使用者"_s }));
    list->topLevelItem(0)->setSelected(true);
    dialog.setEditDialogRunner([](CEditFileServerDlg &edit) {
        // The edit dialog gets the row's address and state.
        if (edit.findChild<QLineEdit *>(u"addressField3"_s)->text() != u"9"_s
            || !edit.findChild<QCheckBox *>(u"useCheck"_s)->isChecked())
            return int(QDialog::Rejected);
        return answerFileServer(u"10.0.0.10"_s, false)(edit);
    });
    click(&dialog, u"editButton"_s);
    QCOMPARE(rowTexts(list), QStringList({ u"10.0.0.10|55056|内部使用"_s }));
    list->clearSelection();
    // An untouched address control gives 0.0.0.0.
    dialog.setEditDialogRunner([](CEditFileServerDlg &edit) {
        edit.findChild<QPushButton *>(u"okButton"_s)->click();
        return edit.result();
    });
    click(&dialog, u"addButton"_s);
    QCOMPARE(rowTexts(list),
        QStringList({ u"10.0.0.10|55056|内部使用"_s, u"0.0.0.0|55056|内部使用"_s }));

    type(&dialog, u"keepingEdit"_s, u"30"_s);
    click(&dialog, u"sizeCheck"_s);
    QVERIFY(!child<QLineEdit>(&dialog, u"sizeEdit"_s)->isEnabled());
    click(&dialog, u"okButton"_s);
    QCOMPARE(dialog.result(), int(QDialog::Accepted));

    // The entry beyond the count stays as it was.
    QCOMPARE(stored(hives, SessionKey,
                 { u"SessionDCount"_s, u"SessionDChanged"_s, u"SessionD_0_Address"_s,
                     u"SessionD_0_Port"_s, u"SessionD_0_Enable"_s, u"SessionD_1_Address"_s,
                     u"SessionD_1_Port"_s, u"SessionD_2_Address"_s, u"SessionD_2_Port"_s })
            + stored(hives, FolderKey, { u"KeepingDuration"_s }),
        QStringList({ u"SessionDCount=2"_s, u"SessionDChanged=1"_s,
            u"SessionD_0_Address=\"10.0.0.10\""_s, u"SessionD_0_Port=55056"_s,
            u"SessionD_0_Enable=0"_s, u"SessionD_1_Address=\"0.0.0.0\""_s,
            u"SessionD_1_Port=55056"_s, u"SessionD_2_Address=\"not an address\""_s,
            u"SessionD_2_Port=1234"_s, u"KeepingDuration=30"_s }));
    QCOMPARE(ini(f.dir, u"ServerInfo"_s, u"FileTransMaxSize"_s), u"0"_s);
    QVERIFY(f.messages.boxes().isEmpty());
}

void SettingsDialogsTest::fileServerBadStoredValues()
{
    FrameFixture f;
    RegistryHives &hives = f.dir.hives();
    const auto root = RegistryRoot::LocalMachine;
    // A count stored as text is neither trusted nor overwritten.
    QVERIFY(setRegistryString(hives, root, SessionKey, u"SessionDCount"_s, u"2"_s));
    QVERIFY(setRegistryString(hives, root, SessionKey, u"SessionD_0_Address"_s, u"10.1.1.1"_s));
    {
        CSetupFileServerDlg dialog(SessionServerList(hives, f.dir.iniPath()), f.messages,
            [] { return u"192.168.7.20"_s; });
        QCOMPARE(dialog.serverList()->topLevelItemCount(), 0);
        click(&dialog, u"cancelButton"_s);
    }
    QCOMPARE(stored(hives, SessionKey, { u"SessionDCount"_s, u"SessionD_0_Address"_s }),
        QStringList({ u"SessionDCount=\"2\""_s, u"SessionD_0_Address=\"10.1.1.1\""_s }));

    // A stored entry missing its port reads as empty (and is kept in the list);
    // an ini with garbage lines still gives its size.
    QVERIFY(setRegistryNumber(hives, root, SessionKey, u"SessionDCount"_s, 2));
    QVERIFY(setRegistryString(hives, root, SessionKey, u"SessionD_1_Address"_s, u"10.2.2.2"_s));
    QVERIFY(setRegistryNumber(hives, root, SessionKey, u"SessionD_1_Port"_s, 55056));
    QVERIFY(setRegistryNumber(hives, root, SessionKey, u"SessionD_1_Enable"_s, 1));
    QVERIFY(f.dir.writeFile(u"Serverinfo.ini"_s,
        "garbage without equals\r\n[ServerInfo\r\n=\r\n[ServerInfo]\r\n\x01\x02 junk\r\n"
        "FileTransMaxSize=  12MB\r\n"));
    CSetupFileServerDlg dialog(
        SessionServerList(hives, f.dir.iniPath()), f.messages, [] { return QString(); });
    QCOMPARE(rowTexts(dialog.serverList()),
        QStringList({ u"255.255.255.255|55056|内部使用"_s, u"10.2.2.2|55056|使用者"_s }));
    QCOMPARE(child<QLineEdit>(&dialog, u"sizeEdit"_s)->text(), u"12"_s);
    // The keeping time has no key yet: shown as 0 and, as designed, not saved.
    click(&dialog, u"okButton"_s);
    QVERIFY(!registryKeyExists(hives, root, FolderKey));
    // Its damaged lines keep the ini file from being rewritten until the
    // administrator agrees to make them comments.
    QVERIFY(f.dir.readFile(u"Serverinfo.ini"_s).startsWith("garbage without equals\r\n"));
    QCOMPARE(ini(f.dir, u"ServerInfo"_s, u"FileTransMaxSize"_s), u"12MB"_s);
}

void SettingsDialogsTest::siteListMigratesAndSaves()
{
    FrameFixture f;
    NotificationListeners listeners(
        { ServerNotification::DistributionPort, ServerNotification::CaptionPort },
        ServerNotification::PresentationChanged);
    QString error;
    QVERIFY2(listeners.bind(&error), qPrintable(error));
    QVERIFY(f.dir.writeFile(u"Serverinfo.ini"_s,
        "[SettingInfo]\r\nHomePageURL=www.old.cn\r\nHomePageURL2=|a|b|c|\r\n"));
    CSetupHomepageDlg dialog(f.dir.iniPath(), f.messages);
    QCOMPARE(dialog.windowTitle(), u"网站主页设置"_s);
    QCOMPARE(rowTexts(dialog.siteList()),
        QStringList({ u"网站主页|http://www.old.cn"_s, u"a|b"_s, u"c|"_s }));
    // Moved once: the old value is emptied at opening.
    QCOMPARE(ini(f.dir, u"SettingInfo"_s, u"HomePageURL"_s), QString());

    // A site without a name shows (and is saved with) its address as name.
    dialog.setEditDialogRunner([](CEditHomepageDlg &edit) {
        QTest::keyClicks(edit.findChild<QLineEdit *>(u"addressEdit"_s), u"http://x.cn"_s);
        edit.findChild<QPushButton *>(u"okButton"_s)->click();
        return edit.result();
    });
    click(&dialog, u"addButton"_s);
    dialog.siteList()->topLevelItem(1)->setSelected(true);
    click(&dialog, u"removeButton"_s);
    click(&dialog, u"okButton"_s);
    QCOMPARE(ini(f.dir, u"SettingInfo"_s, u"HomePageURL2"_s),
        u"|网站主页|http://www.old.cn|c||http://x.cn|http://x.cn|"_s);
    QCOMPARE(listeners.drain(), QStringList({ u"55051"_s }));

    // No rows: the empty text.
    CSetupHomepageDlg again(f.dir.iniPath(), f.messages);
    again.siteList()->selectAll();
    click(&again, u"removeButton"_s);
    click(&again, u"okButton"_s);
    QCOMPARE(ini(f.dir, u"SettingInfo"_s, u"HomePageURL2"_s), QString());
    QCOMPARE(listeners.drain(), QStringList({ u"55051"_s }));
    QVERIFY(f.messages.boxes().isEmpty());
}

void SettingsDialogsTest::siteListLimitAndEditRefusals()
{
    FrameFixture f;
    QByteArray list = "|";
    for (int i = 0; i < 20; ++i)
        list += "s" + QByteArray::number(i) + "|http://s" + QByteArray::number(i) + "|";
    QVERIFY(f.dir.writeFile(u"Serverinfo.ini"_s, "[SettingInfo]\r\nHomePageURL2=" + list + "\r\n"));
    CSetupHomepageDlg dialog(f.dir.iniPath(), f.messages);
    QCOMPARE(dialog.siteList()->topLevelItemCount(), 20);
    bool asked = false;
    dialog.setEditDialogRunner([&asked](CEditHomepageDlg &) {
        asked = true;
        return int(QDialog::Rejected);
    });
    click(&dialog, u"addButton"_s);
    QVERIFY(!asked);
    QCOMPARE(f.messages.boxTexts(), QStringList({ u"已经超过规定,添加失败."_s }));

    f.messages.clear();
    CEditHomepageDlg edit(f.messages);
    QCOMPARE(edit.windowTitle(), u"站点 追加/编辑"_s);
    click(&edit, u"okButton"_s);
    QTest::keyClicks(child<QLineEdit>(&edit, u"nameEdit"_s), u"a|b"_s);
    click(&edit, u"okButton"_s);
    QCOMPARE(f.messages.boxTexts(),
        QStringList({ u"请输入参数."_s, u"在显示的网站地址下面输入说明文字.\n\t|"_s }));
    QCOMPARE(edit.result(), int(QDialog::Rejected));
    type(&edit, u"nameEdit"_s, u"只有名字"_s);
    click(&edit, u"okButton"_s);
    QCOMPARE(edit.result(), int(QDialog::Accepted));
}

void SettingsDialogsTest::captionBarThroughMenu()
{
    FrameFixture f;
    NotificationListeners listeners(
        { ServerNotification::DistributionPort, ServerNotification::CaptionPort },
        ServerNotification::PresentationChanged);
    QString error;
    QVERIFY2(listeners.bind(&error), qPrintable(error));
    QVERIFY(f.dir.writeFile(u"icons/big.ico"_s, QByteArray(9901, 'i')));
    QVERIFY(f.dir.writeFile(u"icons/fits.ico"_s, QByteArray(9900, 'i')));
    QVERIFY(f.dir.writeFile(u"Serverinfo.ini"_s, "[SettingInfo]\r\nVERSION=-4\r\n"));
    CMainFrame &frame = f.makeFrame();
    QSignalSpy ready(&frame, &CMainFrame::startupReady);
    frame.show();
    QTRY_COMPARE(ready.count(), 1);

    for (int round = 1; round <= 2; ++round) {
        QAction *command = frame.commandAction(CommandId::CaptionSettings);
        command->trigger();
        auto *dialog = frame.findChild<CSetupCaptionBarDlg *>();
        QVERIFY(dialog);
        QCOMPARE(dialog->windowTitle(), u"版本设置"_s);
        auto *name = child<QLineEdit>(dialog, u"captionNameEdit"_s);
        if (round == 1) {
            QVERIFY(!name->isEnabled());
            click(dialog, u"customIconRadio"_s);
            QVERIFY(name->isEnabled());
            QString answer;
            dialog->setFileChooser(
                [&answer](QWidget *, const QString &title, const QString &folder, const QString &) {
                    return title == u"标题文件查寻"_s && folder.endsWith(u"/ico"_s) ? answer
                                                                                    : QString();
                });
            for (const QString &file :
                { u"icons/big.ico"_s, u"icons/none.ico"_s, u"icons/fits.ico"_s }) {
                answer = f.dir.filePath(file);
                click(dialog, u"iconBrowseButton"_s);
            }
            QCOMPARE(f.messages.boxTexts(),
                QStringList({ u"ICO文件大小不能超过10K"_s, u"打开文件失败"_s }));
            QCOMPARE(child<QLineEdit>(dialog, u"iconPathEdit"_s)->text(),
                QDir::toNativeSeparators(f.dir.filePath(u"icons/fits.ico"_s)));
            QVERIFY(QFileInfo(f.dir.filePath(u"ico"_s)).isDir());
            QTest::keyClicks(name, QString(60, u'n'));
            QCOMPARE(name->text().size(), 50);
        } else {
            // Opens with what the first round stored.
            QVERIFY(child<QRadioButton>(dialog, u"customIconRadio"_s)->isChecked());
            QCOMPARE(name->text(), QString(50, u'n'));
        }
        click(dialog, u"okButton"_s);
        QTRY_VERIFY(!frame.findChild<CSetupCaptionBarDlg *>());
        QCOMPARE(ini(f.dir, u"SettingInfo"_s, u"Version"_s), QString::number(round));
        QCOMPARE(listeners.drain(), QStringList({ u"55054"_s }));
    }
    QCOMPARE(inis(f.dir, u"SettingInfo"_s,
                 { u"UserDefineIconPath"_s, u"UserDefineLogoPath"_s, u"bDefaultIcon"_s,
                     u"bDefaultLogo"_s, u"CaptionBarName"_s }),
        QStringList({ u"UserDefineIconPath="_s
                + QDir::toNativeSeparators(f.dir.filePath(u"icons/fits.ico"_s)),
            u"UserDefineLogoPath="_s, u"bDefaultIcon=0"_s, u"bDefaultLogo=1"_s,
            u"CaptionBarName="_s + QString(50, u'n') }));
    frame.close();
}

void SettingsDialogsTest::mailSettings()
{
    FrameFixture f;
    {
        CSetupMailDlg dialog(f.dir.iniPath());
        QCOMPARE(dialog.windowTitle(), u"邮件服务设置"_s);
        QVERIFY(child<QRadioButton>(&dialog, u"defaultModeRadio"_s)->isChecked());
        click(&dialog, u"otherUrlRadio"_s);
        QTest::keyClicks(child<QLineEdit>(&dialog, u"urlEdit"_s), u"mail.x.cn/?id=%ID&pw=%PASS"_s);
        click(&dialog, u"forcedMailCheck"_s);
        click(&dialog, u"okButton"_s);
    }
    const QStringList mail = { u"USESSO"_s, u"FORCEDMAILMODE"_s, u"SSOURL"_s };
    QCOMPARE(inis(f.dir, u"SettingInfo"_s, mail),
        QStringList({ u"USESSO=1"_s, u"FORCEDMAILMODE=1"_s,
            u"SSOURL=http://mail.x.cn/?id=%ID&pw=%PASS"_s }));
    {
        // The default mode keeps whatever the field holds, unprefixed.
        CSetupMailDlg dialog(f.dir.iniPath());
        QVERIFY(child<QRadioButton>(&dialog, u"otherUrlRadio"_s)->isChecked());
        click(&dialog, u"defaultModeRadio"_s);
        type(&dialog, u"urlEdit"_s, u"HTTP://Upper.cn"_s);
        click(&dialog, u"okButton"_s);
    }
    QCOMPARE(inis(f.dir, u"SettingInfo"_s, mail),
        QStringList({ u"USESSO=0"_s, u"FORCEDMAILMODE=1"_s, u"SSOURL=HTTP://Upper.cn"_s }));
}

void SettingsDialogsTest::velmarboxDefaultsOnOpening()
{
    FrameFixture f;
    RegistryHives &hives = f.dir.hives();
    const QString home = QDir::toNativeSeparators(f.dir.programDir() + u"/VelmarBox"_s);
    {
        CVelmarboxSettingDlg dialog(
            VelmarBoxSettings(hives, f.dir.programDir(), [] { return u"10.20.30.40"_s; }),
            f.messages);
        QCOMPARE(dialog.windowTitle(), u"VelmarBox 设置"_s);
        QCOMPARE(texts(&dialog, BoxFields),
            QStringList({ home, u"55100"_s, u"55109"_s, u"10.20.30.40"_s }));
        click(&dialog, u"cancelButton"_s);
    }
    // Written before anything was pressed, and kept by Cancel.
    QCOMPARE(stored(hives, BoxKey, Box),
        QStringList({ u"Home Directory=\"%1\""_s.arg(home), u"Custom PASV min port=55100"_s,
            u"Custom PASV max port=55109"_s, u"Custom PASV IP=\"10.20.30.40\""_s }));
    QVERIFY(QFileInfo(f.dir.programDir() + u"/VelmarBox"_s).isDir());
}

void SettingsDialogsTest::velmarboxPortChecks()
{
    FrameFixture f;
    RegistryHives &hives = f.dir.hives();
    CVelmarboxSettingDlg dialog(
        VelmarBoxSettings(hives, f.dir.programDir(), [] { return u"10.0.0.1"_s; }), f.messages);
    type(&dialog, u"minPortEdit"_s, u"60000"_s);
    type(&dialog, u"maxPortEdit"_s, u"60000"_s);
    click(&dialog, u"okButton"_s);
    type(&dialog, u"minPortEdit"_s, u"1023"_s);
    click(&dialog, u"okButton"_s);
    type(&dialog, u"minPortEdit"_s, u"65000"_s);
    type(&dialog, u"maxPortEdit"_s, u"65536"_s);
    click(&dialog, u"okButton"_s);
    QCOMPARE(f.messages.boxTexts(),
        QStringList({ u"端口错误，请重新设置."_s, u"请输入一个介于 1024 和 65535 之间的整数。"_s,
            u"请输入一个介于 1024 和 65535 之间的整数。"_s }));
    QCOMPARE(dialog.result(), int(QDialog::Rejected));
    QCOMPARE(stored(hives, BoxKey, { u"Custom PASV min port"_s }),
        QStringList { u"Custom PASV min port=55100"_s });

    type(&dialog, u"maxPortEdit"_s, u"65535"_s);
    type(&dialog, u"homeDirectoryEdit"_s, u"/srv/box"_s);
    type(&dialog, u"pasvIpEdit"_s, u"203.0.113.9"_s);
    click(&dialog, u"okButton"_s);
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QCOMPARE(stored(hives, BoxKey, Box),
        QStringList({ u"Home Directory=\"/srv/box\""_s, u"Custom PASV min port=65000"_s,
            u"Custom PASV max port=65535"_s, u"Custom PASV IP=\"203.0.113.9\""_s }));
    // The home folder is not created at OK.
    QVERIFY(!QFileInfo::exists(u"/srv/box"_s));
}

void SettingsDialogsTest::velmarboxHintIsAHint()
{
    FrameFixture f;
    CVelmarboxSettingDlg dialog(
        VelmarBoxSettings(f.dir.hives(), f.dir.programDir(), [] { return u"10.0.0.1"_s; }),
        f.messages);
    QVERIFY(showActive(&dialog));
    child<QLineEdit>(&dialog, u"minPortEdit"_s)->setFocus();
    child<QLineEdit>(&dialog, u"homeDirectoryEdit"_s)->setFocus();
    QTRY_VERIFY(!f.messages.balloons().isEmpty());
    const MessageService::Balloon hint = f.messages.balloons().first();
    QCOMPARE(hint.text,
        u"VelmarBox文件夹基本设置.\n在用户计算机上设置 VelmarBox.\n按钮在设置新闻之下."_s);
    QVERIFY(hint.hint);
    QCOMPARE(hint.anchor, child<QLineEdit>(&dialog, u"homeDirectoryEdit"_s));
}

void SettingsDialogsTest::velmarboxKeepsValuesOfWrongType()
{
    FrameFixture f;
    RegistryHives &hives = f.dir.hives();
    const auto root = RegistryRoot::LocalMachine;
    QVERIFY(setRegistryString(hives, root, BoxKey, u"Custom PASV min port"_s, u"55200"_s));
    QVERIFY(setRegistryNumber(hives, root, BoxKey, u"Home Directory"_s, 5));
    {
        CVelmarboxSettingDlg dialog(
            VelmarBoxSettings(hives, f.dir.programDir(), [] { return u"10.0.0.1"_s; }), f.messages);
        QCOMPARE(child<QLineEdit>(&dialog, u"minPortEdit"_s)->text(), u"55100"_s);
        click(&dialog, u"cancelButton"_s);
    }
    // The missing ones were filled in all the same.
    QCOMPARE(stored(hives, BoxKey, Box).mid(0, 3),
        QStringList({ u"Home Directory=5"_s, u"Custom PASV min port=\"55200\""_s,
            u"Custom PASV max port=55109"_s }));
}

void SettingsDialogsTest::logSettings()
{
    FrameFixture f;
    RegistryHives &hives = f.dir.hives();
    const QString shown = QDir::toNativeSeparators(f.dir.programDir() + u"/LogFiles"_s);
    {
        CLogManagerSettingDlg dialog(hives, f.dir.programDir());
        QCOMPARE(dialog.windowTitle(), u"日志 设置"_s);
        QCOMPARE(texts(&dialog, { u"logPathEdit"_s, u"keepingDaysEdit"_s }),
            QStringList({ shown, u"0"_s }));
        QVERIFY(child<QCheckBox>(&dialog, u"deleteLogCheck"_s)->isChecked());
        QVERIFY(child<QLineEdit>(&dialog, u"keepingDaysEdit"_s)->isEnabled());
        QVERIFY(!child<QCheckBox>(&dialog, u"logEnableCheck"_s)->isChecked());
        QCOMPARE(child<QCheckBox>(&dialog, u"logEnableCheck"_s)->text(),
            u"关闭服务器日志(申请服务后，将重新启动.)"_s);
        type(&dialog, u"keepingDaysEdit"_s, u"30abc"_s);
        click(&dialog, u"deleteLogCheck"_s);
        QVERIFY(!child<QLineEdit>(&dialog, u"keepingDaysEdit"_s)->isEnabled());
        click(&dialog, u"logEnableCheck"_s);
        dialog.setFolderChooser([](QWidget *, const QString &title) {
            return title == u"选择保存登陆信息的文件夹."_s ? u"/var/log/velmar"_s : QString();
        });
        click(&dialog, u"chooseFolderButton"_s);
        click(&dialog, u"okButton"_s);
    }
    // Checked is stored as 1, whatever the label says.
    QCOMPARE(stored(hives, LogKey, Log),
        QStringList({ u"LogPath=\"/var/log/velmar\""_s, u"DeleteLogAfterDuration=0"_s,
            u"KeepingDuration=30"_s, u"LogEnable=1"_s }));

    CLogManagerSettingDlg again(hives, f.dir.programDir());
    QCOMPARE(texts(&again, { u"logPathEdit"_s, u"keepingDaysEdit"_s }),
        QStringList({ u"/var/log/velmar"_s, u"30"_s }));
    QVERIFY(!child<QLineEdit>(&again, u"keepingDaysEdit"_s)->isEnabled());
    QVERIFY(child<QCheckBox>(&again, u"logEnableCheck"_s)->isChecked());
}

void SettingsDialogsTest::logSettingsKeepStoredOnCancel()
{
    FrameFixture f;
    RegistryHives &hives = f.dir.hives();
    const auto root = RegistryRoot::LocalMachine;
    // Values of the wrong type show the defaults and survive a cancel.
    QVERIFY(setRegistryString(hives, root, LogKey, u"KeepingDuration"_s, u"14"_s));
    QVERIFY(setRegistryNumber(hives, root, LogKey, u"LogPath"_s, 3));
    {
        CLogManagerSettingDlg dialog(hives, f.dir.programDir());
        QCOMPARE(texts(&dialog, { u"logPathEdit"_s, u"keepingDaysEdit"_s }),
            QStringList({ QDir::toNativeSeparators(f.dir.programDir() + u"/LogFiles"_s), u"0"_s }));
        type(&dialog, u"keepingDaysEdit"_s, u"-5"_s);
        click(&dialog, u"cancelButton"_s);
    }
    QCOMPARE(stored(hives, LogKey, { u"LogPath"_s, u"KeepingDuration"_s }),
        QStringList({ u"LogPath=3"_s, u"KeepingDuration=\"14\""_s }));
    {
        // OK stores what the fields hold, a negative count of days included.
        CLogManagerSettingDlg dialog(hives, f.dir.programDir());
        type(&dialog, u"keepingDaysEdit"_s, u"-5"_s);
        click(&dialog, u"okButton"_s);
    }
    QCOMPARE(
        stored(hives, LogKey, { u"KeepingDuration"_s }), QStringList { u"KeepingDuration=-5"_s });
}

void SettingsDialogsTest::commandsOpenTheirDialogs()
{
    FrameFixture f;
    CMainFrame &frame = f.makeFrame();
    auto *commands = frame.findChild<SettingsCommands *>();
    QVERIFY(commands);
    QSignalSpy ready(&frame, &CMainFrame::startupReady);
    frame.show();
    QTRY_COMPARE(ready.count(), 1);

    auto opens = [&frame, commands](QAction *action, const char *className) {
        if (!action || !action->isEnabled())
            return false;
        action->trigger();
        QDialog *dialog = commands->openDialog();
        const bool right = dialog && dialog->inherits(className) && dialog->isVisible()
            && dialog->windowModality() != Qt::NonModal && dialog->parent() == &frame;
        if (dialog)
            dialog->reject();
        QApplication::processEvents();
        return right;
    };
    QVERIFY(opens(frame.commandAction(CommandId::FileServiceSettings), "CSetupFileServerDlg"));
    QVERIFY(opens(frame.commandAction(CommandId::HomePageSettings), "CSetupHomepageDlg"));
    // (The caption dialog's command: captionBarThroughMenu.)
    QVERIFY(opens(frame.commandAction(CommandId::MailSettings), "CSetupMailDlg"));
    QVERIFY(opens(commands->velmarboxSettingsAction(), "CVelmarboxSettingDlg"));
    QVERIFY(opens(commands->logSettingsAction(), "CLogManagerSettingDlg"));
    // The two without a command id sit in the settings menu ...
    auto *menu = frame.menuBar()->findChild<QMenu *>(u"menuSettings"_s);
    QVERIFY(menu->actions().contains(commands->velmarboxSettingsAction()));
    QVERIFY(menu->actions().contains(commands->logSettingsAction()));
    // ... and in the outlook bar's file-box and log groups.
    OutlookBar *bar = frame.outlookBar();
    QCOMPARE(bar->itemGroup(SettingsCommands::VelmarboxSettingsItem), u"BOX编辑"_s);
    QCOMPARE(bar->itemGroup(SettingsCommands::LogSettingsItem), u"日志管理"_s);
    QVERIFY(bar->isItemEnabled(SettingsCommands::LogSettingsItem));
    Q_EMIT bar->viewSelected(SettingsCommands::LogSettingsItem);
    QVERIFY(commands->openDialog() && commands->openDialog()->inherits("CLogManagerSettingDlg"));
    commands->openDialog()->reject();
    QCOMPARE(frame.currentViewId(), 0);
    frame.close();
}

void SettingsDialogsTest::aboutShowsVersions()
{
    FrameFixture f;
    QVERIFY(QFile::copy(qEnvironmentVariable("VELMAR_TEST_DATA") + u"/versions/elf-good"_s,
        f.dir.filePath(u"ChatD"_s)));
    CAboutDlg about(f.dir.programDir());
    // The console's version is read from the running executable, which the build stamped.
    QCOMPARE(about.findChild<QLabel *>(u"productLabel"_s)->text(),
        u"VelmarManager %1 版"_s.arg(QStringLiteral(VELMAR_TEST_PROJECT_VERSION)));
    QVERIFY(about.versionList()->isReadOnly());
    QCOMPARE(about.versionList()->toPlainText(),
        u"Service VerList\nVelmarD\t\t: \nGroupD\t\t: \nRelayD\t\t: \nChatD\t\t: 3.1.4\n"
        "FileDispatchD\t: \nFileSessionD\t: \nCheckD\t\t: \nVelmarBoxServer\t\t: \n"_s);
}

// Closed after three wrong passwords (a cancel closes the same way: the
// frame test's promptCancelCloses).
void SettingsDialogsTest::lockedConsoleTouchesNothing()
{
    FrameFixture f;
    QVERIFY(createSqliteDatabase(f.dir.databasePath()));
    QVERIFY(f.lock(AdminPasswordStore::digest(u"Secret1"_s)));
    const QByteArray database = f.dir.readFile(u"VelmarDB.mdb"_s);
    const QDateTime modified = QFileInfo(f.dir.databasePath()).lastModified();

    CMainFrame &frame = f.makeFrame();
    // What the frame writes while it is built (the database settings of start-up)
    // is all that may be written.
    auto hiveFiles = [&f] {
        QByteArray all;
        for (const QString &name : QDir(f.dir.registryDir()).entryList(QDir::Files, QDir::Name)) {
            QFile file(f.dir.registryDir() + u'/' + name);
            all += name.toUtf8() + '\n' + (file.open(QIODevice::ReadOnly) ? file.readAll() : "?");
        }
        return all;
    };
    const QByteArray hivesAfterConstruction = hiveFiles();
    QVERIFY(hivesAfterConstruction.contains("ConnectionString"));
    QSignalSpy ready(&frame, &CMainFrame::startupReady);
    frame.show();
    QTRY_VERIFY(frame.findChild<CAdminLoginDlg *>());
    CAdminLoginDlg *login = frame.findChild<CAdminLoginDlg *>();
    QTest::qWait(50); // give a database check, were one started, time to show

    // Nothing of the server on screen, nothing open.
    CMainFormView *dashboard = frame.dashboard();
    QCOMPARE(dashboard->databaseState(), CMainFormView::DatabaseState::Unchecked);
    for (const QString &name : { u"programDirectoryValue"_s, u"profileFileValue"_s,
             u"databaseTypeValue"_s, u"connectionStringValue"_s })
        QCOMPARE(dashboard->findChild<QLabel *>(name)->text(), u"—"_s);
    for (int id : { CommandId::FileServiceSettings, CommandId::HomePageSettings,
             CommandId::CaptionSettings, CommandId::MailSettings })
        QVERIFY(!frame.commandAction(id)->isEnabled());
    auto *commands = frame.findChild<SettingsCommands *>();
    QVERIFY(!commands->logSettingsAction()->isEnabled());
    QVERIFY(!frame.outlookBar()->isItemEnabled(SettingsCommands::VelmarboxSettingsItem));

    for (int i = 0; i < 3; ++i) {
        login->passwordField()->clear();
        QTest::keyClicks(login->passwordField(), u"wrong"_s);
        QTest::keyClick(login->passwordField(), Qt::Key_Return);
    }
    QTRY_VERIFY(!frame.isVisible());
    QCOMPARE(ready.count(), 0);
    QCOMPARE(dashboard->databaseState(), CMainFormView::DatabaseState::Unchecked);
    QCOMPARE(f.dir.readFile(u"VelmarDB.mdb"_s), database);
    QCOMPARE(QFileInfo(f.dir.databasePath()).lastModified(), modified);
    QVERIFY(!QFileInfo::exists(f.dir.databasePath() + u"-wal"_s));
    QVERIFY(!QFileInfo::exists(f.dir.databasePath() + u"-shm"_s));
    QCOMPARE(hiveFiles(), hivesAfterConstruction);
    QVERIFY(!QFileInfo::exists(f.dir.iniPath()));
}

int main(int argc, char **argv)
{
    qunsetenv("VELMAR_CODEPAGE");
    QApplication app(argc, argv);
    SettingsDialogsTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "SettingsDialogsTest.moc"
