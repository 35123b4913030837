#include "LogsCommand.h"

#include "ChatLogRows.h"
#include "ConsoleMessageService.h"
#include "DbSession.h"
#include "DirectoryData.h"
#include "DirectoryLoader.h"
#include "LogLocations.h"
#include "ServerFolder.h"
#include "SystemLogRows.h"
#include "UserLogRows.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>

using namespace Qt::StringLiterals;

bool LogsCommand::parseKind(const QString &text, LogSearch::Kind &kind)
{
    if (text == u"chat"_s)
        kind = LogSearch::Kind::Chat;
    else if (text == u"system"_s)
        kind = LogSearch::Kind::System;
    else if (text == u"user"_s)
        kind = LogSearch::Kind::User;
    else
        return false;
    return true;
}

QDateTime LogsCommand::parseDateTime(const QString &text)
{
    for (const QString &format : { u"yyyy-MM-ddTHH:mm:ss"_s, u"yyyy-MM-dd HH:mm:ss"_s }) {
        const QDateTime parsed = QDateTime::fromString(text, format);
        if (parsed.isValid())
            return parsed;
    }
    return {};
}

LogMemberNames LogsCommand::memberNames(RegistryHives &hives, const QString &serverDir)
{
    const ServerFolder folder(serverDir);
    ConsoleMessageService messages;
    DbSession session(hives, folder.profilePath(), folder.accessDatabasePath(), messages);
    // Opening a local database that is not there would create an empty one.
    if (session.connectionString().contains(u"Microsoft Access Driver"_s)
        && !QFileInfo::exists(session.accessDatabasePath()))
        return {};
    DbConnection connection = session.OpenDBConnection();
    if (connection.isNull())
        return {};
    try {
        DirectoryData data;
        DirectoryLoader::load(connection, data);
        return logMemberNames(data.regularMembers, data.guestMembers);
    } catch (const DbException &) {
        return {};
    }
}

void LogsCommand::appendTsvCell(QString &line, const QString &cell)
{
    bool plain = true;
    for (const QChar c : cell) {
        if (c == u'\\' || c == u'\t' || c == u'\r' || c == u'\n') {
            plain = false;
            break;
        }
    }
    if (plain) {
        line += cell;
        return;
    }
    for (const QChar c : cell) {
        switch (c.unicode()) {
        case u'\\':
            line += u"\\\\"_s;
            break;
        case u'\t':
            line += u"\\t"_s;
            break;
        case u'\r':
            line += u"\\r"_s;
            break;
        case u'\n':
            line += u"\\n"_s;
            break;
        default:
            line += c;
        }
    }
}

namespace { } // namespace

qint64 LogsCommand::print(const LogRows &rows, Format format, FILE *out)
{
    QByteArray buffer;
    buffer.reserve(1 << 20);
    QString line;
    QStringList cells;
    for (int row = 0; row < rows.rowCount(); ++row) {
        rows.rowCells(row, cells);
        if (format == Format::Json) {
            buffer
                += QJsonDocument(QJsonArray::fromStringList(cells)).toJson(QJsonDocument::Compact);
        } else {
            line.clear();
            for (qsizetype column = 0; column < cells.size(); ++column) {
                if (column > 0)
                    line += u'\t';
                appendTsvCell(line, cells.at(column));
            }
            buffer += line.toUtf8();
        }
        buffer += '\n';
        if (buffer.size() >= (1 << 20)) {
            std::fwrite(buffer.constData(), 1, size_t(buffer.size()), out);
            buffer.clear();
        }
    }
    std::fwrite(buffer.constData(), 1, size_t(buffer.size()), out);
    std::fflush(out);
    return rows.rowCount();
}

int LogsCommand::run(const Options &options, RegistryHives &hives, const QString &serverDir)
{
    LogSearchRequest request;
    request.filter = options.filter;
    request.logRoot = LogLocations::logRoot(hives, serverDir);
    std::shared_ptr<LogRows> rows;
    switch (options.kind) {
    case LogSearch::Kind::Chat:
        request.names = memberNames(hives, serverDir);
        rows = ChatLogRows::search(request);
        break;
    case LogSearch::Kind::System:
        rows = SystemLogRows::search(request);
        break;
    case LogSearch::Kind::User:
        request.names = memberNames(hives, serverDir);
        rows = UserLogRows::search(request);
        break;
    }
    if (rows)
        print(*rows, options.format, stdout);
    return 0;
}
