#include "CAboutDlg.h"

#include "ProductVersion.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

CAboutDlg::CAboutDlg(const QString &programDirectory, QWidget *parent)
    : QDialog(parent)
    , m_versionList(new QPlainTextEdit(this))
{
    setObjectName(u"aboutDialog"_s);
    setWindowTitle(u"关于 VelmarManager"_s);
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);

    auto *icon = new QLabel(this);
    icon->setPixmap(style()->standardIcon(QStyle::SP_ComputerIcon).pixmap(48, 48));
    icon->setAlignment(Qt::AlignTop);

    auto *product = new QLabel(u"VelmarManager %1 版"_s.arg(productVersion()), this);
    product->setObjectName(u"productLabel"_s);
    QFont bold = product->font();
    bold.setBold(true);
    product->setFont(bold);
    auto *description = new QLabel(u"Velmar Messenger 服务器管理程序"_s, this);
    description->setObjectName(u"descriptionLabel"_s);
    auto *toolkit = new QLabel(u"Qt %1"_s.arg(QString::fromLatin1(qVersion())), this);
    toolkit->setObjectName(u"toolkitLabel"_s);

    auto *ok = new QPushButton(u"确定"_s, this);
    ok->setObjectName(u"okButton"_s);
    ok->setDefault(true);
    connect(ok, &QPushButton::clicked, this, &QDialog::accept);

    auto *texts = new QVBoxLayout;
    texts->addWidget(product);
    texts->addWidget(description);
    texts->addWidget(toolkit);
    texts->addStretch();
    auto *top = new QHBoxLayout;
    top->addWidget(icon);
    top->addLayout(texts, 1);
    top->addWidget(ok, 0, Qt::AlignTop);
    m_versionList->setObjectName(u"versionList"_s);
    m_versionList->setReadOnly(true);
    m_versionList->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_versionList->setTabStopDistance(m_versionList->fontMetrics().horizontalAdvance(u' ') * 8);
    QString list = ProductVersion::daemonVersionList(programDirectory);
    // The list's lines end in CR LF; the text box breaks at the LF.
    list.replace(u"\r\n"_s, u"\n"_s);
    m_versionList->setPlainText(list);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(m_versionList);
    resize(440, 320);
}

QString CAboutDlg::productVersion()
{
    return GetProductVersion(QString());
}
