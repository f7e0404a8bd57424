-- The ways in that the statements take, and the guards of the upper() indexes.

CREATE INDEX ix_qv_User_LoginName ON qv_User (Col_LoginName);
CREATE INDEX ix_qv_User_LoginName_upper ON qv_User (upper(Col_LoginName));
CREATE INDEX ix_qv_User_Name ON qv_User (Col_Name);
CREATE INDEX ix_qv_User_Level ON qv_User (Col_Level);

CREATE INDEX ix_qv_Group_Name ON qv_Group (Col_Name);
CREATE INDEX ix_qv_Group_Name_upper ON qv_Group (upper(Col_Name));

-- Col_Type stands alone on purpose: with the sort columns behind it, the planner would take it for the look-ups by
-- owner and by upper(Col_Name) too, and walk every view of the type.
CREATE INDEX ix_qv_View_Name_Type ON qv_View (Col_Name, Col_Type);
CREATE INDEX ix_qv_View_Name_upper_Type ON qv_View (upper(Col_Name), Col_Type);
CREATE INDEX ix_qv_View_OwnerID_Type ON qv_View (Col_OwnerID, Col_Type);
CREATE INDEX ix_qv_View_Type ON qv_View (Col_Type);

-- A single link is found from its dependent, who has few holders, while a holder may have thousands of dependents.
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
-- For whoever deletes messages with their parts; the sweeps go through all parts in any case.
CREATE INDEX ix_kel_Msg_AttachMent_MsgID ON kel_Msg_AttachMent (Col_MsgID);
CREATE INDEX ix_kel_Msg_Rece_MsgID ON kel_Msg_Rece (Col_MsgID);

-- DESC, here and for the board: read backwards, an ascending index would also turn round the rows that tie.
CREATE INDEX ix_kel_AddIn_Index ON kel_AddIn (Col_Index DESC);
CREATE INDEX ix_kel_AddIn_Name_AddInType ON kel_AddIn (Col_Name, Col_AddInType);
CREATE INDEX ix_kel_AddIn_PackageName ON kel_AddIn (Col_PackageName);

CREATE INDEX ix_kel_Package_Name ON kel_Package (Col_Name);

CREATE INDEX ix_Kel_Board_Dt_Create ON Kel_Board (Col_Dt_Create DESC);
CREATE INDEX ix_Kel_Board_Attach_BoardID ON Kel_Board_Attach (Col_BoardID);
CREATE INDEX ix_Kel_Board_Revert_BoardID_Dt_Create ON Kel_Board_Revert (Col_BoardID, Col_Dt_Create);
CREATE INDEX ix_Kel_Board_Visiter_BoardID_Dt_Readed ON Kel_Board_Visiter (Col_BoardID, Col_Dt_Readed);

-- The upper() indexes are true only while every writer folds alike. Our connections bring an upper() that knows all
-- letters, SQLite's own knows a-z: a connection with the latter may write printable ASCII, which both fold the same
-- way, and is kept from any row whose indexed text holds more.
--
-- The name is tested first, being the cheaper half. The || '' reads a blob as the text that upper() would see. The
-- probe is spelled in numbers (233 is e with an acute accent, 201 its capital) so that no conversion of this file can
-- spoil it. An update is guarded for every column of the index, the id and its aliases included: each moves the entry.

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
