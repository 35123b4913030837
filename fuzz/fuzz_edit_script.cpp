// An edit script typed in a hurry: the whole-script parse, and every line
// through the lexer and the parser on its own.
#include "EditCommandParser.h"
#include "EditScript.h"
#include "EditScriptLexer.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArrayView bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    const EditScript::Result script = EditScript::parse(bytes);
    if (!script.ok() && script.errorLine < 1)
        __builtin_trap();
    int line = 0;
    for (const QString &text : QString::fromUtf8(bytes).split(u'\n')) {
        const EditScriptLexer::Result words = EditScriptLexer::split(text);
        if (words.ok() && !words.words.isEmpty()) {
            const EditCommandParser::Result command = EditCommandParser::parse(words.words, ++line);
            if (!command.command && command.error.isEmpty())
                __builtin_trap();
        }
    }
    return 0;
}
