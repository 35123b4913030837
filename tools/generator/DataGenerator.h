#pragma once

#include "GeneratedData.h"
#include "GeneratorOptions.h"
#include "Rng.h"

#include <QHash>
#include <QSet>

// Builds the rows of a plausible server database: Chinese and Latin members,
// both group trees, memberships, positions, permissions, telephony accounts,
// notices and file-box rights. The same options and seed give the same rows.
class DataGenerator
{
public:
    explicit DataGenerator(const GeneratorOptions &options);

    GeneratedData generate();

    // ";" "'" and "\" as the server stores them in texts.
    static QString escapeMarkers(const QString &text);

private:
    void makeRanks(GeneratedData &data);
    void makeGroupTree(GeneratedData &data, bool guest, qint32 firstId);
    void makeMembers(GeneratedData &data);
    GenMember makeMember(qint32 id, bool guest);
    QString uniqueLogin(QString base);
    void makeRelations(GeneratedData &data);
    void makeTelephony(GeneratedData &data);
    void makeNotices(GeneratedData &data);
    GenNotice makeNotice(const GeneratedData &data, qint32 id, int index);
    void makeFolders(GeneratedData &data);
    void makeRights(GeneratedData &data);
    qint32 pickRank(Rng &rng, const GeneratedData &data);

    GeneratorOptions m_options;
    Rng m_rng;
    QHash<QString, int> m_loginSuffix; // lower-case base -> next suffix
    QSet<QString> m_logins; // lower case
};
