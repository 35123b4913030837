#pragma once

#include "AccessOverview.h"

#include <QAbstractTableModel>
#include <QHash>
#include <QList>
#include <QStringList>

class CVelmarManagerDoc;

// The access overview as a table: for one member, the folders its rights
// reach (folder, right, origin); or for one folder, the members its rights
// reach (user ID, name, right, origin). The rows are worked out again
// whenever the document changes, so they never outlive an edit.
class AccessOverviewModel final : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum class Mode { None, Member, Folder };
    enum Role {
        FolderIdRole = Qt::UserRole + 1,
        MemberIdRole,
        GroupIdRole, // -1 for the member's own right
        AuthorityRole,
    };

    explicit AccessOverviewModel(const CVelmarManagerDoc &document, QObject *parent = nullptr);

    void showMember(qint32 memberId);
    void showFolder(qint32 folderId);
    void clear();
    Mode mode() const { return m_mode; }
    qint32 subjectId() const { return m_subject; }
    const QList<AccessEntry> &entries() const { return m_entries; }

    // The shown texts of a row and the column titles, as the table, the CSV
    // export and velmarctl give them.
    QStringList rowCells(int row) const;
    QStringList headerCells() const;
    // Header and rows as comma-separated values (RFC 4180 quoting, CRLF).
    QString toCsv() const;

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(
        int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    void recompute();
    QString cell(const AccessEntry &entry, int column) const;
    QString origin(const AccessEntry &entry) const;

    const CVelmarManagerDoc &m_document;
    Mode m_mode = Mode::None;
    qint32 m_subject = -1;
    QList<AccessEntry> m_entries;
    // Origin texts per group: a folder reaching 100,000 members through a
    // few groups builds each path once.
    mutable QHash<qint32, QString> m_origins;
};
