#include "PositionList.h"

#include "DbConnection.h"
#include "ProfileFile.h"
#include "Recordset.h"
#include "SqlTemplate.h"

#include <algorithm>
#include <limits>
#include <QSet>

using namespace Qt::StringLiterals;

qint32 PositionList::defaultPositionId() const
{
    // An unset default stays "no position": new memberships then carry none.
    return defaultId;
}

qint32 PositionList::idAt(int k) const
{
    return k >= 0 && k < count() ? positions.at(k).id : NoPosition;
}

QString PositionList::nameForId(qint32 id) const
{
    for (const Position &position : positions) {
        if (position.id == id)
            return position.name;
    }
    return u"无等级"_s;
}

int PositionList::indexOfId(qint32 id) const
{
    // The position grid shows "no position" as its second entry; keep that.
    if (id == NoPosition)
        return 1;
    for (int k = 0; k < count(); ++k) {
        if (positions.at(k).id == id)
            return k;
    }
    return -1;
}

int PositionList::indexOfName(const QString &name) const
{
    for (int k = 0; k < count(); ++k) {
        if (positions.at(k).name == name)
            return k;
    }
    return -1;
}

QString PositionList::newPositionName() const
{
    // One pass over the list: searching it once per candidate made adding a
    // position quadratic in the number of positions.
    const QString base = u"新等级"_s;
    QSet<QStringView> taken;
    taken.reserve(positions.size());
    for (const Position &position : positions)
        taken.insert(position.name);
    if (!taken.contains(base))
        return base;
    for (int n = 1;; ++n) {
        const QString name = base + u" ("_s + QString::number(n) + u')';
        if (!taken.contains(name))
            return name;
    }
}

qint32 PositionList::newPositionId() const
{
    qint32 largest = 0;
    for (const Position &position : positions)
        largest = std::max(largest, position.id);
    return largest < std::numeric_limits<qint32>::max() ? largest + 1 : largest;
}

qint32 PositionList::readDefaultPositionId(const ProfileFile &profile)
{
    const int id = profile.readInt(u"ServerInfo"_s, u"DefaultPositionID"_s, 0);
    return id == 0 ? NoPosition : id;
}

bool PositionList::writeDefaultPositionId(ProfileFile &profile, qint32 id)
{
    return profile.writeString(u"ServerInfo"_s, u"DefaultPositionID"_s, QString::number(id));
}

void PositionList::load(DbConnection &connection)
{
    positions.clear();
    Recordset set = connection.execute(u"SELECT ORankID,RankName FROM Rank "_s);
    const QString idColumn = u"ORankID"_s;
    const QString nameColumn = u"RankName"_s;
    while (!set.isEOF()) {
        // A NULL id reads as 0, a position no membership can name.
        const qint32 id = set.isNull(idColumn) ? 0 : set.intField(idColumn);
        positions.append({ id, set.textField(nameColumn) });
        set.moveNext();
    }
    if (set.state() == Recordset::Open)
        set.close();
}

void PositionList::save(DbConnection &connection) const
{
    static const SqlTemplate insert(u"INSERT INTO Rank (ORankID,RankName) VALUES  ('%d' ,'%s')");
    connection.execute(u"DELETE FROM Rank"_s);
    for (const Position &position : positions)
        connection.execute(insert.format({ qint64(position.id), QStringView(position.name) }));
}
