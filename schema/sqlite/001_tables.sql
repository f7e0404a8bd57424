-- The organisation directory and everything keyed to it, for SQLite 3.31 or later.
--
-- Ids are AUTOINCREMENT: links and rights outlive the row they name, and an id given out twice would pass them on.
-- DATE and DATETIME columns hold zero-padded text (2013-05-07 09:03:00), so that comparing texts compares times.
-- Nothing but the ids is unique: equal relations, titles, rights and settings are legal.

CREATE TABLE qv_User (
  Col_ID             INTEGER PRIMARY KEY AUTOINCREMENT,
  Col_LoginName      TEXT DEFAULT '',
  Col_Name           TEXT DEFAULT '',
  Col_PWord          TEXT DEFAULT '',
  -- Written as Col_PWord, read by one list as Col_Password: one text under two names.
  Col_Password       TEXT GENERATED ALWAYS AS (Col_PWord) VIRTUAL,
  Col_EnType         INTEGER DEFAULT 1,
  Col_IsSystem       INTEGER DEFAULT 0,
  Col_IsSuper        INTEGER DEFAULT 0,
  Col_Disabled       INTEGER DEFAULT 0,
  Col_IsFarUser      INTEGER DEFAULT 0,
  Col_FarServer      TEXT DEFAULT '',
  Col_DomainID       INTEGER DEFAULT 0,
  Col_ItemIndex      INTEGER DEFAULT 10000,
  Col_Level          INTEGER DEFAULT 0,
  Col_Creator_Name   TEXT DEFAULT '',
  Col_Note           TEXT DEFAULT '',
  Col_EMail          TEXT DEFAULT '',
  Col_Mobile         TEXT DEFAULT '',
  Col_Sex            INTEGER DEFAULT 0,
  Col_Description    TEXT DEFAULT '',
  Col_Birthday       DATE,
  Col_h_Province     TEXT DEFAULT '',
  Col_h_City         TEXT DEFAULT '',
  Col_h_Address      TEXT DEFAULT '',
  Col_h_PostCode     TEXT DEFAULT '',
  Col_h_Phone        TEXT DEFAULT '',
  Col_h_Fax          TEXT DEFAULT '',
  Col_o_CompanyName  TEXT DEFAULT '',
  Col_o_Address      TEXT DEFAULT '',
  Col_o_PostCode     TEXT DEFAULT '',
  Col_o_JobTitle     TEXT DEFAULT '',
  Col_o_Phone        TEXT DEFAULT '',
  Col_o_Fax          TEXT DEFAULT '',
  Col_Picture        TEXT DEFAULT '',
  Col_ECard          TEXT DEFAULT '',
  Col_DeptInfo       TEXT DEFAULT '',
  -- The update that only fills an empty department looks for 0, not for NULL.
  Col_DeptID         INTEGER DEFAULT 0,
  Col_UserData       TEXT DEFAULT ''
);

CREATE TABLE qv_Group (
  Col_ID             INTEGER PRIMARY KEY AUTOINCREMENT,
  Col_Name           TEXT DEFAULT '',
  Col_Description    TEXT DEFAULT '',
  Col_Creator_Name   TEXT DEFAULT '',
  Col_Dt_Create      DATE,
  Col_ItemIndex      INTEGER DEFAULT 10000,
  Col_DomainID       INTEGER DEFAULT 0,
  Col_Style          INTEGER DEFAULT 0
);

-- The placeholder view is inserted with name, owner and type alone; the rest is defaults.
CREATE TABLE qv_View (
  Col_ID             INTEGER PRIMARY KEY AUTOINCREMENT,
  Col_Name           TEXT DEFAULT '',
  Col_Type           INTEGER DEFAULT 1,
  Col_Description    TEXT DEFAULT '',
  Col_OwnerID        INTEGER DEFAULT 0,
  Col_ItemIndex      INTEGER DEFAULT 10000,
  Col_Creator_Name   TEXT DEFAULT '',
  Col_Dt_Create      DATE,
  Col_DomainID       INTEGER DEFAULT 0,
  Col_Style          INTEGER DEFAULT 0,
  Col_IsPublic       INTEGER DEFAULT 0
);

-- NOT NULL, since one NULL dependent would empty every "not in this group" list. No key: double links are legal.
CREATE TABLE qv_Relation (
  Col_QvItemID       INTEGER NOT NULL DEFAULT 0,
  Col_QvItemType     INTEGER NOT NULL DEFAULT 0,
  Col_DQvItemID      INTEGER NOT NULL DEFAULT 0,
  Col_DQvItemType    INTEGER NOT NULL DEFAULT 0,
  Col_RelType        INTEGER NOT NULL DEFAULT 1,
  Col_Ref            INTEGER NOT NULL DEFAULT 0,
  Col_ViewID         INTEGER NOT NULL DEFAULT 0
);

-- Roles start at index 0, unlike users, groups and views.
CREATE TABLE qv_Role (
  Col_ID             INTEGER PRIMARY KEY AUTOINCREMENT,
  Col_Name           TEXT DEFAULT '',
  Col_Description    TEXT DEFAULT '',
  Col_Dt_Create      DATETIME,
  Col_Creator_Name   TEXT DEFAULT '',
  Col_ItemIndex      INTEGER DEFAULT 0,
  Col_DomainID       INTEGER DEFAULT 0,
  Col_Disabled       INTEGER DEFAULT 0,
  Col_AppName        TEXT DEFAULT '',
  Col_Genre          TEXT DEFAULT '',
  Col_G_ClassID      INTEGER DEFAULT 0,
  Col_Type           INTEGER DEFAULT 0
);

-- Col_DQvItemName is the member's name on the day of the entry and does not follow a renaming.
CREATE TABLE qv_JobTitle (
  Col_QvItemID       INTEGER DEFAULT 0,
  Col_QvItemType     INTEGER DEFAULT 2,
  Col_JobTitle       TEXT DEFAULT '',
  Col_DQvItemID      INTEGER DEFAULT 0,
  Col_DQvItemType    INTEGER DEFAULT 1,
  Col_JobTitle_Desc  TEXT DEFAULT '',
  Col_DQvItemName    TEXT DEFAULT ''
);

CREATE TABLE qv_ItemAce (
  Col_QvItemID       INTEGER DEFAULT 0,
  Col_QvItemType     INTEGER DEFAULT 0,
  Col_FunName        TEXT DEFAULT '',
  Col_FunGenre       TEXT DEFAULT '',
  Col_Power          INTEGER DEFAULT 0,
  Col_UnPower        INTEGER DEFAULT 0
);

CREATE TABLE qv_BIIAce (
  Col_QvItemID       INTEGER DEFAULT 0,
  Col_QvItemType     INTEGER DEFAULT 0,
  Col_DQvItemID      INTEGER DEFAULT 0,
  Col_DQvItemType    INTEGER DEFAULT 0,
  Col_FunGenre       TEXT DEFAULT '',
  Col_FunName        TEXT DEFAULT '',
  Col_Power          INTEGER DEFAULT 0,
  Col_UnPower        INTEGER DEFAULT 0
);

CREATE TABLE Tab_BIOAce (
  Col_ID             INTEGER PRIMARY KEY AUTOINCREMENT,
  Col_QvItemID       INTEGER DEFAULT 0,
  Col_QvItemType     INTEGER DEFAULT 0,
  Col_QvItemName     TEXT DEFAULT '',
  Col_ClassID        INTEGER DEFAULT 0,
  Col_ObjID          INTEGER DEFAULT 0,
  Col_FunName        TEXT DEFAULT '',
  Col_FunGenre       TEXT DEFAULT '',
  Col_Power          INTEGER DEFAULT 0,
  Col_UnPower        INTEGER DEFAULT 0,
  Col_Creator_ID     INTEGER DEFAULT 0,
  Col_Creator_Name   TEXT DEFAULT '',
  Col_Dt_Create      DATETIME
);

-- Style bits come and go as signed 32-bit numbers, so the highest bit makes Col_Style negative.
CREATE TABLE Tab_Doc_Root (
  Col_ID             INTEGER PRIMARY KEY AUTOINCREMENT,
  Col_Name           TEXT DEFAULT '',
  Col_Desc           TEXT DEFAULT '',
  Col_DataPath       TEXT DEFAULT '',
  Col_Dt_Create      DATETIME,
  Col_MaxSize        INTEGER DEFAULT 0,
  Col_UsedSize       INTEGER DEFAULT 0,
  Col_DispName       TEXT DEFAULT '',
  Col_HaveSubItem    INTEGER DEFAULT 0,
  Col_Type           INTEGER DEFAULT 0,
  Col_Style          INTEGER DEFAULT 0,
  Col_OwnerID        INTEGER DEFAULT 0
);

CREATE TABLE Tab_Doc_Root_Link (
  Col_ID             INTEGER PRIMARY KEY AUTOINCREMENT,
  Col_DispName       TEXT DEFAULT '',
  Col_Style          INTEGER DEFAULT 0,
  Col_HaveSubItem    INTEGER DEFAULT 0,
  Col_P_ObjID        INTEGER DEFAULT 0,
  Col_S_ClassID      INTEGER DEFAULT 0,
  Col_S_ObjID        INTEGER DEFAULT 0,
  Col_IsRef          INTEGER DEFAULT 0,
  Col_RelType        INTEGER DEFAULT 0,
  Col_Ace            INTEGER DEFAULT 0,
  Col_Creator_ID     INTEGER DEFAULT 0,
  Col_Creator_Name   TEXT DEFAULT '',
  Col_Note           TEXT DEFAULT '',
  Col_Order          INTEGER DEFAULT 0
);

CREATE TABLE Tab_Doc_VFolder (
  Col_ID             INTEGER PRIMARY KEY AUTOINCREMENT,
  Col_Name           TEXT DEFAULT '',
  Col_Style          INTEGER DEFAULT 0,
  Col_HaveSubItem    INTEGER DEFAULT 0,
  Col_G_ClassID      INTEGER DEFAULT 0,
  Col_G_ObjID        INTEGER DEFAULT 0,
  Col_Creator_ID     INTEGER DEFAULT 0,
  Col_Creator_Name   TEXT DEFAULT '',
  Col_Dt_Create      DATETIME
);

-- As Tab_Doc_Root_Link, with a folder in place of the root.
CREATE TABLE Tab_Doc_VFolder_Link (
  Col_ID             INTEGER PRIMARY KEY AUTOINCREMENT,
  Col_DispName       TEXT DEFAULT '',
  Col_Style          INTEGER DEFAULT 0,
  Col_HaveSubItem    INTEGER DEFAULT 0,
  Col_P_ObjID        INTEGER DEFAULT 0,
  Col_S_ClassID      INTEGER DEFAULT 0,
  Col_S_ObjID        INTEGER DEFAULT 0,
  Col_IsRef          INTEGER DEFAULT 0,
  Col_RelType        INTEGER DEFAULT 0,
  Col_Ace            INTEGER DEFAULT 0,
  Col_Creator_ID     INTEGER DEFAULT 0,
  Col_Creator_Name   TEXT DEFAULT '',
  Col_Note           TEXT DEFAULT '',
  Col_Order          INTEGER DEFAULT 0
);

CREATE TABLE Tab_Doc_Backup_Plan (
  Col_ID             INTEGER PRIMARY KEY AUTOINCREMENT,
  Col_Name           TEXT DEFAULT '',
  Col_Desc           TEXT DEFAULT '',
  Col_Data           TEXT DEFAULT ''
);

-- Here the underscore stands before Type and ID.
CREATE TABLE Tab_Doc_Backup_Rel (
  Col_ID             INTEGER PRIMARY KEY AUTOINCREMENT,
  Col_QvItem_Type    INTEGER DEFAULT 0,
  Col_QvItem_ID      INTEGER DEFAULT 0,
  Col_PlanID         INTEGER DEFAULT 0
);

-- Col_Type is a word, not a number.
CREATE TABLE Tab_Doc_Log (
  Col_Content        TEXT DEFAULT '',
  Col_Type           TEXT DEFAULT '',
  Col_R_ClassID      INTEGER DEFAULT 0,
  Col_R_ObjID        INTEGER DEFAULT 0,
  Col_Creator_ID     INTEGER DEFAULT 0,
  Col_Creator_Name   TEXT DEFAULT '',
  Col_Genre          TEXT DEFAULT ''
);

-- Col_Data is text for numbers too: one flag is inserted unquoted and must read back like the quoted ones.
CREATE TABLE Tab_Config (
  Col_Name           TEXT DEFAULT '',
  Col_Data           TEXT DEFAULT '',
  Col_Genre          TEXT DEFAULT ''
);

-- Messages and the login log belong to the server: these tables carry what their upkeep touches.
CREATE TABLE kel_Msg (
  Col_ID             INTEGER PRIMARY KEY AUTOINCREMENT,
  Col_SendDate       DATETIME
);

CREATE TABLE kel_Msg_AttachMent (
  Col_ID             INTEGER PRIMARY KEY AUTOINCREMENT,
  Col_MsgID          INTEGER DEFAULT 0
);

CREATE TABLE kel_Msg_Rece (
  Col_ID             INTEGER PRIMARY KEY AUTOINCREMENT,
  Col_MsgID          INTEGER DEFAULT 0
);

CREATE TABLE kel_log (
  Col_ID             INTEGER PRIMARY KEY AUTOINCREMENT
);

-- An add-in is inserted without Col_Disabled and must come up switched on.
CREATE TABLE kel_AddIn (
  Col_ID             INTEGER PRIMARY KEY AUTOINCREMENT,
  Col_Name           TEXT DEFAULT '',
  Col_Data           TEXT DEFAULT '',
  Col_AddInType      INTEGER DEFAULT 0,
  Col_IsPublic       INTEGER DEFAULT 0,
  Col_Disabled       INTEGER DEFAULT 0,
  Col_Desc           TEXT DEFAULT '',
  Col_PackageName    TEXT DEFAULT '',
  Col_Index          INTEGER DEFAULT 0
);

CREATE TABLE kel_Package (
  Col_ID             INTEGER PRIMARY KEY AUTOINCREMENT,
  Col_Name           TEXT DEFAULT '',
  Col_Ver            INTEGER DEFAULT 0,
  Col_Desc           TEXT DEFAULT '',
  Col_Dt_Modify      DATETIME,
  Col_Disabled       INTEGER DEFAULT 0
);

-- A notice's id is a text, here and in the three tables below.
CREATE TABLE Kel_Board (
  Col_ID             TEXT NOT NULL PRIMARY KEY,
  Col_Creator_Name   TEXT DEFAULT '',
  Col_Subject        TEXT DEFAULT '',
  Col_Dt_Create      DATETIME,
  Col_Content        TEXT DEFAULT ''
);

CREATE TABLE Kel_Board_Attach (
  Col_BoardID        TEXT DEFAULT '',
  Col_FileName       TEXT DEFAULT ''
);

CREATE TABLE Kel_Board_Revert (
  Col_ID             INTEGER PRIMARY KEY AUTOINCREMENT,
  Col_BoardID        TEXT DEFAULT '',
  Col_Creator_Name   TEXT DEFAULT '',
  Col_Dt_Create      DATETIME,
  Col_Content        TEXT DEFAULT ''
);

CREATE TABLE Kel_Board_Visiter (
  Col_ID             INTEGER PRIMARY KEY AUTOINCREMENT,
  Col_BoardID        TEXT DEFAULT '',
  Col_QvItem         TEXT DEFAULT '',
  Col_QvItem_Name    TEXT DEFAULT '',
  Col_Dt_Readed      DATETIME,
  Col_Readed         INTEGER DEFAULT 0
);
