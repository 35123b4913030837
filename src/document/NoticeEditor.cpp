#include "NoticeEditor.h"

#include "CVelmarManagerDoc.h"
#include "NoticeListModel.h"

#include <algorithm>
#include <memory>

using namespace Qt::StringLiterals;

NoticeEditor::NoticeEditor(CVelmarManagerDoc &document)
    : m_document(document)
{ }

EditResult NoticeEditor::deleteNotices(QList<int> rows)
{
    NoticeListModel *notices = m_document.m_notices;
    const int count = notices->rowCount();
    rows.removeIf([count](int row) { return row < 0 || row >= count; });
    if (rows.isEmpty())
        return EditResult::refusedSilently();
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    const QString text = rows.size() == 1
        ? u"删除公告 %1"_s.arg(notices->record(rows.first()).title)
        : u"删除 %1 个公告"_s.arg(rows.size());
    // The rows as the deletion took them, for undo to put back.
    auto taken = std::make_shared<QList<int>>();
    m_document.push(
        text, [notices, rows, taken] { *taken = notices->deleteRows(rows); },
        [notices, taken] { notices->undeleteRows(*taken); });
    return EditResult::done(-1, int(taken->size()));
}
