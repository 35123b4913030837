#pragma once

#include <QString>

// The tests of read-only files and folders need the file system to refuse a
// write. Root is never refused, so while an object of this class lives a
// process running as root acts as "nobody"; for anyone else it does nothing.
// The folders on the way to the test files must be open to others (0755).
class PrivilegeDrop
{
public:
    PrivilegeDrop();
    ~PrivilegeDrop();
    PrivilegeDrop(const PrivilegeDrop &) = delete;
    PrivilegeDrop &operator=(const PrivilegeDrop &) = delete;

    bool ok() const { return m_ok; }

    // Gives others read and traverse rights on path (mode 0755).
    static bool openToOthers(const QString &path);

private:
    bool m_dropped = false;
    bool m_ok = true;
};
