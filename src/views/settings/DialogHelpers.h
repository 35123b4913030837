#pragma once

#include "MessageService.h"

#include <functional>
#include <QString>

class QLineEdit;
class QTreeWidget;
class QWidget;

// What the settings dialogs share: the integer check that a dialog's number
// fields pass through before OK goes on, and the file and folder browsers,
// which tests replace by a chooser that answers at once.
namespace DialogHelpers {

// Empty when the user cancels.
using FolderChooser = std::function<QString(QWidget *parent, const QString &title)>;
using FileChooser = std::function<QString(
    QWidget *parent, const QString &title, const QString &folder, const QString &filter)>;
FolderChooser systemFolderChooser();
FileChooser systemFileChooser();

// The standard integer check: a field that does not hold an integer (or one
// outside min..max) is refused with the framework's message, the focus goes
// back to it and false is returned.
bool takeInteger(
    MessageService &messages, QLineEdit *field, int &value, int min = INT_MIN, int max = INT_MAX);
QString integerText();
QString rangeText(int min, int max);

// Removes the selected rows of a list, from the highest index down, so that
// a deletion does not move the rows still to go.
void removeSelectedRows(QTreeWidget *list);

} // namespace DialogHelpers
