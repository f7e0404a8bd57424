-- A directory of SQLite as version 2 made it, with rows in every table. Nothing here is ever changed.
CREATE TABLE Kel_Board (
  Col_ID             TEXT NOT NULL PRIMARY KEY,
  Col_Creator_Name   TEXT DEFAULT '',
  Col_Subject        TEXT DEFAULT '',
  Col_Dt_Create      DATETIME,
  Col_Content        TEXT DEFAULT ''
);
INSERT INTO "Kel_Board" VALUES('notice 1','rené','rene','2013-05-07 09:03:00','a; b -- c');
INSERT INTO "Kel_Board" VALUES('notice 2','a; b -- c','日本語','1969-12-31 23:59:59',' blanks ');
INSERT INTO "Kel_Board" VALUES('notice 3',' blanks ','it''s',NULL,'rene');
CREATE TABLE Kel_Board_Attach (
  Col_BoardID        TEXT DEFAULT '',
  Col_FileName       TEXT DEFAULT ''
);
INSERT INTO "Kel_Board_Attach" VALUES('it''s','rené');
INSERT INTO "Kel_Board_Attach" VALUES('😀smile','a; b -- c');
INSERT INTO "Kel_Board_Attach" VALUES('C:\data\',' blanks ');
CREATE TABLE Kel_Board_Revert (
  Col_ID             INTEGER PRIMARY KEY AUTOINCREMENT,
  Col_BoardID        TEXT DEFAULT '',
  Col_Creator_Name   TEXT DEFAULT '',
  Col_Dt_Create      DATETIME,
  Col_Content        TEXT DEFAULT ''
);
INSERT INTO "Kel_Board_Revert" VALUES(1,'rené','rene','2013-05-07 09:03:00','a; b -- c');
INSERT INTO "Kel_Board_Revert" VALUES(5,'a; b -- c','日本語','1969-12-31 23:59:59',' blanks ');
INSERT INTO "Kel_Board_Revert" VALUES(9,' blanks ','it''s',NULL,'rene');
CREATE TABLE Kel_Board_Visiter (
  Col_ID             INTEGER PRIMARY KEY AUTOINCREMENT,
  Col_BoardID        TEXT DEFAULT '',
  Col_QvItem         TEXT DEFAULT '',
  Col_QvItem_Name    TEXT DEFAULT '',
  Col_Dt_Readed      DATETIME,
  Col_Readed         INTEGER DEFAULT 0
);
INSERT INTO "Kel_Board_Visiter" VALUES(1,'rené','rene','😀smile','2013-05-07 09:03:00',0);
INSERT INTO "Kel_Board_Visiter" VALUES(5,'a; b -- c','日本語','C:\data\','1969-12-31 23:59:59',7);
INSERT INTO "Kel_Board_Visiter" VALUES(9,' blanks ','it''s',NULL,NULL,-1);
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
INSERT INTO "Tab_BIOAce" VALUES(1,-1,0,'😀smile',-1,0,'C:\data\',' blanks ',0,7,-1,'😀smile','2013-05-07 09:03:00');
INSERT INTO "Tab_BIOAce" VALUES(5,0,7,'C:\data\',0,7,'rené','rene',7,-1,0,'C:\data\','1969-12-31 23:59:59');
INSERT INTO "Tab_BIOAce" VALUES(9,7,-1,NULL,7,-1,'a; b -- c',NULL,-1,0,7,NULL,NULL);
CREATE TABLE Tab_Config (
  Col_Name           TEXT DEFAULT '',
  Col_Data           TEXT DEFAULT '',
  Col_Genre          TEXT DEFAULT ''
);
INSERT INTO "Tab_Config" VALUES('it''s','rené','rene');
INSERT INTO "Tab_Config" VALUES('😀smile','a; b -- c','日本語');
INSERT INTO "Tab_Config" VALUES('C:\data\',' blanks ','it''s');
CREATE TABLE Tab_Doc_Backup_Plan (
  Col_ID             INTEGER PRIMARY KEY AUTOINCREMENT,
  Col_Name           TEXT DEFAULT '',
  Col_Desc           TEXT DEFAULT '',
  Col_Data           TEXT DEFAULT ''
);
INSERT INTO "Tab_Doc_Backup_Plan" VALUES(1,'rené','rene','😀smile');
INSERT INTO "Tab_Doc_Backup_Plan" VALUES(5,'a; b -- c','日本語','C:\data\');
INSERT INTO "Tab_Doc_Backup_Plan" VALUES(9,' blanks ','it''s',NULL);
CREATE TABLE Tab_Doc_Backup_Rel (
  Col_ID             INTEGER PRIMARY KEY AUTOINCREMENT,
  Col_QvItem_Type    INTEGER DEFAULT 0,
  Col_QvItem_ID      INTEGER DEFAULT 0,
  Col_PlanID         INTEGER DEFAULT 0
);
INSERT INTO "Tab_Doc_Backup_Rel" VALUES(1,-1,0,7);
INSERT INTO "Tab_Doc_Backup_Rel" VALUES(5,0,7,-1);
INSERT INTO "Tab_Doc_Backup_Rel" VALUES(9,7,-1,0);
CREATE TABLE Tab_Doc_Log (
  Col_Content        TEXT DEFAULT '',
  Col_Type           TEXT DEFAULT '',
  Col_R_ClassID      INTEGER DEFAULT 0,
  Col_R_ObjID        INTEGER DEFAULT 0,
  Col_Creator_ID     INTEGER DEFAULT 0,
  Col_Creator_Name   TEXT DEFAULT '',
  Col_Genre          TEXT DEFAULT ''
);
INSERT INTO "Tab_Doc_Log" VALUES('it''s','rené',0,7,-1,'日本語','C:\data\');
INSERT INTO "Tab_Doc_Log" VALUES('😀smile','a; b -- c',7,-1,0,'it''s','rené');
INSERT INTO "Tab_Doc_Log" VALUES('C:\data\',' blanks ',-1,0,7,'😀smile','a; b -- c');
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
INSERT INTO "Tab_Doc_Root" VALUES(1,'rené','rene','😀smile','2013-05-07 09:03:00',0,7,' blanks ',0,7,-1,0);
INSERT INTO "Tab_Doc_Root" VALUES(5,'a; b -- c','日本語','C:\data\','1969-12-31 23:59:59',7,-1,'rene',7,-1,0,7);
INSERT INTO "Tab_Doc_Root" VALUES(9,' blanks ','it''s',NULL,NULL,-1,0,NULL,-1,0,7,-1);
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
INSERT INTO "Tab_Doc_Root_Link" VALUES(1,'rené',0,7,-1,0,7,-1,0,7,-1,'😀smile','a; b -- c',-1);
INSERT INTO "Tab_Doc_Root_Link" VALUES(5,'a; b -- c',7,-1,0,7,-1,0,7,-1,0,'C:\data\',' blanks ',0);
INSERT INTO "Tab_Doc_Root_Link" VALUES(9,' blanks ',-1,0,7,-1,0,7,-1,0,7,NULL,'rene',7);
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
INSERT INTO "Tab_Doc_VFolder" VALUES(1,'rené',0,7,-1,0,7,' blanks ','2013-05-07 09:03:00');
INSERT INTO "Tab_Doc_VFolder" VALUES(5,'a; b -- c',7,-1,0,7,-1,'rene','1969-12-31 23:59:59');
INSERT INTO "Tab_Doc_VFolder" VALUES(9,' blanks ',-1,0,7,-1,0,NULL,NULL);
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
INSERT INTO "Tab_Doc_VFolder_Link" VALUES(1,'rené',0,7,-1,0,7,-1,0,7,-1,'😀smile','a; b -- c',-1);
INSERT INTO "Tab_Doc_VFolder_Link" VALUES(5,'a; b -- c',7,-1,0,7,-1,0,7,-1,0,'C:\data\',' blanks ',0);
INSERT INTO "Tab_Doc_VFolder_Link" VALUES(9,' blanks ',-1,0,7,-1,0,7,-1,0,7,NULL,'rene',7);
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
INSERT INTO "kel_AddIn" VALUES(1,'rené','rene',7,-1,0,'C:\data\',' blanks ',0);
INSERT INTO "kel_AddIn" VALUES(5,'a; b -- c','日本語',-1,0,7,'rené','rene',7);
INSERT INTO "kel_AddIn" VALUES(9,' blanks ','it''s',0,7,-1,'a; b -- c',NULL,-1);
CREATE TABLE kel_Msg (
  Col_ID             INTEGER PRIMARY KEY AUTOINCREMENT,
  Col_SendDate       DATETIME
);
INSERT INTO "kel_Msg" VALUES(1,'2013-05-07 09:03:00');
INSERT INTO "kel_Msg" VALUES(5,'1969-12-31 23:59:59');
INSERT INTO "kel_Msg" VALUES(9,NULL);
CREATE TABLE kel_Msg_AttachMent (
  Col_ID             INTEGER PRIMARY KEY AUTOINCREMENT,
  Col_MsgID          INTEGER DEFAULT 0
);
INSERT INTO "kel_Msg_AttachMent" VALUES(1,-1);
INSERT INTO "kel_Msg_AttachMent" VALUES(5,0);
INSERT INTO "kel_Msg_AttachMent" VALUES(9,7);
CREATE TABLE kel_Msg_Rece (
  Col_ID             INTEGER PRIMARY KEY AUTOINCREMENT,
  Col_MsgID          INTEGER DEFAULT 0
);
INSERT INTO "kel_Msg_Rece" VALUES(1,-1);
INSERT INTO "kel_Msg_Rece" VALUES(5,0);
INSERT INTO "kel_Msg_Rece" VALUES(9,7);
CREATE TABLE kel_Package (
  Col_ID             INTEGER PRIMARY KEY AUTOINCREMENT,
  Col_Name           TEXT DEFAULT '',
  Col_Ver            INTEGER DEFAULT 0,
  Col_Desc           TEXT DEFAULT '',
  Col_Dt_Modify      DATETIME,
  Col_Disabled       INTEGER DEFAULT 0
);
INSERT INTO "kel_Package" VALUES(1,'rené',0,'😀smile','2013-05-07 09:03:00',0);
INSERT INTO "kel_Package" VALUES(5,'a; b -- c',7,'C:\data\','1969-12-31 23:59:59',7);
INSERT INTO "kel_Package" VALUES(9,' blanks ',-1,NULL,NULL,-1);
CREATE TABLE kel_log (
  Col_ID             INTEGER PRIMARY KEY AUTOINCREMENT
);
INSERT INTO "kel_log" VALUES(1);
INSERT INTO "kel_log" VALUES(5);
INSERT INTO "kel_log" VALUES(9);
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
INSERT INTO "qv_BIIAce" VALUES(7,-1,0,7,'a; b -- c','日本語',7,-1);
INSERT INTO "qv_BIIAce" VALUES(-1,0,7,-1,' blanks ','it''s',-1,0);
INSERT INTO "qv_BIIAce" VALUES(0,7,-1,0,'rene','😀smile',0,7);
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
INSERT INTO "qv_Group" VALUES(1,'rené','rene','😀smile','2013-05-07',0,7,-1);
INSERT INTO "qv_Group" VALUES(5,'a; b -- c','日本語','C:\data\','1969-07-20',7,-1,0);
INSERT INTO "qv_Group" VALUES(9,' blanks ','it''s',NULL,NULL,-1,0,7);
CREATE TABLE qv_ItemAce (
  Col_QvItemID       INTEGER DEFAULT 0,
  Col_QvItemType     INTEGER DEFAULT 0,
  Col_FunName        TEXT DEFAULT '',
  Col_FunGenre       TEXT DEFAULT '',
  Col_Power          INTEGER DEFAULT 0,
  Col_UnPower        INTEGER DEFAULT 0
);
INSERT INTO "qv_ItemAce" VALUES(7,-1,'rene','😀smile',-1,0);
INSERT INTO "qv_ItemAce" VALUES(-1,0,'日本語','C:\data\',0,7);
INSERT INTO "qv_ItemAce" VALUES(0,7,'it''s',NULL,7,-1);
CREATE TABLE qv_JobTitle (
  Col_QvItemID       INTEGER DEFAULT 0,
  Col_QvItemType     INTEGER DEFAULT 2,
  Col_JobTitle       TEXT DEFAULT '',
  Col_DQvItemID      INTEGER DEFAULT 0,
  Col_DQvItemType    INTEGER DEFAULT 1,
  Col_JobTitle_Desc  TEXT DEFAULT '',
  Col_DQvItemName    TEXT DEFAULT ''
);
INSERT INTO "qv_JobTitle" VALUES(7,-1,'rene',7,-1,'日本語','C:\data\');
INSERT INTO "qv_JobTitle" VALUES(-1,0,'日本語',-1,0,'it''s','rené');
INSERT INTO "qv_JobTitle" VALUES(0,7,'it''s',0,7,'😀smile','a; b -- c');
CREATE TABLE qv_Relation (
  Col_QvItemID       INTEGER NOT NULL DEFAULT 0,
  Col_QvItemType     INTEGER NOT NULL DEFAULT 0,
  Col_DQvItemID      INTEGER NOT NULL DEFAULT 0,
  Col_DQvItemType    INTEGER NOT NULL DEFAULT 0,
  Col_RelType        INTEGER NOT NULL DEFAULT 1,
  Col_Ref            INTEGER NOT NULL DEFAULT 0,
  Col_ViewID         INTEGER NOT NULL DEFAULT 0
);
INSERT INTO "qv_Relation" VALUES(7,-1,0,7,-1,0,7);
INSERT INTO "qv_Relation" VALUES(-1,0,7,-1,0,7,-1);
INSERT INTO "qv_Relation" VALUES(0,7,-1,0,7,-1,0);
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
INSERT INTO "qv_Role" VALUES(1,'rené','rene','2013-05-07 09:03:00','a; b -- c',0,7,-1,'it''s','rené',-1,0);
INSERT INTO "qv_Role" VALUES(5,'a; b -- c','日本語','1969-12-31 23:59:59',' blanks ',7,-1,0,'😀smile','a; b -- c',0,7);
INSERT INTO "qv_Role" VALUES(9,' blanks ','it''s',NULL,'rene',-1,0,7,'C:\data\',' blanks ',7,-1);
CREATE TABLE qv_Schema (Col_Name VARCHAR(64) NOT NULL PRIMARY KEY, Col_Value VARCHAR(64) NOT NULL);
INSERT INTO "qv_Schema" VALUES('upper','15.0');
INSERT INTO "qv_Schema" VALUES('version','2');
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
INSERT INTO "qv_User" VALUES(1,'rené','rene','😀smile',-1,0,7,-1,0,'rené',-1,0,7,'日本語','C:\data\',' blanks ','it''s',0,'rene','2013-05-07','a; b -- c','日本語','C:\data\',' blanks ','it''s','rené','rene','😀smile','a; b -- c','日本語','C:\data\',' blanks ','it''s','rené','rene',0,'a; b -- c');
INSERT INTO "qv_User" VALUES(5,'a; b -- c','日本語','C:\data\',0,7,-1,0,7,'a; b -- c',0,7,-1,'it''s','rené','rene','😀smile',7,'日本語','1969-07-20',' blanks ','it''s','rené','rene','😀smile','a; b -- c','日本語','C:\data\',' blanks ','it''s','rené','rene','😀smile','a; b -- c','日本語',7,' blanks ');
INSERT INTO "qv_User" VALUES(9,' blanks ','it''s',NULL,7,-1,0,7,-1,' blanks ',7,-1,0,'😀smile','a; b -- c',NULL,'C:\data\',-1,'it''s',NULL,'rene','😀smile','a; b -- c',NULL,'C:\data\',' blanks ','it''s',NULL,'rene','😀smile','a; b -- c',NULL,'C:\data\',' blanks ','it''s',-1,'rene');
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
INSERT INTO "qv_View" VALUES(1,'rené',0,'😀smile',-1,0,'C:\data\','2013-05-07',0,7,-1);
INSERT INTO "qv_View" VALUES(5,'a; b -- c',7,'C:\data\',0,7,'rené','1969-07-20',7,-1,0);
INSERT INTO "qv_View" VALUES(9,' blanks ',-1,NULL,7,-1,'a; b -- c',NULL,-1,0,7);
CREATE INDEX ix_qv_User_LoginName ON qv_User (Col_LoginName);
CREATE INDEX ix_qv_User_LoginName_upper ON qv_User (upper(Col_LoginName));
CREATE INDEX ix_qv_User_Name ON qv_User (Col_Name);
CREATE INDEX ix_qv_User_Level ON qv_User (Col_Level);
CREATE INDEX ix_qv_Group_Name ON qv_Group (Col_Name);
CREATE INDEX ix_qv_Group_Name_upper ON qv_Group (upper(Col_Name));
CREATE INDEX ix_qv_View_Name_Type ON qv_View (Col_Name, Col_Type);
CREATE INDEX ix_qv_View_Name_upper_Type ON qv_View (upper(Col_Name), Col_Type);
CREATE INDEX ix_qv_View_OwnerID_Type ON qv_View (Col_OwnerID, Col_Type);
CREATE INDEX ix_qv_View_Type ON qv_View (Col_Type);
CREATE INDEX ix_qv_Relation_QvItem_RelType ON qv_Relation (Col_QvItemID, Col_QvItemType, Col_RelType);
CREATE INDEX ix_qv_Relation_DQvItem_QvItem
ON qv_Relation (Col_DQvItemID, Col_DQvItemType, Col_QvItemType, Col_QvItemID);
CREATE INDEX ix_qv_Role_Name_AppName_DomainID ON qv_Role (Col_Name, Col_AppName, Col_DomainID);
CREATE INDEX ix_qv_Role_Name_AppName_upper_DomainID ON qv_Role (upper(Col_Name), upper(Col_AppName), Col_DomainID);
CREATE INDEX ix_qv_Role_DomainID_AppName ON qv_Role (Col_DomainID, Col_AppName);
CREATE INDEX ix_qv_JobTitle_QvItem_JobTitle ON qv_JobTitle (Col_QvItemID, Col_QvItemType, Col_JobTitle);
CREATE INDEX ix_qv_ItemAce_QvItem_Fun ON qv_ItemAce (Col_QvItemID, Col_QvItemType, Col_FunGenre, Col_FunName);
CREATE INDEX ix_qv_ItemAce_Fun ON qv_ItemAce (Col_FunGenre, Col_FunName);
CREATE INDEX ix_qv_BIIAce_QvItem_DQvItem ON qv_BIIAce (Col_QvItemID, Col_QvItemType, Col_DQvItemID, Col_DQvItemType);
CREATE INDEX ix_qv_BIIAce_DQvItem_Fun ON qv_BIIAce (Col_DQvItemID, Col_DQvItemType, Col_FunName, Col_FunGenre);
CREATE INDEX ix_Tab_BIOAce_Obj_FunName_QvItemType ON Tab_BIOAce (Col_ClassID, Col_ObjID, Col_FunName, Col_QvItemType);
CREATE INDEX ix_Tab_Doc_Root_Name_Type ON Tab_Doc_Root (Col_Name, Col_Type);
CREATE INDEX ix_Tab_Doc_Root_Type ON Tab_Doc_Root (Col_Type);
CREATE INDEX ix_Tab_Doc_Root_Link_P_ObjID_S_Obj ON Tab_Doc_Root_Link (Col_P_ObjID, Col_S_ClassID, Col_S_ObjID);
CREATE INDEX ix_Tab_Doc_VFolder_Link_P_ObjID_S_Obj ON Tab_Doc_VFolder_Link (Col_P_ObjID, Col_S_ClassID, Col_S_ObjID);
CREATE INDEX ix_Tab_Doc_Backup_Plan_Name ON Tab_Doc_Backup_Plan (Col_Name);
CREATE INDEX ix_Tab_Doc_Backup_Rel_QvItem_PlanID ON Tab_Doc_Backup_Rel (Col_QvItem_Type, Col_QvItem_ID, Col_PlanID);
CREATE INDEX ix_Tab_Config_Name_Genre ON Tab_Config (Col_Name, Col_Genre);
CREATE INDEX ix_Tab_Config_Genre ON Tab_Config (Col_Genre);
CREATE INDEX ix_kel_Msg_SendDate ON kel_Msg (Col_SendDate);
CREATE INDEX ix_kel_Msg_AttachMent_MsgID ON kel_Msg_AttachMent (Col_MsgID);
CREATE INDEX ix_kel_Msg_Rece_MsgID ON kel_Msg_Rece (Col_MsgID);
CREATE INDEX ix_kel_AddIn_Index ON kel_AddIn (Col_Index DESC);
CREATE INDEX ix_kel_AddIn_Name_AddInType ON kel_AddIn (Col_Name, Col_AddInType);
CREATE INDEX ix_kel_AddIn_PackageName ON kel_AddIn (Col_PackageName);
CREATE INDEX ix_kel_Package_Name ON kel_Package (Col_Name);
CREATE INDEX ix_Kel_Board_Dt_Create ON Kel_Board (Col_Dt_Create DESC);
CREATE INDEX ix_Kel_Board_Attach_BoardID ON Kel_Board_Attach (Col_BoardID);
CREATE INDEX ix_Kel_Board_Revert_BoardID_Dt_Create ON Kel_Board_Revert (Col_BoardID, Col_Dt_Create);
CREATE INDEX ix_Kel_Board_Visiter_BoardID_Dt_Readed ON Kel_Board_Visiter (Col_BoardID, Col_Dt_Readed);
CREATE TRIGGER tr_qv_User_upper_insert BEFORE INSERT ON qv_User
WHEN NEW.Col_LoginName || '' GLOB '*[^ -~]*' AND upper(char(233)) <> char(201)
BEGIN
  SELECT RAISE(ABORT, 'qv_User: a login name beyond printable ASCII needs a connection whose upper() folds Unicode');
END;
CREATE TRIGGER tr_qv_User_upper_update BEFORE UPDATE OF Col_ID, rowid, oid, _rowid_, Col_LoginName ON qv_User
WHEN ifnull(OLD.Col_LoginName, '') || ifnull(NEW.Col_LoginName, '') GLOB '*[^ -~]*' AND upper(char(233)) <> char(201)
BEGIN
  SELECT RAISE(ABORT, 'qv_User: a login name beyond printable ASCII needs a connection whose upper() folds Unicode');
END;
CREATE TRIGGER tr_qv_User_upper_delete BEFORE DELETE ON qv_User
WHEN OLD.Col_LoginName || '' GLOB '*[^ -~]*' AND upper(char(233)) <> char(201)
BEGIN
  SELECT RAISE(ABORT, 'qv_User: a login name beyond printable ASCII needs a connection whose upper() folds Unicode');
END;
CREATE TRIGGER tr_qv_Group_upper_insert BEFORE INSERT ON qv_Group
WHEN NEW.Col_Name || '' GLOB '*[^ -~]*' AND upper(char(233)) <> char(201)
BEGIN
  SELECT RAISE(ABORT, 'qv_Group: a name beyond printable ASCII needs a connection whose upper() folds Unicode');
END;
CREATE TRIGGER tr_qv_Group_upper_update BEFORE UPDATE OF Col_ID, rowid, oid, _rowid_, Col_Name ON qv_Group
WHEN ifnull(OLD.Col_Name, '') || ifnull(NEW.Col_Name, '') GLOB '*[^ -~]*' AND upper(char(233)) <> char(201)
BEGIN
  SELECT RAISE(ABORT, 'qv_Group: a name beyond printable ASCII needs a connection whose upper() folds Unicode');
END;
CREATE TRIGGER tr_qv_Group_upper_delete BEFORE DELETE ON qv_Group
WHEN OLD.Col_Name || '' GLOB '*[^ -~]*' AND upper(char(233)) <> char(201)
BEGIN
  SELECT RAISE(ABORT, 'qv_Group: a name beyond printable ASCII needs a connection whose upper() folds Unicode');
END;
CREATE TRIGGER tr_qv_View_upper_insert BEFORE INSERT ON qv_View
WHEN NEW.Col_Name || '' GLOB '*[^ -~]*' AND upper(char(233)) <> char(201)
BEGIN
  SELECT RAISE(ABORT, 'qv_View: a name beyond printable ASCII needs a connection whose upper() folds Unicode');
END;
CREATE TRIGGER tr_qv_View_upper_update BEFORE UPDATE OF Col_ID, rowid, oid, _rowid_, Col_Name, Col_Type ON qv_View
WHEN ifnull(OLD.Col_Name, '') || ifnull(NEW.Col_Name, '') GLOB '*[^ -~]*' AND upper(char(233)) <> char(201)
BEGIN
  SELECT RAISE(ABORT, 'qv_View: a name beyond printable ASCII needs a connection whose upper() folds Unicode');
END;
CREATE TRIGGER tr_qv_View_upper_delete BEFORE DELETE ON qv_View
WHEN OLD.Col_Name || '' GLOB '*[^ -~]*' AND upper(char(233)) <> char(201)
BEGIN
  SELECT RAISE(ABORT, 'qv_View: a name beyond printable ASCII needs a connection whose upper() folds Unicode');
END;
CREATE TRIGGER tr_qv_Role_upper_insert BEFORE INSERT ON qv_Role
WHEN ifnull(NEW.Col_Name, '') || ifnull(NEW.Col_AppName, '') GLOB '*[^ -~]*' AND upper(char(233)) <> char(201)
BEGIN
  SELECT RAISE(ABORT, 'qv_Role: a name beyond printable ASCII needs a connection whose upper() folds Unicode');
END;
CREATE TRIGGER tr_qv_Role_upper_update
BEFORE UPDATE OF Col_ID, rowid, oid, _rowid_, Col_Name, Col_AppName, Col_DomainID ON qv_Role
WHEN ifnull(OLD.Col_Name, '') || ifnull(OLD.Col_AppName, '') || ifnull(NEW.Col_Name, '') || ifnull(NEW.Col_AppName, '')
     GLOB '*[^ -~]*' AND upper(char(233)) <> char(201)
BEGIN
  SELECT RAISE(ABORT, 'qv_Role: a name beyond printable ASCII needs a connection whose upper() folds Unicode');
END;
CREATE TRIGGER tr_qv_Role_upper_delete BEFORE DELETE ON qv_Role
WHEN ifnull(OLD.Col_Name, '') || ifnull(OLD.Col_AppName, '') GLOB '*[^ -~]*' AND upper(char(233)) <> char(201)
BEGIN
  SELECT RAISE(ABORT, 'qv_Role: a name beyond printable ASCII needs a connection whose upper() folds Unicode');
END;
DELETE FROM "sqlite_sequence";
INSERT INTO "sqlite_sequence" VALUES('qv_User',40);
INSERT INTO "sqlite_sequence" VALUES('qv_Group',9);
INSERT INTO "sqlite_sequence" VALUES('qv_View',9);
INSERT INTO "sqlite_sequence" VALUES('qv_Role',9);
INSERT INTO "sqlite_sequence" VALUES('Tab_BIOAce',9);
INSERT INTO "sqlite_sequence" VALUES('Tab_Doc_Root',9);
INSERT INTO "sqlite_sequence" VALUES('Tab_Doc_Root_Link',9);
INSERT INTO "sqlite_sequence" VALUES('Tab_Doc_VFolder',9);
INSERT INTO "sqlite_sequence" VALUES('Tab_Doc_VFolder_Link',9);
INSERT INTO "sqlite_sequence" VALUES('Tab_Doc_Backup_Plan',9);
INSERT INTO "sqlite_sequence" VALUES('Tab_Doc_Backup_Rel',9);
INSERT INTO "sqlite_sequence" VALUES('kel_Msg',9);
INSERT INTO "sqlite_sequence" VALUES('kel_Msg_AttachMent',9);
INSERT INTO "sqlite_sequence" VALUES('kel_Msg_Rece',9);
INSERT INTO "sqlite_sequence" VALUES('kel_log',9);
INSERT INTO "sqlite_sequence" VALUES('kel_AddIn',9);
INSERT INTO "sqlite_sequence" VALUES('kel_Package',9);
INSERT INTO "sqlite_sequence" VALUES('Kel_Board_Revert',9);
INSERT INTO "sqlite_sequence" VALUES('Kel_Board_Visiter',9);
