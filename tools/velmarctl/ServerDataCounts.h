#pragma once

#include <QJsonObject>

class CVelmarManagerDoc;

// How many records of each data set the working copy holds, as the JSON
// object velmarctl prints.
class ServerDataCounts
{
public:
    static QJsonObject of(const CVelmarManagerDoc &data);
};
