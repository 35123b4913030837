#include "CVelmarManagerDoc.h"
#include "Directory.h"
#include "DocumentUndoStack.h"
#include "MembershipPositionModel.h"
#include "PositionList.h"
#include "PositionListModel.h"
#include "ProfileFile.h"
#include "ServerDataSet.h"
#include "TempServerDir.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

class TestPositions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void lookups();
    void newPositionName_data();
    void newPositionName();
    void newPositionId_data();
    void newPositionId();
    void defaultFromProfile_data();
    void defaultFromProfile();
    void writeDefault();
    void membershipGrid();
};

void TestPositions::lookups()
{
    // Names, rows and the default are read through the grids and the trees
    // (tst_document, membershipGrid); an index off the list names no position.
    PositionList list;
    list.positions = { { 1, u"职员"_s }, { 5, u"经理"_s }, { 3, u"主任"_s } };
    QCOMPARE(list.idAt(3), -1);
    QCOMPARE(list.idAt(-1), -1);
}

void TestPositions::newPositionName_data()
{
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<QString>("expected");
    QTest::newRow("empty") << QStringList() << u"新等级"_s;
    QTest::newRow("taken") << QStringList({ u"新等级"_s }) << u"新等级 (1)"_s;
    QTest::newRow("two taken") << QStringList({ u"新等级 (1)"_s, u"新等级"_s }) << u"新等级 (2)"_s;
    QTest::newRow("gap") << QStringList({ u"新等级"_s, u"新等级 (2)"_s }) << u"新等级 (1)"_s;
}

void TestPositions::newPositionName()
{
    QFETCH(QStringList, names);
    QFETCH(QString, expected);
    PositionList list;
    qint32 id = 1;
    for (const QString &name : std::as_const(names))
        list.positions.append({ id++, name });
    QCOMPARE(list.newPositionName(), expected);
}

void TestPositions::newPositionId_data()
{
    QTest::addColumn<QList<qint32>>("ids");
    QTest::addColumn<qint32>("expected");
    QTest::newRow("none") << QList<qint32>() << 1;
    QTest::newRow("3 and 7") << QList<qint32>({ 3, 7 }) << 8;
    QTest::newRow("only negative") << QList<qint32>({ -5 }) << 1;
}

void TestPositions::newPositionId()
{
    QFETCH(QList<qint32>, ids);
    QFETCH(qint32, expected);
    PositionList list;
    for (qint32 id : std::as_const(ids))
        list.positions.append({ id, QString::number(id) });
    QCOMPARE(list.newPositionId(), expected);
}

void TestPositions::defaultFromProfile_data()
{
    QTest::addColumn<QByteArray>("ini");
    QTest::addColumn<qint32>("expected");
    QTest::newRow("no file") << QByteArray() << -1;
    // The section and key names in any case.
    for (const auto &[line, expected] : { std::pair { "UseDist=0", -1 },
             { "DefaultPositionID=", -1 }, { "DefaultPositionID=0", -1 },
             { "defaultpositionid=7", 7 }, { "DefaultPositionID=12ab", 12 } })
        QTest::newRow(line) << "[serverinfo]\r\n" + QByteArray(line) + "\r\n" << expected;
}

void TestPositions::defaultFromProfile()
{
    QFETCH(QByteArray, ini);
    QFETCH(qint32, expected);
    TempServerDir dir;
    QVERIFY(dir.isValid());
    if (!ini.isEmpty())
        QVERIFY(dir.writeFile(u"Serverinfo.ini"_s, ini));
    QCOMPARE(PositionList::readDefaultPositionId(ProfileFile(dir.iniPath())), expected);
}

void TestPositions::writeDefault()
{
    TempServerDir dir;
    QVERIFY(dir.writeFile(u"Serverinfo.ini"_s, "[ServerInfo]\r\nUseDist=1\r\n"));
    ProfileFile profile(dir.iniPath());
    QVERIFY(PositionList::writeDefaultPositionId(profile, 4));
    QCOMPARE(PositionList::readDefaultPositionId(profile), 4);
    QVERIFY(PositionList::writeDefaultPositionId(profile, -1));
    QCOMPARE(PositionList::readDefaultPositionId(profile), -1);
    QVERIFY(dir.readFile(u"Serverinfo.ini"_s).contains("DefaultPositionID=-1"));
    QVERIFY(dir.readFile(u"Serverinfo.ini"_s).contains("UseDist=1"));
}

void TestPositions::membershipGrid()
{
    CVelmarManagerDoc document;
    ServerDataSet set;
    set.positions.positions = { { 1, u"Staff"_s }, { 2, u"Boss"_s }, { 3, u"Chef"_s } };
    DirectoryTree &tree = set.directory.regularTree;
    DirectoryNode *sales = tree.addGroup(tree.root(), 10, u"Sales"_s);
    tree.addMembership(sales, 1, -1);
    tree.addMembership(sales, 2, 2);
    DirectoryNode *east = tree.addGroup(sales, 11, u"East"_s);
    tree.addMembership(east, 1, 9); // a position no longer listed
    tree.addMembership(tree.root(), 2, 3);
    for (const auto &[id, login] : { std::pair { 1, u"anna"_s }, { 2, u"bert"_s } }) {
        UserInfo member;
        member.id = id;
        member.loginName = login;
        set.directory.regularMembers.append(member);
    }
    document.adopt(std::move(set), CVelmarManagerDoc::LoadState::Complete);
    MembershipPositionModel model(document);
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);

    QStringList rows;
    for (int row = 0; row < model.rowCount(); ++row)
        rows << model.index(row, 0).data().toString() + u'|' + model.index(row, 1).data().toString()
                + u'|' + model.index(row, 2).data().toString();
    QCOMPARE(model.columnCount(), 3);
    QCOMPARE(model.headerData(2, Qt::Horizontal).toString(), u"等级"_s);
    // Tree order; no position shows the second entry, an unknown one the last.
    QCOMPARE(rows,
        QStringList({ u"anna|Sales|Boss"_s, u"bert|Sales|Boss"_s, u"anna|East|Chef"_s,
            u"bert|类别|Chef"_s }));
    QCOMPARE(model.index(0, 2).data(MembershipPositionModel::RankIdRole).toInt(), -1);

    QVERIFY(model.setData(model.index(0, 2), u"Staff"_s));
    QCOMPARE(model.index(0, 2).data(MembershipPositionModel::RankIdRole).toInt(), 1);
    QVERIFY(model.setData(model.index(0, 2), u"nobody"_s));
    QCOMPARE(model.index(0, 2).data(MembershipPositionModel::RankIdRole).toInt(), -1);
    QVERIFY(model.setPosition({ 0, 3 }, 203).ok());
    QCOMPARE(model.index(3, 2).data(MembershipPositionModel::RankIdRole).toInt(), 3);
    QVERIFY(!model.setPosition({ 0 }, 204).ok());

    // Deleting a position moves its holders to position 1, and undo puts
    // them back.
    QVERIFY(document.editor().deletePosition(1).ok());
    QCOMPARE(model.index(1, 2).data().toString(), u"Staff"_s);
    document.undoStack()->undo();
    QCOMPARE(model.index(1, 2).data(MembershipPositionModel::RankIdRole).toInt(), 2);

    // A tree change rebuilds the grid.
    QVERIFY(document.editor()
                .deleteNode(false, document.directory()->treeData(false).findGroup(11))
                .ok());
    QCOMPARE(model.rowCount(), 3);
}

QTEST_GUILESS_MAIN(TestPositions)
#include "tst_positions.moc"
