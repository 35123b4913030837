#pragma once

#include "ImportWizardContext.h"

#include <QWizardPage>

class ImportWizard;
class QAbstractButton;
class QButtonGroup;
class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QStackedWidget;

// The wizard's first page, "查询原始数据 - 选择原始": where the members come
// from. A text file (comma- or tab-separated), an SQLite file, an ODBC data
// source (one the system knows, or a connection string) or an LDAP
// directory. "打开数据源" opens it (choosing a file opens it at once); why it
// cannot be opened is shown on the page, and "下一步" waits for a source
// that opened. Changing any field drops the opened source.
class ImportSourcePage final : public QWizardPage
{
    Q_OBJECT

public:
    enum class Kind { Text, Sqlite, Odbc, Ldap };

    ImportSourcePage(ImportWizard &wizard, const ImportWizardContext &context);

    Kind kind() const;
    void setKind(Kind kind);
    // Opens the source the fields describe; false with the reason on the page.
    bool openSource();
    // Chooses a text file and opens it, as the file dialog does.
    bool openTextFile(const QString &path);
    // The reason shown for the last failed open (empty after one that opened).
    QString errorText() const;

    bool isComplete() const override;

private:
    QWidget *makeFilePane(Kind kind, QLineEdit *&path, const QString &title);
    QWidget *makeOdbcPane();
    QWidget *makeLdapPane();
    QLineEdit *makeField(QWidget *parent, const QString &name, const QString &title);
    void browse(Kind kind);
    void showPane(Kind kind);
    void sourceEdited();
    void showError(const QString &text);

    ImportWizard &m_wizard;
    ImportWizardContext m_context;
    QButtonGroup *m_kinds = nullptr;
    QStackedWidget *m_panes = nullptr;
    QLineEdit *m_textPath = nullptr;
    QLineEdit *m_sqlitePath = nullptr;
    QListWidget *m_dataSources = nullptr;
    QLineEdit *m_connectionString = nullptr;
    QLineEdit *m_ldapUrl = nullptr;
    QLineEdit *m_ldapBindDn = nullptr;
    QLineEdit *m_ldapPassword = nullptr;
    QLineEdit *m_ldapBase = nullptr;
    QLineEdit *m_ldapFilter = nullptr;
    QPushButton *m_open = nullptr;
    QLabel *m_status = nullptr;
    bool m_filling = false;
};
