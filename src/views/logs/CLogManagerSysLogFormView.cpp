#include "CLogManagerSysLogFormView.h"

#include "CLogManagerFilterDlg.h"
#include "SystemLogModel.h"

#include <QLabel>
#include <QTableView>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

CLogManagerSysLogFormView::CLogManagerSysLogFormView(const LogViewContext &context, QWidget *parent)
    : LogFormView(new SystemLogModel, context, parent)
{
    setObjectName(u"sysLogView"_s);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(titleCaption());
    layout->addWidget(filterPanel());
    layout->addWidget(listHeader());
    layout->addWidget(list(), 1);
}
