#pragma once

#include "LogRows.h"
#include "LogSearch.h"

#include <atomic>
#include <functional>
#include <memory>
#include <QAbstractTableModel>
#include <QPointer>
#include <QStringList>

class QThread;

// The list of a log view. A search reads on a worker thread and hands the
// whole result over at once; until then the list is empty and loading() is
// true, so selections never act on a half-filled list. A new search cancels
// the one still running, whose result is then dropped.
class LogTableModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    ~LogTableModel() override;

    // Clears the list, sets loading and starts reading for request.
    void search(const LogSearchRequest &request);
    // Stops a running search; the list stays empty and loading ends.
    void cancel();
    bool isLoading() const { return m_loading; }
    bool isSearching() const { return m_worker != nullptr; }

    QStringList captions() const { return m_captions; }
    QList<int> columnWidths() const { return m_widths; }

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(
        int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    const LogRows *rows() const { return m_rows.get(); }

Q_SIGNALS:
    void loadingChanged(bool loading);
    // How far the reading got, of how much: bytes of the accepted files for
    // the system and user logs, files for the chat list.
    void searchProgress(qint64 done, qint64 total);
    // The list holds the result (not emitted for a cancelled search).
    void searchFinished();

protected:
    using Reader = std::function<std::shared_ptr<LogRows>(const LogSearchControl &)>;

    LogTableModel(QStringList captions, QList<int> widths, QObject *parent);
    // The reading a search runs on the worker thread; it must not touch the model.
    virtual Reader reader(const LogSearchRequest &request) const = 0;
    // Fills in a refill that does not search (the user log's member tree).
    void setLoading(bool loading);
    void replaceRows(std::shared_ptr<LogRows> rows);
    std::shared_ptr<LogRows> m_rows;

private:
    void stopWorker();
    void deliver(quint64 generation, std::shared_ptr<LogRows> rows);

    QStringList m_captions;
    QList<int> m_widths;
    bool m_loading = false;
    quint64 m_generation = 0;
    QThread *m_worker = nullptr;
    std::shared_ptr<std::atomic_bool> m_cancelled;
};
