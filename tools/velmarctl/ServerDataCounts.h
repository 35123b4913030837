#pragma once

#include <QJsonObject>

class ServerData;

// How many records of each data set the working copy holds, as the JSON
// object velmarctl prints.
class ServerDataCounts
{
public:
    static QJsonObject of(const ServerData &data);
};
