#include "MemberImporter.h"

#include "CVelmarManagerDoc.h"
#include "Directory.h"
#include "DirectoryEditor.h"

#include <limits>
#include <QSet>

using namespace Qt::StringLiterals;

namespace {

// How often the progress callback hears of the rows checked.
constexpr qsizetype ProgressEvery = 1000;

} // namespace

MemberImporter::MemberImporter(CVelmarManagerDoc &document)
    : m_document(document)
{ }

UserInfo MemberImporter::memberFromRow(const QStringList &row, const ImportFields::Mapping &mapping)
{
    const auto text = [&](ImportFields::Field field) -> QString {
        const int column = mapping[field];
        return column >= 0 && column < row.size() ? row.at(column) : QString();
    };
    // Only the text "1" sets a flag: "0", "是", "男" and an empty cell all
    // leave it cleared.
    const auto flag = [&](ImportFields::Field field) { return text(field) == u"1"_s ? 1 : 0; };

    UserInfo member;
    member.id = -1;
    member.loginName = text(ImportFields::UserId);
    member.displayName = text(ImportFields::Name);
    member.password = text(ImportFields::Password);
    member.email = text(ImportFields::Email);
    member.mobile = text(ImportFields::Mobile);
    member.homePhone = text(ImportFields::Phone);
    member.address = text(ImportFields::Address);
    member.gender = flag(ImportFields::Gender);
    member.bAdmin = flag(ImportFields::Admin);
    member.officePhone = text(ImportFields::OfficePhone);
    member.birthday = text(ImportFields::Birthday);
    member.description = text(ImportFields::Intro);
    member.bSolar = flag(ImportFields::Solar);
    member.bPublic = flag(ImportFields::Public);
    return member;
}

QList<MemberImporter::RowPreview> MemberImporter::preview(
    const ImportTable &table, const ImportFields::Mapping &mapping, qsizetype maxRows) const
{
    const Directory &directory = *m_document.directory();
    const DirectoryEditor &editor = m_document.editor();
    const qsizetype count = maxRows < 0 ? table.rows.size() : std::min(maxRows, table.rows.size());
    QList<RowPreview> result;
    result.reserve(count);
    QSet<QString> taken;
    taken.reserve(count);
    qint64 nextId = directory.nextMemberId();
    for (qsizetype i = 0; i < count; ++i) {
        RowPreview row;
        row.row = i + 1;
        row.member = memberFromRow(table.rows.at(i), mapping);
        row.refusal = editor.checkAddedMember(row.member.loginName, taken);
        if (!row.refusal) {
            while (nextId > 0 && nextId <= std::numeric_limits<qint32>::max()
                && directory.isDeletedSinceSave(qint32(nextId)))
                ++nextId;
            row.member.id = nextId > 0 && nextId <= std::numeric_limits<qint32>::max()
                ? qint32(nextId++)
                : -1;
            taken.insert(row.member.loginName);
        }
        result.append(std::move(row));
    }
    return result;
}

MemberImporter::Result MemberImporter::apply(const ImportTable &table,
    const ImportFields::Mapping &mapping, bool skipRefused, const Progress &progress)
{
    Result result;
    const DirectoryEditor &editor = m_document.editor();
    const qsizetype total = table.rows.size();
    QList<UserInfo> members;
    members.reserve(total);
    QSet<QString> taken;
    taken.reserve(total);
    // The rows are checked first and added in one step at the end: the step
    // is what one undo takes back, and a cancelled import has added nothing.
    for (qsizetype i = 0; i < total; ++i) {
        if (progress && i % ProgressEvery == 0 && !progress(i, total)) {
            result.cancelled = true;
            return result;
        }
        UserInfo member = memberFromRow(table.rows.at(i), mapping);
        if (auto refusal = editor.checkAddedMember(member.loginName, taken)) {
            result.refused.append({ i + 1, std::move(*refusal) });
            if (!skipRefused)
                break;
            continue;
        }
        taken.insert(member.loginName);
        members.append(std::move(member));
    }
    if (progress && !progress(total, total)) {
        result.cancelled = true;
        return result;
    }
    if (members.isEmpty())
        return result;
    const int count = int(members.size());
    const EditResult added
        = m_document.editor().addMembers(false, std::move(members), stepText(count), &result.ids);
    if (!added.ok()) {
        // Only a lack of ids gets here: every row passed the checks above.
        result.ids.clear();
        result.refused.append({ total, *added.refusal });
        return result;
    }
    result.added = added.applied;
    return result;
}

QString MemberImporter::stepText(int count)
{
    return u"使用外部数据 添加 %1 个用户"_s.arg(count);
}
