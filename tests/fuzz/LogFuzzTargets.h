#pragma once

#include <QByteArrayView>

// What the fuzzers and the corpus replay feed one input through: every parser
// and every cell the views would show for it. Returns the number of rows.
namespace LogFuzzTargets {
int chatFile(QByteArrayView bytes);
int userLogFile(QByteArrayView bytes);
} // namespace LogFuzzTargets
