#include "CVelmarManagerDoc.h"
#include "Directory.h"
#include "DocumentFixture.h"
#include "DocumentUndoStack.h"
#include "MemberImporter.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// Columns in an order of their own: the mapping, not the position, decides.
const QStringList Columns { u"email"_s, u"userid"_s, u"name"_s, u"password"_s, u"gender"_s,
    u"admin"_s, u"solar"_s, u"public"_s, u"birthday"_s, u"unused"_s };

ImportTable table(const QList<QStringList> &rows)
{
    return ImportTable { Columns, rows };
}

ImportFields::Mapping mapping()
{
    return ImportFields::guessMapping(Columns);
}

const UserInfo *member(const CVelmarManagerDoc &doc, const QString &loginName)
{
    const MemberRows &rows = doc.directory()->memberRows(false);
    const int row = rows.rowOfLoginName(loginName);
    return row < 0 ? nullptr : &rows.at(row);
}

} // namespace

class TestMemberImport : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void stopsAtTheFirstRefusedRow();
    void refusalsAndPreview();
    void cancelAndDeletedIds();
};

// A duplicate user ID in the third row: two members are added, the rest is
// not read. Only the text "1" sets a flag.
void TestMemberImport::stopsAtTheFirstRefusedRow()
{
    SampleDocument doc;
    const QStringList before = documentState(doc);
    MemberImporter importer(doc);
    const MemberImporter::Result result = importer.apply(
        table({
            { u"n@x.cn"_s, u"neo"_s, u"Neo"_s, u"p1"_s, u"0"_s, u"1"_s, u"是"_s, u""_s,
                u"1990-01-02"_s, u"x"_s },
            { u""_s, u"李四"_s, u"Li"_s, u"p2"_s, u"男"_s, u"0"_s, u"1"_s, u"1"_s, u""_s, u""_s },
            { u""_s, u"neo"_s, u"Again"_s, u"p3"_s, u"1"_s, u"1"_s, u"1"_s, u"1"_s, u""_s, u""_s },
            { u""_s, u"max"_s, u"Max"_s, u"p4"_s, u"1"_s, u"1"_s, u"1"_s, u"1"_s, u""_s, u""_s },
        }),
        mapping(), false);

    QCOMPARE(result.added, 2);
    QCOMPARE(result.ids, QList<qint32>({ 8, 9 }));
    QCOMPARE(result.refused.size(), 1);
    QCOMPARE(result.refused.first().row, 3);
    QCOMPARE(result.refused.first().refusal.text, u"用户已存在."_s);
    QVERIFY(!member(doc, u"max"_s));

    const UserInfo *neo = member(doc, u"neo"_s);
    QVERIFY(neo);
    QCOMPARE(neo->id, 8);
    QCOMPARE(neo->displayName, u"Neo"_s);
    QCOMPARE(neo->email, u"n@x.cn"_s);
    QCOMPARE(neo->birthday, u"1990-01-02"_s);
    QCOMPARE(neo->nickname, QString());
    QCOMPARE(neo->mobile, QString()); // not mapped
    QCOMPARE(neo->gender, 0);
    QCOMPARE(neo->bAdmin, 1);
    QCOMPARE(neo->bSolar, 0);
    QCOMPARE(neo->bPublic, 0);
    const UserInfo *li = member(doc, u"李四"_s);
    QVERIFY(li);
    QCOMPARE(li->gender, 0); // "男" is not "1"
    QCOMPARE(li->bPublic, 1);
    // Made as the blank row makes a member: created, with its permission
    // records, in no group.
    QCOMPARE(doc.createdMemberIds(), QList<qint32>({ 8, 9 }));
    QVERIFY(doc.permissions().token(8) && doc.permissions().token(9));
    QVERIFY(!doc.directory()->isPlaced(8, false));

    // One step, which one undo takes back whole.
    QCOMPARE(doc.undoStack()->undoText(), MemberImporter::stepText(2));
    checkUndoRedo(doc, before);
}

// Every check of a member added with checks, met in one import with
// skipRefused; the preview predicts it without changing anything.
void TestMemberImport::refusalsAndPreview()
{
    SampleDocument doc;
    const QList<QStringList> rows {
        { u""_s, u"a-b_c"_s },
        { u""_s, u"a.b"_s },
        { u""_s, u"with space"_s },
        { u""_s, u"gus"_s }, // a guest member
        { u""_s, u"Anna"_s }, // anna exists; the test is case-sensitive
        { u""_s, u"张三"_s },
        { u""_s, u"a-b_c"_s }, // an earlier row
        { u""_s, u"a#b"_s },
    };
    const QString characters = u"数字, 英文, '_' 除了以上特殊字符不能输入."_s;
    const QString exists = u"用户已存在."_s;
    const QList<std::pair<qsizetype, QString>> expected { { 2, characters }, { 3, characters },
        { 4, exists }, { 7, exists }, { 8, characters } };

    MemberImporter importer(doc);
    const QStringList before = documentState(doc);
    const QList<MemberImporter::RowPreview> preview = importer.preview(table(rows), mapping());
    QCOMPARE(documentState(doc), before);
    QList<std::pair<qsizetype, QString>> previewed;
    QList<qint32> previewIds;
    for (const MemberImporter::RowPreview &row : preview) {
        if (row.refusal)
            previewed.append({ row.row, row.refusal->text });
        else
            previewIds.append(row.member.id);
    }
    QCOMPARE(previewed, expected);
    QCOMPARE(importer.preview(table(rows), mapping(), 2).size(), 2);

    const MemberImporter::Result result = importer.apply(table(rows), mapping(), true);
    QList<std::pair<qsizetype, QString>> refused;
    for (const MemberImporter::RefusedRow &row : result.refused)
        refused.append({ row.row, row.refusal.text });
    QCOMPARE(refused, expected);
    QCOMPARE(result.ids, previewIds);
    QCOMPARE(result.added, 3);
    QVERIFY(member(doc, u"Anna"_s) && member(doc, u"张三"_s) && member(doc, u"a-b_c"_s));

    // A first row refused adds nothing and leaves no step.
    const int steps = doc.undoStack()->count();
    const MemberImporter::Result none = importer.apply(table(rows), mapping(), false);
    QCOMPARE(none.added, 0);
    QCOMPARE(none.refused.first().row, 1);
    QCOMPARE(doc.undoStack()->count(), steps);
}

void TestMemberImport::cancelAndDeletedIds()
{
    SampleDocument doc;
    // dora (7) deleted: her id is not given again before the next save.
    QVERIFY(doc.editor().deleteMembers(false, { 3 }).ok());
    const QStringList before = documentState(doc);
    const int steps = doc.undoStack()->count();
    QList<QStringList> rows;
    for (int i = 0; i < 2500; ++i)
        rows.append({ u""_s, u"user%1"_s.arg(i) });

    MemberImporter importer(doc);
    qsizetype calls = 0;
    const MemberImporter::Result cancelled
        = importer.apply(table(rows), mapping(), false, [&calls](qsizetype done, qsizetype total) {
              ++calls;
              return total == 2500 && done < 2000;
          });
    QVERIFY(cancelled.cancelled);
    QCOMPARE(calls, 3);
    QCOMPARE(documentState(doc), before);
    QCOMPARE(doc.undoStack()->count(), steps);

    const MemberImporter::Result result = importer.apply(table(rows), mapping(), false);
    QCOMPARE(result.added, 2500);
    QCOMPARE(result.ids.mid(0, 3), QList<qint32>({ 6, 8, 9 }));
    QCOMPARE(doc.directory()->memberRows(false).count(), 3 + 2500);
    checkUndoRedo(doc, before);
}

QTEST_GUILESS_MAIN(TestMemberImport)
#include "tst_member_import.moc"
