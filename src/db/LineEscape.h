#pragma once

#include <QString>
#include <QStringView>

// One text per line in the files the console writes for itself (the SQL
// trace, the save journal): a backslash is written "\\", a tab "\t", a line
// feed "\n" and a carriage return "\r", so that every line reads back to
// exactly the text it was written for.
namespace LineEscape {
QString escape(QStringView text);
QString unescape(QStringView line);
// Whether escape() would change text.
bool needsEscape(QStringView text);
} // namespace LineEscape
