// "登记发送邮件" through the real widgets of a loaded main frame: the
// members selected in the member grid go to the composer, which takes only
// those with an address of their own; taking nobody brings the designed
// balloon at the view and hides the composer. The composer previews the
// filled template, sends to a private SMTP server and shows each result.

#include "CMainFrame.h"
#include "CommandIds.h"
#include "COrganizeFormView.h"
#include "InviteComposer.h"
#include "InviteMailSettings.h"
#include "InviteRecipientModel.h"
#include "LoadedFrame.h"
#include "MemberGridView.h"
#include "ProfileFile.h"
#include "SmtpTestServer.h"
#include "ViewIds.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTest>
#include <QTextBrowser>

using namespace Qt::StringLiterals;

class InviteComposerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void handOffAndRefusal();
    void sendsAndShowsEachResult();

private:
    CMainFrame &frame() { return m_f->frame(); }
    COrganizeFormView &view()
    {
        return *qobject_cast<COrganizeFormView *>(frame().view(ViewId::Organize));
    }
    InviteComposer &composer() { return *frame().inviteComposer(); }
    MemberGridView *grid() { return view().memberGrid(false); }
    // Clicks the members' rows, the first alone, the others with Ctrl.
    void selectMembers(const QStringList &loginNames);
    template<typename W> W *control(const char *name)
    {
        return composer().findChild<W *>(QString::fromLatin1(name));
    }

    std::unique_ptr<LoadedFrame> m_f;
};

void InviteComposerTest::init()
{
    // anna and bert have addresses (bert's the server refuses), carl none, dora
    // anna's address in capitals.
    OPEN_LOADED_FRAME(m_f, sqlFile(u"invite.sql"_s));
    QVERIFY(ProfileFile(m_f->fixture.dir.iniPath())
                .writeString(u"SettingInfo"_s, u"CaptionBarName"_s, u"维尔马"_s));
    QVERIFY(frame().showView(ViewId::Organize));
    m_f->messages().clear();
}

void InviteComposerTest::selectMembers(const QStringList &loginNames)
{
    grid()->setFocus();
    for (const QString &name : loginNames) {
        const QModelIndexList found
            = grid()->model()->match(grid()->model()->index(0, 0), Qt::DisplayRole, name);
        QVERIFY2(!found.isEmpty(), qPrintable(name));
        QTest::mouseClick(grid()->viewport(), Qt::LeftButton,
            name == loginNames.first() ? Qt::NoModifier : Qt::ControlModifier,
            grid()->visualRect(found.first().siblingAtColumn(1)).center());
    }
    QApplication::processEvents(); // the coalesced command enabling
}

void InviteComposerTest::handOffAndRefusal()
{
    QAction *command = frame().commandAction(CommandId::SendRegistrationMail);
    QApplication::processEvents();
    QVERIFY(!command->isEnabled()); // nobody selected
    QVERIFY(!composer().isVisible());

    // carl has no address: the composer takes nobody.
    selectMembers({ u"carl"_s });
    command->trigger();
    QCOMPARE(m_f->messages().balloons().size(), 1);
    const MessageService::Balloon balloon = m_f->messages().balloons().constFirst();
    QCOMPARE(balloon.text, u"E-Mail已经添加\n再次添加错误."_s);
    QCOMPARE(balloon.icon, MessageService::Icon::Exclamation);
    QCOMPARE(balloon.timeoutMs, 3000);
    QCOMPARE(balloon.anchor, &view());
    QVERIFY(!composer().isVisible());

    // From the member pop-up: anna is taken, dora's address is anna's, carl
    // has none; the composer opens with anna alone.
    m_f->messages().clear();
    selectMembers({ u"anna"_s, u"carl"_s, u"dora"_s });
    const QModelIndex dora
        = grid()->model()->match(grid()->model()->index(0, 0), Qt::DisplayRole, u"dora"_s).value(0);
    QMenu *menu = openPopup(grid(), grid()->visualRect(dora.siblingAtColumn(1)).center());
    QVERIFY(menu && clickMenuItem(menu, u"登记发送邮件(设置文件)(&M)"_s));
    QVERIFY(m_f->messages().balloons().isEmpty());
    QVERIFY(composer().isVisible());
    QCOMPARE(composer().recipients()->rowCount(), 1);
    QCOMPARE(composer().recipients()->list().at(0).userId, u"anna"_s);

    // The preview is the template filled for the selected member, escaped,
    // and follows the memo as it is typed.
    const QString preview = composer().preview()->toPlainText();
    QVERIFY2(preview.contains(u"欢迎使用 维尔马"_s) && preview.contains(u"a<&>1"_s)
            && !preview.contains(u"__"_s),
        qPrintable(preview));
    auto *memo = control<QPlainTextEdit>("inviteMemo");
    QVERIFY(memo);
    memo->setFocus();
    typeText(memo, u"<i>带工牌</i>"_s);
    QVERIFY(composer().preview()->toPlainText().contains(u"<i>带工牌</i>"_s));

    // Every control names itself.
    for (QWidget *widget : composer().findChildren<QWidget *>()) {
        if (qobject_cast<QLineEdit *>(widget) || qobject_cast<QPushButton *>(widget)
            || qobject_cast<QComboBox *>(widget) || qobject_cast<QCheckBox *>(widget)
            || qobject_cast<QAbstractItemView *>(widget)) {
            // The parts Qt builds into a control: a spin box's line edit, headers.
            if (widget->objectName().startsWith(u"qt_"_s) || qobject_cast<QHeaderView *>(widget))
                continue;
            QVERIFY2(!widget->accessibleName().isEmpty() && !widget->objectName().isEmpty(),
                widget->metaObject()->className());
        }
    }
}

void InviteComposerTest::sendsAndShowsEachResult()
{
    SmtpTestServer server;
    QString error;
    QVERIFY2(server.start(SmtpTestServer::Mode::Plain, false, &error), qPrintable(error));
    selectMembers({ u"anna"_s, u"bert"_s });
    frame().commandAction(CommandId::SendRegistrationMail)->trigger();
    QVERIFY(composer().isVisible());
    QCOMPARE(composer().recipients()->rowCount(), 2);

    // Send without a sender: the balloon at the field, nothing sent.
    auto *send = control<QPushButton>("inviteSend");
    QTest::mouseClick(send, Qt::LeftButton);
    QCOMPARE(m_f->messages().balloons().size(), 1);
    QCOMPARE(m_f->messages().balloons().constFirst().anchor, control<QLineEdit>("inviteSender"));

    auto type = [](QWidget *widget, const QString &text) {
        widget->setFocus();
        typeText(widget, text);
    };
    type(control<QLineEdit>("inviteSender"), u"admin@velmar.test"_s);
    type(control<QLineEdit>("inviteSmtpHost"), u"127.0.0.1"_s);
    auto *port = control<QSpinBox>("inviteSmtpPort");
    port->setValue(server.port());
    auto *security = control<QComboBox>("inviteSmtpSecurity");
    security->setCurrentIndex(security->findData(int(SmtpSecurity::None)));
    type(control<QLineEdit>("inviteOffice"), u"信息中心"_s);

    QSignalSpy finished(&composer(), &InviteComposer::sendingFinished);
    QTest::mouseClick(send, Qt::LeftButton);
    QVERIFY(finished.wait(60000));
    const QAbstractItemModel *model = composer().recipientView()->model();
    QCOMPARE(model->index(0, InviteRecipientModel::ResultColumn).data().toString(), u"✓ 已发送"_s);
    const QString refused = model->index(1, InviteRecipientModel::ResultColumn).data().toString();
    QVERIFY2(refused.contains(u"550 5.1.1 <refuse-bert@x.cn>: mailbox unavailable"_s),
        qPrintable(refused));
    QCOMPARE(control<QLabel>("inviteStatus")->text(), u"已发送 1 封, 失败 1 封"_s);
    const QJsonObject mail = SmtpTestServer::parse(server.message(1), &error);
    QVERIFY(mail[u"html"_s].toString().contains(u"请联系 信息中心"_s));

    // The settings and the remembered fields are in the registry, the
    // password nowhere.
    const InviteMailSettings saved = InviteMailSettings::read(frame().hives());
    QCOMPARE(saved.host, u"127.0.0.1"_s);
    QCOMPARE(saved.port, server.port());
    QCOMPARE(saved.security, SmtpSecurity::None);
    QCOMPARE(saved.sender, u"admin@velmar.test"_s);
    QCOMPARE(saved.office, u"信息中心"_s);
}

QTEST_MAIN(InviteComposerTest)
#include "tst_invite_composer.moc"
