#include "SavePreviewDialog.h"

#include "SavePreflight.h"

#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

SavePreviewDialog::SavePreviewDialog(const ServerDataSaver::Preview &preview, QWidget *parent)
    : QDialog(parent)
    , m_text(new QPlainTextEdit(this))
    , m_rows(new QPushButton(rowsButtonText(), this))
{
    setObjectName(u"savePreviewDialog"_s);
    setWindowTitle(titleText());
    setAccessibleName(titleText());
    m_text->setObjectName(u"previewText"_s);
    m_text->setAccessibleName(titleText());
    m_text->setReadOnly(true);
    m_text->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_text->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    m_rows->setObjectName(u"rowsButton"_s);
    m_rows->setAccessibleName(rowsButtonText());

    QString text;
    if (preview.busy)
        text = u"另一个程序正在保存这个服务器的数据, 无法读取数据库."_s;
    else if (!preview.problems.isEmpty())
        text = SavePreflight::refusalText(preview.problems);
    else if (!preview.ok)
        text = preview.error.formatted();
    else
        text = SavePreview::describe(preview.tables);
    m_text->setPlainText(text.replace(u"\r\n"_s, u"\n"_s));
    m_rows->setEnabled(preview.ok);
    const QList<SavePreview::Table> tables = preview.tables;
    connect(m_rows, &QPushButton::clicked, this, [this, tables] {
        m_text->setPlainText(SavePreview::describe(tables, true, RowLimit));
        m_rows->setEnabled(false);
    });

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    buttons->addButton(m_rows, QDialogButtonBox::ActionRole);
    if (QPushButton *close = buttons->button(QDialogButtonBox::Close)) {
        close->setText(u"关闭"_s);
        close->setObjectName(u"closeButton"_s);
        close->setAccessibleName(u"关闭"_s);
    }
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_text);
    layout->addWidget(buttons);
    resize(720, 420);
}

QString SavePreviewDialog::titleText()
{
    return SavePreview::buttonText();
}

QString SavePreviewDialog::rowsButtonText()
{
    return u"显示行"_s;
}

QString SavePreviewDialog::shownText() const
{
    return m_text->toPlainText();
}
