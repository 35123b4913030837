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
        // Where the data block lies in the bytes: dataText() gives its text.
        qsizetype dataBegin = 0;
        qsizetype dataEnd = 0;
    };

    static void readRecords(
        QByteArrayView bytes, const std::function<void(const Record &)> &record);
    // The data block of a record of bytes: its lines read again the way the
    // record was read (a buffer of DataLen bytes), each trimmed and followed
    // by CR LF. Built only when shown, so a search stores no copy of it.
    static QByteArray dataText(
        QByteArrayView bytes, QByteArrayView header, qsizetype dataBegin, qsizetype dataEnd);

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
