#include "CProgressDlg.h"

#include <QCloseEvent>
#include <QLabel>
#include <QProgressBar>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

CProgressDlg::CProgressDlg(QWidget *parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint)
    , m_label(new QLabel(this))
    , m_bar(new QProgressBar(this))
{
    setObjectName(u"progressDialog"_s);
    setWindowTitle(u"打开数据库."_s);
    setModal(false);
    m_label->setObjectName(u"progressText"_s);
    m_label->setTextFormat(Qt::PlainText);
    m_label->setMinimumWidth(280);
    m_bar->setObjectName(u"progressBar"_s);
    m_bar->setTextVisible(false);
    setRange(0);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_label);
    layout->addWidget(m_bar);
    setFixedSize(sizeHint());
}

QString CProgressDlg::text() const
{
    return m_label->text();
}

int CProgressDlg::position() const
{
    return m_bar->value();
}

void CProgressDlg::setText(const QString &text)
{
    m_label->setText(text);
}

void CProgressDlg::setRange(int maximum)
{
    m_maximum = qMax(0, maximum);
    // A bar with the range 0..0 would turn into a busy indicator; an empty
    // table should look like an empty bar instead.
    m_bar->setRange(0, qMax(1, m_maximum));
    m_bar->setValue(0);
}

void CProgressDlg::setPosition(int position)
{
    m_bar->setValue(qBound(0, position, qMax(1, m_maximum)));
}

void CProgressDlg::reject()
{
    // Escape must not close the dialog while the load runs.
}

void CProgressDlg::closeEvent(QCloseEvent *event)
{
    // The user cannot close it; the code that started the load closes it.
    if (event->spontaneous())
        event->ignore();
    else
        event->accept();
}
