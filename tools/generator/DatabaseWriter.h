#pragma once

#include "GeneratedData.h"

#include <QString>

// Writes generated rows into a new SQLite server database. Unlike the console,
// which runs every statement on its own, the generator fills the file in one
// transaction with prepared statements: it makes a new file, so there is no
// reader to keep consistent and speed is all that matters.
class DatabaseWriter
{
public:
    // Replaces any file at path. Returns false with a message in *error.
    static bool write(const QString &path, const GeneratedData &data, QString *error);
};
