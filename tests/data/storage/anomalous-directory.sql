-- A directory with the anomalies the load has to live with: a guest flag
-- of 5, a member of NULLs, a member id used twice, a child read before its
-- parent, an orphan group, a guest group below a regular one, a relation
-- without member, a repeated relation, relations of unknown members and
-- groups. One statement a line.
INSERT INTO Member (OMemberID, MemberID, MemberName, MemberNickname, Passwd, Gender, bPublic, Email, HP, Address, HomePhone, OfficePhone, BirthDay, bSolar, bAdmin, Description, MemberLevel, IsGuestMember) VALUES (1,'anna','Anna','it###VELMAR-QUOTATION###s','pw1',1,1,'anna@x.cn','139','Road 1','010-1','010-2','1980-01-02',1,0,'hello',2,0)
INSERT INTO Member (OMemberID, MemberID, MemberName, MemberNickname, Passwd, Gender, bPublic, Email, HP, Address, HomePhone, OfficePhone, BirthDay, bSolar, bAdmin, Description, MemberLevel, IsGuestMember) VALUES (2,'five','Five','','pw2',0,0,'','','','','','',0,0,'',NULL,5)
INSERT INTO Member (OMemberID, MemberID, MemberName, MemberNickname, Passwd, Gender, bPublic, Email, HP, Address, HomePhone, OfficePhone, BirthDay, bSolar, bAdmin, Description, MemberLevel, IsGuestMember) VALUES (3,'gina','Gina','','pw3',0,1,'','','','','','',1,1,'',1,1)
INSERT INTO Member (OMemberID, MemberID, MemberName, MemberNickname, Passwd, Gender, bPublic, Email, HP, Address, HomePhone, OfficePhone, BirthDay, bSolar, bAdmin, Description, MemberLevel, IsGuestMember) VALUES (4,'nulls',NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL)
INSERT INTO Member (OMemberID, MemberID, MemberName, MemberNickname, Passwd, Gender, bPublic, Email, HP, Address, HomePhone, OfficePhone, BirthDay, bSolar, bAdmin, Description, MemberLevel, IsGuestMember) VALUES (1,'anna2','Anna Again','','pw1b',1,0,'','','','','','',0,0,'',0,0)
INSERT INTO [Group] (OGroupID, GroupName, OGroupID_P, Position, Depth, IsGuestGroup) VALUES (10,'Sales',-1,0,1,0)
INSERT INTO [Group] (OGroupID, GroupName, OGroupID_P, Position, Depth, IsGuestGroup) VALUES (13,'Early child',14,1,1,0)
INSERT INTO [Group] (OGroupID, GroupName, OGroupID_P, Position, Depth, IsGuestGroup) VALUES (11,'East',10,0,2,NULL)
INSERT INTO [Group] (OGroupID, GroupName, OGroupID_P, Position, Depth, IsGuestGroup) VALUES (14,'Late parent',-1,1,2,0)
INSERT INTO [Group] (OGroupID, GroupName, OGroupID_P, Position, Depth, IsGuestGroup) VALUES (12,'Orphan',999,2,2,0)
INSERT INTO [Group] (OGroupID, GroupName, OGroupID_P, Position, Depth, IsGuestGroup) VALUES (50,'Forum',-100,0,1,1)
INSERT INTO [Group] (OGroupID, GroupName, OGroupID_P, Position, Depth, IsGuestGroup) VALUES (51,'Lost guest',10,1,1,1)
INSERT INTO Relation (OMemberID, OGroupID, ORankID, Position, IsGuestRelation) VALUES (1,10,5,2,0)
INSERT INTO Relation (OMemberID, OGroupID, ORankID, Position, IsGuestRelation) VALUES (2,10,NULL,1,0)
INSERT INTO Relation (OMemberID, OGroupID, ORankID, Position, IsGuestRelation) VALUES (NULL,10,1,0,0)
INSERT INTO Relation (OMemberID, OGroupID, ORankID, Position, IsGuestRelation) VALUES (1,10,5,2,0)
INSERT INTO Relation (OMemberID, OGroupID, ORankID, Position, IsGuestRelation) VALUES (4,11,1,0,7)
INSERT INTO Relation (OMemberID, OGroupID, ORankID, Position, IsGuestRelation) VALUES (3,50,1,0,1)
INSERT INTO Relation (OMemberID, OGroupID, ORankID, Position, IsGuestRelation) VALUES (1,50,2,1,1)
INSERT INTO Relation (OMemberID, OGroupID, ORankID, Position, IsGuestRelation) VALUES (777,12,1,0,0)
INSERT INTO Relation (OMemberID, OGroupID, ORankID, Position, IsGuestRelation) VALUES (5,999,1,0,0)
