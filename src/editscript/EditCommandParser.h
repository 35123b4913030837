#pragma once

#include "EditCommand.h"

#include <optional>
#include <QString>
#include <QStringList>

// Turns the words of one edit command into an EditCommand, or refuses with a
// message that names the command and what is wrong with it. The words come
// from EditScriptLexer (a script line) or straight from the command line.
//
// Options of "member add" and "member set" follow the user ID, as "--name T"
// or "--name=T"; the word after an option is its value whatever it looks
// like, so a name may start with "-". An option given twice, or both halves
// of a pair such as --male and --female, is refused rather than letting one
// silently win. The word "none" after "membership position" and
// "position default" means no position.
class EditCommandParser final
{
public:
    struct Result
    {
        std::optional<EditCommand> command;
        QString error; // set when command is absent
    };

    static Result parse(const QStringList &words, int line);

    // Whether a word starts a command ("member", "group", "place", ...).
    static bool isCommandWord(QStringView word);
    // Whether an option of "member add" and "member set" takes the next word
    // as its value (--name, --password, ...; not the flags).
    static bool takesValue(QStringView option);
    // Every command ("member add", "place", ...) and every option of
    // "member add" and "member set": what the manual page and the shell
    // completion must know.
    static QStringList commands();
    static QStringList memberOptions();
};
