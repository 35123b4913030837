#pragma once

#include <QDialog>

// "VelmarManager 信息": the console's product name and version.
class CAboutDlg : public QDialog
{
    Q_OBJECT

public:
    explicit CAboutDlg(QWidget *parent = nullptr);

    // The version the console was built as.
    static QString productVersion();
};
