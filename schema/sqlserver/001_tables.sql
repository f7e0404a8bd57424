-- The organisation directory and everything keyed to it, for SQL Server 2016 or later.
--
-- Never run on that engine: none can be had where this is tested. What was run is a T-SQL grammar over every statement,
-- and all of it through the protocol on a server that stands in for the engine (tests/servers/tds_responder.py).
--
-- The database ignores case (its default collation has CI in its name), as table names are spelt in several ways.
-- Statements write texts without the mark of Unicode, so a text keeps only what the database's code page has; a
-- collation whose name ends in UTF8 (2019 or later) keeps all. Texts are taken up to the lengths that are declared here.
-- date and datetime2 read YYYY-MM-DD under every language of a login, which datetime does not; times have no fractions,
-- so that a purge up to a second takes all of that second. Nothing but the ids is unique: equal relations, titles, rights
-- and settings are legal.

CREATE TABLE qv_User (
  Col_ID             int IDENTITY(1,1) NOT NULL PRIMARY KEY,
  Col_LoginName      nvarchar(128) DEFAULT '',
  Col_Name           nvarchar(128) DEFAULT '',
  Col_PWord          nvarchar(255) DEFAULT '',
  -- Written as Col_PWord, read by one list as Col_Password: one text under two names.
  Col_Password       AS (Col_PWord),
  Col_EnType         int DEFAULT 1,
  Col_IsSystem       int DEFAULT 0,
  Col_IsSuper        int DEFAULT 0,
  Col_Disabled       int DEFAULT 0,
  Col_IsFarUser      int DEFAULT 0,
  Col_FarServer      nvarchar(255) DEFAULT '',
  Col_DomainID       int DEFAULT 0,
  Col_ItemIndex      int DEFAULT 10000,
  Col_Level          int DEFAULT 0,
  Col_Creator_Name   nvarchar(128) DEFAULT '',
  Col_Note           nvarchar(255) DEFAULT '',
  Col_EMail          nvarchar(255) DEFAULT '',
  Col_Mobile         nvarchar(64) DEFAULT '',
  Col_Sex            int DEFAULT 0,
  Col_Description    nvarchar(255) DEFAULT '',
  Col_Birthday       date NULL,
  Col_h_Province     nvarchar(128) DEFAULT '',
  Col_h_City         nvarchar(128) DEFAULT '',
  Col_h_Address      nvarchar(255) DEFAULT '',
  Col_h_PostCode     nvarchar(32) DEFAULT '',
  Col_h_Phone        nvarchar(64) DEFAULT '',
  Col_h_Fax          nvarchar(64) DEFAULT '',
  Col_o_CompanyName  nvarchar(255) DEFAULT '',
  Col_o_Address      nvarchar(255) DEFAULT '',
  Col_o_PostCode     nvarchar(32) DEFAULT '',
  Col_o_JobTitle     nvarchar(128) DEFAULT '',
  Col_o_Phone        nvarchar(64) DEFAULT '',
  Col_o_Fax          nvarchar(64) DEFAULT '',
  Col_Picture        nvarchar(255) DEFAULT '',
  Col_ECard          nvarchar(max) DEFAULT '',
  Col_DeptInfo       nvarchar(255) DEFAULT '',
  -- The update that only fills an empty department looks for 0, not for NULL.
  Col_DeptID         int DEFAULT 0,
  Col_UserData       nvarchar(max) DEFAULT ''
);

CREATE TABLE qv_Group (
  Col_ID             int IDENTITY(1,1) NOT NULL PRIMARY KEY,
  Col_Name           nvarchar(128) DEFAULT '',
  Col_Description    nvarchar(255) DEFAULT '',
  Col_Creator_Name   nvarchar(128) DEFAULT '',
  Col_Dt_Create      date NULL,
  Col_ItemIndex      int DEFAULT 10000,
  Col_DomainID       int DEFAULT 0,
  Col_Style          int DEFAULT 0
);

-- The placeholder view is inserted with name, owner and type alone; the rest is defaults.
CREATE TABLE qv_View (
  Col_ID             int IDENTITY(1,1) NOT NULL PRIMARY KEY,
  Col_Name           nvarchar(128) DEFAULT '',
  Col_Type           int DEFAULT 1,
  Col_Description    nvarchar(255) DEFAULT '',
  Col_OwnerID        int DEFAULT 0,
  Col_ItemIndex      int DEFAULT 10000,
  Col_Creator_Name   nvarchar(128) DEFAULT '',
  Col_Dt_Create      date NULL,
  Col_DomainID       int DEFAULT 0,
  Col_Style          int DEFAULT 0,
  Col_IsPublic       int DEFAULT 0
);

-- NOT NULL, since one NULL dependent would empty every "not in this group" list. No key: double links are legal.
CREATE TABLE qv_Relation (
  Col_QvItemID       int NOT NULL DEFAULT 0,
  Col_QvItemType     int NOT NULL DEFAULT 0,
  Col_DQvItemID      int NOT NULL DEFAULT 0,
  Col_DQvItemType    int NOT NULL DEFAULT 0,
  Col_RelType        int NOT NULL DEFAULT 1,
  Col_Ref            int NOT NULL DEFAULT 0,
  Col_ViewID         int NOT NULL DEFAULT 0
);

-- Roles start at index 0, unlike users, groups and views.
CREATE TABLE qv_Role (
  Col_ID             int IDENTITY(1,1) NOT NULL PRIMARY KEY,
  Col_Name           nvarchar(128) DEFAULT '',
  Col_Description    nvarchar(255) DEFAULT '',
  Col_Dt_Create      datetime2(0) NULL,
  Col_Creator_Name   nvarchar(128) DEFAULT '',
  Col_ItemIndex      int DEFAULT 0,
  Col_DomainID       int DEFAULT 0,
  Col_Disabled       int DEFAULT 0,
  Col_AppName        nvarchar(128) DEFAULT '',
  Col_Genre          nvarchar(128) DEFAULT '',
  Col_G_ClassID      int DEFAULT 0,
  Col_Type           int DEFAULT 0
);

-- Col_DQvItemName is the member's name on the day of the entry and does not follow a renaming.
CREATE TABLE qv_JobTitle (
  Col_QvItemID       int DEFAULT 0,
  Col_QvItemType     int DEFAULT 2,
  Col_JobTitle       nvarchar(128) DEFAULT '',
  Col_DQvItemID      int DEFAULT 0,
  Col_DQvItemType    int DEFAULT 1,
  Col_JobTitle_Desc  nvarchar(255) DEFAULT '',
  Col_DQvItemName    nvarchar(128) DEFAULT ''
);

CREATE TABLE qv_ItemAce (
  Col_QvItemID       int DEFAULT 0,
  Col_QvItemType     int DEFAULT 0,
  Col_FunName        nvarchar(128) DEFAULT '',
  Col_FunGenre       nvarchar(128) DEFAULT '',
  Col_Power          int DEFAULT 0,
  Col_UnPower        int DEFAULT 0
);

CREATE TABLE qv_BIIAce (
  Col_QvItemID       int DEFAULT 0,
  Col_QvItemType     int DEFAULT 0,
  Col_DQvItemID      int DEFAULT 0,
  Col_DQvItemType    int DEFAULT 0,
  Col_FunGenre       nvarchar(128) DEFAULT '',
  Col_FunName        nvarchar(128) DEFAULT '',
  Col_Power          int DEFAULT 0,
  Col_UnPower        int DEFAULT 0
);

CREATE TABLE Tab_BIOAce (
  Col_ID             int IDENTITY(1,1) NOT NULL PRIMARY KEY,
  Col_QvItemID       int DEFAULT 0,
  Col_QvItemType     int DEFAULT 0,
  Col_QvItemName     nvarchar(128) DEFAULT '',
  Col_ClassID        int DEFAULT 0,
  Col_ObjID          int DEFAULT 0,
  Col_FunName        nvarchar(128) DEFAULT '',
  Col_FunGenre       nvarchar(128) DEFAULT '',
  Col_Power          int DEFAULT 0,
  Col_UnPower        int DEFAULT 0,
  Col_Creator_ID     int DEFAULT 0,
  Col_Creator_Name   nvarchar(128) DEFAULT '',
  Col_Dt_Create      datetime2(0) NULL
);

-- Style bits come and go as signed 32-bit numbers, so the highest bit makes Col_Style negative.
CREATE TABLE Tab_Doc_Root (
  Col_ID             int IDENTITY(1,1) NOT NULL PRIMARY KEY,
  Col_Name           nvarchar(128) DEFAULT '',
  Col_Desc           nvarchar(255) DEFAULT '',
  Col_DataPath       nvarchar(255) DEFAULT '',
  Col_Dt_Create      datetime2(0) NULL,
  Col_MaxSize        int DEFAULT 0,
  Col_UsedSize       int DEFAULT 0,
  Col_DispName       nvarchar(128) DEFAULT '',
  Col_HaveSubItem    int DEFAULT 0,
  Col_Type           int DEFAULT 0,
  Col_Style          int DEFAULT 0,
  Col_OwnerID        int DEFAULT 0
);

CREATE TABLE Tab_Doc_Root_Link (
  Col_ID             int IDENTITY(1,1) NOT NULL PRIMARY KEY,
  Col_DispName       nvarchar(128) DEFAULT '',
  Col_Style          int DEFAULT 0,
  Col_HaveSubItem    int DEFAULT 0,
  Col_P_ObjID        int DEFAULT 0,
  Col_S_ClassID      int DEFAULT 0,
  Col_S_ObjID        int DEFAULT 0,
  Col_IsRef          int DEFAULT 0,
  Col_RelType        int DEFAULT 0,
  Col_Ace            int DEFAULT 0,
  Col_Creator_ID     int DEFAULT 0,
  Col_Creator_Name   nvarchar(128) DEFAULT '',
  Col_Note           nvarchar(255) DEFAULT '',
  Col_Order          int DEFAULT 0
);

CREATE TABLE Tab_Doc_VFolder (
  Col_ID             int IDENTITY(1,1) NOT NULL PRIMARY KEY,
  Col_Name           nvarchar(128) DEFAULT '',
  Col_Style          int DEFAULT 0,
  Col_HaveSubItem    int DEFAULT 0,
  Col_G_ClassID      int DEFAULT 0,
  Col_G_ObjID        int DEFAULT 0,
  Col_Creator_ID     int DEFAULT 0,
  Col_Creator_Name   nvarchar(128) DEFAULT '',
  Col_Dt_Create      datetime2(0) NULL
);

-- As Tab_Doc_Root_Link, with a folder in place of the root.
CREATE TABLE Tab_Doc_VFolder_Link (
  Col_ID             int IDENTITY(1,1) NOT NULL PRIMARY KEY,
  Col_DispName       nvarchar(128) DEFAULT '',
  Col_Style          int DEFAULT 0,
  Col_HaveSubItem    int DEFAULT 0,
  Col_P_ObjID        int DEFAULT 0,
  Col_S_ClassID      int DEFAULT 0,
  Col_S_ObjID        int DEFAULT 0,
  Col_IsRef          int DEFAULT 0,
  Col_RelType        int DEFAULT 0,
  Col_Ace            int DEFAULT 0,
  Col_Creator_ID     int DEFAULT 0,
  Col_Creator_Name   nvarchar(128) DEFAULT '',
  Col_Note           nvarchar(255) DEFAULT '',
  Col_Order          int DEFAULT 0
);

CREATE TABLE Tab_Doc_Backup_Plan (
  Col_ID             int IDENTITY(1,1) NOT NULL PRIMARY KEY,
  Col_Name           nvarchar(128) DEFAULT '',
  Col_Desc           nvarchar(255) DEFAULT '',
  Col_Data           nvarchar(max) DEFAULT ''
);

-- Here the underscore stands before Type and ID.
CREATE TABLE Tab_Doc_Backup_Rel (
  Col_ID             int IDENTITY(1,1) NOT NULL PRIMARY KEY,
  Col_QvItem_Type    int DEFAULT 0,
  Col_QvItem_ID      int DEFAULT 0,
  Col_PlanID         int DEFAULT 0
);

-- Col_Type is a word, not a number.
CREATE TABLE Tab_Doc_Log (
  Col_Content        nvarchar(max) DEFAULT '',
  Col_Type           nvarchar(64) DEFAULT '',
  Col_R_ClassID      int DEFAULT 0,
  Col_R_ObjID        int DEFAULT 0,
  Col_Creator_ID     int DEFAULT 0,
  Col_Creator_Name   nvarchar(128) DEFAULT '',
  Col_Genre          nvarchar(128) DEFAULT ''
);

-- Col_Data is text for numbers too: one flag is inserted unquoted and must read back like the quoted ones.
CREATE TABLE Tab_Config (
  Col_Name           nvarchar(128) DEFAULT '',
  Col_Data           nvarchar(max) DEFAULT '',
  Col_Genre          nvarchar(128) DEFAULT ''
);

-- Messages and the login log belong to the server: these tables carry what their upkeep touches.
CREATE TABLE kel_Msg (
  Col_ID             bigint IDENTITY(1,1) NOT NULL PRIMARY KEY,
  Col_SendDate       datetime2(0) NULL
);

CREATE TABLE kel_Msg_AttachMent (
  Col_ID             bigint IDENTITY(1,1) NOT NULL PRIMARY KEY,
  Col_MsgID          bigint DEFAULT 0
);

CREATE TABLE kel_Msg_Rece (
  Col_ID             bigint IDENTITY(1,1) NOT NULL PRIMARY KEY,
  Col_MsgID          bigint DEFAULT 0
);

CREATE TABLE kel_log (
  Col_ID             int IDENTITY(1,1) NOT NULL PRIMARY KEY
);

-- An add-in is inserted without Col_Disabled and must come up switched on.
CREATE TABLE kel_AddIn (
  Col_ID             int IDENTITY(1,1) NOT NULL PRIMARY KEY,
  Col_Name           nvarchar(128) DEFAULT '',
  Col_Data           nvarchar(max) DEFAULT '',
  Col_AddInType      int DEFAULT 0,
  Col_IsPublic       int DEFAULT 0,
  Col_Disabled       int DEFAULT 0,
  Col_Desc           nvarchar(255) DEFAULT '',
  Col_PackageName    nvarchar(128) DEFAULT '',
  Col_Index          int DEFAULT 0
);

CREATE TABLE kel_Package (
  Col_ID             int IDENTITY(1,1) NOT NULL PRIMARY KEY,
  Col_Name           nvarchar(128) DEFAULT '',
  Col_Ver            int DEFAULT 0,
  Col_Desc           nvarchar(255) DEFAULT '',
  Col_Dt_Modify      datetime2(0) NULL,
  Col_Disabled       int DEFAULT 0
);

-- A notice's id is a text, here and in the three tables below.
CREATE TABLE Kel_Board (
  Col_ID             nvarchar(64) NOT NULL PRIMARY KEY,
  Col_Creator_Name   nvarchar(128) DEFAULT '',
  Col_Subject        nvarchar(255) DEFAULT '',
  Col_Dt_Create      datetime2(0) NULL,
  Col_Content        nvarchar(max) DEFAULT ''
);

CREATE TABLE Kel_Board_Attach (
  Col_BoardID        nvarchar(64) DEFAULT '',
  Col_FileName       nvarchar(255) DEFAULT ''
);

CREATE TABLE Kel_Board_Revert (
  Col_ID             int IDENTITY(1,1) NOT NULL PRIMARY KEY,
  Col_BoardID        nvarchar(64) DEFAULT '',
  Col_Creator_Name   nvarchar(128) DEFAULT '',
  Col_Dt_Create      datetime2(0) NULL,
  Col_Content        nvarchar(max) DEFAULT ''
);

CREATE TABLE Kel_Board_Visiter (
  Col_ID             int IDENTITY(1,1) NOT NULL PRIMARY KEY,
  Col_BoardID        nvarchar(64) DEFAULT '',
  Col_QvItem         nvarchar(64) DEFAULT '',
  Col_QvItem_Name    nvarchar(255) DEFAULT '',
  Col_Dt_Readed      datetime2(0) NULL,
  Col_Readed         int DEFAULT 0
);
