#include "MemberListModel.h"
#include "MemberRules.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QString SpaceText = u"用户ID可以用字母数字或符号，但不少于3个字母."_s;
const QString CharacterText = u"数字, 英文, '_' 除了以上特殊字符不能输入."_s;
const QString ExistsText = u"用户已存在."_s;

} // namespace

class TestMemberRules : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void byteLimitsCountGbkBytes_data();
    void byteLimitsCountGbkBytes();
    void newUserIdRefusals_data();
    void newUserIdRefusals();
    void userIdBytesOutsideTheCodePageAreRefused_data();
    void userIdBytesOutsideTheCodePageAreRefused();
    void onlyTheBlankRowTakesAUserId();
    void passwordRuleAndNewMemberDefaults();
    void birthdayForms();

private:
    const MemberRules m_rules { CodePage("GBK") };
};

void TestMemberRules::byteLimitsCountGbkBytes_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("refusal"); // empty: accepted
    const auto row = [](const char *name, int column, const QString &text, const QString &refusal) {
        QTest::newRow(name) << column << text << refusal;
    };
    using M = MemberListModel;
    const QString ten = u"张三李四王五赵六钱七"_s; // 20 bytes in GBK
    const QString over20 = u"已经超过20名."_s;
    const QString over100 = u"已经超过100名."_s;
    row("name of ten Chinese characters", M::DisplayNameColumn, ten, {});
    row("name of ten Chinese characters and a letter", M::DisplayNameColumn, ten + u"a"_s, over20);
    row("name of 21 letters", M::DisplayNameColumn, QString(21, u'x'), over20);
    // Nine characters and a letter are 19 bytes; one more character is 21.
    row("name ending in a split character", M::DisplayNameColumn, ten.left(9) + u"ab张"_s, over20);
    row("mobile of 13", M::MobileColumn, u"1391234567890"_s, {});
    row("mobile of 14", M::MobileColumn, u"13912345678901"_s, u"已经超过13名."_s);
    row("password of 20", M::PasswordColumn, QString(20, u'p'), {});
    row("password of 21", M::PasswordColumn, QString(21, u'p'), over20);
    row("e-mail of 50 characters, 100 bytes", M::EmailColumn, QString(50, u'邮'), {});
    row("e-mail of 101", M::EmailColumn, QString(50, u'邮') + u"@"_s, over100);
    row("address of 101", M::AddressColumn, QString(101, u'a'), over100);
    row("home phone of 21", M::HomePhoneColumn, QString(21, u'1'), over20);
    row("user ID of 21", M::LoginNameColumn, QString(21, u'u'), over20);
    // Not limited in this view.
    row("long nickname", M::NicknameColumn, QString(500, u'n'), {});
    row("long office phone", M::OfficePhoneColumn, QString(500, u'1'), {});
    row("long introduction", M::DescriptionColumn, QString(500, u'介'), {});
}

void TestMemberRules::byteLimitsCountGbkBytes()
{
    QFETCH(int, column);
    QFETCH(QString, text);
    QFETCH(QString, refusal);
    const std::optional<MemberRefusal> result = m_rules.checkCell(column, text);
    QCOMPARE(result ? result->text : QString(), refusal);
    if (!result)
        return;
    QCOMPARE(result->column, column);
    QCOMPARE(result->reason, MemberRefusal::Reason::TooLong);
    QCOMPARE(result->icon, MessageService::Icon::Error);
    QCOMPARE(result->balloon().timeoutMs, 3000);
}

void TestMemberRules::newUserIdRefusals_data()
{
    QTest::addColumn<QString>("userId");
    QTest::addColumn<QString>("refusal"); // empty: accepted
    const auto row = [](const char *name, const QString &userId, const QString &refusal = {}) {
        QTest::newRow(name) << userId << refusal;
    };
    row("letters, digits, - and _", u"a-b_c9"_s);
    row("Chinese characters", u"张三"_s);
    row("empty", QString());
    row("space", u"a b"_s, SpaceText);
    row("space in an otherwise valid ID", u"alice "_s, SpaceText);
    row("space beside a bad character", u"a.b c"_s, SpaceText);
    row("dot", u"a.b"_s, CharacterText);
    row("hash", u"a#b"_s, CharacterText);
    row("tab", u"a\tb"_s, CharacterText);
    row("control character", u"a\x01b"_s, CharacterText);
    row("NUL", QStringView(u"ab\0c", 4).toString(), CharacterText);
    row("DEL", u"ab\x7f"_s, CharacterText);
    row("full-width letter, no space", u"ａｂ"_s);
    // Thai has no place in GBK: it would be stored as "?".
    row("character outside the code page", u"a\u0E01"_s, CharacterText);
    row("twenty bytes", u"张三李四王五赵六钱七"_s);
    row("twenty-one bytes", u"张三李四王五赵六钱七x"_s, u"已经超过20名."_s);
    row("existing", u"taken"_s, ExistsText);
}

void TestMemberRules::newUserIdRefusals()
{
    QFETCH(QString, userId);
    QFETCH(QString, refusal);
    const auto exists = [](const QString &name) { return name == u"taken"_s; };
    const std::optional<MemberRefusal> result = m_rules.checkNewUserId(userId, exists);
    QCOMPARE(result ? result->text : QString(), refusal);
    if (!result)
        return;
    QCOMPARE(result->column, 0);
    if (refusal == SpaceText)
        QCOMPARE(result->title, u"Tip!"_s);
    QCOMPARE(result->icon,
        refusal == SpaceText ? MessageService::Icon::Question : MessageService::Icon::Error);
}

void TestMemberRules::userIdBytesOutsideTheCodePageAreRefused_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("refusal");
    const auto row = [](const char *name, const QByteArray &bytes, const QString &refusal = {}) {
        QTest::newRow(name) << bytes << refusal;
    };
    row("GBK name", "\xd5\xc5\xc8\xfd"); // 张三
    row("ASCII", "bob_1");
    row("lead byte before DEL", "ab\x81\x7f", CharacterText);
    row("lead byte before a control byte", "\xd5\x01", CharacterText);
    row("lead byte at the end", "ab\xd5", CharacterText);
    row("lead byte before a space", "\xd5 ab", CharacterText);
    row("UTF-8 bytes of 张", "\xe5\xbc\xa0", CharacterText);
    row("control byte", "a\x02", CharacterText);
    row("escape", "a\x1b[0m", CharacterText);
    row("space", "a b", SpaceText);
    row("existing", "taken", ExistsText);
}

void TestMemberRules::userIdBytesOutsideTheCodePageAreRefused()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, refusal);
    const auto exists = [](const QString &name) { return name == u"taken"_s; };
    const std::optional<MemberRefusal> result
        = m_rules.checkNewUserId(QByteArrayView(bytes), exists);
    QCOMPARE(result ? result->text : QString(), refusal);
}

void TestMemberRules::onlyTheBlankRowTakesAUserId()
{
    QVERIFY(!MemberRules::isEditable(MemberListModel::LoginNameColumn, false));
    QVERIFY(MemberRules::isEditable(MemberListModel::LoginNameColumn, true));
    QVERIFY(MemberRules::isEditable(MemberListModel::DisplayNameColumn, false));
    QVERIFY(MemberRules::isEditable(MemberListModel::PublicColumn, true));
    QVERIFY(!MemberRules::isEditable(MemberListModel::ColumnCount, true));
}

void TestMemberRules::passwordRuleAndNewMemberDefaults()
{
    const std::optional<MemberRefusal> refused = MemberRules::checkPasswordOnLeave(u"");
    QVERIFY(refused);
    QCOMPARE(refused->text, u"用户密码错误."_s);
    QCOMPARE(refused->column, 3);
    QVERIFY(!MemberRules::checkPasswordOnLeave(u" "));

    // What a new member shows in the grid is the document's test (newMemberAccepted).
    QCOMPARE(MemberRules::newMember(u"new"_s).id, -1);
}

void TestMemberRules::birthdayForms()
{
    QVERIFY(MemberRules::isBirthdayText(u""));
    QVERIFY(MemberRules::isBirthdayText(u"1988-02-29"));
    QVERIFY(!MemberRules::isBirthdayText(u"1989-02-29"));
    QVERIFY(!MemberRules::isBirthdayText(u"1989-2-28"));
    QVERIFY(!MemberRules::isBirthdayText(u"1989/02/28"));
    QVERIFY(!MemberRules::isBirthdayText(u"１９８９-02-28")); // full-width digits

    QCOMPARE(MemberRules::birthdayDate(u""), QDate(1970, 1, 1));
    QCOMPARE(MemberRules::birthdayDate(u"not a date"), QDate(1970, 1, 1));
    QCOMPARE(MemberRules::birthdayDate(u"1990-05-17"), QDate(1990, 5, 17));
    QCOMPARE(MemberRules::birthdayText(QDate(1990, 5, 7)), u"1990-05-07"_s);
    QCOMPARE(MemberRules::birthdayText(QDate()), QString());
}

QTEST_GUILESS_MAIN(TestMemberRules)
#include "tst_memberrules.moc"
