#pragma once

#include "ServerDataSaver.h"

#include <QDialog>

class QPlainTextEdit;
class QPushButton;

// "显示更改": what the save is about to do to the database, counts per table
// first and the rows themselves on request. Opened from the save's
// confirmation; it reads the database once, when it opens.
class SavePreviewDialog final : public QDialog
{
    Q_OBJECT

public:
    SavePreviewDialog(const ServerDataSaver::Preview &preview, QWidget *parent = nullptr);

    static QString titleText(); // "显示更改"
    static QString rowsButtonText(); // "显示行"
    // Rows shown per kind and table (the rest is counted).
    static constexpr int RowLimit = 2000;

    QString shownText() const;

private:
    QPlainTextEdit *m_text;
    QPushButton *m_rows;
};
