#include "MemberCellDelegate.h"

#include "MemberListModel.h"
#include "MemberRules.h"

#include <QComboBox>
#include <QDateEdit>
#include <QLineEdit>

using namespace Qt::StringLiterals;

namespace {

const QString DateFormat = u"yyyy-MM-dd"_s;

bool isBlank(const QModelIndex &index)
{
    return index.data(MemberListModel::IsBlankRowRole).toBool();
}

// Whether value is what the cell holds already. An empty birthday shows
// 1970-01-01; taking that date back is no change.
bool isUnchanged(const QModelIndex &index, const QVariant &value)
{
    const QString stored = index.data(Qt::EditRole).toString();
    if (index.column() == MemberListModel::BirthdayColumn)
        return value.toString() == stored
            || (stored.isEmpty()
                && value.toString() == MemberRules::birthdayText(MemberRules::birthdayDate({})));
    return index.data(Qt::DisplayRole) == value;
}

} // namespace

MemberCellDelegate::MemberCellDelegate(QObject *parent)
    : QStyledItemDelegate(parent)
{ }

bool MemberCellDelegate::isChoiceColumn(int column)
{
    return column == MemberListModel::GenderColumn || column == MemberListModel::AdminColumn
        || column == MemberListModel::SolarColumn || column == MemberListModel::PublicColumn;
}

QWidget *MemberCellDelegate::createEditor(
    QWidget *parent, const QStyleOptionViewItem &, const QModelIndex &index) const
{
    const int column = index.column();
    QWidget *editor = nullptr;
    if (isChoiceColumn(column)) {
        auto *box = new QComboBox(parent);
        box->addItems({ MemberListModel::choiceText(column, true),
            MemberListModel::choiceText(column, false) });
        // A choice is final once made: it is stored at once.
        connect(box, &QComboBox::activated, this, [this, box] {
            auto *self = const_cast<MemberCellDelegate *>(this);
            Q_EMIT self->commitData(box);
            Q_EMIT self->closeEditor(box);
        });
        editor = box;
    } else if (column == MemberListModel::BirthdayColumn) {
        auto *date = new QDateEdit(parent);
        date->setDisplayFormat(DateFormat);
        date->setCalendarPopup(true);
        editor = date;
    } else {
        auto *line = new QLineEdit(parent);
        if (column == MemberListModel::PasswordColumn)
            line->setEchoMode(QLineEdit::Password);
        line->setFrame(false);
        editor = line;
    }
    editor->setAccessibleName(MemberListModel::columnTitle(column));
    editor->setObjectName(u"cellEditor"_s);
    return editor;
}

void MemberCellDelegate::setEditorData(QWidget *editor, const QModelIndex &index) const
{
    if (auto *box = qobject_cast<QComboBox *>(editor)) {
        // A blank row shows its new member's default: the first entry.
        const QVariant flag = index.data(Qt::EditRole);
        box->setCurrentIndex(!flag.isValid() || flag.toBool() ? 0 : 1);
    } else if (auto *date = qobject_cast<QDateEdit *>(editor)) {
        date->setDate(MemberRules::birthdayDate(index.data(Qt::EditRole).toString()));
    } else if (auto *line = qobject_cast<QLineEdit *>(editor)) {
        line->setText(index.data(Qt::EditRole).toString());
    }
}

void MemberCellDelegate::setModelData(
    QWidget *editor, QAbstractItemModel *model, const QModelIndex &index) const
{
    QVariant value;
    if (auto *box = qobject_cast<QComboBox *>(editor)) {
        value = box->currentText();
    } else if (auto *date = qobject_cast<QDateEdit *>(editor)) {
        value = MemberRules::birthdayText(date->date());
    } else if (auto *line = qobject_cast<QLineEdit *>(editor)) {
        value = line->text();
    } else {
        return;
    }
    const bool blank = isBlank(index);
    if (blank) {
        // Only the user ID of the blank row creates something; an empty one
        // leaves the row blank without a word.
        if (index.column() != MemberListModel::LoginNameColumn || value.toString().isEmpty())
            return;
    } else if (isUnchanged(index, value)) {
        // No step for the journal.
        return;
    }
    const QPersistentModelIndex where(index);
    if (model->setData(index, value, Qt::EditRole)) {
        if (blank)
            Q_EMIT memberCreated(where);
    } else {
        Q_EMIT editRefused(where);
    }
}

QSize MemberCellDelegate::sizeHint(
    const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    QSize size = QStyledItemDelegate::sizeHint(option, index);
    size.setHeight(22);
    return size;
}

void MemberCellDelegate::initStyleOption(
    QStyleOptionViewItem *option, const QModelIndex &index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    if (isBlank(index))
        return;
    if (index.column() == MemberListModel::PasswordColumn) {
        option->text = QString(option->text.size(), u'*');
    } else if (index.column() == MemberListModel::BirthdayColumn) {
        option->text
            = MemberRules::birthdayDate(index.data(Qt::EditRole).toString()).toString(DateFormat);
    }
}
