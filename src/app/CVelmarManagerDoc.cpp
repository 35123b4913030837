#include "CVelmarManagerDoc.h"

#include <QStringList>

using namespace Qt::StringLiterals;

const QString CVelmarManagerDoc::TemplateString
    = u"VelmarManager\n\nVelmarMa\n\n\nVelmarManager.Document\nVelmarMa Document"_s;

QString CVelmarManagerDoc::templateField(TemplateField field)
{
    const QStringList fields = TemplateString.split(u'\n');
    const int index = int(field);
    return index < fields.size() ? fields.at(index) : QString();
}

CVelmarManagerDoc::CVelmarManagerDoc(QObject *parent)
    : QObject(parent)
{
    setObjectName(u"document"_s);
}

void CVelmarManagerDoc::setModified(bool modified)
{
    if (m_modified == modified)
        return;
    m_modified = modified;
    Q_EMIT modifiedChanged(modified);
}
