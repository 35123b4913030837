#pragma once

#include "SiteListSettings.h"

#include <functional>
#include <QDialog>

class CEditHomepageDlg;
class MessageService;
class QTreeWidget;

// "网站主页设置": the web sites the clients offer under their icon. OK writes
// the list and tells the distribution server (port 55051).
class CSetupHomepageDlg final : public QDialog
{
    Q_OBJECT

public:
    CSetupHomepageDlg(
        const QString &profilePath, MessageService &messages, QWidget *parent = nullptr);

    QTreeWidget *siteList() const { return m_list; }
    void setEditDialogRunner(std::function<int(CEditHomepageDlg &)> runner)
    {
        m_runEdit = std::move(runner);
    }

public Q_SLOTS:
    void addSite();
    void removeSites();
    void accept() override;

private:
    void appendRow(const Site &site);

    SiteListSettings m_settings;
    MessageService &m_messages;
    QTreeWidget *m_list;
    std::function<int(CEditHomepageDlg &)> m_runEdit;
};
