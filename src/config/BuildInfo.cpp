#include "BuildInfo.h"

#include "VelmarCommit.h"

using namespace Qt::StringLiterals;

QString BuildInfo::version()
{
    return QStringLiteral(VELMAR_VERSION);
}

QString BuildInfo::commit()
{
    return QStringLiteral(VELMAR_COMMIT);
}

QString BuildInfo::versionText()
{
    return u"%1 (commit %2)"_s.arg(version(), commit());
}

QString BuildInfo::versionLine(const QString &program)
{
    return program + u' ' + versionText();
}
