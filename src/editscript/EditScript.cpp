#include "EditScript.h"

#include "EditCommandParser.h"
#include "EditScriptLexer.h"

#include <QIODevice>
#include <QStringDecoder>

using namespace Qt::StringLiterals;

namespace {

// Control characters (C0, DEL, C1) other than the tab.
qsizetype firstControl(const QString &word)
{
    for (qsizetype i = 0; i < word.size(); ++i) {
        const char16_t c = word[i].unicode();
        if (c != u'\t' && (c < 0x20 || (c >= 0x7f && c <= 0x9f)))
            return i;
    }
    return -1;
}

} // namespace

EditScript::Result EditScript::parse(QByteArrayView text)
{
    Result result;
    const auto refuse = [&](int line, const QString &message) {
        result.errorLine = line;
        result.error = u"line %1: %2"_s.arg(line).arg(message);
        return result;
    };

    if (text.startsWith("\xEF\xBB\xBF"))
        text = text.sliced(3);
    // Each line is decoded on its own: a sequence cut short at its end is an
    // error, not something to complete from the next line. A byte-order mark
    // further on is text like any other, so the decoder must not drop one at
    // the start of each line.
    QStringDecoder decoder(QStringDecoder::Utf8,
        QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);

    int lineNumber = 0;
    qsizetype start = 0;
    while (start < text.size()) {
        ++lineNumber;
        qsizetype end = text.indexOf('\n', start);
        const qsizetype next = end < 0 ? text.size() : end + 1;
        if (end < 0)
            end = text.size();
        QByteArrayView bytes = text.sliced(start, end - start);
        start = next;
        if (bytes.endsWith('\r'))
            bytes.chop(1);

        decoder.resetState();
        const QString line = decoder.decode(bytes);
        if (decoder.hasError())
            return refuse(lineNumber, u"invalid UTF-8"_s);

        const EditScriptLexer::Result split = EditScriptLexer::split(line);
        if (!split.ok())
            return refuse(lineNumber, split.error);
        if (split.words.isEmpty())
            continue;
        for (const QString &word : split.words) {
            const qsizetype at = firstControl(word);
            if (at >= 0) {
                const QString code
                    = QString::number(word[at].unicode(), 16).toUpper().rightJustified(4, u'0');
                return refuse(lineNumber, u"control character U+%1 in a word"_s.arg(code));
            }
        }

        EditCommandParser::Result parsed = EditCommandParser::parse(split.words, lineNumber);
        if (!parsed.command)
            return refuse(lineNumber, parsed.error);
        result.commands.append(std::move(*parsed.command));
    }
    return result;
}

EditScript::Result EditScript::parse(QIODevice &device)
{
    const QByteArray text = device.readAll();
    return parse(QByteArrayView(text));
}
