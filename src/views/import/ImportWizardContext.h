#pragma once

#include "EditRefusal.h"

#include <functional>
#include <QString>
#include <QStringList>

class CVelmarManagerDoc;
class QWidget;

// What the import wizard is given by the window that opens it.
struct ImportWizardContext
{
    CVelmarManagerDoc &document;
    // The server folder: the wizard's picture "Wizgration.bmp" is looked for there.
    QString programDirectory;
    // Shows the refusal of the row that stopped an import where the console
    // shows a refused member: at the member grid.
    std::function<void(const EditRefusal &)> showRefusal;
    // Asks for a file to read; empty when cancelled. Defaults to the system dialog.
    std::function<QString(QWidget *parent, const QString &title, const QString &filter)> chooseFile;
    // The ODBC data sources the system knows. Defaults to unixODBC's list.
    std::function<QStringList()> dataSourceNames;
};
