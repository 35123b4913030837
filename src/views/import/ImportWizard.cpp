#include "ImportWizard.h"

#include "CVelmarManagerDoc.h"
#include "ImportMappingPage.h"
#include "ImportRefusalsDialog.h"
#include "ImportSourcePage.h"
#include "ImportTablePage.h"
#include "OdbcImportSource.h"

#include <QAbstractButton>
#include <QCoreApplication>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QPixmap>
#include <QProgressDialog>
#include <QPushButton>

using namespace Qt::StringLiterals;

ImportWizard::ImportWizard(ImportWizardContext context, QWidget *parent)
    : QWizard(parent)
    , m_context(std::move(context))
{
    setObjectName(u"importWizard"_s);
    setWindowTitle(u"使用外部数据"_s);
    setAccessibleName(windowTitle());
    if (!m_context.chooseFile) {
        m_context.chooseFile = [](QWidget *parent, const QString &title, const QString &filter) {
            return QFileDialog::getOpenFileName(parent, title, {}, filter);
        };
    }
    if (!m_context.dataSourceNames)
        m_context.dataSourceNames = [] {
            QStringList names;
            for (const OdbcImportSource::DataSource &source : OdbcImportSource::dataSources())
                names.append(source.name);
            return names;
        };

    const struct
    {
        WizardButton which;
        QString text;
        QString name;
        QString accessibleName;
    } buttons[] = {
        { BackButton, u"< 上一步(&B)"_s, u"importBack"_s, u"上一步"_s },
        { NextButton, u"下一步(&N) >"_s, u"importNext"_s, u"下一步"_s },
        { FinishButton, u"完成(&F)"_s, u"importFinish"_s, u"完成"_s },
        { CancelButton, u"取消"_s, u"importCancel"_s, u"取消"_s },
    };
    for (const auto &entry : buttons) {
        setButtonText(entry.which, entry.text);
        button(entry.which)->setObjectName(entry.name);
        button(entry.which)->setAccessibleName(entry.accessibleName);
    }
    setOption(QWizard::NoBackButtonOnStartPage);

    m_sourcePage = new ImportSourcePage(*this, m_context);
    m_tablePage = new ImportTablePage(*this);
    m_mappingPage = new ImportMappingPage(*this);
    setPage(SourcePage, m_sourcePage);
    setPage(TablePage, m_tablePage);
    setPage(MappingPage, m_mappingPage);
    setStartId(SourcePage);
    setPicture();
    resize(900, 640);
}

ImportWizard::~ImportWizard()
{
    closeSource();
}

QString ImportWizard::pageTitle(int page)
{
    switch (page) {
    case SourcePage:
        return u"查询原始数据 - 选择原始"_s;
    case TablePage:
        return u"查询原始数据 - 选择数据表"_s;
    case MappingPage:
        return u"查询原始数据 - 设置数据单项"_s;
    default:
        return {};
    }
}

QString ImportWizard::pictureName()
{
    return u"Wizgration.bmp"_s;
}

QStringList ImportWizard::fieldNames()
{
    return ImportFields::names();
}

void ImportWizard::setPicture()
{
    const QString path = QDir(m_context.programDirectory).filePath(pictureName());
    if (m_context.programDirectory.isEmpty() || !QFileInfo::exists(path))
        return;
    const QPixmap picture(path);
    if (picture.isNull())
        return;
    for (QWizardPage *page : { static_cast<QWizardPage *>(m_sourcePage),
             static_cast<QWizardPage *>(m_tablePage), static_cast<QWizardPage *>(m_mappingPage) })
        page->setPixmap(QWizard::WatermarkPixmap, picture);
}

ImportSourceAddress ImportWizard::textAddress(const QString &file)
{
    return ImportSourceAddress::csv(file);
}

ImportSourceAddress ImportWizard::sqliteAddress(const QString &file)
{
    return ImportSourceAddress::sqlite(file);
}

ImportSourceAddress ImportWizard::odbcAddress(const QString &connectionString)
{
    return ImportSourceAddress::odbc(connectionString);
}

ImportSourceAddress ImportWizard::ldapAddress(const QString &url, const QString &bindDn,
    const QString &password, const QString &base, const QString &filter)
{
    // A whole LDAP URL (base, scope and filter in it) is taken as it is;
    // the fields given beside it win.
    ImportSourceAddress address;
    if (std::optional<ImportSourceAddress> parsed = ImportSourceAddress::parse(url);
        parsed && parsed->kind == ImportSourceAddress::Kind::Ldap)
        address = *parsed;
    else {
        address.kind = ImportSourceAddress::Kind::Ldap;
        address.location = url;
    }
    if (!bindDn.isEmpty())
        address.bindDn = bindDn;
    if (!password.isEmpty())
        address.password = password;
    if (!base.isEmpty())
        address.searchBase = base;
    if (!filter.isEmpty())
        address.filter = filter;
    return address;
}

bool ImportWizard::openSource(const ImportSourceAddress &address, QString *error)
{
    closeSource();
    if (address.location.isEmpty()) {
        *error = address.kind == ImportSourceAddress::Kind::Ldap ? u"请输入服务器 URL."_s
            : address.kind == ImportSourceAddress::Kind::Odbc ? u"请选择数据源或输入连接字符串."_s
                                                              : u"请选择文件."_s;
        return false;
    }
    // The table list too asks the server, so it is read in the same trip.
    QString why;
    QStringList tables;
    m_source = m_sourceThread.run([&address, &why, &tables] {
        std::unique_ptr<ImportSource> source = ImportSource::open(address, &why);
        if (source)
            tables = source->tables();
        return source;
    });
    if (!m_source) {
        *error = why;
        return false;
    }
    m_sourceTables = std::move(tables);
    return true;
}

void ImportWizard::reject()
{
    if (m_sourceThread.isRunning())
        return;
    QWizard::reject();
}

void ImportWizard::closeSource()
{
    m_sourceThread.close(std::move(m_source));
    m_sourceTables.clear();
    m_table = {};
    m_tableName.clear();
    m_tableLoaded = false;
}

std::optional<ImportTable> ImportWizard::readTable(const QString &name, int maxRows, QString *error)
{
    if (!m_source) {
        *error = u"没有打开的数据源."_s;
        return std::nullopt;
    }
    ImportSource *source = m_source.get();
    QString why;
    ImportTable table = m_sourceThread.run(
        [source, &name, maxRows, &why] { return source->read(name, maxRows, &why); });
    if (!why.isEmpty()) {
        *error = why;
        return std::nullopt;
    }
    return table;
}

bool ImportWizard::loadTable(QString *error)
{
    const QString name = m_tablePage->tableName();
    if (m_tableLoaded && name == m_tableName)
        return true;
    m_tableLoaded = false;
    m_table = {};
    std::optional<ImportTable> table = readTable(name, -1, error);
    if (!table)
        return false;
    m_table = std::move(*table);
    m_tableName = name;
    m_tableLoaded = true;
    return true;
}

ImportFields::Mapping ImportWizard::toMapping(const QList<int> &columns)
{
    ImportFields::Mapping mapping = ImportFields::emptyMapping();
    for (int field = 0; field < ImportFields::FieldCount && field < columns.size(); ++field)
        mapping[field] = columns.at(field);
    return mapping;
}

QList<int> ImportWizard::guessMapping() const
{
    const ImportFields::Mapping guessed = ImportFields::guessMapping(m_table.columns);
    return QList<int>(guessed.begin(), guessed.end());
}

QList<ImportPreviewModel::Row> ImportWizard::preview(const QList<int> &mapping) const
{
    QList<ImportPreviewModel::Row> rows;
    if (!m_tableLoaded)
        return rows;
    const QList<MemberImporter::RowPreview> previews
        = MemberImporter(m_context.document).preview(m_table, toMapping(mapping));
    rows.reserve(previews.size());
    for (const MemberImporter::RowPreview &preview : previews)
        rows.append({ int(preview.row), preview.member, preview.refusal });
    return rows;
}

void ImportWizard::accept()
{
    const ImportFields::Mapping mapping = toMapping(m_mappingPage->mapping());
    const bool skip = m_mappingPage->skipRefused();

    MemberImporter::Progress progress;
    std::unique_ptr<QProgressDialog> dialog;
    if (m_table.rowCount() > ProgressRows) {
        dialog = std::make_unique<QProgressDialog>(
            u"正在添加会员..."_s, u"取消"_s, 0, int(m_table.rowCount()), this);
        dialog->setObjectName(u"importProgress"_s);
        dialog->setWindowTitle(windowTitle());
        dialog->setAccessibleName(u"正在添加会员"_s);
        dialog->setWindowModality(Qt::WindowModal);
        dialog->setMinimumDuration(0);
        dialog->setAutoClose(false);
        dialog->setAutoReset(false);
        if (auto *cancel = dialog->findChild<QPushButton *>())
            cancel->setAccessibleName(u"取消"_s);
        progress = [&dialog](qsizetype done, qsizetype total) {
            // Shown from the first report on, and its cancel button heard at
            // every report: the dialog's own timing would show it late.
            if (!dialog->isVisible())
                dialog->show();
            dialog->setMaximum(int(total));
            dialog->setValue(int(done));
            QCoreApplication::processEvents();
            return !dialog->wasCanceled();
        };
    }
    const MemberImporter::Result result
        = MemberImporter(m_context.document).apply(m_table, mapping, skip, progress);
    dialog.reset();
    m_result = result;
    Q_EMIT imported(result);
    if (result.cancelled) {
        // Nothing was added: the administrator may change the mapping and finish again.
        m_mappingPage->noteCancelled();
        return;
    }
    QWizard::accept();
    if (result.refused.isEmpty())
        return;
    if (skip)
        reportSkipped(result, mapping);
    else if (m_context.showRefusal)
        m_context.showRefusal(result.refused.first().refusal);
}

void ImportWizard::reportSkipped(
    const MemberImporter::Result &result, const ImportFields::Mapping &mapping)
{
    QList<ImportRefusalsDialog::Entry> entries;
    const int idColumn = mapping[ImportFields::UserId];
    for (const MemberImporter::RefusedRow &refused : result.refused) {
        const qsizetype at = refused.row - 1;
        QString loginName;
        if (at >= 0 && at < m_table.rowCount() && idColumn >= 0)
            loginName = m_table.rows.at(at).value(idColumn);
        entries.append({ int(refused.row), loginName, refused.refusal.text });
    }
    // Shown over the window the wizard was opened from: the wizard is closed.
    auto *report = new ImportRefusalsDialog(result.added, entries, parentWidget());
    report->setAttribute(Qt::WA_DeleteOnClose);
    report->open();
}
