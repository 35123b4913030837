#pragma once

#include <functional>
#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QVarLengthArray>

// Reads the main daemon's user logs: a header line (1024-byte reads, split on
// runs of white space) and its data block, read on from the same place with a
// buffer of DataLen bytes up to and including the ".END_OF_DATA" line.
class UserLogReader
{
public:
    struct Record
    {
        QByteArrayView header; // the trimmed header line
        QByteArray data; // the trimmed block lines, each followed by CR LF
    };

    static void readRecords(
        QByteArrayView bytes, const std::function<void(const Record &)> &record);

    // The header's fields: runs of white space separate them.
    using Fields = QVarLengthArray<QByteArrayView, 16>;
    static Fields splitFields(QByteArrayView line);
    // The ids of a receiver field, split on ";" (empty items left out).
    static QList<QByteArrayView> splitReceivers(QByteArrayView field);

    static constexpr qsizetype LineBufferSize = 1024;
    enum Field {
        DateField,
        TimeField,
        ServiceField,
        ServerIpField,
        ServerPortField,
        EventField,
        TypeField,
        SenderField,
        ReceiverField,
        SenderIpField,
        StatusField,
        SubStatusField,
        DataLenField,
        DataField,
    };
};
