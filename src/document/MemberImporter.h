#pragma once

#include "EditRefusal.h"
#include "ImportFields.h"
#include "ImportTable.h"
#include "UserInfo.h"

#include <functional>
#include <optional>
#include <QList>

class CVelmarManagerDoc;

// Adds the rows of an outside table as members of the member list ("使用外部
//数据"): each mapped field read as text, unmapped fields empty, the four
// flags set exactly when their text is "1", the nickname empty; each member
// created as the blank row creates one (next free id, a free pool account,
// all features on) after the checks of a member added with checks: the
// character rule of the user ID, then the duplicate test against both lists
// and against the rows of the same import before it. The new members stand
// in no group. Rows are numbered from 1, the first row after the header.
class MemberImporter final
{
public:
    struct RowPreview
    {
        qsizetype row = 0; // from 1
        UserInfo member; // with the id it would get (-1 when refused)
        std::optional<EditRefusal> refusal;
    };

    struct RefusedRow
    {
        qsizetype row = 0; // from 1
        EditRefusal refusal;
    };

    struct Result
    {
        int added = 0;
        // The ids given, in row order.
        QList<qint32> ids;
        // Without skipRefused the one row that stopped the import (the rows
        // after it were not read); with it every refused row.
        QList<RefusedRow> refused;
        // Cancelled through the progress callback: nothing was added.
        bool cancelled = false;

        bool stopped() const { return !refused.isEmpty(); }
    };

    // Told how many rows are done out of how many; false cancels.
    using Progress = std::function<bool(qsizetype done, qsizetype total)>;

    explicit MemberImporter(CVelmarManagerDoc &document);

    // The member a row makes (id -1).
    static UserInfo memberFromRow(const QStringList &row, const ImportFields::Mapping &mapping);

    // What each of the first maxRows rows (all when -1) would become, and
    // the refusal it would meet, as apply with skipRefused takes them (a
    // refused row's user ID does not count as taken). Changes nothing.
    QList<RowPreview> preview(const ImportTable &table, const ImportFields::Mapping &mapping,
        qsizetype maxRows = -1) const;

    // Adds the rows as one step of the undo stack, so that one undo takes the
    // whole import back. Without skipRefused the first refused row stops the
    // import: the rows before it are added, it and the rest are not. With
    // skipRefused every acceptable row is added. Cancelling adds nothing.
    Result apply(const ImportTable &table, const ImportFields::Mapping &mapping, bool skipRefused,
        const Progress &progress = {});

    // The journal text of an import of count members.
    static QString stepText(int count);

private:
    CVelmarManagerDoc &m_document;
};
