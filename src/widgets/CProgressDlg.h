#pragma once

#include <QDialog>

class QLabel;
class QProgressBar;

// The small modeless dialog shown while the server database is read: one line
// of text and one bar. The loading worker drives it through queued signals
// connected to the three slots; it cannot be cancelled by the user, since a
// load stopped half-way would leave a half-filled directory.
class CProgressDlg : public QDialog
{
    Q_OBJECT

public:
    explicit CProgressDlg(QWidget *parent = nullptr);

    QString text() const;
    int maximum() const { return m_maximum; }
    int position() const;

public Q_SLOTS:
    void setText(const QString &text);
    // The range is 0..maximum; an empty range (0 rows) shows an empty bar.
    void setRange(int maximum);
    void setPosition(int position);

protected:
    void reject() override;
    void closeEvent(QCloseEvent *event) override;

private:
    QLabel *m_label;
    QProgressBar *m_bar;
    int m_maximum = 0;
};
