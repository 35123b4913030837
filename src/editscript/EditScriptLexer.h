#pragma once

#include <QString>
#include <QStringList>
#include <QStringView>

// Splits one line of an edit script into words the way a POSIX shell does,
// without any expansion: blanks (space, tab) separate words; single quotes
// keep everything literally; inside double quotes a backslash escapes only
// " \ $ ` and a newline (other backslashes stay); outside quotes a backslash
// escapes the next character. Adjacent pieces join into one word, and an
// empty quoted string is a word of its own. A line whose first non-blank
// character is '#' is a comment; a '#' later in the line is ordinary text,
// since "#12" names a group.
class EditScriptLexer final
{
public:
    struct Result
    {
        QStringList words; // empty for a blank or comment line
        QString error; // empty when the line split
        bool ok() const { return error.isEmpty(); }
    };

    static Result split(QStringView line);
};
