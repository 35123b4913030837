#include "CVelmarManagerDoc.h"
#include "Directory.h"
#include "MemberListModel.h"
#include "MemberRules.h"
#include "ServerDataSet.h"

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

    const QString ten = u"张三李四王五赵六钱七"_s; // 20 bytes in GBK
    QTest::newRow("name of ten Chinese characters")
        << int(MemberListModel::DisplayNameColumn) << ten << QString();
    QTest::newRow("name of ten Chinese characters and a letter")
        << int(MemberListModel::DisplayNameColumn) << ten + u"a"_s << u"已经超过20名."_s;
    QTest::newRow("name of 21 letters")
        << int(MemberListModel::DisplayNameColumn) << QString(21, u'x') << u"已经超过20名."_s;
    // Nine characters and a letter are 19 bytes; one more character is 21.
    QTest::newRow("name ending in a split character")
        << int(MemberListModel::DisplayNameColumn) << ten.left(9) + u"ab张"_s << u"已经超过20名."_s;
    QTest::newRow("mobile of 13") << int(MemberListModel::MobileColumn) << u"1391234567890"_s
                                  << QString();
    QTest::newRow("mobile of 14") << int(MemberListModel::MobileColumn) << u"13912345678901"_s
                                  << u"已经超过13名."_s;
    QTest::newRow("password of 20")
        << int(MemberListModel::PasswordColumn) << QString(20, u'p') << QString();
    QTest::newRow("password of 21")
        << int(MemberListModel::PasswordColumn) << QString(21, u'p') << u"已经超过20名."_s;
    QTest::newRow("e-mail of 50 characters, 100 bytes")
        << int(MemberListModel::EmailColumn) << QString(50, u'邮') << QString();
    QTest::newRow("e-mail of 101")
        << int(MemberListModel::EmailColumn) << QString(50, u'邮') + u"@"_s << u"已经超过100名."_s;
    QTest::newRow("address of 101")
        << int(MemberListModel::AddressColumn) << QString(101, u'a') << u"已经超过100名."_s;
    QTest::newRow("home phone of 21")
        << int(MemberListModel::HomePhoneColumn) << QString(21, u'1') << u"已经超过20名."_s;
    QTest::newRow("user ID of 21")
        << int(MemberListModel::LoginNameColumn) << QString(21, u'u') << u"已经超过20名."_s;
    // Not limited in this view.
    QTest::newRow("long nickname")
        << int(MemberListModel::NicknameColumn) << QString(500, u'n') << QString();
    QTest::newRow("long office phone")
        << int(MemberListModel::OfficePhoneColumn) << QString(500, u'1') << QString();
    QTest::newRow("long introduction")
        << int(MemberListModel::DescriptionColumn) << QString(500, u'介') << QString();
}

void TestMemberRules::byteLimitsCountGbkBytes()
{
    QFETCH(int, column);
    QFETCH(QString, text);
    QFETCH(QString, refusal);
    const std::optional<MemberRefusal> result = m_rules.checkCell(column, text);
    if (refusal.isEmpty()) {
        QVERIFY2(!result, qPrintable(result ? result->text : QString()));
        return;
    }
    QVERIFY(result);
    QCOMPARE(result->text, refusal);
    QCOMPARE(result->column, column);
    QCOMPARE(result->reason, MemberRefusal::Reason::TooLong);
    QCOMPARE(result->icon, MessageService::Icon::Error);
    QCOMPARE(result->balloon().timeoutMs, 3000);
}

void TestMemberRules::newUserIdRefusals_data()
{
    QTest::addColumn<QString>("userId");
    QTest::addColumn<QString>("refusal"); // empty: accepted

    QTest::newRow("letters, digits, - and _") << u"a-b_c9"_s << QString();
    QTest::newRow("Chinese characters") << u"张三"_s << QString();
    QTest::newRow("empty") << QString() << QString();
    QTest::newRow("space") << u"a b"_s << SpaceText;
    QTest::newRow("space in an otherwise valid ID") << u"alice "_s << SpaceText;
    QTest::newRow("space beside a bad character") << u"a.b c"_s << SpaceText;
    QTest::newRow("dot") << u"a.b"_s << CharacterText;
    QTest::newRow("hash") << u"a#b"_s << CharacterText;
    QTest::newRow("tab") << u"a\tb"_s << CharacterText;
    QTest::newRow("control character") << u"a\x01b"_s << CharacterText;
    QTest::newRow("NUL") << QStringView(u"ab\0c", 4).toString() << CharacterText;
    QTest::newRow("DEL") << u"ab\x7f"_s << CharacterText;
    QTest::newRow("full-width letter, no space") << u"ａｂ"_s << QString();
    // Thai has no place in GBK: it would be stored as "?".
    QTest::newRow("character outside the code page") << u"a\u0E01"_s << CharacterText;
    QTest::newRow("twenty bytes") << u"张三李四王五赵六钱七"_s << QString();
    QTest::newRow("twenty-one bytes") << u"张三李四王五赵六钱七x"_s << u"已经超过20名."_s;
    QTest::newRow("existing") << u"taken"_s << ExistsText;
}

void TestMemberRules::newUserIdRefusals()
{
    QFETCH(QString, userId);
    QFETCH(QString, refusal);
    const auto exists = [](const QString &name) { return name == u"taken"_s; };
    const std::optional<MemberRefusal> result = m_rules.checkNewUserId(userId, exists);
    if (refusal.isEmpty()) {
        QVERIFY2(!result, qPrintable(result ? result->text : QString()));
        return;
    }
    QVERIFY(result);
    QCOMPARE(result->text, refusal);
    QCOMPARE(result->column, 0);
    if (refusal == SpaceText) {
        QCOMPARE(result->title, u"Tip!"_s);
        QCOMPARE(result->icon, MessageService::Icon::Question);
    } else {
        QCOMPARE(result->icon, MessageService::Icon::Error);
    }
}

void TestMemberRules::userIdBytesOutsideTheCodePageAreRefused_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("refusal");

    QTest::newRow("GBK name") << QByteArray("\xd5\xc5\xc8\xfd") << QString(); // 张三
    QTest::newRow("ASCII") << QByteArray("bob_1") << QString();
    QTest::newRow("lead byte before DEL") << QByteArray("ab\x81\x7f") << CharacterText;
    QTest::newRow("lead byte before a control byte") << QByteArray("\xd5\x01") << CharacterText;
    QTest::newRow("lead byte at the end") << QByteArray("ab\xd5") << CharacterText;
    QTest::newRow("lead byte before a space") << QByteArray("\xd5 ab") << CharacterText;
    QTest::newRow("UTF-8 bytes of 张") << QByteArray("\xe5\xbc\xa0") << CharacterText;
    QTest::newRow("control byte") << QByteArray("a\x02") << CharacterText;
    QTest::newRow("escape") << QByteArray("a\x1b[0m") << CharacterText;
    QTest::newRow("space") << QByteArray("a b") << SpaceText;
    QTest::newRow("existing") << QByteArray("taken") << ExistsText;
}

void TestMemberRules::userIdBytesOutsideTheCodePageAreRefused()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, refusal);
    const auto exists = [](const QString &name) { return name == u"taken"_s; };
    const std::optional<MemberRefusal> result
        = m_rules.checkNewUserId(QByteArrayView(bytes), exists);
    if (refusal.isEmpty()) {
        QVERIFY2(!result, qPrintable(result ? result->text : QString()));
        return;
    }
    QVERIFY(result);
    QCOMPARE(result->text, refusal);
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

    // A new member shows 男生, 公开, 阳历 and 是.
    QCOMPARE(MemberRules::newMember(u"new"_s).id, -1);
    CVelmarManagerDoc document;
    QCOMPARE(document.editor().addMember(false, u"new"_s).id, 1);
    const MemberListModel &list = *document.directory()->regularMembers();
    const QStringList shown {
        list.index(0, MemberListModel::GenderColumn).data().toString(),
        list.index(0, MemberListModel::PublicColumn).data().toString(),
        list.index(0, MemberListModel::SolarColumn).data().toString(),
        list.index(0, MemberListModel::AdminColumn).data().toString(),
    };
    QCOMPARE(shown, QStringList({ u"男生"_s, u"公开"_s, u"阳历"_s, u"是"_s }));
    QVERIFY(list.member(0).password.isEmpty());
    QVERIFY(list.member(0).displayName.isEmpty());
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
