// The two administrator password dialogs, driven with key clicks. Their
// message boxes are scripted, so every text, title, icon and the focus after
// each one can be checked.

#include "AdminPasswordStore.h"
#include "AppTestSupport.h"
#include "CAdminLoginDlg.h"
#include "CAdmSetupPasswordDlg.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {
const QString Secret = u"Secret1"_s;
const QString Failure = u"验证检查|密码没有通过验证. 只能尝试 %1/3 的输入机会|"_s
    + QString::number(int(MessageService::Icon::Exclamation));

// A setup dialog on a server folder whose console key exists.
struct SetupFixture
{
    TempServerDir dir;
    ScriptedMessageService messages;

    // state/digest < 0 / null: not stored.
    void store(int state, const QString &digest)
    {
        setRegistryNumber(dir.hives(), RegistryRoot::LocalMachine, ConsoleKey, u"ServerType"_s, 0);
        if (state >= 0)
            setRegistryNumber(
                dir.hives(), RegistryRoot::LocalMachine, ConsoleKey, u"AdmPasswordState"_s, state);
        if (!digest.isNull())
            setRegistryString(
                dir.hives(), RegistryRoot::LocalMachine, ConsoleKey, u"AdmPassword"_s, digest);
    }
    std::optional<qint32> state()
    {
        return registryNumber(
            dir.hives(), RegistryRoot::LocalMachine, ConsoleKey, u"AdmPasswordState"_s);
    }
    std::optional<QString> digest()
    {
        return registryString(
            dir.hives(), RegistryRoot::LocalMachine, ConsoleKey, u"AdmPassword"_s);
    }
    // Stores the values (a state below 0 stores no key at all) and opens the
    // dialog on them, shown and active.
    CAdmSetupPasswordDlg &open(int state, const QString &digest)
    {
        if (state >= 0 || !digest.isNull())
            store(state, digest);
        dialog = std::make_unique<CAdmSetupPasswordDlg>(dir.hives(), messages);
        QTest::qVerify(showActive(dialog.get()), "showActive", "", __FILE__, __LINE__);
        return *dialog;
    }
    std::unique_ptr<CAdmSetupPasswordDlg> dialog;
};

// The three fields' enabled states as "existing new confirm", 1 for enabled.
QString enabledFields(const CAdmSetupPasswordDlg &dialog)
{
    return u"%1%2%3"_s.arg(int(dialog.existingField()->isEnabled()))
        .arg(int(dialog.newField()->isEnabled()))
        .arg(int(dialog.confirmField()->isEnabled()));
}

// A login dialog expecting this password's digest, shown and active.
struct LoginFixture
{
    explicit LoginFixture(const QString &password = Secret)
    {
        dialog.setExpectedDigest(AdminPasswordStore::digest(password));
    }
    bool show() { return showActive(&dialog); }
    ScriptedMessageService messages;
    CAdminLoginDlg dialog { messages };
};

// A box as "title|text|icon".
QString describe(const MessageService::Box &box)
{
    return u"%1|%2|%3"_s.arg(box.title, box.text).arg(int(box.icon));
}
} // namespace

class PasswordDialogsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void loginEmptyOtherCaseAndThirdFailure();
    void loginEnterConfirmsOncePerPress();

    void setupOpening_data();
    void setupOpening();
    void setupCheckBoxFlow();
    void setupLockSwitchKeepsDigest();
    void setupChangeRefusals();
    void setupChangePassword();
    void setupFirstPassword();
    void setupWithoutKey();
    void setupEnterAndEscape();
};

void PasswordDialogsTest::loginEmptyOtherCaseAndThirdFailure()
{
    LoginFixture l;
    auto &[messages, dialog] = l;
    QVERIFY(l.show());
    auto *confirm = dialog.findChild<QPushButton *>(u"control1103"_s);
    confirm->setFocus();
    confirm->click();
    QCOMPARE(messages.boxes().size(), 1);
    const MessageService::Box box = messages.boxes().first();
    QCOMPARE(
        describe(box), u"VelmarManager|请输入验证密码.|%1"_s.arg(int(MessageService::Icon::None)));
    QCOMPARE(box.buttons, MessageService::Buttons::Ok);
    QCOMPARE(box.parent, &dialog);
    QCOMPARE(dialog.focusWidget(), dialog.passwordField());
    QCOMPARE(dialog.failedAttempts(), 0); // an empty entry is no attempt

    QTest::keyClicks(dialog.passwordField(), u"secret1"_s);
    confirm->setFocus();
    dialog.confirm();
    QVERIFY(dialog.isVisible());
    QCOMPARE(dialog.failedAttempts(), 1);
    QCOMPARE(messages.boxes().size(), 2);
    QCOMPARE(describe(messages.boxes().last()), Failure.arg(1));
    QVERIFY(wholeTextSelected(dialog.passwordField()));
    QCOMPARE(dialog.focusWidget(), dialog.passwordField());

    // The third failure closes the dialog, rejected.
    QSignalSpy finished(&dialog, &QDialog::finished);
    for (const QString &attempt : { u"two"_s, u"three"_s }) {
        dialog.passwordField()->setText(attempt);
        dialog.confirm();
    }
    QCOMPARE(finished.count(), 1);
    QCOMPARE(finished.first().first().toInt(), int(QDialog::Rejected));
    QVERIFY(!dialog.isVisible());
    QStringList boxes;
    for (const MessageService::Box &box : messages.boxes())
        boxes << describe(box);
    QCOMPARE(boxes.mid(1),
        QStringList({ Failure.arg(1), Failure.arg(2),
            u"验证检查|密码验证没有通过程序将退出|%1"_s.arg(
                int(MessageService::Icon::Exclamation)) }));
}

void PasswordDialogsTest::loginEnterConfirmsOncePerPress()
{
    const QString hundred = QString(99, u'x') + u'Y';
    LoginFixture l(hundred);
    auto &[messages, dialog] = l;
    QVERIFY(l.show());
    QCOMPARE(dialog.passwordField()->maxLength(), 100);
    QCOMPARE(dialog.passwordField()->echoMode(), QLineEdit::Password);
    QTest::keyClick(dialog.passwordField(), Qt::Key_Return);
    QCOMPARE(messages.boxes().size(), 1);
    QVERIFY(dialog.enterLatchSet());
    // Enter on the cancel button confirms too: the key is taken before the buttons see it.
    auto *cancel = dialog.findChild<QPushButton *>(u"control1104"_s);
    cancel->setFocus();
    QTest::keyClick(cancel, Qt::Key_Return);
    QCOMPARE(messages.boxes().size(), 2);
    QVERIFY(dialog.isVisible());
    dialog.passwordField()->setText(u"bad"_s);
    QTest::keyClick(dialog.passwordField(), Qt::Key_Return);
    QCOMPARE(dialog.failedAttempts(), 1);
    QCOMPARE(messages.boxes().size(), 3);
    // The keypad's Enter too; all hundred characters count.
    dialog.passwordField()->clear();
    QTest::keyClicks(dialog.passwordField(), hundred);
    QTest::keyClick(dialog.passwordField(), Qt::Key_Enter, Qt::KeypadModifier);
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
}

void PasswordDialogsTest::setupOpening_data()
{
    QTest::addColumn<bool>("key");
    QTest::addColumn<int>("state");
    QTest::addColumn<bool>("digest");
    QTest::addColumn<bool>("checked");
    QTest::addColumn<QString>("enabled"); // existing, new, confirmation
    QTest::newRow("key cannot be opened") << false << -1 << false << false << u"111"_s;
    QTest::newRow("nothing stored") << true << -1 << false << true << u"000"_s;
    QTest::newRow("lock off with password") << true << 0 << true << true << u"000"_s;
    QTest::newRow("lock on with password") << true << 1 << true << false << u"111"_s;
    QTest::newRow("lock on without password") << true << 1 << false << false << u"011"_s;
}

void PasswordDialogsTest::setupOpening()
{
    QFETCH(bool, key);
    QFETCH(int, state);
    QFETCH(bool, digest);
    QFETCH(bool, checked);
    QFETCH(QString, enabled);
    SetupFixture f;
    if (key)
        f.store(state, digest ? AdminPasswordStore::digest(Secret) : QString());
    CAdmSetupPasswordDlg dialog(f.dir.hives(), f.messages);
    QCOMPARE(dialog.lockOffBox()->isChecked(), checked);
    QCOMPARE(enabledFields(dialog), enabled);
    // Opening writes nothing.
    QCOMPARE(registryKeyExists(f.dir.hives(), RegistryRoot::LocalMachine, ConsoleKey), key);
    QCOMPARE(f.state(), state < 0 ? std::nullopt : std::optional<qint32>(state));
}

void PasswordDialogsTest::setupCheckBoxFlow()
{
    // Without a stored password there is no existing one to ask for.
    for (const bool stored : { true, false }) {
        SetupFixture f;
        CAdmSetupPasswordDlg &dialog
            = f.open(0, stored ? AdminPasswordStore::digest(Secret) : QString());
        QVERIFY(dialog.lockOffBox()->isChecked());
        QTest::mouseClick(
            dialog.lockOffBox(), Qt::LeftButton, {}, QPoint(4, dialog.lockOffBox()->height() / 2));
        QVERIFY(!dialog.lockOffBox()->isChecked());
        QCOMPARE(enabledFields(dialog), stored ? u"111"_s : u"011"_s);
        QCOMPARE(dialog.focusWidget(), stored ? dialog.existingField() : dialog.newField());

        QTest::mouseClick(
            dialog.lockOffBox(), Qt::LeftButton, {}, QPoint(4, dialog.lockOffBox()->height() / 2));
        QVERIFY(dialog.lockOffBox()->isChecked());
        QCOMPARE(enabledFields(dialog), u"000"_s);
        // Clicking writes nothing; only the confirm button does.
        QCOMPARE(f.state(), std::optional<qint32>(0));
    }
}

// Switched off, whatever is typed is not looked at; switched on again with
// empty fields, the old password is kept (what the store then asks for is
// the store's to test).
void PasswordDialogsTest::setupLockSwitchKeepsDigest()
{
    const QString digest = AdminPasswordStore::digest(Secret);
    for (const int state : { 1, 0 }) {
        SetupFixture f;
        CAdmSetupPasswordDlg &dialog = f.open(state, digest);
        dialog.lockOffBox()->click();
        dialog.newField()->setText(state == 1 ? u"ignored"_s : QString());
        dialog.confirm();
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QCOMPARE(f.state(), std::optional<qint32>(1 - state));
        QCOMPARE(f.digest(), std::optional<QString>(digest));
        QVERIFY(f.messages.boxes().isEmpty());
    }
}

void PasswordDialogsTest::setupChangeRefusals()
{
    struct Case
    {
        QString existing, fresh, confirmation;
        QString text, title;
        QLineEdit *(CAdmSetupPasswordDlg::*focus)() const;
        bool selected; // the focused field's whole text is selected
    };
    const QString check = u"检查验证密码"_s;
    const QList<Case> cases = {
        { QString(), u"new1"_s, QString(), u"没有输入现有的密码"_s, u"检查现有的验证密码"_s,
            &CAdmSetupPasswordDlg::existingField, false },
        { QString(), QString(), u"new1"_s, u"没有输入现有的密码"_s, u"检查现有的验证密码"_s,
            &CAdmSetupPasswordDlg::existingField, false },
        { u"secret1"_s, u"new1"_s, u"new1"_s, u"现有的密码和输入的密码不同"_s, check,
            &CAdmSetupPasswordDlg::existingField, true },
        { Secret, QString(), u"new1"_s, u"输入的新的密码不存在"_s, check,
            &CAdmSetupPasswordDlg::newField, false },
        { Secret, u"new1"_s, QString(), u"输入的新的确认密码不存在"_s, check,
            &CAdmSetupPasswordDlg::confirmField, false },
        { Secret, u"new1"_s, u"New1"_s, u"输入的新的密码和确认密码不同"_s, check,
            &CAdmSetupPasswordDlg::newField, true },
    };
    for (const Case &c : cases) {
        const QString digest = AdminPasswordStore::digest(Secret).toUpper();
        SetupFixture f;
        CAdmSetupPasswordDlg &dialog = f.open(0, digest);
        dialog.lockOffBox()->click();
        dialog.existingField()->setText(c.existing);
        dialog.newField()->setText(c.fresh);
        dialog.confirmField()->setText(c.confirmation);
        dialog.findChild<QPushButton *>(u"control1104"_s)->setFocus();
        dialog.findChild<QPushButton *>(u"control1104"_s)->click();

        QVERIFY2(dialog.isVisible(), qPrintable(c.text));
        QCOMPARE(f.messages.boxes().size(), 1);
        QCOMPARE(describe(f.messages.boxes().first()),
            u"%1|%2|%3"_s.arg(c.title, c.text).arg(int(MessageService::Icon::Exclamation)));
        QCOMPARE(f.messages.boxes().first().parent, &dialog);
        QLineEdit *focused = (dialog.*c.focus)();
        QCOMPARE(dialog.focusWidget(), focused);
        QCOMPARE(wholeTextSelected(focused), c.selected);
        // The lock state is stored before the checks; the password is kept.
        QCOMPARE(f.state(), std::optional<qint32>(1));
        QCOMPARE(f.digest(), std::optional<QString>(digest));
    }
}

void PasswordDialogsTest::setupChangePassword()
{
    SetupFixture f;
    CAdmSetupPasswordDlg &dialog = f.open(1, AdminPasswordStore::digest(Secret).toUpper());
    QTest::keyClicks(dialog.existingField(), Secret);
    QTest::keyClicks(dialog.newField(), u"Neu-2"_s);
    QTest::keyClicks(dialog.confirmField(), u"Neu-2"_s);
    QTest::keyClick(dialog.confirmField(), Qt::Key_Return);
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QCOMPARE(f.digest(), std::optional<QString>(AdminPasswordStore::digest(u"Neu-2"_s)));
    QCOMPARE(f.state(), std::optional<qint32>(1));
    QVERIFY(f.messages.boxes().isEmpty());
}

void PasswordDialogsTest::setupFirstPassword()
{
    struct Refusal
    {
        QString fresh, confirmation, text;
        bool focusOnNew;
    };
    // Without a password yet, a mismatch selects the new text but focuses the confirmation.
    for (const Refusal &r : { Refusal { QString(), u"a"_s, u"输入的新的密码不存在"_s, true },
             Refusal { u"a"_s, QString(), u"输入的新的确认密码不存在"_s, false },
             Refusal { u"abc"_s, u"abd"_s, u"输入的新的密码和确认密码不同"_s, false } }) {
        SetupFixture f;
        CAdmSetupPasswordDlg &dialog = f.open(1, QString());
        dialog.newField()->setText(r.fresh);
        dialog.confirmField()->setText(r.confirmation);
        dialog.confirm();
        QCOMPARE(f.messages.boxTexts(), QStringList({ r.text }));
        QCOMPARE(f.messages.boxes().first().title, u"检查验证密码"_s);
        QCOMPARE(dialog.focusWidget(), r.focusOnNew ? dialog.newField() : dialog.confirmField());
        QCOMPARE(wholeTextSelected(dialog.newField()), r.confirmation == u"abd"_s);
        QVERIFY(dialog.isVisible());
        QCOMPARE(f.digest(), std::nullopt);
    }

    // A hundred characters, CJK among them, are all taken.
    SetupFixture f;
    CAdmSetupPasswordDlg &dialog = f.open(1, QString());
    const QString hundred = QString(98, u'k') + u"密码"_s;
    for (QLineEdit *field : { dialog.existingField(), dialog.newField(), dialog.confirmField() }) {
        QCOMPARE(field->maxLength(), 100);
        QCOMPARE(field->echoMode(), QLineEdit::Password);
    }
    dialog.newField()->setText(hundred);
    dialog.confirmField()->setText(hundred);
    dialog.confirm();
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QCOMPARE(f.digest(), std::optional<QString>(AdminPasswordStore::digest(hundred)));
}

void PasswordDialogsTest::setupWithoutKey()
{
    SetupFixture f; // the console key was never created
    CAdmSetupPasswordDlg &dialog = f.open(-1, QString());
    dialog.newField()->setText(u"abc"_s);
    dialog.confirmField()->setText(u"abc"_s);
    dialog.confirm();
    // Nothing can be stored and nothing is created; the stored digest counts as empty.
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QVERIFY(!registryKeyExists(f.dir.hives(), RegistryRoot::LocalMachine, ConsoleKey));
    QVERIFY(f.messages.boxes().isEmpty());
}

// Escape and Enter are the dialogs' common base's; the login dialog shows
// Enter taken from a button (loginEnterConfirmsOncePerPress).
void PasswordDialogsTest::setupEnterAndEscape()
{
    SetupFixture f;
    CAdmSetupPasswordDlg &dialog = f.open(1, QString());
    QSignalSpy finished(&dialog, &QDialog::finished);
    for (QWidget *target :
        std::initializer_list<QWidget *> { dialog.newField(), dialog.lockOffBox(), &dialog })
        QTest::keyClick(target, Qt::Key_Escape);
    dialog.reject();
    QVERIFY(dialog.isVisible());
    QCOMPARE(finished.count(), 0);

    // Enter on the check box confirms once; it does not toggle the box.
    dialog.lockOffBox()->setFocus();
    QTest::keyClick(dialog.lockOffBox(), Qt::Key_Return);
    QCOMPARE(f.messages.boxTexts(), QStringList({ u"输入的新的密码不存在"_s }));
    QVERIFY(!dialog.lockOffBox()->isChecked());
    QVERIFY(dialog.enterLatchSet());

    dialog.findChild<QPushButton *>(u"control1108"_s)->click();
    QCOMPARE(finished.count(), 1);
    QCOMPARE(finished.first().first().toInt(), int(QDialog::Rejected));
}

int runPasswordDialogsTests(int argc, char **argv)
{
    PasswordDialogsTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "PasswordDialogsTest.moc"
