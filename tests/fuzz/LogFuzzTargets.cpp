#include "LogFuzzTargets.h"

#include "ChatLogReader.h"
#include "ChatLogRows.h"
#include "SystemLogRows.h"
#include "UserLogDetail.h"
#include "UserLogRows.h"

using namespace Qt::StringLiterals;

namespace {

const CodePage &gbk()
{
    static const CodePage codePage("GBK");
    return codePage;
}

LogMemberNames names()
{
    return { { 1, u"一"_s }, { 101, u"张三"_s }, { 102, u"李四"_s }, { 103, u"Wang"_s } };
}

} // namespace

int LogFuzzTargets::chatFile(QByteArrayView bytes)
{
    const LogTextDecoder decoder(gbk());
    constexpr qsizetype head = 3 * (ChatLogReader::LineBufferSize + 1);
    const QByteArray first = bytes.first(std::min(head, bytes.size())).toByteArray();
    ChatLogRows rows;
    rows.append(ChatLogReader::rowFromBytes(
        first, bytes.size() <= head, u"/x/c200710081230_1.txt"_s, names(), decoder));
    rows.sortNewestFirst();
    qsizetype total = 0;
    for (int c = 0; c < rows.columnCount(); ++c)
        total += rows.cell(0, c).size();
    total += ChatLogReader::detailFromBytes(bytes.toByteArray(), gbk()).size();
    // The header rules on every line on their own as well.
    for (const QByteArray &line : bytes.toByteArray().split('\n')) {
        const QString text = decoder.decode(line, LogTextEncoding::CodePage);
        for (const QString &field : ChatLogReader::splitHeader(text, u" "_s))
            total += ChatLogReader::participantNames(field, names()).size();
        total += ChatLogReader::withoutStampPrefix(text, gbk()).size();
    }
    return total >= 0 ? rows.rowCount() : -1;
}

int LogFuzzTargets::userLogFile(QByteArrayView bytes)
{
    UserLogRows rows(names(), gbk());
    rows.appendFile(bytes.toByteArray());
    rows.setNewestFirst(true);
    qsizetype total = 0;
    for (int r = 0; r < rows.rowCount(); ++r) {
        for (int c = 0; c < rows.columnCount(); ++c)
            total += rows.cell(r, c).size();
        const UserLogDetail detail = UserLogDetail::fromFields(rows.fields(r));
        total += detail.header.size() + detail.message.size() + detail.files.size();
    }
    rows.showMember(101);
    rows.showAll();
    SystemLogRows system(gbk());
    system.appendFile(bytes.toByteArray());
    system.sortNewestFirst();
    for (int r = 0; r < system.rowCount(); ++r)
        for (int c = 0; c < system.columnCount(); ++c)
            total += system.cell(r, c).size();
    return total >= 0 ? rows.storedRowCount() : -1;
}
