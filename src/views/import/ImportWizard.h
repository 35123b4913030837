#pragma once

#include "ImportFields.h"
#include "ImportPreviewModel.h"
#include "ImportSource.h"
#include "ImportSourceThread.h"
#include "ImportWizardContext.h"
#include "MemberImporter.h"

#include <memory>
#include <optional>
#include <QWizard>

class ImportMappingPage;
class ImportSourcePage;
class ImportTablePage;

// "使用外部数据": adds members in bulk from an outside source in three
// pages - the source, its table, the column of each member field - and on
// "完成" adds the rows as one step of the journal, each through the checks a
// member typed into the grid meets. By default the first refused row stops
// the import (the rows before it stay added) and its refusal is shown as the
// member grid shows it; with "跳过不能导入的行" every acceptable row is added
// and the skipped ones are listed at the end. Cancelling on any page changes
// nothing. The picture "Wizgration.bmp" of the server folder stands on each
// page when there is one.
class ImportWizard final : public QWizard
{
    Q_OBJECT

public:
    enum PageId { SourcePage, TablePage, MappingPage };
    // More rows than this are added under a progress dialog that can cancel.
    static constexpr int ProgressRows = 300;

    explicit ImportWizard(ImportWizardContext context, QWidget *parent = nullptr);
    ~ImportWizard() override;

    static QString pageTitle(int page);
    static QString pictureName(); // Wizgration.bmp
    static QStringList fieldNames();

    ImportSourcePage *sourcePage() const { return m_sourcePage; }
    ImportTablePage *tablePage() const { return m_tablePage; }
    ImportMappingPage *mappingPage() const { return m_mappingPage; }

    // The source page's fields as an import source.
    static ImportSourceAddress textAddress(const QString &file);
    static ImportSourceAddress sqliteAddress(const QString &file);
    static ImportSourceAddress odbcAddress(const QString &connectionString);
    static ImportSourceAddress ldapAddress(const QString &url, const QString &bindDn,
        const QString &password, const QString &base, const QString &filter);

    // Whether a source is open, and its tables. The source is opened, read
    // and closed on a thread of its own: a slow server does not freeze the
    // window.
    bool hasSource() const { return m_source != nullptr; }
    const QStringList &sourceTables() const { return m_sourceTables; }
    bool openSource(const ImportSourceAddress &address, QString *error);
    void closeSource();

    // The first maxRows rows of a table of the source; nothing and why in
    // error when it cannot be read.
    std::optional<ImportTable> readTable(const QString &name, int maxRows, QString *error);
    // Reads the table chosen on the second page in full, for the mapping
    // page and the import.
    bool loadTable(QString *error);
    const ImportTable &table() const { return m_table; }

    // The columns the names suggest, per target field (-1 for none).
    QList<int> guessMapping() const;
    // What every row would become under a mapping; changes nothing.
    QList<ImportPreviewModel::Row> preview(const QList<int> &mapping) const;

    // What the last "完成" did; nothing before one.
    const std::optional<MemberImporter::Result> &lastResult() const { return m_result; }

    // Finishing runs the import; a cancelled progress keeps the wizard open.
    void accept() override;
    // Not while the source is being opened or read: the wizard waits for
    // the answer.
    void reject() override;

Q_SIGNALS:
    // The import ran: result says what was added and what refused.
    void imported(const MemberImporter::Result &result);

private:
    static ImportFields::Mapping toMapping(const QList<int> &columns);
    void setPicture();
    void reportSkipped(const MemberImporter::Result &result, const ImportFields::Mapping &mapping);

    ImportWizardContext m_context;
    ImportSourcePage *m_sourcePage;
    ImportTablePage *m_tablePage;
    ImportMappingPage *m_mappingPage;
    ImportSourceThread m_sourceThread;
    std::unique_ptr<ImportSource> m_source;
    QStringList m_sourceTables;
    ImportTable m_table;
    QString m_tableName;
    bool m_tableLoaded = false;
    std::optional<MemberImporter::Result> m_result;
};
