#pragma once

#include <QDialog>

class QPlainTextEdit;

// "VelmarManager 信息": the console's product version, read from its own
// executable, and the versions of the daemons beside it.
class CAboutDlg : public QDialog
{
    Q_OBJECT

public:
    explicit CAboutDlg(const QString &programDirectory, QWidget *parent = nullptr);

    // The version stamped into the console's executable; empty when it has none.
    static QString productVersion();
    QPlainTextEdit *versionList() const { return m_versionList; }

private:
    QPlainTextEdit *m_versionList;
};
