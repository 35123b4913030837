#pragma once

#include <QList>
#include <QString>

class DbConnection;
class ProfileFile;

// A position (rank): a title a member holds within a group, a row of Rank.
struct Position
{
    qint32 id = 0; // ORankID
    QString name; // RankName
    friend bool operator==(const Position &, const Position &) = default;
};

// The position list in list order (the order Rank rows arrived) and the
// configured default position, as plain data.
class PositionList
{
public:
    static constexpr qint32 NoPosition = -1;

    QList<Position> positions;
    // DefaultPositionID of ServerInfo; -1 when unset.
    qint32 defaultId = NoPosition;

    int count() const { return int(positions.size()); }

    // The position new memberships get: the configured default, or -1 (none).
    qint32 defaultPositionId() const;
    // The id at list index k (0-based), -1 beyond the list.
    qint32 idAt(int k) const;
    // The name of an id, "无等级" when the id is not in the list.
    QString nameForId(qint32 id) const;
    // The list index of an id; id -1 gives 1 (kept as the position grid
    // expects it), an unknown id gives -1.
    int indexOfId(qint32 id) const;
    // The list index of the first position with exactly this name, -1 when none.
    int indexOfName(const QString &name) const;

    // The name a new position gets: "新等级", or "新等级 (n)" with the first
    // n from 1 that is free.
    QString newPositionName() const;
    // The id a new position gets: the largest id plus one, at least 1.
    qint32 newPositionId() const;

    // DefaultPositionID of section ServerInfo; absent, empty or 0 gives -1.
    static qint32 readDefaultPositionId(const ProfileFile &profile);
    // Writes the id as decimal text at once ("-1" for none).
    static bool writeDefaultPositionId(ProfileFile &profile, qint32 id);

    // "SELECT ORankID,RankName FROM Rank ", rows in the order they arrive;
    // raises DbException. Keeps defaultId.
    void load(DbConnection &connection);
    // "DELETE FROM Rank", then one INSERT per position in list order; raises
    // DbException at the first failing statement.
    void save(DbConnection &connection) const;

    friend bool operator==(const PositionList &, const PositionList &) = default;
};
