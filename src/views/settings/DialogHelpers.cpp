#include "DialogHelpers.h"

#include <algorithm>
#include <QFileDialog>
#include <QLineEdit>
#include <QTreeWidget>

using namespace Qt::StringLiterals;

namespace DialogHelpers {

FolderChooser systemFolderChooser()
{
    return [](QWidget *parent, const QString &title) {
        return QDir::toNativeSeparators(QFileDialog::getExistingDirectory(
            parent, title, QDir::homePath(), QFileDialog::ShowDirsOnly));
    };
}

FileChooser systemFileChooser()
{
    return [](QWidget *parent, const QString &title, const QString &folder, const QString &filter) {
        return QFileDialog::getOpenFileName(parent, title, folder, filter);
    };
}

QString integerText()
{
    return u"请输入一个整数。"_s;
}

QString rangeText(int min, int max)
{
    return u"请输入一个介于 %1 和 %2 之间的整数。"_s.arg(min).arg(max);
}

bool takeInteger(MessageService &messages, QLineEdit *field, int &value, int min, int max)
{
    const QString text = field->text().trimmed();
    bool ok = false;
    const qlonglong number = text.toLongLong(&ok, 10);
    QString refusal;
    if (!ok || number < INT_MIN || number > INT_MAX)
        refusal = integerText();
    else if (number < min || number > max)
        refusal = rangeText(min, max);
    if (refusal.isEmpty()) {
        value = int(number);
        return true;
    }
    messages.showMessage({ refusal, QString(), MessageService::Buttons::Ok,
        MessageService::Icon::Exclamation, field->window() });
    field->setFocus();
    field->selectAll();
    return false;
}

void removeSelectedRows(QTreeWidget *list)
{
    QList<int> selected;
    for (int i = 0; i < list->topLevelItemCount(); ++i) {
        if (list->topLevelItem(i)->isSelected())
            selected.append(i);
    }
    std::sort(selected.begin(), selected.end(), std::greater<int>());
    for (int index : std::as_const(selected))
        delete list->takeTopLevelItem(index);
}

} // namespace DialogHelpers
