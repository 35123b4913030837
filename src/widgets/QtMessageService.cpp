#include "QtMessageService.h"

#include "BalloonTip.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QStyle>
#include <QThread>

using namespace Qt::StringLiterals;

namespace {
QMessageBox::Icon boxIcon(MessageService::Icon icon)
{
    switch (icon) {
    case MessageService::Icon::Information:
        return QMessageBox::Information;
    case MessageService::Icon::Exclamation:
        return QMessageBox::Warning;
    case MessageService::Icon::Error:
        return QMessageBox::Critical;
    case MessageService::Icon::Question:
        return QMessageBox::Question;
    case MessageService::Icon::None:
        break;
    }
    return QMessageBox::NoIcon;
}
} // namespace

QtMessageService::QtMessageService(QObject *parent)
    : QObject(parent)
{ }

QtMessageService::~QtMessageService() = default;

QString QtMessageService::defaultTitle()
{
    return u"VelmarManager"_s;
}

QIcon QtMessageService::iconFor(Icon icon)
{
    QStyle *style = QApplication::style();
    switch (icon) {
    case Icon::Information:
        return style->standardIcon(QStyle::SP_MessageBoxInformation);
    case Icon::Exclamation:
        return style->standardIcon(QStyle::SP_MessageBoxWarning);
    case Icon::Error:
        return style->standardIcon(QStyle::SP_MessageBoxCritical);
    case Icon::Question:
        return style->standardIcon(QStyle::SP_MessageBoxQuestion);
    case Icon::None:
        break;
    }
    return {};
}

void QtMessageService::setMainWindow(QWidget *window)
{
    m_mainWindow = window;
}

void QtMessageService::setBalloonsEnabled(bool enabled)
{
    m_balloonsEnabled = enabled;
    if (!enabled && m_balloon && m_balloonIsHint)
        m_balloon->hide();
}

void QtMessageService::hideHint()
{
    if (m_balloon && m_balloonIsHint)
        m_balloon->hide();
}

int QtMessageService::showMessage(const Box &box)
{
    if (QThread::currentThread() == thread())
        return showMessageHere(box);
    int result = Cancel;
    QMetaObject::invokeMethod(
        this, [this, &box] { return showMessageHere(box); }, Qt::BlockingQueuedConnection, &result);
    return result;
}

void QtMessageService::showBalloon(const Balloon &balloon)
{
    if (QThread::currentThread() == thread()) {
        showBalloonHere(balloon);
        return;
    }
    QMetaObject::invokeMethod(
        this, [this, &balloon] { showBalloonHere(balloon); }, Qt::BlockingQueuedConnection);
}

int QtMessageService::showMessageHere(const Box &box)
{
    QMessageBox messageBox(qobject_cast<QWidget *>(box.parent));
    messageBox.setObjectName(u"messageBox"_s);
    messageBox.setWindowTitle(box.title.isEmpty() ? defaultTitle() : box.title);
    messageBox.setTextFormat(Qt::PlainText);
    // Failure texts carry CR LF line breaks; a label shows only the LF.
    QString text = box.text;
    text.replace(u"\r\n"_s, u"\n"_s);
    messageBox.setText(text);
    messageBox.setIcon(boxIcon(box.icon));

    // The buttons in the order, captions and default of the system's own
    // boxes; the first is the default.
    struct ButtonSpec
    {
        int result;
        QString caption;
        QMessageBox::ButtonRole role;
    };
    QList<ButtonSpec> specs;
    switch (box.buttons) {
    case Buttons::Ok:
        specs = { { Ok, u"确定"_s, QMessageBox::AcceptRole } };
        break;
    case Buttons::OkCancel:
        specs = { { Ok, u"确定"_s, QMessageBox::AcceptRole },
            { Cancel, u"取消"_s, QMessageBox::RejectRole } };
        break;
    case Buttons::YesNo:
        specs = { { Yes, u"是(&Y)"_s, QMessageBox::YesRole },
            { No, u"否(&N)"_s, QMessageBox::NoRole } };
        break;
    case Buttons::YesNoCancel:
        specs = { { Yes, u"是(&Y)"_s, QMessageBox::YesRole },
            { No, u"否(&N)"_s, QMessageBox::NoRole },
            { Cancel, u"取消"_s, QMessageBox::RejectRole } };
        break;
    }

    QHash<QAbstractButton *, int> results;
    QPushButton *escapeButton = nullptr;
    for (const ButtonSpec &choice : std::as_const(specs)) {
        QPushButton *button = messageBox.addButton(choice.caption, choice.role);
        button->setObjectName(u"button%1"_s.arg(choice.result));
        results.insert(button, choice.result);
        if (choice.result == Cancel || (box.buttons == Buttons::Ok))
            escapeButton = button;
    }
    if (!box.extraButton.isEmpty() && box.extraAction) {
        QPushButton *extra = messageBox.addButton(box.extraButton, QMessageBox::ActionRole);
        extra->setObjectName(u"extraButton"_s);
        extra->setAccessibleName(box.extraButton);
        // The box's own handler would close it: this button only acts.
        extra->disconnect(&messageBox);
        QObject::connect(extra, &QPushButton::clicked, &messageBox, box.extraAction);
    }
    messageBox.setDefaultButton(qobject_cast<QPushButton *>(results.key(specs.first().result)));
    if (escapeButton)
        messageBox.setEscapeButton(escapeButton);

    messageBox.exec();
    if (QAbstractButton *clicked = messageBox.clickedButton())
        return results.value(clicked, Cancel);
    // Closed without a button: what Escape would have answered.
    switch (box.buttons) {
    case Buttons::Ok:
        return Ok;
    case Buttons::YesNo:
        return No;
    case Buttons::OkCancel:
    case Buttons::YesNoCancel:
        break;
    }
    return Cancel;
}

void QtMessageService::showBalloonHere(const Balloon &balloon)
{
    if (balloon.hint && !m_balloonsEnabled)
        return;
    if (!m_balloon)
        m_balloon = std::make_unique<BalloonTip>();
    QWidget *anchor = qobject_cast<QWidget *>(balloon.anchor);
    if (!anchor)
        anchor = m_mainWindow;
    m_balloonIsHint = balloon.hint;
    m_balloon->showAt(anchor, balloon.cell, iconFor(balloon.icon), balloon.title, balloon.text,
        balloon.timeoutMs);
}
