#include "ImportSourcePage.h"

#include "ImportWizard.h"

#include <QApplication>
#include <QButtonGroup>
#include <QFormLayout>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QStackedWidget>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

struct KindText
{
    ImportSourcePage::Kind kind;
    QString name;
    QString title;
};

const QList<KindText> &kindTexts()
{
    using K = ImportSourcePage::Kind;
    static const QList<KindText> texts = {
        { K::Text, u"importKindText"_s, u"文本文件 (逗号或制表符分隔)"_s },
        { K::Sqlite, u"importKindSqlite"_s, u"SQLite 数据库文件"_s },
        { K::Odbc, u"importKindOdbc"_s, u"ODBC 数据源"_s },
        { K::Ldap, u"importKindLdap"_s, u"LDAP 目录"_s },
    };
    return texts;
}

} // namespace

ImportSourcePage::ImportSourcePage(ImportWizard &wizard, const ImportWizardContext &context)
    : m_wizard(wizard)
    , m_context(context)
{
    setObjectName(u"importSourcePage"_s);
    setTitle(ImportWizard::pageTitle(ImportWizard::SourcePage));
    setAccessibleName(title());
    // The fields' first texts open nothing and drop nothing.
    m_filling = true;

    auto *layout = new QVBoxLayout(this);
    auto *intro = new QLabel(u"选择要读取的用户信息来源:"_s, this);
    layout->addWidget(intro);

    m_kinds = new QButtonGroup(this);
    auto *kindRow = new QHBoxLayout;
    for (const KindText &text : kindTexts()) {
        auto *button = new QRadioButton(text.title, this);
        button->setObjectName(text.name);
        button->setAccessibleName(text.title);
        m_kinds->addButton(button, int(text.kind));
        kindRow->addWidget(button);
    }
    kindRow->addStretch(1);
    layout->addLayout(kindRow);

    m_panes = new QStackedWidget(this);
    m_panes->setObjectName(u"importSourcePanes"_s);
    m_panes->addWidget(makeFilePane(Kind::Text, m_textPath, u"文本文件"_s));
    m_panes->addWidget(makeFilePane(Kind::Sqlite, m_sqlitePath, u"数据库文件"_s));
    m_panes->addWidget(makeOdbcPane());
    m_panes->addWidget(makeLdapPane());
    layout->addWidget(m_panes);
    layout->addSpacing(6);

    auto *openRow = new QHBoxLayout;
    m_open = new QPushButton(u"打开数据源(&C)"_s, this);
    m_open->setObjectName(u"importOpenSource"_s);
    m_open->setAccessibleName(u"打开数据源"_s);
    openRow->addWidget(m_open);
    openRow->addStretch(1);
    layout->addLayout(openRow);
    m_status = new QLabel(this);
    m_status->setObjectName(u"importSourceStatus"_s);
    m_status->setAccessibleName(u"数据源状态"_s);
    m_status->setWordWrap(true);
    m_status->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout->addWidget(m_status);
    layout->addStretch(1);

    connect(m_open, &QPushButton::clicked, this, &ImportSourcePage::openSource);
    connect(m_kinds, &QButtonGroup::idClicked, this, [this](int id) {
        showPane(Kind(id));
        sourceEdited();
    });
    m_filling = false;
    setKind(Kind::Text);
}

QWidget *ImportSourcePage::makeFilePane(Kind kind, QLineEdit *&path, const QString &title)
{
    auto *pane = new QWidget(this);
    auto *form = new QFormLayout(pane);
    form->setContentsMargins(0, 8, 0, 0);
    auto *row = new QHBoxLayout;
    const QString prefix = kind == Kind::Text ? u"importText"_s : u"importSqlite"_s;
    path = makeField(pane, prefix + u"Path"_s, title);
    auto *button = new QPushButton(u"浏览(&B)..."_s, pane);
    button->setObjectName(prefix + u"Browse"_s);
    button->setAccessibleName(u"浏览"_s);
    row->addWidget(path, 1);
    row->addWidget(button);
    form->addRow(title + u":"_s, row);
    if (kind == Kind::Text) {
        auto *hint = new QLabel(
            u"第一行是列名. 分隔符 (逗号或制表符) 由文件内容决定; 编码为 UTF-8 或系统代码页."_s,
            pane);
        hint->setWordWrap(true);
        form->addRow(hint);
    }
    connect(button, &QPushButton::clicked, this, [this, kind] { browse(kind); });
    return pane;
}

QWidget *ImportSourcePage::makeOdbcPane()
{
    auto *pane = new QWidget(this);
    auto *form = new QFormLayout(pane);
    form->setContentsMargins(0, 8, 0, 0);
    m_dataSources = new QListWidget(pane);
    m_dataSources->setObjectName(u"importOdbcDataSources"_s);
    const QString listTitle = u"系统数据源"_s;
    m_dataSources->setAccessibleName(listTitle);
    const QStringList names
        = m_context.dataSourceNames ? m_context.dataSourceNames() : QStringList();
    m_dataSources->addItems(names);
    m_dataSources->setMaximumHeight(m_dataSources->fontMetrics().height() * 8);
    form->addRow(listTitle + u":"_s, m_dataSources);
    if (names.isEmpty()) {
        auto *none = new QLabel(u"系统中没有配置的数据源 (odbc.ini). 可以直接输入连接字符串, 例如 "
                                "DRIVER=SQLite3;Database=/路径/文件.db"_s,
            pane);
        none->setObjectName(u"importOdbcNone"_s);
        none->setWordWrap(true);
        form->addRow(none);
    }
    m_connectionString = makeField(pane, u"importOdbcConnection"_s, u"连接字符串"_s);
    m_connectionString->setPlaceholderText(u"DSN=名称;UID=用户;PWD=密码"_s);
    form->addRow(u"连接字符串:"_s, m_connectionString);
    // A data source chosen in the list is its connection string, which
    // can then be completed (user name, password).
    connect(m_dataSources, &QListWidget::currentTextChanged, this, [this](const QString &name) {
        if (!name.isEmpty())
            m_connectionString->setText(u"DSN=%1;"_s.arg(name));
    });
    connect(m_dataSources, &QListWidget::itemActivated, this, [this] { openSource(); });
    return pane;
}

QWidget *ImportSourcePage::makeLdapPane()
{
    auto *pane = new QWidget(this);
    auto *form = new QFormLayout(pane);
    form->setContentsMargins(0, 8, 0, 0);
    m_ldapUrl = makeField(pane, u"importLdapUrl"_s, u"服务器 URL"_s);
    m_ldapUrl->setPlaceholderText(u"ldap://localhost:389"_s);
    m_ldapBindDn = makeField(pane, u"importLdapBindDn"_s, u"绑定 DN"_s);
    m_ldapBindDn->setPlaceholderText(u"cn=admin,dc=example,dc=com (空: 匿名)"_s);
    m_ldapPassword = makeField(pane, u"importLdapPassword"_s, u"密码"_s);
    m_ldapPassword->setEchoMode(QLineEdit::Password);
    m_ldapBase = makeField(pane, u"importLdapBase"_s, u"搜索基准"_s);
    m_ldapBase->setPlaceholderText(u"ou=people,dc=example,dc=com"_s);
    m_ldapFilter = makeField(pane, u"importLdapFilter"_s, u"过滤器"_s);
    m_ldapFilter->setText(u"(objectClass=*)"_s);
    for (QLineEdit *field : { m_ldapUrl, m_ldapBindDn, m_ldapPassword, m_ldapBase, m_ldapFilter })
        form->addRow(field->accessibleName() + u":"_s, field);
    return pane;
}

QLineEdit *ImportSourcePage::makeField(QWidget *parent, const QString &name, const QString &title)
{
    auto *field = new QLineEdit(parent);
    field->setObjectName(name);
    field->setAccessibleName(title);
    connect(field, &QLineEdit::textChanged, this, &ImportSourcePage::sourceEdited);
    connect(field, &QLineEdit::returnPressed, this, &ImportSourcePage::openSource);
    return field;
}

ImportSourcePage::Kind ImportSourcePage::kind() const
{
    return Kind(m_kinds->checkedId());
}

void ImportSourcePage::setKind(Kind kind)
{
    m_kinds->button(int(kind))->setChecked(true);
    showPane(kind);
    sourceEdited();
}

void ImportSourcePage::showPane(Kind kind)
{
    // The stack takes the height of the pane shown, not of the tallest, so
    // that the open button stays under the fields.
    for (int index = 0; index < m_panes->count(); ++index) {
        m_panes->widget(index)->setSizePolicy(QSizePolicy::Preferred,
            index == int(kind) ? QSizePolicy::Preferred : QSizePolicy::Ignored);
    }
    m_panes->setCurrentIndex(int(kind));
    m_panes->adjustSize();
}

void ImportSourcePage::browse(Kind kind)
{
    if (!m_context.chooseFile)
        return;
    QLineEdit *path = kind == Kind::Text ? m_textPath : m_sqlitePath;
    const QString title = kind == Kind::Text ? u"选择文本文件"_s : u"选择数据库文件"_s;
    const QString filter = kind == Kind::Text
        ? u"文本文件 (*.csv *.txt *.tsv *.tab);;所有文件 (*)"_s
        : u"SQLite 数据库 (*.db *.sqlite *.sqlite3 *.mdb);;所有文件 (*)"_s;
    const QString chosen = m_context.chooseFile(this, title, filter);
    if (chosen.isEmpty())
        return;
    path->setText(chosen);
    openSource();
}

bool ImportSourcePage::openTextFile(const QString &path)
{
    setKind(Kind::Text);
    m_textPath->setText(path);
    return openSource();
}

void ImportSourcePage::sourceEdited()
{
    if (m_filling)
        return;
    const bool hadSource = m_wizard.hasSource();
    m_wizard.closeSource();
    m_status->clear();
    if (hadSource)
        Q_EMIT completeChanged();
}

bool ImportSourcePage::openSource()
{
    ImportSourceAddress address;
    switch (kind()) {
    case Kind::Text:
        address = ImportWizard::textAddress(m_textPath->text().trimmed());
        break;
    case Kind::Sqlite:
        address = ImportWizard::sqliteAddress(m_sqlitePath->text().trimmed());
        break;
    case Kind::Odbc:
        address = ImportWizard::odbcAddress(m_connectionString->text().trimmed());
        break;
    case Kind::Ldap:
        address = ImportWizard::ldapAddress(m_ldapUrl->text().trimmed(), m_ldapBindDn->text(),
            m_ldapPassword->text(), m_ldapBase->text().trimmed(), m_ldapFilter->text().trimmed());
        break;
    }
    m_status->setProperty("error", false);
    m_status->setStyleSheet({});
    m_status->setText(u"正在打开数据源..."_s);
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    QString error;
    const bool opened = m_wizard.openSource(address, &error);
    QGuiApplication::restoreOverrideCursor();
    if (!opened) {
        showError(error);
        Q_EMIT completeChanged();
        return false;
    }
    m_status->setProperty("error", false);
    m_status->setStyleSheet({});
    const int tables = int(m_wizard.sourceTables().size());
    m_status->setText(u"数据源已打开: %1 个数据表. 请按 \"下一步\"."_s.arg(tables));
    Q_EMIT completeChanged();
    return true;
}

void ImportSourcePage::showError(const QString &text)
{
    m_status->setProperty("error", true);
    m_status->setStyleSheet(u"color: #b00020;"_s);
    m_status->setText(text.isEmpty() ? u"无法打开数据源: 未知错误."_s : text);
}

QString ImportSourcePage::errorText() const
{
    return m_status->property("error").toBool() ? m_status->text() : QString();
}

bool ImportSourcePage::isComplete() const
{
    return m_wizard.hasSource();
}
