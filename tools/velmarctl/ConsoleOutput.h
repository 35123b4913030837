#pragma once

#include <cstdio>
#include <QString>

// velmarctl's output is UTF-8 whatever the locale, and flushed at once so
// that standard output and standard error interleave as they happen.
void printTo(FILE *stream, const QString &text);
void printLine(FILE *stream, const QString &text);
