-- The organisation directory and everything keyed to it, for Access (the Jet or ACE engine).
--
-- Never run on that engine, of which nothing here knows even the grammar: nothing that can be had writes such a file.
-- By its documents DEFAULT is understood only where the connection speaks ANSI-92 (ExtendedAnsiSQL=1), and a query may
-- read MSysObjects only after somebody has been given the right to.
--
-- Names and texts are compared without regard to case. A date and a time are one type. Nothing but the ids is unique:
-- equal relations, titles, rights and settings are legal.

CREATE TABLE qv_User (
  Col_ID             COUNTER NOT NULL PRIMARY KEY,
  Col_LoginName      TEXT(128) DEFAULT '',
  Col_Name           TEXT(128) DEFAULT '',
  Col_PWord          TEXT(255) DEFAULT '',
  -- Here a column cannot be computed: one list reads this and finds no password. Signing in reads Col_PWord.
  Col_Password       TEXT(255),
  Col_EnType         LONG DEFAULT 1,
  Col_IsSystem       LONG DEFAULT 0,
  Col_IsSuper        LONG DEFAULT 0,
  Col_Disabled       LONG DEFAULT 0,
  Col_IsFarUser      LONG DEFAULT 0,
  Col_FarServer      TEXT(255) DEFAULT '',
  Col_DomainID       LONG DEFAULT 0,
  Col_ItemIndex      LONG DEFAULT 10000,
  Col_Level          LONG DEFAULT 0,
  Col_Creator_Name   TEXT(128) DEFAULT '',
  Col_Note           TEXT(255) DEFAULT '',
  Col_EMail          TEXT(255) DEFAULT '',
  Col_Mobile         TEXT(64) DEFAULT '',
  Col_Sex            LONG DEFAULT 0,
  Col_Description    TEXT(255) DEFAULT '',
  Col_Birthday       DATETIME,
  Col_h_Province     TEXT(128) DEFAULT '',
  Col_h_City         TEXT(128) DEFAULT '',
  Col_h_Address      TEXT(255) DEFAULT '',
  Col_h_PostCode     TEXT(32) DEFAULT '',
  Col_h_Phone        TEXT(64) DEFAULT '',
  Col_h_Fax          TEXT(64) DEFAULT '',
  Col_o_CompanyName  TEXT(255) DEFAULT '',
  Col_o_Address      TEXT(255) DEFAULT '',
  Col_o_PostCode     TEXT(32) DEFAULT '',
  Col_o_JobTitle     TEXT(128) DEFAULT '',
  Col_o_Phone        TEXT(64) DEFAULT '',
  Col_o_Fax          TEXT(64) DEFAULT '',
  Col_Picture        TEXT(255) DEFAULT '',
  Col_ECard          MEMO DEFAULT '',
  Col_DeptInfo       TEXT(255) DEFAULT '',
  -- The update that only fills an empty department looks for 0, not for NULL.
  Col_DeptID         LONG DEFAULT 0,
  Col_UserData       MEMO DEFAULT ''
);

CREATE TABLE qv_Group (
  Col_ID             COUNTER NOT NULL PRIMARY KEY,
  Col_Name           TEXT(128) DEFAULT '',
  Col_Description    TEXT(255) DEFAULT '',
  Col_Creator_Name   TEXT(128) DEFAULT '',
  Col_Dt_Create      DATETIME,
  Col_ItemIndex      LONG DEFAULT 10000,
  Col_DomainID       LONG DEFAULT 0,
  Col_Style          LONG DEFAULT 0
);

-- The placeholder view is inserted with name, owner and type alone; the rest is defaults.
CREATE TABLE qv_View (
  Col_ID             COUNTER NOT NULL PRIMARY KEY,
  Col_Name           TEXT(128) DEFAULT '',
  Col_Type           LONG DEFAULT 1,
  Col_Description    TEXT(255) DEFAULT '',
  Col_OwnerID        LONG DEFAULT 0,
  Col_ItemIndex      LONG DEFAULT 10000,
  Col_Creator_Name   TEXT(128) DEFAULT '',
  Col_Dt_Create      DATETIME,
  Col_DomainID       LONG DEFAULT 0,
  Col_Style          LONG DEFAULT 0,
  Col_IsPublic       LONG DEFAULT 0
);

-- NOT NULL, since one NULL dependent would empty every "not in this group" list. No key: double links are legal.
CREATE TABLE qv_Relation (
  Col_QvItemID       LONG NOT NULL DEFAULT 0,
  Col_QvItemType     LONG NOT NULL DEFAULT 0,
  Col_DQvItemID      LONG NOT NULL DEFAULT 0,
  Col_DQvItemType    LONG NOT NULL DEFAULT 0,
  Col_RelType        LONG NOT NULL DEFAULT 1,
  Col_Ref            LONG NOT NULL DEFAULT 0,
  Col_ViewID         LONG NOT NULL DEFAULT 0
);

-- Roles start at index 0, unlike users, groups and views.
CREATE TABLE qv_Role (
  Col_ID             COUNTER NOT NULL PRIMARY KEY,
  Col_Name           TEXT(128) DEFAULT '',
  Col_Description    TEXT(255) DEFAULT '',
  Col_Dt_Create      DATETIME,
  Col_Creator_Name   TEXT(128) DEFAULT '',
  Col_ItemIndex      LONG DEFAULT 0,
  Col_DomainID       LONG DEFAULT 0,
  Col_Disabled       LONG DEFAULT 0,
  Col_AppName        TEXT(128) DEFAULT '',
  Col_Genre          TEXT(128) DEFAULT '',
  Col_G_ClassID      LONG DEFAULT 0,
  Col_Type           LONG DEFAULT 0
);

-- Col_DQvItemName is the member's name on the day of the entry and does not follow a renaming.
CREATE TABLE qv_JobTitle (
  Col_QvItemID       LONG DEFAULT 0,
  Col_QvItemType     LONG DEFAULT 2,
  Col_JobTitle       TEXT(128) DEFAULT '',
  Col_DQvItemID      LONG DEFAULT 0,
  Col_DQvItemType    LONG DEFAULT 1,
  Col_JobTitle_Desc  TEXT(255) DEFAULT '',
  Col_DQvItemName    TEXT(128) DEFAULT ''
);

CREATE TABLE qv_ItemAce (
  Col_QvItemID       LONG DEFAULT 0,
  Col_QvItemType     LONG DEFAULT 0,
  Col_FunName        TEXT(128) DEFAULT '',
  Col_FunGenre       TEXT(128) DEFAULT '',
  Col_Power          LONG DEFAULT 0,
  Col_UnPower        LONG DEFAULT 0
);

CREATE TABLE qv_BIIAce (
  Col_QvItemID       LONG DEFAULT 0,
  Col_QvItemType     LONG DEFAULT 0,
  Col_DQvItemID      LONG DEFAULT 0,
  Col_DQvItemType    LONG DEFAULT 0,
  Col_FunGenre       TEXT(128) DEFAULT '',
  Col_FunName        TEXT(128) DEFAULT '',
  Col_Power          LONG DEFAULT 0,
  Col_UnPower        LONG DEFAULT 0
);

CREATE TABLE Tab_BIOAce (
  Col_ID             COUNTER NOT NULL PRIMARY KEY,
  Col_QvItemID       LONG DEFAULT 0,
  Col_QvItemType     LONG DEFAULT 0,
  Col_QvItemName     TEXT(128) DEFAULT '',
  Col_ClassID        LONG DEFAULT 0,
  Col_ObjID          LONG DEFAULT 0,
  Col_FunName        TEXT(128) DEFAULT '',
  Col_FunGenre       TEXT(128) DEFAULT '',
  Col_Power          LONG DEFAULT 0,
  Col_UnPower        LONG DEFAULT 0,
  Col_Creator_ID     LONG DEFAULT 0,
  Col_Creator_Name   TEXT(128) DEFAULT '',
  Col_Dt_Create      DATETIME
);

-- Style bits come and go as signed 32-bit numbers, so the highest bit makes Col_Style negative.
CREATE TABLE Tab_Doc_Root (
  Col_ID             COUNTER NOT NULL PRIMARY KEY,
  Col_Name           TEXT(128) DEFAULT '',
  Col_Desc           TEXT(255) DEFAULT '',
  Col_DataPath       TEXT(255) DEFAULT '',
  Col_Dt_Create      DATETIME,
  Col_MaxSize        LONG DEFAULT 0,
  Col_UsedSize       LONG DEFAULT 0,
  Col_DispName       TEXT(128) DEFAULT '',
  Col_HaveSubItem    LONG DEFAULT 0,
  Col_Type           LONG DEFAULT 0,
  Col_Style          LONG DEFAULT 0,
  Col_OwnerID        LONG DEFAULT 0
);

CREATE TABLE Tab_Doc_Root_Link (
  Col_ID             COUNTER NOT NULL PRIMARY KEY,
  Col_DispName       TEXT(128) DEFAULT '',
  Col_Style          LONG DEFAULT 0,
  Col_HaveSubItem    LONG DEFAULT 0,
  Col_P_ObjID        LONG DEFAULT 0,
  Col_S_ClassID      LONG DEFAULT 0,
  Col_S_ObjID        LONG DEFAULT 0,
  Col_IsRef          LONG DEFAULT 0,
  Col_RelType        LONG DEFAULT 0,
  Col_Ace            LONG DEFAULT 0,
  Col_Creator_ID     LONG DEFAULT 0,
  Col_Creator_Name   TEXT(128) DEFAULT '',
  Col_Note           TEXT(255) DEFAULT '',
  Col_Order          LONG DEFAULT 0
);

CREATE TABLE Tab_Doc_VFolder (
  Col_ID             COUNTER NOT NULL PRIMARY KEY,
  Col_Name           TEXT(128) DEFAULT '',
  Col_Style          LONG DEFAULT 0,
  Col_HaveSubItem    LONG DEFAULT 0,
  Col_G_ClassID      LONG DEFAULT 0,
  Col_G_ObjID        LONG DEFAULT 0,
  Col_Creator_ID     LONG DEFAULT 0,
  Col_Creator_Name   TEXT(128) DEFAULT '',
  Col_Dt_Create      DATETIME
);

-- As Tab_Doc_Root_Link, with a folder in place of the root.
CREATE TABLE Tab_Doc_VFolder_Link (
  Col_ID             COUNTER NOT NULL PRIMARY KEY,
  Col_DispName       TEXT(128) DEFAULT '',
  Col_Style          LONG DEFAULT 0,
  Col_HaveSubItem    LONG DEFAULT 0,
  Col_P_ObjID        LONG DEFAULT 0,
  Col_S_ClassID      LONG DEFAULT 0,
  Col_S_ObjID        LONG DEFAULT 0,
  Col_IsRef          LONG DEFAULT 0,
  Col_RelType        LONG DEFAULT 0,
  Col_Ace            LONG DEFAULT 0,
  Col_Creator_ID     LONG DEFAULT 0,
  Col_Creator_Name   TEXT(128) DEFAULT '',
  Col_Note           TEXT(255) DEFAULT '',
  Col_Order          LONG DEFAULT 0
);

CREATE TABLE Tab_Doc_Backup_Plan (
  Col_ID             COUNTER NOT NULL PRIMARY KEY,
  Col_Name           TEXT(128) DEFAULT '',
  Col_Desc           TEXT(255) DEFAULT '',
  Col_Data           MEMO DEFAULT ''
);

-- Here the underscore stands before Type and ID.
CREATE TABLE Tab_Doc_Backup_Rel (
  Col_ID             COUNTER NOT NULL PRIMARY KEY,
  Col_QvItem_Type    LONG DEFAULT 0,
  Col_QvItem_ID      LONG DEFAULT 0,
  Col_PlanID         LONG DEFAULT 0
);

-- Col_Type is a word, not a number.
CREATE TABLE Tab_Doc_Log (
  Col_Content        MEMO DEFAULT '',
  Col_Type           TEXT(64) DEFAULT '',
  Col_R_ClassID      LONG DEFAULT 0,
  Col_R_ObjID        LONG DEFAULT 0,
  Col_Creator_ID     LONG DEFAULT 0,
  Col_Creator_Name   TEXT(128) DEFAULT '',
  Col_Genre          TEXT(128) DEFAULT ''
);

-- Col_Data is text for numbers too: one flag is inserted unquoted and must read back like the quoted ones.
CREATE TABLE Tab_Config (
  Col_Name           TEXT(128) DEFAULT '',
  Col_Data           MEMO DEFAULT '',
  Col_Genre          TEXT(128) DEFAULT ''
);

-- Messages and the login log belong to the server: these tables carry what their upkeep touches.
CREATE TABLE kel_Msg (
  Col_ID             COUNTER NOT NULL PRIMARY KEY,
  Col_SendDate       DATETIME
);

CREATE TABLE kel_Msg_AttachMent (
  Col_ID             COUNTER NOT NULL PRIMARY KEY,
  Col_MsgID          LONG DEFAULT 0
);

CREATE TABLE kel_Msg_Rece (
  Col_ID             COUNTER NOT NULL PRIMARY KEY,
  Col_MsgID          LONG DEFAULT 0
);

CREATE TABLE kel_log (
  Col_ID             COUNTER NOT NULL PRIMARY KEY
);

-- An add-in is inserted without Col_Disabled and must come up switched on.
CREATE TABLE kel_AddIn (
  Col_ID             COUNTER NOT NULL PRIMARY KEY,
  Col_Name           TEXT(128) DEFAULT '',
  Col_Data           MEMO DEFAULT '',
  Col_AddInType      LONG DEFAULT 0,
  Col_IsPublic       LONG DEFAULT 0,
  Col_Disabled       LONG DEFAULT 0,
  Col_Desc           TEXT(255) DEFAULT '',
  Col_PackageName    TEXT(128) DEFAULT '',
  Col_Index          LONG DEFAULT 0
);

CREATE TABLE kel_Package (
  Col_ID             COUNTER NOT NULL PRIMARY KEY,
  Col_Name           TEXT(128) DEFAULT '',
  Col_Ver            LONG DEFAULT 0,
  Col_Desc           TEXT(255) DEFAULT '',
  Col_Dt_Modify      DATETIME,
  Col_Disabled       LONG DEFAULT 0
);

-- A notice's id is a text, here and in the three tables below.
CREATE TABLE Kel_Board (
  Col_ID             TEXT(64) NOT NULL PRIMARY KEY,
  Col_Creator_Name   TEXT(128) DEFAULT '',
  Col_Subject        TEXT(255) DEFAULT '',
  Col_Dt_Create      DATETIME,
  Col_Content        MEMO DEFAULT ''
);

CREATE TABLE Kel_Board_Attach (
  Col_BoardID        TEXT(64) DEFAULT '',
  Col_FileName       TEXT(255) DEFAULT ''
);

CREATE TABLE Kel_Board_Revert (
  Col_ID             COUNTER NOT NULL PRIMARY KEY,
  Col_BoardID        TEXT(64) DEFAULT '',
  Col_Creator_Name   TEXT(128) DEFAULT '',
  Col_Dt_Create      DATETIME,
  Col_Content        MEMO DEFAULT ''
);

CREATE TABLE Kel_Board_Visiter (
  Col_ID             COUNTER NOT NULL PRIMARY KEY,
  Col_BoardID        TEXT(64) DEFAULT '',
  Col_QvItem         TEXT(64) DEFAULT '',
  Col_QvItem_Name    TEXT(255) DEFAULT '',
  Col_Dt_Readed      DATETIME,
  Col_Readed         LONG DEFAULT 0
);
