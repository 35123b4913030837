// Turns an SQL trace of the console (one statement per line, as SqlTrace
// writes it) into input for the sqlite3 shell: the same statements in the
// same order, each ending in ';', after the settings the console's SQLite
// connections run. The shell run is the reference the benchmark compares the
// console with.

#include "DbConnection.h"
#include "SqlTrace.h"

#include <cstdio>
#include <QFile>

using namespace Qt::StringLiterals;

int main(int argc, char *argv[])
{
    if (argc != 2 || qstrcmp(argv[1], "--help") == 0) {
        std::fprintf(stderr, "usage: %s TRACE > shell-input.sql\n", argv[0]);
        return 2;
    }
    QString error;
    const QStringList statements
        = SqlTrace::readStatements(QString::fromLocal8Bit(argv[1]), &error);
    if (!error.isEmpty()) {
        std::fprintf(stderr, "%s: %s\n", argv[1], qPrintable(error));
        return 1;
    }
    QFile out;
    if (!out.open(stdout, QIODevice::WriteOnly))
        return 1;
    QByteArray text;
    for (const QString &setting : DbConnection::sqliteSettings())
        text += setting.toUtf8() + ";\n";
    for (const QString &statement : statements) {
        text += statement.toUtf8();
        // The notice deletion ends in ';' already.
        text += statement.trimmed().endsWith(u';') ? "\n" : ";\n";
        if (text.size() > (1 << 20)) {
            out.write(text);
            text.clear();
        }
    }
    out.write(text);
    if (!out.flush())
        return 1;
    std::fprintf(stderr, "%lld statements\n", static_cast<long long>(statements.size()));
    return 0;
}
