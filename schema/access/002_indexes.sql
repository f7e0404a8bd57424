-- The ways in that the statements take.
CREATE INDEX ix_qv_User_LoginName ON qv_User (Col_LoginName);
CREATE INDEX ix_qv_User_Name ON qv_User (Col_Name);
CREATE INDEX ix_qv_User_Level ON qv_User (Col_Level);

CREATE INDEX ix_qv_Group_Name ON qv_Group (Col_Name);

CREATE INDEX ix_qv_View_Name_Type ON qv_View (Col_Name, Col_Type);
CREATE INDEX ix_qv_View_OwnerID_Type ON qv_View (Col_OwnerID, Col_Type);
CREATE INDEX ix_qv_View_Type ON qv_View (Col_Type);

CREATE INDEX ix_qv_Relation_QvItem_RelType ON qv_Relation (Col_QvItemID, Col_QvItemType, Col_RelType);
CREATE INDEX ix_qv_Relation_DQvItem_QvItem
ON qv_Relation (Col_DQvItemID, Col_DQvItemType, Col_QvItemType, Col_QvItemID);

CREATE INDEX ix_qv_Role_Name_AppName_DomainID ON qv_Role (Col_Name, Col_AppName, Col_DomainID);
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
