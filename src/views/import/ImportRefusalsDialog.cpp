#include "ImportRefusalsDialog.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

ImportRefusalsDialog::ImportRefusalsDialog(int added, const QList<Entry> &entries, QWidget *parent)
    : QDialog(parent)
{
    setObjectName(u"importRefusalsDialog"_s);
    setWindowTitle(u"导入完成"_s);
    setAccessibleName(windowTitle());

    auto *layout = new QVBoxLayout(this);
    auto *heading = new QLabel(
        u"已添加 %1 个会员. 以下 %2 行没有导入:"_s.arg(added).arg(entries.size()), this);
    heading->setObjectName(u"importRefusalsHeading"_s);
    layout->addWidget(heading);

    const QString listTitle = u"没有导入的行"_s;
    m_list = new QTableWidget(int(entries.size()), 3, this);
    m_list->setObjectName(u"importRefusalsList"_s);
    m_list->setAccessibleName(listTitle);
    m_list->setHorizontalHeaderLabels({ u"行"_s, u"用户ID"_s, u"原因"_s });
    m_list->verticalHeader()->hide();
    m_list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_list->setSelectionBehavior(QAbstractItemView::SelectRows);
    for (int row = 0; row < entries.size(); ++row) {
        const Entry &entry = entries.at(row);
        auto *number = new QTableWidgetItem;
        number->setData(Qt::DisplayRole, entry.sourceRow);
        m_list->setItem(row, 0, number);
        m_list->setItem(row, 1, new QTableWidgetItem(entry.loginName));
        m_list->setItem(row, 2, new QTableWidgetItem(entry.reason));
    }
    m_list->resizeColumnsToContents();
    m_list->horizontalHeader()->setStretchLastSection(true);
    layout->addWidget(m_list, 1);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok, this);
    QPushButton *ok = buttons->button(QDialogButtonBox::Ok);
    ok->setText(u"确定"_s);
    ok->setObjectName(u"importRefusalsOk"_s);
    ok->setAccessibleName(ok->text());
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    layout->addWidget(buttons);
    resize(560, 360);
}
