// The shared controls: real message boxes answered by a timer, the balloon tip,
// the outlook bar and the loading progress dialog, driven from other threads
// where the loading worker will drive them.

#include "BalloonTip.h"
#include "CProgressDlg.h"
#include "OutlookBar.h"
#include "QtMessageService.h"

#include <functional>
#include <QAbstractButton>
#include <QApplication>
#include <QLabel>
#include <QListWidget>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QThread>
#include <QTimer>
#include <QToolBox>

using namespace Qt::StringLiterals;

namespace {
// Answers the next real message box by clicking the button of the given
// result, and remembers what the box looked like. The box runs its own event
// loop, so the answer comes from a timer.
class BoxAnswerer : public QObject
{
public:
    explicit BoxAnswerer(int answer)
        : m_answer(answer)
    {
        connect(&m_timer, &QTimer::timeout, this, &BoxAnswerer::poll);
        m_timer.start(10);
    }

    QString title, text;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    QStringList buttons;
    QString defaultButton;
    QThread *boxThread = nullptr;
    bool answered = false;

private:
    void poll()
    {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        if (!box || answered)
            return;
        title = box->windowTitle();
        text = box->text();
        icon = box->icon();
        boxThread = box->thread();
        const QList<QAbstractButton *> list = box->buttons();
        for (QAbstractButton *button : list)
            buttons.append(button->text());
        if (box->defaultButton())
            defaultButton = box->defaultButton()->text();
        answered = true;
        m_timer.stop();
        if (m_answer == 0) {
            box->close();
            return;
        }
        if (auto *button = box->findChild<QPushButton *>(u"button%1"_s.arg(m_answer)))
            button->click();
    }

    int m_answer;
    QTimer m_timer;
};
// Runs work on a thread of its own while this one goes on with its events.
void runOnWorker(const std::function<void()> &work)
{
    QThread *worker = QThread::create(work);
    worker->start();
    QTRY_VERIFY(worker->isFinished());
    worker->wait();
    delete worker;
}
} // namespace

class TestWidgets : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void messageBoxLooksAsDesigned_data();
    void messageBoxLooksAsDesigned();
    void messageBoxFromWorkerThreadWaitsForAnswer();
    void balloonPointsAtCellAndClosesItself();
    void balloonFromWorkerThreadPointsAtMainWindow();
    void balloonsSwitchedOff();
    void outlookBarChoosesEnabledViewsOnlyAndReplacesPlaceholders();
    void progressDialogFollowsQueuedCallsAndStaysOnEscape();
};

void TestWidgets::messageBoxLooksAsDesigned_data()
{
    QTest::addColumn<int>("buttons");
    QTest::addColumn<int>("icon");
    QTest::addColumn<int>("answer"); // 0: close the box without a button
    QTest::addColumn<QStringList>("captions");
    QTest::addColumn<int>("expected");
    QTest::addColumn<int>("qtIcon");

    using B = MessageService::Buttons;
    using I = MessageService::Icon;
    const QStringList ok = { u"确定"_s };
    const QStringList okCancel = { u"确定"_s, u"取消"_s };
    const QStringList yesNo = { u"是(&Y)"_s, u"否(&N)"_s };
    const QStringList yesNoCancel = { u"是(&Y)"_s, u"否(&N)"_s, u"取消"_s };
    QTest::newRow("ok") << int(B::Ok) << int(I::None) << 1 << ok << 1 << int(QMessageBox::NoIcon);
    QTest::newRow("ok closed") << int(B::Ok) << int(I::Information) << 0 << ok << 1
                               << int(QMessageBox::Information);
    QTest::newRow("ok-cancel cancel") << int(B::OkCancel) << int(I::Exclamation) << 2 << okCancel
                                      << 2 << int(QMessageBox::Warning);
    QTest::newRow("ok-cancel closed")
        << int(B::OkCancel) << int(I::Error) << 0 << okCancel << 2 << int(QMessageBox::Critical);
    QTest::newRow("yes-no no") << int(B::YesNo) << int(I::Question) << 7 << yesNo << 7
                               << int(QMessageBox::Question);
    QTest::newRow("yes-no-cancel cancel") << int(B::YesNoCancel) << int(I::Question) << 2
                                          << yesNoCancel << 2 << int(QMessageBox::Question);
}

void TestWidgets::messageBoxLooksAsDesigned()
{
    QFETCH(int, buttons);
    QFETCH(int, icon);
    QFETCH(int, answer);
    QFETCH(QStringList, captions);
    QFETCH(int, expected);
    QFETCH(int, qtIcon);

    QtMessageService service;
    BoxAnswerer answerer(answer);
    MessageService::Box box;
    box.text = u"(80004005) Unspecified error\r\nSource - QSQLITE\r\nDesc - x"_s;
    box.buttons = MessageService::Buttons(buttons);
    box.icon = MessageService::Icon(icon);
    const int result = service.showMessage(box);

    QVERIFY(answerer.answered);
    QCOMPARE(result, expected);
    // The platform's button box orders them its own way; the set and the default count.
    QStringList shown = answerer.buttons;
    shown.sort();
    QCOMPARE(answerer.defaultButton, captions.first());
    captions.sort();
    QCOMPARE(shown, captions);
    QCOMPARE(int(answerer.icon), qtIcon);
    // No title given: the application's name, as the system's own boxes show it.
    QCOMPARE(answerer.title, u"VelmarManager"_s);
    QCOMPARE(answerer.text, u"(80004005) Unspecified error\nSource - QSQLITE\nDesc - x"_s);
}

void TestWidgets::messageBoxFromWorkerThreadWaitsForAnswer()
{
    QtMessageService service;
    BoxAnswerer answerer(MessageService::No);
    int result = 0;
    runOnWorker([&service, &result] {
        result = service.showMessage({ u"继续?"_s, u"检查"_s, MessageService::Buttons::YesNo,
            MessageService::Icon::Question, nullptr });
    });

    QCOMPARE(result, int(MessageService::No));
    QCOMPARE(answerer.title, u"检查"_s);
    // The box itself ran on the user-interface thread.
    QCOMPARE(answerer.boxThread, qApp->thread());
}

void TestWidgets::balloonPointsAtCellAndClosesItself()
{
    QWidget window;
    window.resize(400, 300);
    auto *grid = new QWidget(&window);
    grid->setGeometry(20, 20, 300, 200);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));

    QtMessageService service;
    MessageService::Balloon balloon;
    balloon.title = u"用户ID"_s;
    balloon.text = u"已经存在的用户ID."_s;
    balloon.anchor = grid;
    balloon.cell = QRect(100, 40, 80, 20);
    balloon.timeoutMs = 50;
    service.showBalloon(balloon);

    BalloonTip *tip = service.balloonTip();
    QVERIFY(tip);
    QVERIFY(tip->isVisible());
    QCOMPARE(tip->title(), balloon.title);
    QCOMPARE(tip->text(), balloon.text);
    QCOMPARE(tip->anchor(), grid);
    QCOMPARE(tip->tipPoint(), grid->mapToGlobal(balloon.cell.center()));
    // The stem touches the point: it is on the balloon's top or bottom edge.
    const QRect geometry = tip->geometry();
    QVERIFY(geometry.top() == tip->tipPoint().y() || geometry.bottom() + 1 == tip->tipPoint().y());
    QVERIFY(geometry.left() <= tip->tipPoint().x() && tip->tipPoint().x() <= geometry.right());

    QTRY_VERIFY(!tip->isVisible());

    // A second balloon reuses the one tip.
    balloon.timeoutMs = 60000;
    service.showBalloon(balloon);
    QCOMPARE(service.balloonTip(), tip);
    QVERIFY(tip->isVisible());
    QTest::mouseClick(tip, Qt::LeftButton, {}, tip->rect().center());
    QVERIFY(!tip->isVisible());
}

// Shown from a worker thread, as the loading worker does, without an anchor.
void TestWidgets::balloonFromWorkerThreadPointsAtMainWindow()
{
    QWidget window;
    window.resize(300, 200);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QtMessageService service;
    service.setMainWindow(&window);
    runOnWorker([&service] {
        service.showBalloon(
            { u"t"_s, u"数据库发生错误."_s, MessageService::Icon::Error, 60000, nullptr, {} });
    });
    QVERIFY(service.balloonTip());
    QCOMPARE(service.balloonTip()->thread(), qApp->thread());
    QVERIFY(service.balloonTip()->isVisible());
    QCOMPARE(service.balloonTip()->text(), u"数据库发生错误."_s);
    QCOMPARE(service.balloonTip()->anchor(), &window);
    QCOMPARE(service.balloonTip()->tipPoint(), window.mapToGlobal(window.rect().center()));
}

void TestWidgets::balloonsSwitchedOff()
{
    // The switch hides hints; a refusal or an error is always shown.
    QtMessageService service;
    const MessageService::Balloon hint { u"t"_s, u"a hint"_s, MessageService::Icon::Information,
        60000, nullptr, {}, true };
    const MessageService::Balloon refusal { u"t"_s, u"数据库发生错误."_s,
        MessageService::Icon::Error, 60000, nullptr, {} };
    service.showBalloon(hint);
    QVERIFY(service.balloonTip()->isVisible());
    service.setBalloonsEnabled(false);
    QVERIFY(!service.balloonTip()->isVisible());
    service.showBalloon(hint);
    QVERIFY(!service.balloonTip()->isVisible());
    QCOMPARE(service.balloonTip()->text(), u"a hint"_s);

    service.showBalloon(refusal);
    QVERIFY(service.balloonTip()->isVisible());
    QCOMPARE(service.balloonTip()->text(), u"数据库发生错误."_s);
    // Neither the switch nor a field losing the focus takes a refusal away.
    service.setBalloonsEnabled(false);
    service.hideHint();
    QVERIFY(service.balloonTip()->isVisible());

    service.setBalloonsEnabled(true);
    service.showBalloon(hint);
    QVERIFY(service.balloonTip()->isVisible());
    service.hideHint();
    QVERIFY(!service.balloonTip()->isVisible());
}

void TestWidgets::outlookBarChoosesEnabledViewsOnlyAndReplacesPlaceholders()
{
    OutlookBar bar;
    bar.resize(150, 400);
    bar.addItem(u"服务器管理"_s, 0, u"快速导航"_s);
    bar.addItem(u"类别管理"_s, 1, u"组织管理"_s, QIcon(), false);
    bar.addItem(u"类别管理"_s, 2, u"等级管理"_s);
    bar.show();
    QVERIFY(QTest::qWaitForWindowExposed(&bar));
    QCOMPARE(bar.groupCaptions(), QStringList({ u"服务器管理"_s, u"类别管理"_s }));
    QCOMPARE(bar.itemIds(u"类别管理"_s), QList<int>({ 1, 2 }));

    QSignalSpy spy(&bar, &OutlookBar::viewSelected);
    bar.setCurrentView(0);
    QCOMPARE(spy.count(), 0); // programmatic selection does not echo back
    QCOMPARE(bar.currentView(), 0);

    auto *toolBox = bar.findChild<QToolBox *>();
    toolBox->setCurrentIndex(1);
    auto *list = qobject_cast<QListWidget *>(toolBox->widget(1));
    QVERIFY(list);
    auto clickRow = [list](int row) {
        const QRect rect = list->visualItemRect(list->item(row));
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, rect.center());
    };

    clickRow(0); // greyed: nothing happens
    QCOMPARE(spy.count(), 0);
    QCOMPARE(bar.currentView(), 0);

    clickRow(1);
    QCOMPARE(spy.count(), 1); // one press, one choice
    QCOMPARE(spy.takeFirst().at(0).toInt(), 2);
    QCOMPARE(bar.currentView(), 2);
    // The other group's item is no longer highlighted.
    auto *homeList = qobject_cast<QListWidget *>(toolBox->widget(0));
    QVERIFY(homeList->selectedItems().isEmpty());

    // Back to the first group: its item chooses again although it was its list's last choice.
    // Added again under its id, an item replaces the greyed place holder.
    bar.addItem(u"类别管理"_s, 1, u"组织"_s);
    QCOMPARE(bar.itemIds(u"类别管理"_s).size(), 2);
    QCOMPARE(bar.itemCaption(1), u"组织"_s);
    QVERIFY(bar.isItemEnabled(1));
    toolBox->setCurrentIndex(0);
    const QRect homeRect = homeList->visualItemRect(homeList->item(0));
    QTest::mouseClick(homeList->viewport(), Qt::LeftButton, {}, homeRect.center());
    QCOMPARE(spy.count(), 1);
    QCOMPARE(spy.takeFirst().at(0).toInt(), 0);
}

void TestWidgets::progressDialogFollowsQueuedCallsAndStaysOnEscape()
{
    QWidget owner;
    owner.resize(600, 400);
    owner.show();
    CProgressDlg dialog(&owner);
    dialog.show();
    auto *bar = dialog.findChild<QProgressBar *>(u"progressBar"_s);

    // The loading worker calls through queued connections.
    runOnWorker([&dialog] {
        QMetaObject::invokeMethod(
            &dialog, "setText", Qt::QueuedConnection, Q_ARG(QString, u"读取用户信息."_s));
        QMetaObject::invokeMethod(&dialog, "setRange", Qt::QueuedConnection, Q_ARG(int, 40));
        for (int i = 1; i <= 25; ++i)
            QMetaObject::invokeMethod(&dialog, "setPosition", Qt::QueuedConnection, Q_ARG(int, i));
    });
    QTRY_COMPARE(dialog.position(), 25);
    QCOMPARE(dialog.text(), u"读取用户信息."_s);
    QCOMPARE(bar->maximum(), 40);

    // An empty table: an empty bar rather than a busy indicator.
    dialog.setRange(0);
    QCOMPARE(dialog.maximum(), 0);
    QVERIFY(bar->maximum() > bar->minimum());
    QCOMPARE(bar->value(), 0);

    // Escape leaves it open.
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    QTest::keyClick(&dialog, Qt::Key_Escape);
    QVERIFY(dialog.isVisible());
    // The code that started the load closes it.
    QVERIFY(dialog.close());
    QVERIFY(!dialog.isVisible());
}

QTEST_MAIN(TestWidgets)
#include "tst_widgets.moc"
