#pragma once

#include <QString>

// The connection string as the dashboard may show it: the value of every
// PWD= or Password= pair replaced by asterisks (an empty password stays
// empty, so "PWD=;" still says that there is none). Braced values may hold
// semicolons; the rest of the string is kept as it is.
QString maskConnectionStringPassword(const QString &connectionString);
