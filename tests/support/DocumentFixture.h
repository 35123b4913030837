#pragma once

#include "CVelmarManagerDoc.h"
#include "ServerDataSet.h"

#include <QStringList>

// A working copy with something in every data set the editors change:
//
//   Member: regular anna(1) bert(2) carl(3) dora(7); guest gina(4) gus(5)
//   regular tree: Sales(10) { anna, East(11) { bert }, carl }, HQ(20) { dora, (99) }
//   guest tree:   Forum(50) { gina, gus }
//   AccessToken: 1 11111111, 2 10011010, 4 00100001, 5 11111110 (3 and 7 none)
//   VoipInfo: 1 v100/p100, 4 v101/p101, 3 with an empty id and password
//   VoipNumberList: v100(1) v101(4) ""(0) v101(0, a second row) v102(0) v103(0)
//   Folder 1 share\docs, 2 public; GroupAuthority (1,10,2) (2,50,1);
//   UserAuthority (1,3,1) (2,1,2)
//   notices 10..15 (newest first), none pending
//
// (99) is a membership of a member id the directory does not hold.
ServerDataSet sampleServerData();

// A document that has just loaded the sample (or the data given).
class SampleDocument : public CVelmarManagerDoc
{
public:
    explicit SampleDocument(ServerDataSet data = sampleServerData())
    {
        adopt(std::move(data), LoadState::Complete);
    }
};

// The whole document as comparable lines: every member field and row icon,
// both trees as their models show them (and whether the trees' indexes find
// each node), created and deleted ids, the positions, every permission and
// VoIP record, the pool with its holders, the file-box lists, the notices
// listed and pending, the tables' modified flags and the document's.
QStringList documentState(const CVelmarManagerDoc &doc);

// Takes the last `steps` edits back and does them again, twice over: the
// document must come back to `before`, then to the state it was in.
void checkUndoRedo(CVelmarManagerDoc &doc, const QStringList &before, int steps = 1);
