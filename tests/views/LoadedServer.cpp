#include "LoadedServer.h"

#include "DbSession.h"
#include "ServerDataFixture.h"
#include "ServerDataSaver.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QDropEvent>
#include <QFile>

using namespace Qt::StringLiterals;

std::unique_ptr<TestDatabase> serverDatabase(
    TempServerDir &dir, const QStringList &statements, QString *error)
{
    auto db = std::make_unique<TestDatabase>(TestDatabase::Backend::SqliteFile, dir.programDir());
    if (db->isValid() && db->writeConnectionString(dir.hives()) && db->execAll(statements))
        return db;
    *error = db->errorString();
    return nullptr;
}

QByteArray viewTestData(const QString &name)
{
    QFile file(QStringLiteral(VELMAR_VIEW_TEST_DATA) + u'/' + name);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("cannot read %s", qPrintable(file.fileName()));
    return file.readAll();
}

QStringList sqlFile(const QString &name)
{
    QStringList statements;
    for (const QString &line : QString::fromUtf8(viewTestData(name)).split(u'\n')) {
        if (!line.trimmed().isEmpty() && !line.startsWith(u"--"_s))
            statements << line;
    }
    return statements;
}

bool LoadedServer::start(const QStringList &extraStatements, QString *error)
{
    db = serverDatabase(dir, populatedDatabase() + extraStatements, error);
    if (!db)
        return false;
    const ThreadRun run = runReadThread(dir, document, messages);
    if (run.exitResult != 1 || document.loadState() != CVelmarManagerDoc::LoadState::Complete) {
        *error = u"the load failed: "_s + run.events.join(u", "_s);
        return false;
    }
    return true;
}

bool LoadedServer::save(QString *error)
{
    DbSession session(dir.hives(), dir.iniPath(), dir.databasePath(), messages);
    ServerDataSaver saver(
        document, session, messages, dir.iniPath(), dir.hives(), dir.programDir());
    saver.setPause([](int) {});
    const ServerDataSaver::Result result = saver.save(true);
    if (!result.ok()) {
        *error = result.error.formatted() + messages.boxTexts().join(u"; "_s);
        return false;
    }
    return true;
}

bool dragTo(QAbstractItemView *view, const QPoint &pos, const QMimeData *data, bool drop)
{
    QWidget *viewport = view->viewport();
    const Qt::DropActions actions = Qt::CopyAction | Qt::MoveAction;
    QDragEnterEvent enter(pos, actions, data, Qt::LeftButton, {});
    QApplication::sendEvent(viewport, &enter);
    QDragMoveEvent move(pos, actions, data, Qt::LeftButton, {});
    QApplication::sendEvent(viewport, &move);
    if (!drop) {
        QDragLeaveEvent leave;
        QApplication::sendEvent(viewport, &leave);
        return move.isAccepted() && move.dropAction() == Qt::MoveAction;
    }
    if (!enter.isAccepted() || !move.isAccepted())
        return false;
    QDropEvent event(QPointF(pos), actions, data, Qt::LeftButton, {});
    QApplication::sendEvent(viewport, &event);
    return event.isAccepted();
}
