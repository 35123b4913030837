#include "SqlStatementText.h"

#include <array>
#include <QList>

namespace {

// One way of reading a statement text. A database may read the same text in
// more than one way depending on its settings (PostgreSQL's
// standard_conforming_strings, MySQL's NO_BACKSLASH_ESCAPES and ANSI_QUOTES).
struct Lexing
{
    bool brackets = false; // [name] quotes a name
    bool backticks = false; // `name` quotes a name
    bool backslashEscapes = false; // '\' escapes the next character inside '...' and "..."
    bool eStrings = false; // E'...' with backslash escapes
    bool dollarQuotes = false; // $tag$ ... $tag$
    bool nestedComments = false; // /* /* */ */
    bool hashComments = false; // '#' to the end of the line
    bool dashCommentNeedsBlank = false; // "-- " starts a comment only with a blank after it
};

constexpr Lexing standardLexing {};
constexpr Lexing sqliteLexing { .brackets = true, .backticks = true };
constexpr Lexing sqlServerLexing { .brackets = true };
constexpr Lexing postgresLexing { .eStrings = true, .dollarQuotes = true, .nestedComments = true };
constexpr Lexing postgresOldStringsLexing {
    .backslashEscapes = true, .eStrings = true, .dollarQuotes = true, .nestedComments = true
};
constexpr Lexing mysqlLexing {
    .backticks = true, .backslashEscapes = true, .hashComments = true, .dashCommentNeedsBlank = true
};
constexpr Lexing mysqlNoBackslashLexing {
    .backticks = true, .hashComments = true, .dashCommentNeedsBlank = true
};

// The readings of a dialect, the usual one first; every reading of every
// dialect when the database is not known.
QList<Lexing> lexingsFor(SqlDialect dialect)
{
    switch (dialect) {
    case SqlDialect::Sqlite:
        return { sqliteLexing };
    case SqlDialect::SqlServer:
        return { sqlServerLexing };
    case SqlDialect::PostgreSql:
        return { postgresLexing, postgresOldStringsLexing };
    case SqlDialect::MySql:
        return { mysqlLexing, mysqlNoBackslashLexing };
    case SqlDialect::Unknown:
        break;
    }
    return { standardLexing, sqlServerLexing, sqliteLexing, postgresLexing,
        postgresOldStringsLexing, mysqlLexing, mysqlNoBackslashLexing };
}

enum class SpanKind { Code, Literal, QuotedName, Bracketed, Comment };

struct Span
{
    SpanKind kind;
    qsizetype begin;
    qsizetype end;
};

bool isIdentifierChar(QChar c)
{
    return c.isLetterOrNumber() || c == u'_' || c == u'$';
}

qsizetype endOfQuoted(QStringView t, qsizetype open, QChar quote, bool backslashEscapes)
{
    qsizetype i = open + 1;
    while (i < t.size()) {
        const QChar c = t.at(i);
        if (backslashEscapes && c == u'\\') {
            i += 2;
            continue;
        }
        if (c == quote) {
            if (i + 1 < t.size() && t.at(i + 1) == quote) {
                i += 2;
                continue;
            }
            return i + 1;
        }
        ++i;
    }
    return t.size();
}

qsizetype endOfLine(QStringView t, qsizetype from)
{
    const qsizetype newline = t.indexOf(u'\n', from);
    return newline < 0 ? t.size() : newline + 1;
}

qsizetype endOfBlockComment(QStringView t, qsizetype open, bool nested)
{
    int depth = 1;
    qsizetype i = open + 2;
    while (i < t.size()) {
        if (t.at(i) == u'*' && i + 1 < t.size() && t.at(i + 1) == u'/') {
            i += 2;
            if (--depth == 0)
                return i;
            continue;
        }
        if (nested && t.at(i) == u'/' && i + 1 < t.size() && t.at(i + 1) == u'*') {
            ++depth;
            i += 2;
            continue;
        }
        ++i;
    }
    return t.size();
}

// $tag$ ... $tag$; -1 when the '$' at open does not start one.
qsizetype endOfDollarQuote(QStringView t, qsizetype open)
{
    qsizetype i = open + 1;
    while (i < t.size() && t.at(i) != u'$') {
        const QChar c = t.at(i);
        const bool allowed = c.isLetter() || c == u'_' || (i > open + 1 && c.isDigit());
        if (!allowed)
            return -1;
        ++i;
    }
    if (i >= t.size())
        return -1;
    const QStringView tag = t.mid(open, i - open + 1);
    const qsizetype close = t.indexOf(tag, i + 1);
    return close < 0 ? t.size() : close + tag.size();
}

QList<Span> spansOf(QStringView t, const Lexing &lx)
{
    QList<Span> spans;
    qsizetype codeStart = 0;
    qsizetype i = 0;
    const qsizetype n = t.size();
    while (i < n) {
        const QChar c = t.at(i);
        const QChar next = i + 1 < n ? t.at(i + 1) : QChar();
        SpanKind kind = SpanKind::Code;
        qsizetype end = -1;
        if (c == u'\'') {
            kind = SpanKind::Literal;
            end = endOfQuoted(t, i, c, lx.backslashEscapes);
        } else if (lx.eStrings && (c == u'E' || c == u'e') && next == u'\''
            && (i == 0 || !isIdentifierChar(t.at(i - 1)))) {
            kind = SpanKind::Literal;
            end = endOfQuoted(t, i + 1, next, true);
        } else if (c == u'"') {
            kind = SpanKind::QuotedName;
            end = endOfQuoted(t, i, c, lx.backslashEscapes);
        } else if (lx.backticks && c == u'`') {
            kind = SpanKind::QuotedName;
            end = endOfQuoted(t, i, c, false);
        } else if (lx.brackets && c == u'[') {
            kind = SpanKind::Bracketed;
            end = endOfQuoted(t, i, u']', false);
        } else if (c == u'-' && next == u'-'
            && (!lx.dashCommentNeedsBlank || i + 2 >= n || t.at(i + 2).isSpace())) {
            kind = SpanKind::Comment;
            end = endOfLine(t, i);
        } else if (lx.hashComments && c == u'#') {
            kind = SpanKind::Comment;
            end = endOfLine(t, i);
        } else if (c == u'/' && next == u'*') {
            kind = SpanKind::Comment;
            end = endOfBlockComment(t, i, lx.nestedComments);
        } else if (lx.dollarQuotes && c == u'$' && (i == 0 || !isIdentifierChar(t.at(i - 1)))) {
            kind = SpanKind::Literal;
            end = endOfDollarQuote(t, i);
        }
        if (end < 0) {
            ++i;
            continue;
        }
        if (i > codeStart)
            spans.append({ SpanKind::Code, codeStart, i });
        spans.append({ kind, i, end });
        i = end;
        codeStart = end;
    }
    if (n > codeStart)
        spans.append({ SpanKind::Code, codeStart, n });
    return spans;
}

bool findsSecondStatement(QStringView t, const Lexing &lx)
{
    for (const Span &span : spansOf(t, lx)) {
        if (span.kind != SpanKind::Code)
            continue;
        for (qsizetype i = span.begin; i < span.end; ++i) {
            if (t.at(i) == u';' && !t.mid(i + 1).trimmed().isEmpty())
                return true;
        }
    }
    return false;
}

// A bracket pair that holds a name rather than, say, an array subscript.
bool isBracketedName(QStringView inner)
{
    if (inner.trimmed().isEmpty())
        return false;
    bool hasLetter = false;
    for (const QChar c : inner) {
        if (c == u'\n' || c == u'\r' || c == u']' || c == u'[')
            return false;
        if (c.isLetter() || c == u'_')
            hasLetter = true;
    }
    return hasLetter;
}

} // namespace

bool SqlStatementText::hasSecondStatement(QStringView text, SqlDialect dialect)
{
    // Nearly every statement has no ';' at all; the save sends hundreds of thousands.
    if (!text.contains(u';'))
        return false;
    for (const Lexing &lx : lexingsFor(dialect)) {
        if (findsSecondStatement(text, lx))
            return true;
    }
    return false;
}

bool SqlStatementText::acceptsBrackets(SqlDialect dialect)
{
    switch (dialect) {
    case SqlDialect::Sqlite:
    case SqlDialect::SqlServer:
    case SqlDialect::Unknown:
        return true;
    case SqlDialect::PostgreSql:
    case SqlDialect::MySql:
        break;
    }
    return false;
}

QString SqlStatementText::rewriteBrackets(
    const QString &text, SqlDialect dialect, const std::function<QString(const QString &)> &quote)
{
    if (!text.contains(u'['))
        return text;
    Lexing lx = lexingsFor(dialect).constFirst();
    lx.brackets = true;
    const QStringView view(text);
    QString result;
    result.reserve(text.size() + 8);
    for (const Span &span : spansOf(view, lx)) {
        const QStringView part = view.mid(span.begin, span.end - span.begin);
        const bool closed = part.size() >= 2 && part.back() == u']';
        const QStringView inner = closed ? part.mid(1, part.size() - 2) : QStringView();
        if (span.kind == SpanKind::Bracketed && closed && isBracketedName(inner)) {
            QString name = inner.toString();
            name.replace(QStringLiteral("]]"), QStringLiteral("]"));
            result += quote(name);
        } else {
            result += part;
        }
    }
    return result;
}

QStringList SqlStatementText::splitScript(const QString &script, SqlDialect dialect)
{
    const Lexing lx = lexingsFor(dialect).constFirst();
    const QStringView view(script);
    QStringList statements;
    QString current;
    auto finish = [&] {
        const QString statement = current.trimmed();
        if (!statement.isEmpty())
            statements.append(statement);
        current.clear();
    };
    for (const Span &span : spansOf(view, lx)) {
        if (span.kind == SpanKind::Comment) {
            current += u' ';
            continue;
        }
        if (span.kind != SpanKind::Code) {
            current += view.mid(span.begin, span.end - span.begin);
            continue;
        }
        for (qsizetype i = span.begin; i < span.end; ++i) {
            if (view.at(i) == u';')
                finish();
            else
                current += view.at(i);
        }
    }
    finish();
    return statements;
}
