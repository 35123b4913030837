#pragma once

#include <functional>
#include <QRect>
#include <QString>

class QObject;

// Every message box and balloon tip of the console goes through this interface,
// so logic classes can ask questions without knowing about widgets and tests
// can script the answers and read what was shown.
class MessageService
{
public:
    enum class Icon { None, Information, Exclamation, Error, Question };
    enum class Buttons { Ok, OkCancel, YesNo, YesNoCancel };
    // Results carry the dialog ids the designed code compares against.
    enum Result { Ok = 1, Cancel = 2, Yes = 6, No = 7 };

    struct Box
    {
        QString text;
        QString title;
        Buttons buttons = Buttons::Ok;
        Icon icon = Icon::None;
        QObject *parent = nullptr; // a QWidget for the real boxes; nullptr means no owner window
        // An extra button that does not close the box (the save's "显示更改"):
        // its caption and what it does.
        QString extraButton = {};
        std::function<void()> extraAction = {};
    };

    struct Balloon
    {
        QString title;
        QString text;
        Icon icon = Icon::Exclamation;
        int timeoutMs = 3000;
        QObject *anchor = nullptr; // widget the tip points at; nullptr: the main window
        QRect cell; // area inside the anchor (a grid cell), empty for the whole widget
        // A hint (a focus hint, a first-use tip) only helps: the balloon-tip
        // switch hides it. Everything else is a refusal or an error, which an
        // administrator must always see.
        bool hint = false;
    };

    // The answer that goes ahead: Yes for a question, OK otherwise. What the
    // services without a person in front of them give.
    static constexpr int affirmative(Buttons buttons)
    {
        return buttons == Buttons::YesNo || buttons == Buttons::YesNoCancel ? Yes : Ok;
    }

    virtual ~MessageService() = default;
    virtual int showMessage(const Box &box) = 0;
    virtual void showBalloon(const Balloon &balloon) = 0;
    // Takes a hint off the screen (its field lost the focus); a refusal stays.
    virtual void hideHint() { }
};
