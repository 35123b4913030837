#pragma once

#include <QObject>
#include <QString>

// The one document of the console. It will hold the edited data sets; the
// save command writes them back. Until then it carries the modified flag that
// the save-on-close question reads, and the names of the document template.
class CVelmarManagerDoc : public QObject
{
    Q_OBJECT

public:
    // Fields of the template string, in the order they appear in it.
    enum TemplateField {
        WindowTitle,
        DocName,
        FileNewName,
        FilterName,
        FilterExt,
        RegFileTypeId,
        RegFileTypeName,
    };

    // "VelmarManager\n\nVelmarMa\n\n\nVelmarManager.Document\nVelmarMa Document"
    static const QString TemplateString;
    // One field of the template string; empty for a field it leaves empty.
    static QString templateField(TemplateField field);
    static QString windowTitle() { return templateField(WindowTitle); }
    // The template leaves its document-name field empty, so documents are
    // named by the name given to new ones: "VelmarMa".
    static QString documentName() { return templateField(FileNewName); }

    explicit CVelmarManagerDoc(QObject *parent = nullptr);

    bool isModified() const { return m_modified; }
    void setModified(bool modified);

Q_SIGNALS:
    void modifiedChanged(bool modified);

private:
    bool m_modified = false;
};
