#include "AccessCommand.h"

#include "AccessOverview.h"
#include "AccessOverviewModel.h"
#include "CVelmarManagerDoc.h"
#include "Directory.h"

#include <QJsonArray>
#include <QJsonDocument>

using namespace Qt::StringLiterals;

namespace {

// Tabs and line ends inside a cell would break the line format.
QString tsvCell(const QString &cell)
{
    QString out;
    out.reserve(cell.size());
    for (const QChar c : cell) {
        switch (c.unicode()) {
        case u'\\':
            out += u"\\\\"_s;
            break;
        case u'\t':
            out += u"\\t"_s;
            break;
        case u'\r':
            out += u"\\r"_s;
            break;
        case u'\n':
            out += u"\\n"_s;
            break;
        default:
            out += c;
        }
    }
    return out;
}

} // namespace

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
            QStringList escaped;
            for (const QString &cell : cells)
                escaped.append(tsvCell(cell));
            buffer += escaped.join(u'\t').toUtf8();
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
