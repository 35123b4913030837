#include "EditScriptLexer.h"

using namespace Qt::StringLiterals;

namespace {

bool isBlank(QChar c)
{
    return c == u' ' || c == u'\t';
}

} // namespace

EditScriptLexer::Result EditScriptLexer::split(QStringView line)
{
    Result result;
    const qsizetype n = line.size();

    qsizetype i = 0;
    while (i < n && isBlank(line[i]))
        ++i;
    if (i < n && line[i] == u'#')
        return result;

    QString word;
    // A word can be empty ("" or ''), so whether one is open is kept apart
    // from its text.
    bool inWord = false;
    const auto endWord = [&] {
        if (inWord)
            result.words.append(word);
        word.clear();
        inWord = false;
    };

    while (i < n) {
        const QChar c = line[i];
        if (isBlank(c) || c == u'\n') {
            endWord();
            ++i;
        } else if (c == u'\\') {
            if (i + 1 >= n) {
                result.error = u"trailing backslash"_s;
                return result;
            }
            // A backslash-newline vanishes, as in the shell.
            if (line[i + 1] != u'\n') {
                word.append(line[i + 1]);
                inWord = true;
            }
            i += 2;
        } else if (c == u'\'') {
            const qsizetype close = line.indexOf(u'\'', i + 1);
            if (close < 0) {
                result.error = u"unbalanced single quote"_s;
                return result;
            }
            word.append(line.sliced(i + 1, close - i - 1));
            inWord = true;
            i = close + 1;
        } else if (c == u'"') {
            inWord = true;
            ++i;
            for (;;) {
                if (i >= n) {
                    result.error = u"unbalanced double quote"_s;
                    return result;
                }
                const QChar d = line[i];
                if (d == u'"') {
                    ++i;
                    break;
                }
                if (d == u'\\' && i + 1 < n) {
                    const QChar e = line[i + 1];
                    if (e == u'"' || e == u'\\' || e == u'$' || e == u'`') {
                        word.append(e);
                        i += 2;
                        continue;
                    }
                    if (e == u'\n') {
                        i += 2;
                        continue;
                    }
                }
                word.append(d);
                ++i;
            }
        } else {
            // Copy the plain run in one piece; it ends at a blank, a quote or
            // a backslash.
            qsizetype j = i + 1;
            while (j < n) {
                const QChar d = line[j];
                if (isBlank(d) || d == u'\n' || d == u'\\' || d == u'\'' || d == u'"')
                    break;
                ++j;
            }
            word.append(line.sliced(i, j - i));
            inWord = true;
            i = j;
        }
    }
    endWord();
    return result;
}
