#include "AccessCommand.h"

#include "AccessOverview.h"
#include "AccessOverviewModel.h"
#include "CVelmarManagerDoc.h"
#include "Directory.h"
#include "LogsCommand.h"

#include <QJsonArray>
#include <QJsonDocument>

using namespace Qt::StringLiterals;

bool AccessCommand::run(
    const Options &options, const CVelmarManagerDoc &document, FILE *out, QString *error)
{
    AccessOverviewModel model(document);
    if (options.folder) {
        const qint32 folderId = document.fileBox().folderIdByPath(options.subject);
        if (folderId < 0) {
            *error = u"no folder has the path %1"_s.arg(options.subject);
            return false;
        }
        model.showFolder(folderId);
    } else {
        const UserInfo *member
            = AccessOverview::memberByLoginName(*document.directory(), options.subject);
        if (!member) {
            *error = u"no member has the user ID %1"_s.arg(options.subject);
            return false;
        }
        model.showMember(member->id);
    }

    QByteArray buffer;
    for (int row = 0; row < model.rowCount(); ++row) {
        const QStringList cells = model.rowCells(row);
        if (options.format == Format::Json) {
            buffer
                += QJsonDocument(QJsonArray::fromStringList(cells)).toJson(QJsonDocument::Compact);
        } else {
            QString line;
            for (qsizetype i = 0; i < cells.size(); ++i) {
                if (i > 0)
                    line += u'\t';
                LogsCommand::appendTsvCell(line, cells.at(i));
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
    return true;
}
