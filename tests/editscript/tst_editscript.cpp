#include "EditCommandParser.h"
#include "EditScript.h"
#include "EditScriptLexer.h"

#include <QBuffer>
#include <QTest>

using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(EditCommand)
Q_DECLARE_METATYPE(EditGroupRef)

class TestEditScript : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void lexer_data();
    void lexer();
    void groupRef_data();
    void groupRef();
    void commands_data();
    void commands();
    void refusals_data();
    void refusals();
    void lineNumbers();
    void wordsFromCommandLine();
    void readsDevice();
    void largeScript();
};

namespace {

EditGroupRef org(const QStringList &path)
{
    EditGroupRef ref;
    ref.path = path;
    return ref;
}

EditGroupRef guest(const QStringList &path)
{
    EditGroupRef ref = org(path);
    ref.guest = true;
    return ref;
}

EditGroupRef groupId(qint32 id, bool inGuestTree = false)
{
    EditGroupRef ref;
    ref.id = id;
    ref.guest = inGuestTree;
    return ref;
}

} // namespace

void TestEditScript::lexer_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QStringList>("words");
    QTest::addColumn<QString>("error");
    const auto row = [](const QString &line, const QStringList &words, const QString &error = {}) {
        QTest::newRow(qPrintable(line)) << line << words << error;
    };

    // Blanks, comments and the '#' that names a group.
    row(u""_s, QStringList());
    row(u"# member add x"_s, QStringList());
    row(u"  a \t b\t\tc  "_s, QStringList { u"a"_s, u"b"_s, u"c"_s });
    row(u"place #12 a#b #"_s, QStringList { u"place"_s, u"#12"_s, u"a#b"_s, u"#"_s });
    row(u"\"#x\" y"_s, QStringList { u"#x"_s, u"y"_s });

    // Quotes, and pieces joining into one word.
    row(u"\"a b\"  c"_s, QStringList { u"a b"_s, u"c"_s });
    row(u"'a  b'"_s, QStringList { u"a  b"_s });
    row(u"a\"b c\"'d e'f"_s, QStringList { u"ab cd ef"_s });
    row(u"a \"\" b"_s, QStringList { u"a"_s, u""_s, u"b"_s });
    row(u"'' x"_s, QStringList { u""_s, u"x"_s });

    // Backslashes in each context.
    row(uR"("\" \\ \$ \`")"_s, QStringList { uR"(" \ $ `)"_s });
    row(uR"("C:\dir\n" "a\b")"_s, QStringList { uR"(C:\dir\n)"_s, uR"(a\b)"_s });
    row(uR"('a\b"c\' x)"_s, QStringList { uR"(a\b"c\)"_s, u"x"_s });
    row(uR"(a\ b c)"_s, QStringList { u"a b"_s, u"c"_s });
    row(uR"(\'\" \\ \a)"_s, QStringList { uR"('")"_s, uR"(\)"_s, u"a"_s });
    row(uR"(\#x)"_s, QStringList { u"#x"_s });
    row(u"a\\\nb \\\n c"_s, QStringList { u"ab"_s, u"c"_s });
    row(u"\"a\\\nb\""_s, QStringList { u"ab"_s });

    // No expansion of any kind.
    row(u"$HOME ~ * `x` $(y)"_s, QStringList { u"$HOME"_s, u"~"_s, u"*"_s, u"`x`"_s, u"$(y)"_s });
    row(u"group rename /销售部 \"市场 部\""_s,
        QStringList { u"group"_s, u"rename"_s, u"/销售部"_s, u"市场 部"_s });

    // Refused lines.
    row(uR"(a "b\")"_s, {}, u"unbalanced double quote"_s);
    row(u"a 'b\""_s, {}, u"unbalanced single quote"_s);
    row(uR"('a\'')"_s, {}, u"unbalanced single quote"_s);
    row(uR"(member add a\)"_s, {}, u"trailing backslash"_s);
}

void TestEditScript::lexer()
{
    QFETCH(QString, line);
    QFETCH(QStringList, words);
    QFETCH(QString, error);
    const EditScriptLexer::Result result = EditScriptLexer::split(line);
    QCOMPARE(result.error, error);
    if (error.isEmpty())
        QCOMPARE(result.words, words);
}

void TestEditScript::groupRef_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<EditGroupRef>("expected");
    QTest::addColumn<QString>("canonical");
    QTest::addColumn<QString>("error");
    const auto row = [](const QString &text, const EditGroupRef &ref, const QString &shown = {}) {
        QTest::newRow(qPrintable(text)) << text << ref << shown << QString();
    };

    row(u"/Sales/East"_s, org({ u"Sales"_s, u"East"_s }));
    row(u"/"_s, org({}));
    row(u"guest:/Forum/Old"_s, guest({ u"Forum"_s, u"Old"_s }));
    row(u"guest:/"_s, guest({}));
    row(u"#12"_s, groupId(12));
    row(u"guest:#7"_s, groupId(7, true));
    row(u"#007"_s, groupId(7), u"#7"_s);
    row(u"#2147483647"_s, groupId(2147483647));
    row(u"/销售部/华东区"_s, org({ u"销售部"_s, u"华东区"_s }));
    row(u"/A B/ C "_s, org({ u"A B"_s, u" C "_s }));

    // "\/" is a slash within a name, "\\" a backslash; other backslashes stay.
    row(uR"(/R\/D/Lab)"_s, org({ u"R/D"_s, u"Lab"_s }));
    row(uR"(/\/)"_s, org({ u"/"_s }));
    row(uR"(/R\D)"_s, org({ uR"(R\D)"_s }));
    row(uR"(/a\\/b)"_s, org({ uR"(a\)"_s, u"b"_s }));
    row(uR"(/a\)"_s, org({ uR"(a\)"_s }), uR"(/a\\)"_s);
    row(uR"(/a\\\b)"_s, org({ uR"(a\\b)"_s }), uR"(/a\\\b)"_s);
    row(u"/guest:x/#1"_s, org({ u"guest:x"_s, u"#1"_s }));

    // Each message quotes the text it refuses.
    const auto refused = [](const QString &text, const QString &error) {
        QTest::newRow(qPrintable(text)) << text << EditGroupRef() << QString() << error.arg(text);
    };
    const QString bad = u"bad group: %1 (expected /PATH, guest:/PATH, #ID or guest:#ID)"_s;
    for (const QString &text : { u"Sales"_s, u"Sales/East"_s, u""_s, u"guest:"_s, u"guest:Forum"_s,
             u"guest:guest:/a"_s, u"GUEST:/a"_s })
        refused(text, bad);
    const QString badId = u"bad group id: %1 (expected a decimal number after #)"_s;
    for (const QString &text : { u"#"_s, u"#x1"_s, u"#-1"_s, u"#+1"_s, u"# 1"_s, u"#2147483648"_s,
             u"guest:#"_s, u"#１２"_s })
        refused(text, badId);
    for (const QString &text : { u"/a//b"_s, u"/a/"_s, u"//"_s, u"guest://x"_s })
        refused(text, u"empty group name in %1 (name such a group by #ID)"_s);
}

void TestEditScript::groupRef()
{
    QFETCH(QString, text);
    QFETCH(EditGroupRef, expected);
    QFETCH(QString, canonical);
    QFETCH(QString, error);

    EditGroupRef ref;
    QString message;
    QCOMPARE(EditGroupRef::parse(text, &ref, &message), error.isEmpty());
    QCOMPARE(message, error);
    if (!error.isEmpty())
        return;
    QCOMPARE(ref, expected);
    QVERIFY(EditGroupRef::looksLikeGroup(text));

    // The text a message shows parses back into the same group.
    const QString shown = ref.toText();
    QCOMPARE(shown, canonical.isEmpty() ? text : canonical);
    EditGroupRef again;
    QVERIFY(EditGroupRef::parse(shown, &again, &message));
    QCOMPARE(again, ref);
}

void TestEditScript::commands_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<EditCommand>("expected");
    const auto row = [](const QString &line, Edit::Operation op) {
        QTest::newRow(qPrintable(line)) << line << EditCommand { 1, std::move(op) };
    };

    using enum Edit::MemberText;
    const auto texts = [](const QList<Edit::MemberTextEdit> &edits) {
        Edit::MemberFields fields;
        fields.texts = edits;
        return fields;
    };

    // Members.
    row(u"member add alice"_s, Edit::MemberAdd { u"alice"_s, false, {} });
    row(u"member add \"\""_s, Edit::MemberAdd { {}, false, {} });
    // Text cells keep the order they were written in.
    row(u"member add wang.li --intro '' --female --guest --name '王 丽' --password \"p w\" "
        u"--nickname \"小王; 'x'\" --private --email wl@example.com --mobile 13800000000 "
        u"--phone 010-1234 --office-phone 010-5678 --birthday 1990-02-28 --lunar "
        u"--address 北京 --no-admin"_s,
        Edit::MemberAdd { u"wang.li"_s, true,
            { {
                  { Intro, u""_s },
                  { Name, u"王 丽"_s },
                  { Password, u"p w"_s },
                  { Nickname, u"小王; 'x'"_s },
                  { Email, u"wl@example.com"_s },
                  { Mobile, u"13800000000"_s },
                  { HomePhone, u"010-1234"_s },
                  { OfficePhone, u"010-5678"_s },
                  { Birthday, u"1990-02-28"_s },
                  { Address, u"北京"_s },
              },
                false, false, false, false } });
    row(u"member add bob --name=Bob=B --password="_s,
        Edit::MemberAdd { u"bob"_s, false, texts({ { Name, u"Bob=B"_s }, { Password, u""_s } }) });
    // The word after an option is its value, whatever it looks like.
    row(u"member add bob --name --female --password -x"_s,
        Edit::MemberAdd {
            u"bob"_s, false, texts({ { Name, u"--female"_s }, { Password, u"-x"_s } }) });
    row(u"member set alice"_s, Edit::MemberSet { u"alice"_s, {} });
    row(u"member set alice --male --public --solar --admin --birthday \"\""_s,
        Edit::MemberSet { u"alice"_s, { { { Birthday, u""_s } }, true, true, true, true } });
    row(u"member set alice --no-admin --female --name= --birthday=2000-02-29"_s,
        Edit::MemberSet { u"alice"_s,
            { { { Name, u""_s }, { Birthday, u"2000-02-29"_s } }, false, {}, {}, false } });
    row(u"member delete a 'b c' 销售"_s, Edit::MemberDelete { { u"a"_s, u"b c"_s, u"销售"_s } });

    // Groups.
    row(u"group add /Sales/East"_s, Edit::GroupAdd { org({ u"Sales"_s, u"East"_s }) });
    row(u"group add guest:/Forum"_s, Edit::GroupAdd { guest({ u"Forum"_s }) });
    row(u"group rename /Sales 销售部"_s, Edit::GroupRename { org({ u"Sales"_s }), u"销售部"_s });
    row(u"group rename #3 \"\""_s, Edit::GroupRename { groupId(3), u""_s });
    row(u"group delete guest:#7"_s, Edit::GroupDelete { groupId(7, true) });
    row(u"group move /a up"_s, Edit::GroupMove { org({ u"a"_s }), Edit::GroupMoveStep::Up });
    row(u"group move /a down"_s, Edit::GroupMove { org({ u"a"_s }), Edit::GroupMoveStep::Down });
    row(u"group move /a first"_s, Edit::GroupMove { org({ u"a"_s }), Edit::GroupMoveStep::First });
    row(u"group move #9 last"_s, Edit::GroupMove { groupId(9), Edit::GroupMoveStep::Last });
    row(u"group move /a/b into /"_s, Edit::GroupMoveInto { org({ u"a"_s, u"b"_s }), org({}) });
    row(u"group move guest:/x into guest:#2"_s,
        Edit::GroupMoveInto { guest({ u"x"_s }), groupId(2, true) });

    // Memberships.
    row(u"place /Sales a b"_s, Edit::Place { org({ u"Sales"_s }), { u"a"_s, u"b"_s } });
    row(u"place / a"_s, Edit::Place { org({}), { u"a"_s } });
    row(u"unplace guest:/Forum bob"_s, Edit::Unplace { guest({ u"Forum"_s }), u"bob"_s });
    row(u"membership position /Sales a 经理"_s,
        Edit::MembershipPosition { org({ u"Sales"_s }), u"a"_s, u"经理"_s });
    row(u"membership position #4 a none"_s,
        Edit::MembershipPosition { groupId(4), u"a"_s, std::nullopt });

    // Positions.
    row(u"position add"_s, Edit::PositionAdd { std::nullopt });
    row(u"position add 经理"_s, Edit::PositionAdd { u"经理"_s });
    row(u"position add ''"_s, Edit::PositionAdd { u""_s });
    row(u"position rename 经理 '总 经理'"_s, Edit::PositionRename { u"经理"_s, u"总 经理"_s });
    row(u"position delete 主任"_s, Edit::PositionDelete { u"主任"_s });
    row(u"position default 职员"_s, Edit::PositionDefault { u"职员"_s });
    row(u"position default none"_s, Edit::PositionDefault { std::nullopt });
    row(u"position move 职员 up"_s, Edit::PositionMove { u"职员"_s, true });
    row(u"position move 职员 down"_s, Edit::PositionMove { u"职员"_s, false });

    // Permissions and VoIP; flags in feature order, '-' for a flag not given.
    const auto permission = [](std::variant<QString, EditGroupRef> target, const char *flags) {
        Edit::PermissionSet set { std::move(target), {} };
        for (int f = 0; f < Edit::FeatureCount; ++f) {
            if (flags[f] != '-')
                set.flags[size_t(f)] = flags[f] == '1';
        }
        return set;
    };
    row(u"permission set alice chat=off voip=on"_s, permission(u"alice"_s, "-0-----1"));
    row(u"permission set /Sales message=off chat=on file=on tts=on video=on call=on sms=on "
        u"voip=on"_s,
        permission(org({ u"Sales"_s }), "01111111"));
    row(u"permission set guest:#4 sms=off"_s, permission(groupId(4, true), "------0-"));
    row(u"permission set guestbob file=on tts=off video=on call=off"_s,
        permission(u"guestbob"_s, "--1010--"));
    row(u"voip set alice 8001 's e'"_s, Edit::VoipSet { u"alice"_s, u"8001"_s, u"s e"_s });
    row(u"voip set alice '' ''"_s, Edit::VoipSet { u"alice"_s, u""_s, u""_s });
    row(u"voip assign"_s, Edit::VoipAssign {});

    // File box and notices.
    row(u"folder add 'D:\\Share\\文档'"_s, Edit::FolderAdd { u"D:\\Share\\文档"_s });
    row(u"folder remove \"D:\\Share\""_s, Edit::FolderRemove { u"D:\\Share"_s });
    row(u"right set 'D:\\Share' group /Sales read"_s,
        Edit::RightSet { u"D:\\Share"_s, org({ u"Sales"_s }), Edit::Authority::Read });
    row(u"right set X group guest:#3 none"_s,
        Edit::RightSet { u"X"_s, groupId(3, true), Edit::Authority::None });
    row(u"right set X member alice write"_s,
        Edit::RightSet { u"X"_s, u"alice"_s, Edit::Authority::Write });
    row(u"notice delete 17 0 2147483647"_s, Edit::NoticeDelete { { 17, 0, 2147483647 } });
}

void TestEditScript::commands()
{
    QFETCH(QString, line);
    QFETCH(EditCommand, expected);
    const EditScript::Result result = EditScript::parse(line.toUtf8());
    QCOMPARE(result.error, QString());
    QVERIFY(result.commands == QList<EditCommand> { expected });
}

void TestEditScript::refusals_data()
{
    QTest::addColumn<QByteArray>("script");
    QTest::addColumn<QString>("error");
    const auto row = [](const char *script, const QString &error) {
        QTest::newRow(script) << QByteArray(script) << error;
    };

    // Unknown words.
    row("frobnicate", u"unknown command: frobnicate"_s);
    row("Member add a", u"unknown command: Member"_s);
    row("member", u"member: missing add, set or delete"_s);
    row("position", u"position: missing add, rename, delete, default or move"_s);
    row("member frob a", u"unknown command: member frob"_s);
    row("voip", u"voip: missing set or assign"_s);

    // Members.
    row("member add", u"member add: missing USERID"_s);
    row("member add --name x", u"member add: missing USERID before --name"_s);
    row("member set --female=1 a", u"member set: missing USERID before --female=1"_s);
    row("member add a b", u"member add: unexpected argument: b"_s);
    row("member add a -n x", u"member add: unexpected argument: -n"_s);
    row("member add a --male", u"member add: unknown option: --male"_s);
    row("member add a --frob=1", u"member add: unknown option: --frob"_s);
    row("member set a --guest", u"member set: unknown option: --guest"_s);
    row("member add a --name", u"member add: --name: missing value"_s);
    row("member add a --name x --name=y", u"member add: --name given twice"_s);
    row("member add a --female --female", u"member add: --female given twice"_s);
    row("member add a --guest --guest", u"member add: --guest given twice"_s);
    row("member set a --male --female", u"member set: --male and --female given together"_s);
    row("member add a --female=yes", u"member add: --female takes no value"_s);
    row("member add a --guest=1", u"member add: --guest takes no value"_s);
    row("member add a --birthday 1990-2-3",
        u"member add: --birthday: expected YYYY-MM-DD, got 1990-2-3"_s);
    row("member set a --birthday ' 1990-02-03'",
        u"member set: --birthday: expected YYYY-MM-DD, got  1990-02-03"_s);
    row("member delete", u"member delete: missing USERID"_s);

    // Groups.
    row("group add", u"group add: missing GROUP"_s);
    row("group add /", u"group add: GROUP must name a group, not the root: /"_s);
    row("group add Sales",
        u"group add: bad group: Sales (expected /PATH, guest:/PATH, #ID or guest:#ID)"_s);
    row("group rename /a", u"group rename: missing NAME"_s);
    row("group rename /a b c", u"group rename: unexpected argument: c"_s);
    row("group move /a", u"group move: missing up, down, first, last or into GROUP"_s);
    row("group move /a sideways",
        u"group move: expected up, down, first, last or into GROUP, got sideways"_s);
    row("group move /a UP", u"group move: expected up, down, first, last or into GROUP, got UP"_s);
    row("group move /a into", u"group move: missing GROUP"_s);
    row("group move /a into /b up", u"group move: unexpected argument: up"_s);
    row("group move / up", u"group move: GROUP must name a group, not the root: /"_s);

    // Memberships.
    row("place", u"place: missing GROUP"_s);
    row("place /a", u"place: missing USERID"_s);
    row("unplace /a", u"unplace: missing USERID"_s);
    row("unplace /a b c", u"unplace: unexpected argument: c"_s);
    row("membership", u"membership: missing position"_s);
    row("membership position /a b", u"membership position: missing NAME or none"_s);
    row("membership position /a b c d", u"membership position: unexpected argument: d"_s);

    // Positions.
    row("position add a b", u"position add: unexpected argument: b"_s);
    row("position rename a", u"position rename: missing NEW"_s);
    row("position delete", u"position delete: missing NAME"_s);
    row("position default", u"position default: missing NAME or none"_s);
    row("position move a", u"position move: missing up or down"_s);
    row("position move a first", u"position move: expected up or down, got first"_s);

    // Permissions and VoIP.
    row("permission set", u"permission set: missing USERID or GROUP"_s);
    row("permission set alice", u"permission set: missing FEATURE=on|off"_s);
    row("permission set alice chat", u"permission set: expected FEATURE=on|off, got chat"_s);
    row("permission set alice fax=on",
        u"permission set: unknown feature: fax (expected message, chat, file, tts, video, call, "
        u"sms or voip)"_s);
    row("permission set alice Chat=on",
        u"permission set: unknown feature: Chat (expected message, chat, file, tts, video, call, "
        u"sms or voip)"_s);
    row("permission set alice chat=yes", u"permission set: chat: expected on or off, got yes"_s);
    row("permission set alice chat=on sms=off chat=off", u"permission set: chat given twice"_s);
    row("permission set guest:x chat=on",
        u"permission set: bad group: guest:x (expected /PATH, guest:/PATH, #ID or guest:#ID)"_s);
    row("voip set a 1", u"voip set: missing PASS"_s);
    row("voip set a", u"voip set: missing ID"_s);
    row("voip set a 1 2 3", u"voip set: unexpected argument: 3"_s);
    row("voip assign x", u"voip assign: unexpected argument: x"_s);

    // File box and notices.
    row("folder add", u"folder add: missing PATH"_s);
    row("folder remove a b", u"folder remove: unexpected argument: b"_s);
    row("right set F", u"right set: missing group or member"_s);
    row("right set F user a read", u"right set: expected group GROUP or member USERID, got user"_s);
    row("right set F member a", u"right set: missing none, read or write"_s);
    row("right set F member a admin", u"right set: expected none, read or write, got admin"_s);
    row("right set F group / read", u"right set: GROUP must name a group, not the root: /"_s);
    row("right set F group /a read x", u"right set: unexpected argument: x"_s);
    row("notice delete", u"notice delete: missing ID"_s);
    row("notice delete 3 x", u"notice delete: bad notice ID: x"_s);
    row("notice delete -1", u"notice delete: bad notice ID: -1"_s);
    row("notice delete 2147483648", u"notice delete: bad notice ID: 2147483648"_s);

    // The line itself.
    row("member add a\x07"
        "b",
        u"control character U+0007 in a word"_s);
    row("member add a\x7f", u"control character U+007F in a word"_s);
    row("member add \xc2\x85x", u"control character U+0085 in a word"_s);
    row("member add a\rb", u"control character U+000D in a word"_s);
    row("member add \xff", u"invalid UTF-8"_s);
    row("member add \xe9\x94", u"invalid UTF-8"_s);
    row("# comment \xe9", u"invalid UTF-8"_s);
}

void TestEditScript::refusals()
{
    QFETCH(QByteArray, script);
    QFETCH(QString, error);
    const EditScript::Result result = EditScript::parse(script);
    QCOMPARE(result.error, u"line 1: "_s + error);
    QCOMPARE(result.errorLine, 1);
    QVERIFY(!result.ok());
}

void TestEditScript::lineNumbers()
{
    // A byte-order mark, CRLF and LF lines, blanks, comments and a last line
    // without its line feed.
    const QByteArray script = "\xEF\xBB\xBF# staff changes\r\n"
                              "member add alice\r\n"
                              "\n"
                              "   \t\n"
                              "  # groups\n"
                              "group add /Sales\n"
                              "place /Sales alice\t";
    EditScript::Result result = EditScript::parse(script);
    QCOMPARE(result.error, QString());
    QCOMPARE(result.errorLine, 0);
    QVERIFY(result.commands
        == QList<EditCommand>({ { 2, Edit::MemberAdd { u"alice"_s, false, {} } },
            { 6, Edit::GroupAdd { org({ u"Sales"_s }) } },
            { 7, Edit::Place { org({ u"Sales"_s }), { u"alice"_s } } } }));

    // The first refused line ends the parse; a quote never carries over.
    result = EditScript::parse("member add a\r\n\nmember add \"b\nc\"\nfrobnicate\n");
    QCOMPARE(result.error, u"line 3: unbalanced double quote"_s);
    QCOMPARE(result.errorLine, 3);

    // A tab within a word is allowed, a byte-order mark past the start is text.
    result = EditScript::parse("member add 'a\tb'\nmember add \xEF\xBB\xBF"
                               "c\n");
    QVERIFY(result.commands
        == QList<EditCommand>({ { 1, Edit::MemberAdd { u"a\tb"_s, false, {} } },
            { 2, Edit::MemberAdd { u"\uFEFFc"_s, false, {} } } }));

    QVERIFY(EditScript::parse("").ok());
    QVERIFY(EditScript::parse("\n# only comments\n\n").commands.isEmpty());
}

void TestEditScript::wordsFromCommandLine()
{
    // velmarctl passes a one-line edit as its own arguments, already split.
    const EditCommandParser::Result result = EditCommandParser::parse(
        { u"member"_s, u"add"_s, u"alice"_s, u"--password"_s, u"x y"_s }, 1);
    QVERIFY(result.command);
    QVERIFY(result.command->operation
        == EditScript::parse("member add alice --password 'x y'").commands.value(0).operation);

    QCOMPARE(EditCommandParser::parse({}, 1).error, u"missing command"_s);
    QVERIFY(!EditCommandParser::parse({}, 1).command);
}

void TestEditScript::readsDevice()
{
    QByteArray text = "position add 经理\nnotice delete 3 4\n";
    QBuffer buffer(&text);
    QVERIFY(buffer.open(QIODevice::ReadOnly));
    const EditScript::Result result = EditScript::parse(buffer);
    QVERIFY(result.commands
        == QList<EditCommand>(
            { { 1, Edit::PositionAdd { u"经理"_s } }, { 2, Edit::NoticeDelete { { 3, 4 } } } }));
}

void TestEditScript::largeScript()
{
    constexpr int Lines = 100000;
    QByteArray script;
    for (int i = 1; i <= Lines; ++i) {
        script += i % 2 ? "member add user" + QByteArray::number(i) + " --name '成员 "
                + QByteArray::number(i) + "'\n"
                        : "place /总部/\"销售 部\" user" + QByteArray::number(i - 1) + "\n";
    }
    EditScript::Result result = EditScript::parse(script);
    QCOMPARE(result.error, QString());
    QCOMPARE(result.commands.size(), Lines);
    QVERIFY((result.commands.last()
        == EditCommand {
            Lines, Edit::Place { org({ u"总部"_s, u"销售 部"_s }), { u"user99999"_s } } }));

    script += "place /总部/销售部\n";
    result = EditScript::parse(script);
    QCOMPARE(result.error, u"line 100001: place: missing USERID"_s);
}

QTEST_GUILESS_MAIN(TestEditScript)
#include "tst_editscript.moc"
