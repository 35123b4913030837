#include "LoadedFrame.h"

#include "CommandIds.h"
#include "CProgressDlg.h"
#include "CVelmarManagerDoc.h"

#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QMenu>
#include <QPointer>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QStringList organisation()
{
    const QString member = u"INSERT INTO Member (OMemberID, MemberID, MemberName, Passwd, Gender, "
                           "bPublic, bSolar, bAdmin, MemberLevel, IsGuestMember) VALUES "_s;
    const QString group = u"INSERT INTO [Group] (OGroupID, GroupName, OGroupID_P, Position, Depth, "
                          "IsGuestGroup) VALUES "_s;
    const QString relation = u"INSERT INTO Relation (OMemberID, OGroupID, ORankID, Position, "
                             "IsGuestRelation) VALUES "_s;
    const QString token = u"INSERT INTO AccessToken (OMemberID, MessageOn, ChatOn, FileTransferOn, "
                          "TTSOn, VoiceToPhoneOn, OneToOneCallOn, SMSOn, VoipOn) VALUES "_s;
    return {
        member + u"(1,'anna','Anna','pw',0,1,1,0,1,0)"_s,
        member + u"(2,'bert','Bert','pw',1,1,1,0,1,0)"_s,
        member + u"(3,'carl','Carl','pw',1,1,1,0,1,0)"_s,
        member + u"(4,'dora','Dora','pw',0,1,1,0,1,0)"_s,
        member + u"(5,'gina','Gina','pw',0,1,1,0,1,1)"_s,
        group + u"(10,'Sales',-1,0,1,0)"_s,
        group + u"(11,'East',10,1,2,0)"_s,
        group + u"(20,'HQ',-1,1,1,0)"_s,
        group + u"(50,'Forum',-100,0,1,1)"_s,
        relation + u"(1,10,2,0,0)"_s,
        relation + u"(2,11,1,0,0)"_s,
        relation + u"(3,10,-1,2,0)"_s,
        relation + u"(4,20,3,0,0)"_s,
        relation + u"(5,50,1,0,1)"_s,
        u"INSERT INTO Rank (ORankID, RankName) VALUES (1,'职员')"_s,
        u"INSERT INTO Rank (ORankID, RankName) VALUES (2,'经理')"_s,
        u"INSERT INTO Rank (ORankID, RankName) VALUES (3,'总监')"_s,
        token + u"(1,1,1,1,1,1,1,1,1)"_s,
        token + u"(2,1,0,1,0,0,0,0,0)"_s,
        token + u"(4,1,1,1,1,1,1,1,0)"_s,
        u"INSERT INTO VoipInfo (OMemberID, ID, Pass) VALUES (1,'v100','p100')"_s,
        u"INSERT INTO VoipNumberList (VOIP_ID, VOIP_PASS, OMemberID) VALUES ('v100','p100',1)"_s,
        u"INSERT INTO VoipNumberList (VOIP_ID, VOIP_PASS, OMemberID) VALUES ('v101','p101',0)"_s,
        u"INSERT INTO VoipNumberList (VOIP_ID, VOIP_PASS, OMemberID) VALUES ('v102','p102',0)"_s,
    };
}

} // namespace

bool LoadedFrame::open(QString *error)
{
    if (!fixture.dir.writeFile(u"Serverinfo.ini"_s, "[ServerInfo]\r\nDefaultPositionID=2\r\n")) {
        *error = u"Serverinfo.ini"_s;
        return false;
    }
    return open(organisation(), error);
}

bool LoadedFrame::open(const QStringList &statements, QString *error)
{
    db = serverDatabase(fixture.dir, statements, error);
    return db && reopen(error);
}

bool LoadedFrame::reopen(QString *error)
{
    fixture.frame.reset();
    fixture.messages.clear();
    MainFrameContext context = fixture.context();
    context.loadServerData = true;
    fixture.frame = std::make_unique<CMainFrame>(context);
    frame().resize(1200, 760);
    if (!showActive(&frame()))
        return false;
    // A ceiling for the worker; nothing is timed.
    const bool loaded = QTest::qWaitFor(
        [this] {
            return frame().document().loadState() == CVelmarManagerDoc::LoadState::Complete
                && !frame().findChild<CProgressDlg *>();
        },
        60000);
    if (!loaded || !messages().boxes().isEmpty()) {
        *error = u"load: "_s + messages().boxTexts().join(u'\n');
        return false;
    }
    return showActive(&frame());
}

bool LoadedFrame::save()
{
    frame().commandAction(CommandId::Save)->trigger();
    return !frame().document().isModified();
}

void typeText(QWidget *widget, const QString &text)
{
    for (const QChar ch : text)
        QTest::sendKeyEvent(QTest::Click, widget, Qt::Key_unknown, QString(ch), Qt::NoModifier);
}

void typeIntoCell(QAbstractItemView *grid, const QString &text)
{
    QTest::keyClicks(grid, text.left(1));
    QPointer<QWidget> editor = QApplication::focusWidget();
    QVERIFY(editor && editor != grid);
    QTest::keyClicks(editor, text.mid(1));
    QTest::keyClick(editor, Qt::Key_Return);
    // The delegate commits on the next turn of the event loop; a new member's
    // row takes the caret after that.
    QTRY_VERIFY(editor.isNull() || !editor->isVisible());
    QApplication::processEvents();
}

QMenu *openPopup(QAbstractItemView *view, const QPoint &pos)
{
    QContextMenuEvent event(
        QContextMenuEvent::Mouse, pos, view->viewport()->mapToGlobal(pos), Qt::NoModifier);
    QApplication::sendEvent(view->viewport(), &event);
    return qobject_cast<QMenu *>(QApplication::activePopupWidget());
}

QStringList menuTexts(const QMenu *menu)
{
    QStringList texts;
    for (const QAction *action : menu->actions())
        texts << (action->isSeparator() ? u"-"_s : action->text());
    return texts;
}

bool clickMenuItem(QMenu *menu, const QString &text)
{
    for (QAction *action : menu->actions()) {
        if (action->text() == text && action->isEnabled()) {
            QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(action).center());
            return true;
        }
    }
    return false;
}
