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
    void decode_data();
    void decode();
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
}

void TestMemberDrag::decode_data()
{
    QTest::addColumn<QByteArray>("block");
    QTest::addColumn<bool>("refused"); // whole
    QTest::addColumn<QList<DraggedMember>>("members");
    const QByteArray block = MemberDragFormat::encode(Three);
    const QByteArray pairs = block.mid(4);
    for (qsizetype length = 0; length < block.size(); ++length)
        QTest::addRow("cut to %d bytes", int(length))
            << block.left(length) << true << QList<DraggedMember>();
    // Counts that lie. The largest would be 16 GiB of pairs: refused before
    // anything is reserved.
    for (const qint32 count :
        { 4, -1, std::numeric_limits<qint32>::min(), std::numeric_limits<qint32>::max() })
        QTest::addRow("count %d", count) << field(count) + pairs << true << QList<DraggedMember>();
    QTest::newRow("huge, no pairs") << field(0x40000000) << true << QList<DraggedMember>();

    QTest::newRow("whole") << block << false << Three;
    QTest::newRow("count 0: an empty drag") << field(0) << false << QList<DraggedMember>();
    // A count below what the block holds reads the first members only, as a
    // rounded-up shared memory block reads.
    QTest::newRow("count below the pairs") << field(2) + pairs << false << Three.first(2);
    QTest::newRow("bytes after the pairs") << block + QByteArray(3, '\xcc') << false << Three;
    QTest::newRow("male flag other than 1") << field(2) + field(11) + field(2) + field(12)
            + field(-1) << false << QList<DraggedMember> { { 11, true }, { 12, true } };
}

void TestMemberDrag::decode()
{
    QFETCH(QByteArray, block);
    QFETCH(bool, refused);
    QFETCH(QList<DraggedMember>, members);
    const std::optional<QList<DraggedMember>> decoded = MemberDragFormat::decode(block);
    QCOMPARE(!decoded, refused);
    if (decoded)
        QCOMPARE(*decoded, members);
}

QTEST_GUILESS_MAIN(TestMemberDrag)
#include "tst_memberdrag.moc"
