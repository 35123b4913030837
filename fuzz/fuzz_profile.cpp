// The server information file through ProfileFile as the console opens it:
// reads of the keys it uses, then a write that must keep the file readable.
#include "ProfileFile.h"

#include <cstddef>
#include <cstdint>
#include <QFile>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static QTemporaryDir dir;
    const QString path = dir.filePath(u"Serverinfo.ini"_s);
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            return 0;
        file.write(reinterpret_cast<const char *>(data), qint64(size));
    }
    ProfileFile profile(path, CodePage("GBK"));
    qsizetype total = 0;
    for (const QString &key : { u"ConnectionString"_s, u"ServerPort"_s, u"Name"_s })
        total += profile.readString(u"Server"_s, key, u"-"_s, 1024).size();
    total += profile.readInt(u"Server"_s, u"ServerPort"_s, 7);
    // A file with damaged lines is written only once they are comments.
    if (!profile.damagedLines().isEmpty()
        && (profile.writeString(u"Server"_s, u"Name"_s, u"x"_s) || !profile.commentOutDamagedLines()
            || !profile.damagedLines().isEmpty()))
        __builtin_trap();
    if (profile.writeString(u"Server"_s, u"Name"_s, u"Velmar 测试"_s)
        && profile.readString(u"Server"_s, u"Name"_s, {}, 1024) != u"Velmar 测试"_s)
        __builtin_trap();
    return total == -1 ? 1 : 0;
}
