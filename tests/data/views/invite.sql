-- anna and bert have addresses (bert's the server refuses), carl none, dora anna's address in capitals.
INSERT INTO Member (OMemberID, MemberID, MemberName, Passwd, Gender, bPublic, Email, bSolar, bAdmin, MemberLevel, IsGuestMember) VALUES (1,'anna','安娜','a<&>1',0,1,'anna@x.cn',1,0,0,0)
INSERT INTO Member (OMemberID, MemberID, MemberName, Passwd, Gender, bPublic, Email, bSolar, bAdmin, MemberLevel, IsGuestMember) VALUES (2,'bert','Bert','pw2',1,1,'refuse-bert@x.cn',1,0,0,0)
INSERT INTO Member (OMemberID, MemberID, MemberName, Passwd, Gender, bPublic, Email, bSolar, bAdmin, MemberLevel, IsGuestMember) VALUES (3,'carl','Carl','pw3',1,1,'',1,0,0,0)
INSERT INTO Member (OMemberID, MemberID, MemberName, Passwd, Gender, bPublic, Email, bSolar, bAdmin, MemberLevel, IsGuestMember) VALUES (4,'dora','Dora','pw4',0,1,'ANNA@x.cn',1,0,0,0)
