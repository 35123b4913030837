#pragma once

#include <functional>
#include <QDateTime>
#include <QString>

class Directory;
class RegistryHives;

// What the log views are given by the main frame: the hives for the log root
// and the upload folder, the program folder, the clock of the period buttons,
// the directory for member names and the user log's tree, and how a folder is
// opened (the shell; a test records it instead).
struct LogViewContext
{
    RegistryHives &hives;
    QString programDirectory;
    std::function<QDateTime()> clock;
    const Directory *directory = nullptr; // may be null: ids are shown then
    std::function<void(const QString &folder)> openFolder;
};
