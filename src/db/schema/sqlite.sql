-- The server database as the demo and the tests create it, for SQLite.
--
-- Integer columns have INTEGER affinity, so the quoted numbers the console
-- writes ('12') are stored as numbers. There are no NOT NULL constraints and no
-- unique keys: the save deletes one partition (regular, guest) and inserts all
-- of its rows before it deletes the other, so a member or group that moved
-- between the partitions exists twice for a moment. The indexes serve the
-- statements that run once per member or per group (100,000 members).

CREATE TABLE Member (
    OMemberID INTEGER,
    MemberID TEXT,
    MemberName TEXT,
    MemberNickname TEXT,
    Passwd TEXT,
    Gender INTEGER,
    bPublic INTEGER,
    Email TEXT,
    HP TEXT,
    Address TEXT,
    HomePhone TEXT,
    OfficePhone TEXT,
    BirthDay TEXT,
    bSolar INTEGER,
    bAdmin INTEGER,
    Description TEXT,
    MemberLevel INTEGER,
    IsGuestMember INTEGER
);
CREATE INDEX IX_Member_OMemberID ON Member (OMemberID);

CREATE TABLE [Group] (
    OGroupID INTEGER,
    GroupName TEXT,
    OGroupID_P INTEGER,
    Position INTEGER,
    Depth INTEGER,
    IsGuestGroup INTEGER
);
CREATE INDEX IX_Group_OGroupID ON [Group] (OGroupID);
CREATE INDEX IX_Group_OGroupID_P ON [Group] (OGroupID_P);

CREATE TABLE Relation (
    OMemberID INTEGER,
    OGroupID INTEGER,
    ORankID INTEGER,
    Position INTEGER,
    IsGuestRelation INTEGER
);
CREATE INDEX IX_Relation_OMemberID ON Relation (OMemberID);
-- The per-group relation query of the load names the group and the partition.
-- No index leads with a partition flag alone: the planner would take it for
-- the per-group query (half the table per group), and every inserted row
-- would write one more index page in a save that commits row by row.
CREATE INDEX IX_Relation_OGroupID_IsGuestRelation ON Relation (OGroupID, IsGuestRelation);

CREATE TABLE Rank (
    ORankID INTEGER,
    RankName TEXT
);
CREATE INDEX IX_Rank_ORankID ON Rank (ORankID);

CREATE TABLE AccessToken (
    OMemberID INTEGER,
    MessageOn INTEGER,
    ChatOn INTEGER,
    FileTransferOn INTEGER,
    TTSOn INTEGER,
    VoiceToPhoneOn INTEGER,
    OneToOneCallOn INTEGER,
    SMSOn INTEGER,
    VoipOn INTEGER
);
CREATE INDEX IX_AccessToken_OMemberID ON AccessToken (OMemberID);

CREATE TABLE VoipInfo (
    OMemberID INTEGER,
    ID TEXT,
    Pass TEXT
);
CREATE INDEX IX_VoipInfo_OMemberID ON VoipInfo (OMemberID);

CREATE TABLE VoipNumberList (
    VOIP_ID TEXT,
    VOIP_PASS TEXT,
    OMemberID INTEGER
);
CREATE INDEX IX_VoipNumberList_VOIP_ID ON VoipNumberList (VOIP_ID);
CREATE INDEX IX_VoipNumberList_OMemberID ON VoipNumberList (OMemberID);

CREATE TABLE Folder (
    OFolderID INTEGER,
    FolderPath TEXT
);
CREATE INDEX IX_Folder_OFolderID ON Folder (OFolderID);

CREATE TABLE UserAuthority (
    OFolderID INTEGER,
    OMemberID INTEGER,
    Authority TEXT
);
CREATE INDEX IX_UserAuthority_OFolderID ON UserAuthority (OFolderID);
CREATE INDEX IX_UserAuthority_OMemberID ON UserAuthority (OMemberID);

CREATE TABLE GroupAuthority (
    OFolderID INTEGER,
    OGroupID INTEGER,
    Authority TEXT
);
CREATE INDEX IX_GroupAuthority_OFolderID ON GroupAuthority (OFolderID);
CREATE INDEX IX_GroupAuthority_OGroupID ON GroupAuthority (OGroupID);

CREATE TABLE CONTENTS (
    OCONTENTSID INTEGER,
    TITLE TEXT,
    WRITEDATE TEXT,
    OMEMBERID INTEGER,
    MEMBERID TEXT,
    MEMBERNAME TEXT,
    CONTENTS TEXT,
    FilePath TEXT,
    FileSessionID TEXT,
    WriteEndDate TEXT
);
CREATE INDEX IX_CONTENTS_OCONTENTSID ON CONTENTS (OCONTENTSID);
CREATE INDEX IX_CONTENTS_WRITEDATE ON CONTENTS (WRITEDATE);

CREATE TABLE LeavedMemo (
    OMemberID INTEGER
);
CREATE INDEX IX_LeavedMemo_OMemberID ON LeavedMemo (OMemberID);

CREATE TABLE MyGroup (
    OMemberID INTEGER
);
CREATE INDEX IX_MyGroup_OMemberID ON MyGroup (OMemberID);

CREATE TABLE MyMember (
    OMemberID INTEGER,
    OMemberID_O INTEGER
);
CREATE INDEX IX_MyMember_OMemberID ON MyMember (OMemberID);
CREATE INDEX IX_MyMember_OMemberID_O ON MyMember (OMemberID_O);

CREATE TABLE Antenna (
    OMemberID INTEGER,
    OMemberID_O INTEGER
);
CREATE INDEX IX_Antenna_OMemberID ON Antenna (OMemberID);
CREATE INDEX IX_Antenna_OMemberID_O ON Antenna (OMemberID_O);
