-- The members velmarctl invite writes to: anna and bert have addresses (bert's
-- refused by the test's SMTP server), carl none, dora anna's address in other
-- letters, the guest gina one of her own.
INSERT INTO Member (OMemberID, MemberID, MemberName, Passwd, Gender, bPublic, Email, bSolar, bAdmin, MemberLevel, IsGuestMember) VALUES (1,'anna','安娜','pw<1>',0,1,'anna@x.cn',1,0,0,0)
INSERT INTO Member (OMemberID, MemberID, MemberName, Passwd, Gender, bPublic, Email, bSolar, bAdmin, MemberLevel, IsGuestMember) VALUES (2,'bert','Bert','pw2',1,1,'refuse-bert@x.cn',1,0,0,0)
INSERT INTO Member (OMemberID, MemberID, MemberName, Passwd, Gender, bPublic, Email, bSolar, bAdmin, MemberLevel, IsGuestMember) VALUES (3,'carl','Carl','pw3',1,1,'',1,0,0,0)
INSERT INTO Member (OMemberID, MemberID, MemberName, Passwd, Gender, bPublic, Email, bSolar, bAdmin, MemberLevel, IsGuestMember) VALUES (4,'dora','Dora','pw4',0,1,'ANNA@x.cn',1,0,0,0)
INSERT INTO Member (OMemberID, MemberID, MemberName, Passwd, Gender, bPublic, Email, bSolar, bAdmin, MemberLevel, IsGuestMember) VALUES (5,'gina','Gina','pw5',0,1,'gina@x.cn',1,0,0,1)
