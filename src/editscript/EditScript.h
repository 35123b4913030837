#pragma once

#include "EditCommand.h"

#include <QByteArrayView>
#include <QList>
#include <QString>

class QIODevice;

// An edit script: UTF-8 text, one command per line (a line feed ends a line,
// a carriage return before it is dropped). Lines are split by
// EditScriptLexer and parsed by EditCommandParser; blank and comment lines
// give no command, and a command never continues onto the next line. The
// first refused line ends the parse.
class EditScript final
{
public:
    struct Result
    {
        QList<EditCommand> commands; // complete only when the parse succeeded
        int errorLine = 0; // 1-based line of the refusal, 0 when none
        QString error; // "line N: <message>"
        bool ok() const { return error.isEmpty(); }
    };

    static Result parse(QByteArrayView text);
    // Reads the device to its end first.
    static Result parse(QIODevice &device);
};
