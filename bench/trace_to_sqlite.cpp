// Turns an SQL trace of the console (one statement per line, line breaks
// inside a statement written as the two characters \n and \r, as SqlTrace
// writes them) into input for the sqlite3 shell: the same statements in the
// same order, each ending in ';', under the journal settings the console's
// connections use. The shell run is the reference the benchmark compares the
// console with. SqlTrace leaves other backslashes as they are, so they pass
// through unchanged here.

#include <cstdio>
#include <iostream>
#include <string>

namespace {

std::string decode(const std::string &line)
{
    std::string out;
    out.reserve(line.size());
    for (size_t i = 0; i < line.size(); ++i) {
        if (line[i] == '\\' && i + 1 < line.size()) {
            const char next = line[i + 1];
            if (next == 'n' || next == 'r') {
                out += next == 'n' ? '\n' : '\r';
                ++i;
                continue;
            }
        }
        out += line[i];
    }
    return out;
}

bool endsWithSemicolon(const std::string &statement)
{
    const size_t last = statement.find_last_not_of(" \t\r\n");
    return last != std::string::npos && statement[last] == ';';
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc != 2 || std::string(argv[1]) == "--help") {
        std::fprintf(stderr, "usage: %s TRACE > shell-input.sql\n", argv[0]);
        return 2;
    }
    FILE *in = std::fopen(argv[1], "rb");
    if (!in) {
        std::perror(argv[1]);
        return 1;
    }
    std::ios::sync_with_stdio(false);
    std::cout << "PRAGMA journal_mode=WAL;\nPRAGMA synchronous=NORMAL;\n";
    std::string line;
    long statements = 0;
    for (int c; (c = std::fgetc(in)) != EOF;) {
        if (c != '\n') {
            line += char(c);
            continue;
        }
        if (line.find_first_not_of(" \t\r") != std::string::npos) {
            const std::string statement = decode(line);
            std::cout << statement << (endsWithSemicolon(statement) ? "\n" : ";\n");
            ++statements;
        }
        line.clear();
    }
    if (line.find_first_not_of(" \t\r") != std::string::npos) {
        const std::string statement = decode(line);
        std::cout << statement << (endsWithSemicolon(statement) ? "\n" : ";\n");
        ++statements;
    }
    std::fclose(in);
    std::cout.flush();
    std::fprintf(stderr, "%ld statements\n", statements);
    return std::cout ? 0 : 1;
}
