#include "LogTableModel.h"

#include <QThread>

LogTableModel::LogTableModel(QStringList captions, QList<int> widths, QObject *parent)
    : QAbstractTableModel(parent)
    , m_captions(std::move(captions))
    , m_widths(std::move(widths))
{ }

LogTableModel::~LogTableModel()
{
    stopWorker();
}

void LogTableModel::stopWorker()
{
    if (!m_worker)
        return;
    m_cancelled->store(true);
    // The worker only reads files and checks the flag between lines of
    // work; its result, queued to this model, is dropped by the generation.
    m_worker->wait();
    delete m_worker;
    m_worker = nullptr;
}

void LogTableModel::search(const LogSearchRequest &request)
{
    stopWorker();
    ++m_generation;
    beginResetModel();
    m_rows.reset();
    endResetModel();
    setLoading(true);

    m_cancelled = std::make_shared<std::atomic_bool>(false);
    const quint64 generation = m_generation;
    QPointer<LogTableModel> self(this);
    Reader read = reader(request);
    std::shared_ptr<std::atomic_bool> cancelled = m_cancelled;
    m_worker = QThread::create([self, read, cancelled, generation] {
        const LogSearchControl control(
            cancelled.get(), [self, cancelled, generation](qint64 done, qint64 total) {
                if (cancelled->load())
                    return;
                QMetaObject::invokeMethod(
                    self.data(),
                    [self, generation, done, total] {
                        if (self && self->m_generation == generation)
                            Q_EMIT self->searchProgress(done, total);
                    },
                    Qt::QueuedConnection);
            });
        std::shared_ptr<LogRows> rows = read(control);
        if (cancelled->load())
            return;
        QMetaObject::invokeMethod(
            self.data(),
            [self, generation, rows] {
                if (self)
                    self->deliver(generation, rows);
            },
            Qt::QueuedConnection);
    });
    m_worker->start();
}

void LogTableModel::deliver(quint64 generation, std::shared_ptr<LogRows> rows)
{
    if (generation != m_generation)
        return;
    if (m_worker) {
        m_worker->wait();
        delete m_worker;
        m_worker = nullptr;
    }
    replaceRows(std::move(rows));
    setLoading(false);
    Q_EMIT searchFinished();
}

void LogTableModel::cancel()
{
    if (!m_worker)
        return;
    stopWorker();
    ++m_generation;
    setLoading(false);
}

void LogTableModel::replaceRows(std::shared_ptr<LogRows> rows)
{
    beginResetModel();
    m_rows = std::move(rows);
    endResetModel();
}

void LogTableModel::setLoading(bool loading)
{
    if (m_loading == loading)
        return;
    m_loading = loading;
    Q_EMIT loadingChanged(loading);
}

int LogTableModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() || !m_rows ? 0 : m_rows->rowCount();
}

int LogTableModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_captions.size());
}

QVariant LogTableModel::data(const QModelIndex &index, int role) const
{
    if (!m_rows || !checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    if (role == Qt::DisplayRole || role == Qt::ToolTipRole)
        return m_rows->cell(index.row(), index.column());
    return {};
}

QVariant LogTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section >= m_captions.size())
        return QAbstractTableModel::headerData(section, orientation, role);
    if (role == Qt::DisplayRole)
        return m_captions.at(section);
    return {};
}
