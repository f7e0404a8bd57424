-- The organisation directory and everything keyed to it, for MariaDB 10.2, MySQL 5.7 or later.
--
-- The engine ends a transaction at every table it makes, so a run that is killed leaves the tables made so far: each
-- statement may be run again, and the indexes come with their tables. Table names must not be told apart by case
-- (lower_case_table_names is 1 or 2). Long texts have no default here, and are NULL until written.
--
-- Tables whose rows have no id of their own get one: nothing reads it, but replication finds a row by it. Nothing but
-- the ids is unique: equal relations, titles, rights and settings are legal.

CREATE TABLE IF NOT EXISTS qv_User (
  Col_ID             INT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  Col_LoginName      VARCHAR(128) DEFAULT '',
  Col_Name           VARCHAR(128) DEFAULT '',
  Col_PWord          VARCHAR(255) DEFAULT '',
  -- Written as Col_PWord, read by one list as Col_Password: one text under two names.
  Col_Password       VARCHAR(255) GENERATED ALWAYS AS (Col_PWord) VIRTUAL,
  Col_EnType         INT DEFAULT 1,
  Col_IsSystem       INT DEFAULT 0,
  Col_IsSuper        INT DEFAULT 0,
  Col_Disabled       INT DEFAULT 0,
  Col_IsFarUser      INT DEFAULT 0,
  Col_FarServer      VARCHAR(255) DEFAULT '',
  Col_DomainID       INT DEFAULT 0,
  Col_ItemIndex      INT DEFAULT 10000,
  Col_Level          INT DEFAULT 0,
  Col_Creator_Name   VARCHAR(128) DEFAULT '',
  Col_Note           VARCHAR(255) DEFAULT '',
  Col_EMail          VARCHAR(255) DEFAULT '',
  Col_Mobile         VARCHAR(64) DEFAULT '',
  Col_Sex            INT DEFAULT 0,
  Col_Description    VARCHAR(255) DEFAULT '',
  Col_Birthday       DATE NULL,
  Col_h_Province     VARCHAR(128) DEFAULT '',
  Col_h_City         VARCHAR(128) DEFAULT '',
  Col_h_Address      VARCHAR(255) DEFAULT '',
  Col_h_PostCode     VARCHAR(32) DEFAULT '',
  Col_h_Phone        VARCHAR(64) DEFAULT '',
  Col_h_Fax          VARCHAR(64) DEFAULT '',
  Col_o_CompanyName  VARCHAR(255) DEFAULT '',
  Col_o_Address      VARCHAR(255) DEFAULT '',
  Col_o_PostCode     VARCHAR(32) DEFAULT '',
  Col_o_JobTitle     VARCHAR(128) DEFAULT '',
  Col_o_Phone        VARCHAR(64) DEFAULT '',
  Col_o_Fax          VARCHAR(64) DEFAULT '',
  Col_Picture        VARCHAR(255) DEFAULT '',
  Col_ECard          MEDIUMTEXT,
  Col_DeptInfo       VARCHAR(255) DEFAULT '',
  -- The update that only fills an empty department looks for 0, not for NULL.
  Col_DeptID         INT DEFAULT 0,
  Col_UserData       MEDIUMTEXT,
  KEY ix_qv_User_LoginName (Col_LoginName),
  KEY ix_qv_User_Name (Col_Name),
  KEY ix_qv_User_Level (Col_Level)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;

CREATE TABLE IF NOT EXISTS qv_Group (
  Col_ID             INT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  Col_Name           VARCHAR(128) DEFAULT '',
  Col_Description    VARCHAR(255) DEFAULT '',
  Col_Creator_Name   VARCHAR(128) DEFAULT '',
  Col_Dt_Create      DATE NULL,
  Col_ItemIndex      INT DEFAULT 10000,
  Col_DomainID       INT DEFAULT 0,
  Col_Style          INT DEFAULT 0,
  KEY ix_qv_Group_Name (Col_Name)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;

-- The placeholder view is inserted with name, owner and type alone; the rest is defaults.
CREATE TABLE IF NOT EXISTS qv_View (
  Col_ID             INT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  Col_Name           VARCHAR(128) DEFAULT '',
  Col_Type           INT DEFAULT 1,
  Col_Description    VARCHAR(255) DEFAULT '',
  Col_OwnerID        INT DEFAULT 0,
  Col_ItemIndex      INT DEFAULT 10000,
  Col_Creator_Name   VARCHAR(128) DEFAULT '',
  Col_Dt_Create      DATE NULL,
  Col_DomainID       INT DEFAULT 0,
  Col_Style          INT DEFAULT 0,
  Col_IsPublic       INT DEFAULT 0,
  KEY ix_qv_View_Name_Type (Col_Name, Col_Type),
  KEY ix_qv_View_OwnerID_Type (Col_OwnerID, Col_Type),
  KEY ix_qv_View_Type (Col_Type)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;

-- NOT NULL, since one NULL dependent would empty every "not in this group" list. No key: double links are legal.
CREATE TABLE IF NOT EXISTS qv_Relation (
  Col_RowID          BIGINT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  Col_QvItemID       INT NOT NULL DEFAULT 0,
  Col_QvItemType     INT NOT NULL DEFAULT 0,
  Col_DQvItemID      INT NOT NULL DEFAULT 0,
  Col_DQvItemType    INT NOT NULL DEFAULT 0,
  Col_RelType        INT NOT NULL DEFAULT 1,
  Col_Ref            INT NOT NULL DEFAULT 0,
  Col_ViewID         INT NOT NULL DEFAULT 0,
  KEY ix_qv_Relation_QvItem_RelType (Col_QvItemID, Col_QvItemType, Col_RelType),
  KEY ix_qv_Relation_DQvItem_QvItem (Col_DQvItemID, Col_DQvItemType, Col_QvItemType, Col_QvItemID)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;

-- Roles start at index 0, unlike users, groups and views.
CREATE TABLE IF NOT EXISTS qv_Role (
  Col_ID             INT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  Col_Name           VARCHAR(128) DEFAULT '',
  Col_Description    VARCHAR(255) DEFAULT '',
  Col_Dt_Create      DATETIME NULL,
  Col_Creator_Name   VARCHAR(128) DEFAULT '',
  Col_ItemIndex      INT DEFAULT 0,
  Col_DomainID       INT DEFAULT 0,
  Col_Disabled       INT DEFAULT 0,
  Col_AppName        VARCHAR(128) DEFAULT '',
  Col_Genre          VARCHAR(128) DEFAULT '',
  Col_G_ClassID      INT DEFAULT 0,
  Col_Type           INT DEFAULT 0,
  KEY ix_qv_Role_Name_AppName_DomainID (Col_Name, Col_AppName, Col_DomainID),
  KEY ix_qv_Role_DomainID_AppName (Col_DomainID, Col_AppName)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;

-- Col_DQvItemName is the member's name on the day of the entry and does not follow a renaming.
CREATE TABLE IF NOT EXISTS qv_JobTitle (
  Col_RowID          BIGINT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  Col_QvItemID       INT DEFAULT 0,
  Col_QvItemType     INT DEFAULT 2,
  Col_JobTitle       VARCHAR(128) DEFAULT '',
  Col_DQvItemID      INT DEFAULT 0,
  Col_DQvItemType    INT DEFAULT 1,
  Col_JobTitle_Desc  VARCHAR(255) DEFAULT '',
  Col_DQvItemName    VARCHAR(128) DEFAULT '',
  KEY ix_qv_JobTitle_QvItem_JobTitle (Col_QvItemID, Col_QvItemType, Col_JobTitle)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;

CREATE TABLE IF NOT EXISTS qv_ItemAce (
  Col_RowID          BIGINT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  Col_QvItemID       INT DEFAULT 0,
  Col_QvItemType     INT DEFAULT 0,
  Col_FunName        VARCHAR(128) DEFAULT '',
  Col_FunGenre       VARCHAR(128) DEFAULT '',
  Col_Power          INT DEFAULT 0,
  Col_UnPower        INT DEFAULT 0,
  KEY ix_qv_ItemAce_QvItem_Fun (Col_QvItemID, Col_QvItemType, Col_FunGenre, Col_FunName),
  KEY ix_qv_ItemAce_Fun (Col_FunGenre, Col_FunName)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;

CREATE TABLE IF NOT EXISTS qv_BIIAce (
  Col_RowID          BIGINT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  Col_QvItemID       INT DEFAULT 0,
  Col_QvItemType     INT DEFAULT 0,
  Col_DQvItemID      INT DEFAULT 0,
  Col_DQvItemType    INT DEFAULT 0,
  Col_FunGenre       VARCHAR(128) DEFAULT '',
  Col_FunName        VARCHAR(128) DEFAULT '',
  Col_Power          INT DEFAULT 0,
  Col_UnPower        INT DEFAULT 0,
  KEY ix_qv_BIIAce_QvItem_DQvItem (Col_QvItemID, Col_QvItemType, Col_DQvItemID, Col_DQvItemType),
  KEY ix_qv_BIIAce_DQvItem_Fun (Col_DQvItemID, Col_DQvItemType, Col_FunName, Col_FunGenre)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;

CREATE TABLE IF NOT EXISTS Tab_BIOAce (
  Col_ID             INT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  Col_QvItemID       INT DEFAULT 0,
  Col_QvItemType     INT DEFAULT 0,
  Col_QvItemName     VARCHAR(128) DEFAULT '',
  Col_ClassID        INT DEFAULT 0,
  Col_ObjID          INT DEFAULT 0,
  Col_FunName        VARCHAR(128) DEFAULT '',
  Col_FunGenre       VARCHAR(128) DEFAULT '',
  Col_Power          INT DEFAULT 0,
  Col_UnPower        INT DEFAULT 0,
  Col_Creator_ID     INT DEFAULT 0,
  Col_Creator_Name   VARCHAR(128) DEFAULT '',
  Col_Dt_Create      DATETIME NULL,
  KEY ix_Tab_BIOAce_Obj_FunName_QvItemType (Col_ClassID, Col_ObjID, Col_FunName, Col_QvItemType)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;

-- Style bits come and go as signed 32-bit numbers, so the highest bit makes Col_Style negative.
CREATE TABLE IF NOT EXISTS Tab_Doc_Root (
  Col_ID             INT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  Col_Name           VARCHAR(128) DEFAULT '',
  Col_Desc           VARCHAR(255) DEFAULT '',
  Col_DataPath       VARCHAR(255) DEFAULT '',
  Col_Dt_Create      DATETIME NULL,
  Col_MaxSize        INT DEFAULT 0,
  Col_UsedSize       INT DEFAULT 0,
  Col_DispName       VARCHAR(128) DEFAULT '',
  Col_HaveSubItem    INT DEFAULT 0,
  Col_Type           INT DEFAULT 0,
  Col_Style          INT DEFAULT 0,
  Col_OwnerID        INT DEFAULT 0,
  KEY ix_Tab_Doc_Root_Name_Type (Col_Name, Col_Type),
  KEY ix_Tab_Doc_Root_Type (Col_Type)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;

CREATE TABLE IF NOT EXISTS Tab_Doc_Root_Link (
  Col_ID             INT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  Col_DispName       VARCHAR(128) DEFAULT '',
  Col_Style          INT DEFAULT 0,
  Col_HaveSubItem    INT DEFAULT 0,
  Col_P_ObjID        INT DEFAULT 0,
  Col_S_ClassID      INT DEFAULT 0,
  Col_S_ObjID        INT DEFAULT 0,
  Col_IsRef          INT DEFAULT 0,
  Col_RelType        INT DEFAULT 0,
  Col_Ace            INT DEFAULT 0,
  Col_Creator_ID     INT DEFAULT 0,
  Col_Creator_Name   VARCHAR(128) DEFAULT '',
  Col_Note           VARCHAR(255) DEFAULT '',
  Col_Order          INT DEFAULT 0,
  KEY ix_Tab_Doc_Root_Link_P_ObjID_S_Obj (Col_P_ObjID, Col_S_ClassID, Col_S_ObjID)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;

CREATE TABLE IF NOT EXISTS Tab_Doc_VFolder (
  Col_ID             INT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  Col_Name           VARCHAR(128) DEFAULT '',
  Col_Style          INT DEFAULT 0,
  Col_HaveSubItem    INT DEFAULT 0,
  Col_G_ClassID      INT DEFAULT 0,
  Col_G_ObjID        INT DEFAULT 0,
  Col_Creator_ID     INT DEFAULT 0,
  Col_Creator_Name   VARCHAR(128) DEFAULT '',
  Col_Dt_Create      DATETIME NULL
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;

-- As Tab_Doc_Root_Link, with a folder in place of the root.
CREATE TABLE IF NOT EXISTS Tab_Doc_VFolder_Link (
  Col_ID             INT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  Col_DispName       VARCHAR(128) DEFAULT '',
  Col_Style          INT DEFAULT 0,
  Col_HaveSubItem    INT DEFAULT 0,
  Col_P_ObjID        INT DEFAULT 0,
  Col_S_ClassID      INT DEFAULT 0,
  Col_S_ObjID        INT DEFAULT 0,
  Col_IsRef          INT DEFAULT 0,
  Col_RelType        INT DEFAULT 0,
  Col_Ace            INT DEFAULT 0,
  Col_Creator_ID     INT DEFAULT 0,
  Col_Creator_Name   VARCHAR(128) DEFAULT '',
  Col_Note           VARCHAR(255) DEFAULT '',
  Col_Order          INT DEFAULT 0,
  KEY ix_Tab_Doc_VFolder_Link_P_ObjID_S_Obj (Col_P_ObjID, Col_S_ClassID, Col_S_ObjID)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;

CREATE TABLE IF NOT EXISTS Tab_Doc_Backup_Plan (
  Col_ID             INT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  Col_Name           VARCHAR(128) DEFAULT '',
  Col_Desc           VARCHAR(255) DEFAULT '',
  Col_Data           MEDIUMTEXT,
  KEY ix_Tab_Doc_Backup_Plan_Name (Col_Name)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;

-- Here the underscore stands before Type and ID.
CREATE TABLE IF NOT EXISTS Tab_Doc_Backup_Rel (
  Col_ID             INT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  Col_QvItem_Type    INT DEFAULT 0,
  Col_QvItem_ID      INT DEFAULT 0,
  Col_PlanID         INT DEFAULT 0,
  KEY ix_Tab_Doc_Backup_Rel_QvItem_PlanID (Col_QvItem_Type, Col_QvItem_ID, Col_PlanID)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;

-- Col_Type is a word, not a number.
CREATE TABLE IF NOT EXISTS Tab_Doc_Log (
  Col_RowID          BIGINT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  Col_Content        MEDIUMTEXT,
  Col_Type           VARCHAR(64) DEFAULT '',
  Col_R_ClassID      INT DEFAULT 0,
  Col_R_ObjID        INT DEFAULT 0,
  Col_Creator_ID     INT DEFAULT 0,
  Col_Creator_Name   VARCHAR(128) DEFAULT '',
  Col_Genre          VARCHAR(128) DEFAULT ''
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;

-- Col_Data is text for numbers too: one flag is inserted unquoted and must read back like the quoted ones.
CREATE TABLE IF NOT EXISTS Tab_Config (
  Col_RowID          BIGINT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  Col_Name           VARCHAR(128) DEFAULT '',
  Col_Data           MEDIUMTEXT,
  Col_Genre          VARCHAR(128) DEFAULT '',
  KEY ix_Tab_Config_Name_Genre (Col_Name, Col_Genre),
  KEY ix_Tab_Config_Genre (Col_Genre)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;

-- Messages and the login log belong to the server: these tables carry what their upkeep touches.
CREATE TABLE IF NOT EXISTS kel_Msg (
  Col_ID             BIGINT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  Col_SendDate       DATETIME NULL,
  KEY ix_kel_Msg_SendDate (Col_SendDate)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;

CREATE TABLE IF NOT EXISTS kel_Msg_AttachMent (
  Col_ID             BIGINT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  Col_MsgID          BIGINT DEFAULT 0,
  KEY ix_kel_Msg_AttachMent_MsgID (Col_MsgID)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;

CREATE TABLE IF NOT EXISTS kel_Msg_Rece (
  Col_ID             BIGINT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  Col_MsgID          BIGINT DEFAULT 0,
  KEY ix_kel_Msg_Rece_MsgID (Col_MsgID)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;

CREATE TABLE IF NOT EXISTS kel_log (
  Col_ID             INT NOT NULL AUTO_INCREMENT PRIMARY KEY
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;

-- An add-in is inserted without Col_Disabled and must come up switched on.
CREATE TABLE IF NOT EXISTS kel_AddIn (
  Col_ID             INT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  Col_Name           VARCHAR(128) DEFAULT '',
  Col_Data           MEDIUMTEXT,
  Col_AddInType      INT DEFAULT 0,
  Col_IsPublic       INT DEFAULT 0,
  Col_Disabled       INT DEFAULT 0,
  Col_Desc           VARCHAR(255) DEFAULT '',
  Col_PackageName    VARCHAR(128) DEFAULT '',
  Col_Index          INT DEFAULT 0,
  KEY ix_kel_AddIn_Index (Col_Index),
  KEY ix_kel_AddIn_Name_AddInType (Col_Name, Col_AddInType),
  KEY ix_kel_AddIn_PackageName (Col_PackageName)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;

CREATE TABLE IF NOT EXISTS kel_Package (
  Col_ID             INT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  Col_Name           VARCHAR(128) DEFAULT '',
  Col_Ver            INT DEFAULT 0,
  Col_Desc           VARCHAR(255) DEFAULT '',
  Col_Dt_Modify      DATETIME NULL,
  Col_Disabled       INT DEFAULT 0,
  KEY ix_kel_Package_Name (Col_Name)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;

-- A notice's id is a text, here and in the three tables below.
CREATE TABLE IF NOT EXISTS Kel_Board (
  Col_ID             VARCHAR(64) NOT NULL PRIMARY KEY,
  Col_Creator_Name   VARCHAR(128) DEFAULT '',
  Col_Subject        VARCHAR(255) DEFAULT '',
  Col_Dt_Create      DATETIME NULL,
  Col_Content        MEDIUMTEXT,
  KEY ix_Kel_Board_Dt_Create (Col_Dt_Create)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;

CREATE TABLE IF NOT EXISTS Kel_Board_Attach (
  Col_RowID          BIGINT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  Col_BoardID        VARCHAR(64) DEFAULT '',
  Col_FileName       VARCHAR(255) DEFAULT '',
  KEY ix_Kel_Board_Attach_BoardID (Col_BoardID)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;

CREATE TABLE IF NOT EXISTS Kel_Board_Revert (
  Col_ID             INT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  Col_BoardID        VARCHAR(64) DEFAULT '',
  Col_Creator_Name   VARCHAR(128) DEFAULT '',
  Col_Dt_Create      DATETIME NULL,
  Col_Content        MEDIUMTEXT,
  KEY ix_Kel_Board_Revert_BoardID_Dt_Create (Col_BoardID, Col_Dt_Create)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;

CREATE TABLE IF NOT EXISTS Kel_Board_Visiter (
  Col_ID             INT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  Col_BoardID        VARCHAR(64) DEFAULT '',
  Col_QvItem         VARCHAR(64) DEFAULT '',
  Col_QvItem_Name    VARCHAR(255) DEFAULT '',
  Col_Dt_Readed      DATETIME NULL,
  Col_Readed         INT DEFAULT 0,
  KEY ix_Kel_Board_Visiter_BoardID_Dt_Readed (Col_BoardID, Col_Dt_Readed)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;
