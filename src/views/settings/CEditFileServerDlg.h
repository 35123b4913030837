#pragma once

#include <QDialog>

class QCheckBox;
class QLineEdit;

// Adds or edits one session server: its IPv4 address and whether it is used.
class CEditFileServerDlg final : public QDialog
{
    Q_OBJECT

public:
    explicit CEditFileServerDlg(QWidget *parent = nullptr);

    // Handed in before showing; an empty address leaves the control empty.
    void setEntry(const QString &address, bool enabled);
    // After OK: the four fields as dotted text (an untouched control is 0.0.0.0).
    QString address() const { return m_address; }
    bool isEnabled() const { return m_enabled; }

    static const QString WarningText;

public Q_SLOTS:
    void accept() override;

private:
    QLineEdit *m_fields[4];
    QCheckBox *m_use;
    QString m_address;
    bool m_enabled = false;
};
