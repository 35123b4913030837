#include "GeneratorOptions.h"

#include <algorithm>
#include <QStringList>

using namespace Qt::StringLiterals;

bool GeneratorOptions::applyPreset(const QString &name)
{
    if (name == "demo"_L1) {
        members = 60;
        guests = 8;
        groups = 12;
        depth = 3;
        memberships = 90;
        positions = 8;
        permissions = 60;
        pool = 30;
        notices = 3;
        folders = 8;
        rights = 20;
        logs = true;
        return true;
    }
    if (name == "bench"_L1) {
        members = 100000;
        guests = 10000;
        groups = 2000;
        depth = 6;
        memberships = 200000;
        positions = 50;
        permissions = 100000;
        pool = 20000;
        notices = 5000;
        folders = 500;
        rights = 5000;
        return true;
    }
    return false;
}

void GeneratorOptions::normalise(QStringList *notes)
{
    auto clamp = [notes](int &value, int low, int high, const QString &what) {
        const int fixed = std::clamp(value, low, std::max(low, high));
        if (fixed != value && notes)
            notes->append(u"%1 %2 -> %3"_s.arg(what).arg(value).arg(fixed));
        value = fixed;
    };
    clamp(members, 0, 2000000, u"--members"_s);
    clamp(guests, 0, members, u"--guests"_s);
    clamp(groups, 0, 200000, u"--groups"_s);
    clamp(depth, 1, 64, u"--depth"_s);
    // Every membership pairs a member with a different group of one tree.
    const qint64 pairs = qint64(members) * groups * 2;
    clamp(memberships, 0, int(std::min<qint64>(pairs, 10000000)), u"--memberships"_s);
    clamp(positions, 1, 100000, u"--positions"_s);
    clamp(permissions, 0, members, u"--permissions"_s);
    clamp(pool, 0, 2000000, u"--pool"_s);
    clamp(notices, 0, 1000000, u"--notices"_s);
    // Notices name their writer, so there is none without members.
    if (members == 0)
        clamp(notices, 0, 0, u"--notices"_s);
    clamp(folders, 0, 100000, u"--folders"_s);
    const qint64 owners = qint64(folders) * (members + qint64(groups) * 2);
    clamp(rights, 0, int(std::min<qint64>(owners, 10000000)), u"--rights"_s);
}
