-- One of each anomaly the doctor finds, on top of those of populatedDatabase()
-- (an id used twice, a stray and a NULL flag, a relation without a member).
-- Members: a NULL guest flag, a twin of anna in other letters, a blank in a user ID, a quote.
INSERT INTO Member (OMemberID, MemberID, MemberName, Passwd, MemberLevel, IsGuestMember) VALUES (7,'nul','Nul','x',NULL,NULL)
INSERT INTO Member (OMemberID, MemberID, MemberName, Passwd, MemberLevel, IsGuestMember) VALUES (8,'ANNA','Anna Upper','x',NULL,0)
INSERT INTO Member (OMemberID, MemberID, MemberName, Passwd, MemberLevel, IsGuestMember) VALUES (9,'bad id','Bad','x',NULL,0)
INSERT INTO Member (OMemberID, MemberID, MemberName, Passwd, MemberLevel, IsGuestMember) VALUES (10,'quote','O''Brien','x',NULL,0)
-- A member level that does not match the lists anna is in.
UPDATE Member SET MemberLevel = 1 WHERE OMemberID = 1
-- Groups: an id used again, a parent that is not there, a stray guest flag.
INSERT INTO [Group] (OGroupID, GroupName, OGroupID_P, Position, Depth, IsGuestGroup) VALUES (10,'Sales again',-100,5,1,1)
INSERT INTO [Group] (OGroupID, GroupName, OGroupID_P, Position, Depth, IsGuestGroup) VALUES (60,'Orphan',999,0,2,0)
INSERT INTO [Group] (OGroupID, GroupName, OGroupID_P, Position, Depth, IsGuestGroup) VALUES (61,'Stray',-1,0,1,2)
-- Relations: of no member, to no group, anna in Sales again, a NULL guest flag.
INSERT INTO Relation (OMemberID, OGroupID, ORankID, Position, IsGuestRelation) VALUES (777,10,1,5,0)
INSERT INTO Relation (OMemberID, OGroupID, ORankID, Position, IsGuestRelation) VALUES (1,888,1,0,0)
INSERT INTO Relation (OMemberID, OGroupID, ORankID, Position, IsGuestRelation) VALUES (1,10,2,0,0)
INSERT INTO Relation (OMemberID, OGroupID, ORankID, Position, IsGuestRelation) VALUES (5,51,1,1,NULL)
-- Permissions and VoIP accounts of no member, an account of anna held again, a pool
-- account held by no member.
INSERT INTO AccessToken (OMemberID, MessageOn, ChatOn, FileTransferOn, TTSOn, VoiceToPhoneOn, OneToOneCallOn, SMSOn, VoipOn) VALUES (555,1,1,1,1,1,1,1,1)
INSERT INTO VoipInfo (OMemberID, ID, Pass) VALUES (556,'v900','p')
INSERT INTO VoipInfo (OMemberID, ID, Pass) VALUES (3,'v100','p')
INSERT INTO VoipNumberList (VOIP_ID, VOIP_PASS, OMemberID) VALUES ('v104','p104',557)
-- Rights to no folder, of no member, of no group.
INSERT INTO UserAuthority (OFolderID, OMemberID, Authority) VALUES (9,1,'R')
INSERT INTO UserAuthority (OFolderID, OMemberID, Authority) VALUES (1,558,'R')
INSERT INTO GroupAuthority (OFolderID, OGroupID, Authority) VALUES (1,889,'R')
