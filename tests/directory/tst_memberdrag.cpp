#include "MemberDragFormat.h"

#include <limits>
#include <memory>
#include <QMimeData>
#include <QtEndian>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QList<DraggedMember> Three { { 7, true }, { -3, false }, { 2147483647, true } };

QByteArray field(qint32 value)
{
    QByteArray bytes(4, '\0');
    qToLittleEndian(value, bytes.data());
    return bytes;
}

} // namespace

class TestMemberDrag : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void blockLayoutIsLittleEndianCountThenPairs();
    void roundTripThroughMimeData();
    void everyTruncationIsRefusedWhole();
    void countsThatLieAreRefused_data();
    void countsThatLieAreRefused();
    void bytesAfterTheLastMemberAreIgnored();
    void maleFlagOtherThanOneReadsMale();
};

void TestMemberDrag::blockLayoutIsLittleEndianCountThenPairs()
{
    const QByteArray block = MemberDragFormat::encode({ { 0x01020304, true }, { 5, false } });
    QCOMPARE(block,
        QByteArray::fromHex("02000000"
                            "04030201"
                            "01000000"
                            "05000000"
                            "00000000"));
    QCOMPARE(MemberDragFormat::encode({}), QByteArray::fromHex("00000000"));
}

void TestMemberDrag::roundTripThroughMimeData()
{
    QCOMPARE(MemberDragFormat::mimeType(),
        u"application/x-qt-windows-mime;value=\"VelmarManagerOrganizeUserDragDropFormat\""_s);
    const std::unique_ptr<QMimeData> data(MemberDragFormat::toMimeData(Three));
    QVERIFY(MemberDragFormat::canDecode(data.get()));
    QCOMPARE(MemberDragFormat::fromMimeData(data.get()), Three);

    QMimeData text;
    text.setText(u"7"_s);
    QVERIFY(!MemberDragFormat::canDecode(&text));
    QVERIFY(!MemberDragFormat::fromMimeData(&text));
    QVERIFY(!MemberDragFormat::fromMimeData(nullptr));

    // Count 0 is an empty drag, not a refusal.
    const std::optional<QList<DraggedMember>> none = MemberDragFormat::decode(field(0));
    QVERIFY(none);
    QVERIFY(none->isEmpty());
}

void TestMemberDrag::everyTruncationIsRefusedWhole()
{
    const QByteArray block = MemberDragFormat::encode(Three);
    QCOMPARE(block.size(), 28);
    for (qsizetype length = 0; length < block.size(); ++length)
        QVERIFY2(
            !MemberDragFormat::decode(block.left(length)), qPrintable(QString::number(length)));
    QCOMPARE(MemberDragFormat::decode(block), Three);
}

void TestMemberDrag::countsThatLieAreRefused_data()
{
    QTest::addColumn<QByteArray>("block");
    const QByteArray pairs = MemberDragFormat::encode(Three).mid(4);
    QTest::newRow("one more than held") << field(4) + pairs;
    QTest::newRow("negative") << field(-1) + pairs;
    QTest::newRow("most negative") << field(std::numeric_limits<qint32>::min()) + pairs;
    // Would be 16 GiB of pairs: refused before anything is reserved.
    QTest::newRow("huge") << field(std::numeric_limits<qint32>::max()) + pairs;
    QTest::newRow("huge, no pairs") << field(0x40000000);
}

void TestMemberDrag::countsThatLieAreRefused()
{
    QFETCH(QByteArray, block);
    QVERIFY(!MemberDragFormat::decode(block));
}

void TestMemberDrag::bytesAfterTheLastMemberAreIgnored()
{
    // A count below what the block holds reads the first members only, as a
    // rounded-up shared memory block reads.
    const QByteArray block = MemberDragFormat::encode(Three);
    QCOMPARE(MemberDragFormat::decode(field(2) + block.mid(4)), Three.first(2));
    QCOMPARE(MemberDragFormat::decode(block + QByteArray(3, '\xcc')), Three);
}

void TestMemberDrag::maleFlagOtherThanOneReadsMale()
{
    const QByteArray block = field(2) + field(11) + field(2) + field(12) + field(-1);
    const QList<DraggedMember> expected { { 11, true }, { 12, true } };
    QCOMPARE(MemberDragFormat::decode(block), expected);
}

QTEST_GUILESS_MAIN(TestMemberDrag)
#include "tst_memberdrag.moc"
