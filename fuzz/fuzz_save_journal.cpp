// A save journal as a crash or a full disk leaves it: read and checked as the
// recovery reads it, and every action of one that passes its check.
#include "SaveJournal.h"

#include <cstddef>
#include <cstdint>
#include <QFile>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static QTemporaryDir dir;
    const QString path = dir.filePath(SaveJournal::fileName());
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            return 0;
        file.write(reinterpret_cast<const char *>(data), qint64(size));
    }
    SaveJournal journal;
    QString error;
    if (SaveJournal::read(path, journal, &error) != SaveJournal::ReadStatus::Ok)
        return 0;
    SaveJournal::Cursor cursor;
    SaveJournal::Action action;
    qsizetype total = journal.connectionString().size() + journal.notifyPorts().size();
    while (journal.nextAction(cursor, action))
        total += action.text.size() + action.key.size() + action.value.size();
    return total == -1 ? 1 : 0;
}
