#include "PrivilegeDrop.h"

#include <QFile>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

namespace {
#ifdef Q_OS_UNIX
constexpr uid_t Nobody = 65534;
#endif
} // namespace

PrivilegeDrop::PrivilegeDrop()
{
#ifdef Q_OS_UNIX
    if (geteuid() != 0)
        return;
    // Real ids too, so that access() answers for nobody; the saved ids stay 0,
    // so the destructor can switch back.
    m_ok = setresgid(Nobody, Nobody, 0) == 0 && setresuid(Nobody, Nobody, 0) == 0;
    m_dropped = true;
#endif
}

PrivilegeDrop::~PrivilegeDrop()
{
#ifdef Q_OS_UNIX
    if (m_dropped) {
        if (setresuid(0, 0, 0) != 0 || setresgid(0, 0, 0) != 0)
            qFatal("cannot return to the original user");
    }
#endif
}

bool PrivilegeDrop::openToOthers(const QString &path)
{
    return QFile::setPermissions(path,
        QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ReadUser | QFile::WriteUser
            | QFile::ExeUser | QFile::ReadGroup | QFile::ExeGroup | QFile::ReadOther
            | QFile::ExeOther);
}
