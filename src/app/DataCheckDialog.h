#pragma once

#include "DataDoctor.h"

#include <QDialog>

class CVelmarManagerDoc;
class DbSession;
class QLabel;
class QPushButton;
class QStandardItemModel;
class QTableView;

// "数据检查": what is wrong with the server database and the working copy,
// with counts and examples. "修复" makes the repairs that need an edit as
// journal steps of the document (undoable until the save); the save then
// settles the kinds marked as repaired by a save.
class DataCheckDialog final : public QDialog
{
    Q_OBJECT

public:
    DataCheckDialog(CVelmarManagerDoc &document, DbSession &session, QString profilePath,
        QWidget *parent = nullptr);

    static QString titleText(); // "数据检查"
    static QString repairText(); // "修复"

    // Reads the database again and refills the table.
    void examine();
    const QList<DataDoctor::Finding> &findings() const { return m_findings; }
    QString statusText() const;

private:
    void repair();

    CVelmarManagerDoc &m_document;
    DbSession &m_session;
    QString m_profilePath;
    QList<DataDoctor::Finding> m_findings;
    QStandardItemModel *m_model;
    QTableView *m_table;
    QLabel *m_status;
    QPushButton *m_repair;
};
