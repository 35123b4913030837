-- The server database as the demo and the tests create it, for PostgreSQL.
--
-- Names are left unquoted so that PostgreSQL folds them to lower case, as it
-- folds the unquoted names in the console's statements; only "Group", a
-- reserved word, is quoted, with exactly the case that the console's [Group]
-- is rewritten to. A quoted number ('12') is an untyped literal and is
-- accepted by the integer columns. There are no NOT NULL constraints and no
-- unique keys: the save deletes one partition (regular, guest) and inserts all
-- of its rows before it deletes the other, so a member or group that moved
-- between the partitions exists twice for a moment. The indexes serve the
-- statements that run once per member or per group (100,000 members).

CREATE TABLE Member (
    OMemberID integer,
    MemberID text,
    MemberName text,
    MemberNickname text,
    Passwd text,
    Gender integer,
    bPublic integer,
    Email text,
    HP text,
    Address text,
    HomePhone text,
    OfficePhone text,
    BirthDay text,
    bSolar integer,
    bAdmin integer,
    Description text,
    MemberLevel integer,
    IsGuestMember integer
);
CREATE INDEX IX_Member_OMemberID ON Member (OMemberID);

CREATE TABLE "Group" (
    OGroupID integer,
    GroupName text,
    OGroupID_P integer,
    Position integer,
    Depth integer,
    IsGuestGroup integer
);
CREATE INDEX IX_Group_OGroupID ON "Group" (OGroupID);
CREATE INDEX IX_Group_OGroupID_P ON "Group" (OGroupID_P);

CREATE TABLE Relation (
    OMemberID integer,
    OGroupID integer,
    ORankID integer,
    Position integer,
    IsGuestRelation integer
);
CREATE INDEX IX_Relation_OMemberID ON Relation (OMemberID);
-- The per-group relation query of the load names the group and the partition.
-- No index leads with a partition flag alone: the planner would take it for
-- the per-group query (half the table per group), and every inserted row
-- would write one more index page in a save that commits row by row.
CREATE INDEX IX_Relation_OGroupID_IsGuestRelation ON Relation (OGroupID, IsGuestRelation);

CREATE TABLE Rank (
    ORankID integer,
    RankName text
);
CREATE INDEX IX_Rank_ORankID ON Rank (ORankID);

CREATE TABLE AccessToken (
    OMemberID integer,
    MessageOn integer,
    ChatOn integer,
    FileTransferOn integer,
    TTSOn integer,
    VoiceToPhoneOn integer,
    OneToOneCallOn integer,
    SMSOn integer,
    VoipOn integer
);
CREATE INDEX IX_AccessToken_OMemberID ON AccessToken (OMemberID);

CREATE TABLE VoipInfo (
    OMemberID integer,
    ID text,
    Pass text
);
CREATE INDEX IX_VoipInfo_OMemberID ON VoipInfo (OMemberID);

CREATE TABLE VoipNumberList (
    VOIP_ID text,
    VOIP_PASS text,
    OMemberID integer
);
CREATE INDEX IX_VoipNumberList_VOIP_ID ON VoipNumberList (VOIP_ID);
CREATE INDEX IX_VoipNumberList_OMemberID ON VoipNumberList (OMemberID);

CREATE TABLE Folder (
    OFolderID integer,
    FolderPath text
);
CREATE INDEX IX_Folder_OFolderID ON Folder (OFolderID);

CREATE TABLE UserAuthority (
    OFolderID integer,
    OMemberID integer,
    Authority text
);
CREATE INDEX IX_UserAuthority_OFolderID ON UserAuthority (OFolderID);
CREATE INDEX IX_UserAuthority_OMemberID ON UserAuthority (OMemberID);

CREATE TABLE GroupAuthority (
    OFolderID integer,
    OGroupID integer,
    Authority text
);
CREATE INDEX IX_GroupAuthority_OFolderID ON GroupAuthority (OFolderID);
CREATE INDEX IX_GroupAuthority_OGroupID ON GroupAuthority (OGroupID);

CREATE TABLE CONTENTS (
    OCONTENTSID integer,
    TITLE text,
    WRITEDATE text,
    OMEMBERID integer,
    MEMBERID text,
    MEMBERNAME text,
    CONTENTS text,
    FilePath text,
    FileSessionID text,
    WriteEndDate text
);
CREATE INDEX IX_CONTENTS_OCONTENTSID ON CONTENTS (OCONTENTSID);
CREATE INDEX IX_CONTENTS_WRITEDATE ON CONTENTS (WRITEDATE);

CREATE TABLE LeavedMemo (
    OMemberID integer
);
CREATE INDEX IX_LeavedMemo_OMemberID ON LeavedMemo (OMemberID);

CREATE TABLE MyGroup (
    OMemberID integer
);
CREATE INDEX IX_MyGroup_OMemberID ON MyGroup (OMemberID);

CREATE TABLE MyMember (
    OMemberID integer,
    OMemberID_O integer
);
CREATE INDEX IX_MyMember_OMemberID ON MyMember (OMemberID);
CREATE INDEX IX_MyMember_OMemberID_O ON MyMember (OMemberID_O);

CREATE TABLE Antenna (
    OMemberID integer,
    OMemberID_O integer
);
CREATE INDEX IX_Antenna_OMemberID ON Antenna (OMemberID);
CREATE INDEX IX_Antenna_OMemberID_O ON Antenna (OMemberID_O);
