#pragma once

#include <QDialog>

class MessageService;
class QLineEdit;

// Adds one site to the client's site list: a display name and an address.
class CEditHomepageDlg final : public QDialog
{
    Q_OBJECT

public:
    explicit CEditHomepageDlg(MessageService &messages, QWidget *parent = nullptr);

    QString name() const;
    QString address() const;

public Q_SLOTS:
    void accept() override;

private:
    MessageService &m_messages;
    QLineEdit *m_name;
    QLineEdit *m_address;
};
