-- A directory of MariaDB as version 1 made it, with rows in every table. Version 2 changed nothing but its number. Nothing
-- here is ever changed.
CREATE TABLE `kel_addin` (
  `Col_ID` int(11) NOT NULL AUTO_INCREMENT,
  `Col_Name` varchar(128) DEFAULT '',
  `Col_Data` mediumtext DEFAULT NULL,
  `Col_AddInType` int(11) DEFAULT 0,
  `Col_IsPublic` int(11) DEFAULT 0,
  `Col_Disabled` int(11) DEFAULT 0,
  `Col_Desc` varchar(255) DEFAULT '',
  `Col_PackageName` varchar(128) DEFAULT '',
  `Col_Index` int(11) DEFAULT 0,
  PRIMARY KEY (`Col_ID`),
  KEY `ix_kel_AddIn_Index` (`Col_Index`),
  KEY `ix_kel_AddIn_Name_AddInType` (`Col_Name`,`Col_AddInType`),
  KEY `ix_kel_AddIn_PackageName` (`Col_PackageName`)
) ENGINE=InnoDB AUTO_INCREMENT=10 DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;
INSERT INTO `kel_addin` VALUES
(1,'rené','rene',7,-1,0,'C:\\data\\',' blanks ',0),
(5,'a; b -- c','日本語',-1,0,7,'rené','rene',7),
(9,' blanks ','it\'s',0,7,-1,'a; b -- c',NULL,-1);
CREATE TABLE `kel_board` (
  `Col_ID` varchar(64) NOT NULL,
  `Col_Creator_Name` varchar(128) DEFAULT '',
  `Col_Subject` varchar(255) DEFAULT '',
  `Col_Dt_Create` datetime DEFAULT NULL,
  `Col_Content` mediumtext DEFAULT NULL,
  PRIMARY KEY (`Col_ID`),
  KEY `ix_Kel_Board_Dt_Create` (`Col_Dt_Create`)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;
INSERT INTO `kel_board` VALUES
('notice 1','rené','rene','2013-05-07 09:03:00','a; b -- c'),
('notice 2','a; b -- c','日本語','1969-12-31 23:59:59',' blanks '),
('notice 3',' blanks ','it\'s',NULL,'rene');
CREATE TABLE `kel_board_attach` (
  `Col_RowID` bigint(20) NOT NULL AUTO_INCREMENT,
  `Col_BoardID` varchar(64) DEFAULT '',
  `Col_FileName` varchar(255) DEFAULT '',
  PRIMARY KEY (`Col_RowID`),
  KEY `ix_Kel_Board_Attach_BoardID` (`Col_BoardID`)
) ENGINE=InnoDB AUTO_INCREMENT=4 DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;
INSERT INTO `kel_board_attach` VALUES
(1,'it\'s','rené'),
(2,'😀smile','a; b -- c'),
(3,'C:\\data\\',' blanks ');
CREATE TABLE `kel_board_revert` (
  `Col_ID` int(11) NOT NULL AUTO_INCREMENT,
  `Col_BoardID` varchar(64) DEFAULT '',
  `Col_Creator_Name` varchar(128) DEFAULT '',
  `Col_Dt_Create` datetime DEFAULT NULL,
  `Col_Content` mediumtext DEFAULT NULL,
  PRIMARY KEY (`Col_ID`),
  KEY `ix_Kel_Board_Revert_BoardID_Dt_Create` (`Col_BoardID`,`Col_Dt_Create`)
) ENGINE=InnoDB AUTO_INCREMENT=10 DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;
INSERT INTO `kel_board_revert` VALUES
(1,'rené','rene','2013-05-07 09:03:00','a; b -- c'),
(5,'a; b -- c','日本語','1969-12-31 23:59:59',' blanks '),
(9,' blanks ','it\'s',NULL,'rene');
CREATE TABLE `kel_board_visiter` (
  `Col_ID` int(11) NOT NULL AUTO_INCREMENT,
  `Col_BoardID` varchar(64) DEFAULT '',
  `Col_QvItem` varchar(64) DEFAULT '',
  `Col_QvItem_Name` varchar(255) DEFAULT '',
  `Col_Dt_Readed` datetime DEFAULT NULL,
  `Col_Readed` int(11) DEFAULT 0,
  PRIMARY KEY (`Col_ID`),
  KEY `ix_Kel_Board_Visiter_BoardID_Dt_Readed` (`Col_BoardID`,`Col_Dt_Readed`)
) ENGINE=InnoDB AUTO_INCREMENT=10 DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;
INSERT INTO `kel_board_visiter` VALUES
(1,'rené','rene','😀smile','2013-05-07 09:03:00',0),
(5,'a; b -- c','日本語','C:\\data\\','1969-12-31 23:59:59',7),
(9,' blanks ','it\'s',NULL,NULL,-1);
CREATE TABLE `kel_log` (
  `Col_ID` int(11) NOT NULL AUTO_INCREMENT,
  PRIMARY KEY (`Col_ID`)
) ENGINE=InnoDB AUTO_INCREMENT=10 DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;
INSERT INTO `kel_log` VALUES
(1),
(5),
(9);
CREATE TABLE `kel_msg` (
  `Col_ID` bigint(20) NOT NULL AUTO_INCREMENT,
  `Col_SendDate` datetime DEFAULT NULL,
  PRIMARY KEY (`Col_ID`),
  KEY `ix_kel_Msg_SendDate` (`Col_SendDate`)
) ENGINE=InnoDB AUTO_INCREMENT=10 DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;
INSERT INTO `kel_msg` VALUES
(9,NULL),
(5,'1969-12-31 23:59:59'),
(1,'2013-05-07 09:03:00');
CREATE TABLE `kel_msg_attachment` (
  `Col_ID` bigint(20) NOT NULL AUTO_INCREMENT,
  `Col_MsgID` bigint(20) DEFAULT 0,
  PRIMARY KEY (`Col_ID`),
  KEY `ix_kel_Msg_AttachMent_MsgID` (`Col_MsgID`)
) ENGINE=InnoDB AUTO_INCREMENT=10 DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;
INSERT INTO `kel_msg_attachment` VALUES
(1,-1),
(5,0),
(9,7);
CREATE TABLE `kel_msg_rece` (
  `Col_ID` bigint(20) NOT NULL AUTO_INCREMENT,
  `Col_MsgID` bigint(20) DEFAULT 0,
  PRIMARY KEY (`Col_ID`),
  KEY `ix_kel_Msg_Rece_MsgID` (`Col_MsgID`)
) ENGINE=InnoDB AUTO_INCREMENT=10 DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;
INSERT INTO `kel_msg_rece` VALUES
(1,-1),
(5,0),
(9,7);
CREATE TABLE `kel_package` (
  `Col_ID` int(11) NOT NULL AUTO_INCREMENT,
  `Col_Name` varchar(128) DEFAULT '',
  `Col_Ver` int(11) DEFAULT 0,
  `Col_Desc` varchar(255) DEFAULT '',
  `Col_Dt_Modify` datetime DEFAULT NULL,
  `Col_Disabled` int(11) DEFAULT 0,
  PRIMARY KEY (`Col_ID`),
  KEY `ix_kel_Package_Name` (`Col_Name`)
) ENGINE=InnoDB AUTO_INCREMENT=10 DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;
INSERT INTO `kel_package` VALUES
(1,'rené',0,'😀smile','2013-05-07 09:03:00',0),
(5,'a; b -- c',7,'C:\\data\\','1969-12-31 23:59:59',7),
(9,' blanks ',-1,NULL,NULL,-1);
CREATE TABLE `qv_biiace` (
  `Col_RowID` bigint(20) NOT NULL AUTO_INCREMENT,
  `Col_QvItemID` int(11) DEFAULT 0,
  `Col_QvItemType` int(11) DEFAULT 0,
  `Col_DQvItemID` int(11) DEFAULT 0,
  `Col_DQvItemType` int(11) DEFAULT 0,
  `Col_FunGenre` varchar(128) DEFAULT '',
  `Col_FunName` varchar(128) DEFAULT '',
  `Col_Power` int(11) DEFAULT 0,
  `Col_UnPower` int(11) DEFAULT 0,
  PRIMARY KEY (`Col_RowID`),
  KEY `ix_qv_BIIAce_QvItem_DQvItem` (`Col_QvItemID`,`Col_QvItemType`,`Col_DQvItemID`,`Col_DQvItemType`),
  KEY `ix_qv_BIIAce_DQvItem_Fun` (`Col_DQvItemID`,`Col_DQvItemType`,`Col_FunName`,`Col_FunGenre`)
) ENGINE=InnoDB AUTO_INCREMENT=4 DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;
INSERT INTO `qv_biiace` VALUES
(1,7,-1,0,7,'a; b -- c','日本語',7,-1),
(2,-1,0,7,-1,' blanks ','it\'s',-1,0),
(3,0,7,-1,0,'rene','😀smile',0,7);
CREATE TABLE `qv_group` (
  `Col_ID` int(11) NOT NULL AUTO_INCREMENT,
  `Col_Name` varchar(128) DEFAULT '',
  `Col_Description` varchar(255) DEFAULT '',
  `Col_Creator_Name` varchar(128) DEFAULT '',
  `Col_Dt_Create` date DEFAULT NULL,
  `Col_ItemIndex` int(11) DEFAULT 10000,
  `Col_DomainID` int(11) DEFAULT 0,
  `Col_Style` int(11) DEFAULT 0,
  PRIMARY KEY (`Col_ID`),
  KEY `ix_qv_Group_Name` (`Col_Name`)
) ENGINE=InnoDB AUTO_INCREMENT=10 DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;
INSERT INTO `qv_group` VALUES
(1,'rené','rene','😀smile','2013-05-07',0,7,-1),
(5,'a; b -- c','日本語','C:\\data\\','1969-07-20',7,-1,0),
(9,' blanks ','it\'s',NULL,NULL,-1,0,7);
CREATE TABLE `qv_itemace` (
  `Col_RowID` bigint(20) NOT NULL AUTO_INCREMENT,
  `Col_QvItemID` int(11) DEFAULT 0,
  `Col_QvItemType` int(11) DEFAULT 0,
  `Col_FunName` varchar(128) DEFAULT '',
  `Col_FunGenre` varchar(128) DEFAULT '',
  `Col_Power` int(11) DEFAULT 0,
  `Col_UnPower` int(11) DEFAULT 0,
  PRIMARY KEY (`Col_RowID`),
  KEY `ix_qv_ItemAce_QvItem_Fun` (`Col_QvItemID`,`Col_QvItemType`,`Col_FunGenre`,`Col_FunName`),
  KEY `ix_qv_ItemAce_Fun` (`Col_FunGenre`,`Col_FunName`)
) ENGINE=InnoDB AUTO_INCREMENT=4 DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;
INSERT INTO `qv_itemace` VALUES
(1,7,-1,'rene','😀smile',-1,0),
(2,-1,0,'日本語','C:\\data\\',0,7),
(3,0,7,'it\'s',NULL,7,-1);
CREATE TABLE `qv_jobtitle` (
  `Col_RowID` bigint(20) NOT NULL AUTO_INCREMENT,
  `Col_QvItemID` int(11) DEFAULT 0,
  `Col_QvItemType` int(11) DEFAULT 2,
  `Col_JobTitle` varchar(128) DEFAULT '',
  `Col_DQvItemID` int(11) DEFAULT 0,
  `Col_DQvItemType` int(11) DEFAULT 1,
  `Col_JobTitle_Desc` varchar(255) DEFAULT '',
  `Col_DQvItemName` varchar(128) DEFAULT '',
  PRIMARY KEY (`Col_RowID`),
  KEY `ix_qv_JobTitle_QvItem_JobTitle` (`Col_QvItemID`,`Col_QvItemType`,`Col_JobTitle`)
) ENGINE=InnoDB AUTO_INCREMENT=4 DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;
INSERT INTO `qv_jobtitle` VALUES
(1,7,-1,'rene',7,-1,'日本語','C:\\data\\'),
(2,-1,0,'日本語',-1,0,'it\'s','rené'),
(3,0,7,'it\'s',0,7,'😀smile','a; b -- c');
CREATE TABLE `qv_relation` (
  `Col_RowID` bigint(20) NOT NULL AUTO_INCREMENT,
  `Col_QvItemID` int(11) NOT NULL DEFAULT 0,
  `Col_QvItemType` int(11) NOT NULL DEFAULT 0,
  `Col_DQvItemID` int(11) NOT NULL DEFAULT 0,
  `Col_DQvItemType` int(11) NOT NULL DEFAULT 0,
  `Col_RelType` int(11) NOT NULL DEFAULT 1,
  `Col_Ref` int(11) NOT NULL DEFAULT 0,
  `Col_ViewID` int(11) NOT NULL DEFAULT 0,
  PRIMARY KEY (`Col_RowID`),
  KEY `ix_qv_Relation_QvItem_RelType` (`Col_QvItemID`,`Col_QvItemType`,`Col_RelType`),
  KEY `ix_qv_Relation_DQvItem_QvItem` (`Col_DQvItemID`,`Col_DQvItemType`,`Col_QvItemType`,`Col_QvItemID`)
) ENGINE=InnoDB AUTO_INCREMENT=4 DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;
INSERT INTO `qv_relation` VALUES
(1,7,-1,0,7,-1,0,7),
(2,-1,0,7,-1,0,7,-1),
(3,0,7,-1,0,7,-1,0);
CREATE TABLE `qv_role` (
  `Col_ID` int(11) NOT NULL AUTO_INCREMENT,
  `Col_Name` varchar(128) DEFAULT '',
  `Col_Description` varchar(255) DEFAULT '',
  `Col_Dt_Create` datetime DEFAULT NULL,
  `Col_Creator_Name` varchar(128) DEFAULT '',
  `Col_ItemIndex` int(11) DEFAULT 0,
  `Col_DomainID` int(11) DEFAULT 0,
  `Col_Disabled` int(11) DEFAULT 0,
  `Col_AppName` varchar(128) DEFAULT '',
  `Col_Genre` varchar(128) DEFAULT '',
  `Col_G_ClassID` int(11) DEFAULT 0,
  `Col_Type` int(11) DEFAULT 0,
  PRIMARY KEY (`Col_ID`),
  KEY `ix_qv_Role_Name_AppName_DomainID` (`Col_Name`,`Col_AppName`,`Col_DomainID`),
  KEY `ix_qv_Role_DomainID_AppName` (`Col_DomainID`,`Col_AppName`)
) ENGINE=InnoDB AUTO_INCREMENT=10 DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;
INSERT INTO `qv_role` VALUES
(1,'rené','rene','2013-05-07 09:03:00','a; b -- c',0,7,-1,'it\'s','rené',-1,0),
(5,'a; b -- c','日本語','1969-12-31 23:59:59',' blanks ',7,-1,0,'😀smile','a; b -- c',0,7),
(9,' blanks ','it\'s',NULL,'rene',-1,0,7,'C:\\data\\',' blanks ',7,-1);
CREATE TABLE `qv_schema` (
  `Col_Name` varchar(64) NOT NULL,
  `Col_Value` varchar(64) NOT NULL,
  PRIMARY KEY (`Col_Name`)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;
INSERT INTO `qv_schema` VALUES
('upper','15.0'),
('version','1');
CREATE TABLE `qv_user` (
  `Col_ID` int(11) NOT NULL AUTO_INCREMENT,
  `Col_LoginName` varchar(128) DEFAULT '',
  `Col_Name` varchar(128) DEFAULT '',
  `Col_PWord` varchar(255) DEFAULT '',
  `Col_Password` varchar(255) GENERATED ALWAYS AS (`Col_PWord`) VIRTUAL,
  `Col_EnType` int(11) DEFAULT 1,
  `Col_IsSystem` int(11) DEFAULT 0,
  `Col_IsSuper` int(11) DEFAULT 0,
  `Col_Disabled` int(11) DEFAULT 0,
  `Col_IsFarUser` int(11) DEFAULT 0,
  `Col_FarServer` varchar(255) DEFAULT '',
  `Col_DomainID` int(11) DEFAULT 0,
  `Col_ItemIndex` int(11) DEFAULT 10000,
  `Col_Level` int(11) DEFAULT 0,
  `Col_Creator_Name` varchar(128) DEFAULT '',
  `Col_Note` varchar(255) DEFAULT '',
  `Col_EMail` varchar(255) DEFAULT '',
  `Col_Mobile` varchar(64) DEFAULT '',
  `Col_Sex` int(11) DEFAULT 0,
  `Col_Description` varchar(255) DEFAULT '',
  `Col_Birthday` date DEFAULT NULL,
  `Col_h_Province` varchar(128) DEFAULT '',
  `Col_h_City` varchar(128) DEFAULT '',
  `Col_h_Address` varchar(255) DEFAULT '',
  `Col_h_PostCode` varchar(32) DEFAULT '',
  `Col_h_Phone` varchar(64) DEFAULT '',
  `Col_h_Fax` varchar(64) DEFAULT '',
  `Col_o_CompanyName` varchar(255) DEFAULT '',
  `Col_o_Address` varchar(255) DEFAULT '',
  `Col_o_PostCode` varchar(32) DEFAULT '',
  `Col_o_JobTitle` varchar(128) DEFAULT '',
  `Col_o_Phone` varchar(64) DEFAULT '',
  `Col_o_Fax` varchar(64) DEFAULT '',
  `Col_Picture` varchar(255) DEFAULT '',
  `Col_ECard` mediumtext DEFAULT NULL,
  `Col_DeptInfo` varchar(255) DEFAULT '',
  `Col_DeptID` int(11) DEFAULT 0,
  `Col_UserData` mediumtext DEFAULT NULL,
  PRIMARY KEY (`Col_ID`),
  KEY `ix_qv_User_LoginName` (`Col_LoginName`),
  KEY `ix_qv_User_Name` (`Col_Name`),
  KEY `ix_qv_User_Level` (`Col_Level`)
) ENGINE=InnoDB AUTO_INCREMENT=41 DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;
INSERT INTO `qv_user` VALUES
(1,'rené','rene','😀smile',DEFAULT,-1,0,7,-1,0,'rené',-1,0,7,'日本語','C:\\data\\',' blanks ','it\'s',0,'rene','2013-05-07','a; b -- c','日本語','C:\\data\\',' blanks ','it\'s','rené','rene','😀smile','a; b -- c','日本語','C:\\data\\',' blanks ','it\'s','rené','rene',0,'a; b -- c'),
(5,'a; b -- c','日本語','C:\\data\\',DEFAULT,0,7,-1,0,7,'a; b -- c',0,7,-1,'it\'s','rené','rene','😀smile',7,'日本語','1969-07-20',' blanks ','it\'s','rené','rene','😀smile','a; b -- c','日本語','C:\\data\\',' blanks ','it\'s','rené','rene','😀smile','a; b -- c','日本語',7,' blanks '),
(9,' blanks ','it\'s',NULL,DEFAULT,7,-1,0,7,-1,' blanks ',7,-1,0,'😀smile','a; b -- c',NULL,'C:\\data\\',-1,'it\'s',NULL,'rene','😀smile','a; b -- c',NULL,'C:\\data\\',' blanks ','it\'s',NULL,'rene','😀smile','a; b -- c',NULL,'C:\\data\\',' blanks ','it\'s',-1,'rene');
CREATE TABLE `qv_view` (
  `Col_ID` int(11) NOT NULL AUTO_INCREMENT,
  `Col_Name` varchar(128) DEFAULT '',
  `Col_Type` int(11) DEFAULT 1,
  `Col_Description` varchar(255) DEFAULT '',
  `Col_OwnerID` int(11) DEFAULT 0,
  `Col_ItemIndex` int(11) DEFAULT 10000,
  `Col_Creator_Name` varchar(128) DEFAULT '',
  `Col_Dt_Create` date DEFAULT NULL,
  `Col_DomainID` int(11) DEFAULT 0,
  `Col_Style` int(11) DEFAULT 0,
  `Col_IsPublic` int(11) DEFAULT 0,
  PRIMARY KEY (`Col_ID`),
  KEY `ix_qv_View_Name_Type` (`Col_Name`,`Col_Type`),
  KEY `ix_qv_View_OwnerID_Type` (`Col_OwnerID`,`Col_Type`),
  KEY `ix_qv_View_Type` (`Col_Type`)
) ENGINE=InnoDB AUTO_INCREMENT=10 DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;
INSERT INTO `qv_view` VALUES
(1,'rené',0,'😀smile',-1,0,'C:\\data\\','2013-05-07',0,7,-1),
(5,'a; b -- c',7,'C:\\data\\',0,7,'rené','1969-07-20',7,-1,0),
(9,' blanks ',-1,NULL,7,-1,'a; b -- c',NULL,-1,0,7);
CREATE TABLE `tab_bioace` (
  `Col_ID` int(11) NOT NULL AUTO_INCREMENT,
  `Col_QvItemID` int(11) DEFAULT 0,
  `Col_QvItemType` int(11) DEFAULT 0,
  `Col_QvItemName` varchar(128) DEFAULT '',
  `Col_ClassID` int(11) DEFAULT 0,
  `Col_ObjID` int(11) DEFAULT 0,
  `Col_FunName` varchar(128) DEFAULT '',
  `Col_FunGenre` varchar(128) DEFAULT '',
  `Col_Power` int(11) DEFAULT 0,
  `Col_UnPower` int(11) DEFAULT 0,
  `Col_Creator_ID` int(11) DEFAULT 0,
  `Col_Creator_Name` varchar(128) DEFAULT '',
  `Col_Dt_Create` datetime DEFAULT NULL,
  PRIMARY KEY (`Col_ID`),
  KEY `ix_Tab_BIOAce_Obj_FunName_QvItemType` (`Col_ClassID`,`Col_ObjID`,`Col_FunName`,`Col_QvItemType`)
) ENGINE=InnoDB AUTO_INCREMENT=10 DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;
INSERT INTO `tab_bioace` VALUES
(1,-1,0,'😀smile',-1,0,'C:\\data\\',' blanks ',0,7,-1,'😀smile','2013-05-07 09:03:00'),
(5,0,7,'C:\\data\\',0,7,'rené','rene',7,-1,0,'C:\\data\\','1969-12-31 23:59:59'),
(9,7,-1,NULL,7,-1,'a; b -- c',NULL,-1,0,7,NULL,NULL);
CREATE TABLE `tab_config` (
  `Col_RowID` bigint(20) NOT NULL AUTO_INCREMENT,
  `Col_Name` varchar(128) DEFAULT '',
  `Col_Data` mediumtext DEFAULT NULL,
  `Col_Genre` varchar(128) DEFAULT '',
  PRIMARY KEY (`Col_RowID`),
  KEY `ix_Tab_Config_Name_Genre` (`Col_Name`,`Col_Genre`),
  KEY `ix_Tab_Config_Genre` (`Col_Genre`)
) ENGINE=InnoDB AUTO_INCREMENT=4 DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;
INSERT INTO `tab_config` VALUES
(1,'it\'s','rené','rene'),
(2,'😀smile','a; b -- c','日本語'),
(3,'C:\\data\\',' blanks ','it\'s');
CREATE TABLE `tab_doc_backup_plan` (
  `Col_ID` int(11) NOT NULL AUTO_INCREMENT,
  `Col_Name` varchar(128) DEFAULT '',
  `Col_Desc` varchar(255) DEFAULT '',
  `Col_Data` mediumtext DEFAULT NULL,
  PRIMARY KEY (`Col_ID`),
  KEY `ix_Tab_Doc_Backup_Plan_Name` (`Col_Name`)
) ENGINE=InnoDB AUTO_INCREMENT=10 DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;
INSERT INTO `tab_doc_backup_plan` VALUES
(1,'rené','rene','😀smile'),
(5,'a; b -- c','日本語','C:\\data\\'),
(9,' blanks ','it\'s',NULL);
CREATE TABLE `tab_doc_backup_rel` (
  `Col_ID` int(11) NOT NULL AUTO_INCREMENT,
  `Col_QvItem_Type` int(11) DEFAULT 0,
  `Col_QvItem_ID` int(11) DEFAULT 0,
  `Col_PlanID` int(11) DEFAULT 0,
  PRIMARY KEY (`Col_ID`),
  KEY `ix_Tab_Doc_Backup_Rel_QvItem_PlanID` (`Col_QvItem_Type`,`Col_QvItem_ID`,`Col_PlanID`)
) ENGINE=InnoDB AUTO_INCREMENT=10 DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;
INSERT INTO `tab_doc_backup_rel` VALUES
(1,-1,0,7),
(5,0,7,-1),
(9,7,-1,0);
CREATE TABLE `tab_doc_log` (
  `Col_RowID` bigint(20) NOT NULL AUTO_INCREMENT,
  `Col_Content` mediumtext DEFAULT NULL,
  `Col_Type` varchar(64) DEFAULT '',
  `Col_R_ClassID` int(11) DEFAULT 0,
  `Col_R_ObjID` int(11) DEFAULT 0,
  `Col_Creator_ID` int(11) DEFAULT 0,
  `Col_Creator_Name` varchar(128) DEFAULT '',
  `Col_Genre` varchar(128) DEFAULT '',
  PRIMARY KEY (`Col_RowID`)
) ENGINE=InnoDB AUTO_INCREMENT=4 DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;
INSERT INTO `tab_doc_log` VALUES
(1,'it\'s','rené',0,7,-1,'日本語','C:\\data\\'),
(2,'😀smile','a; b -- c',7,-1,0,'it\'s','rené'),
(3,'C:\\data\\',' blanks ',-1,0,7,'😀smile','a; b -- c');
CREATE TABLE `tab_doc_root` (
  `Col_ID` int(11) NOT NULL AUTO_INCREMENT,
  `Col_Name` varchar(128) DEFAULT '',
  `Col_Desc` varchar(255) DEFAULT '',
  `Col_DataPath` varchar(255) DEFAULT '',
  `Col_Dt_Create` datetime DEFAULT NULL,
  `Col_MaxSize` int(11) DEFAULT 0,
  `Col_UsedSize` int(11) DEFAULT 0,
  `Col_DispName` varchar(128) DEFAULT '',
  `Col_HaveSubItem` int(11) DEFAULT 0,
  `Col_Type` int(11) DEFAULT 0,
  `Col_Style` int(11) DEFAULT 0,
  `Col_OwnerID` int(11) DEFAULT 0,
  PRIMARY KEY (`Col_ID`),
  KEY `ix_Tab_Doc_Root_Name_Type` (`Col_Name`,`Col_Type`),
  KEY `ix_Tab_Doc_Root_Type` (`Col_Type`)
) ENGINE=InnoDB AUTO_INCREMENT=10 DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;
INSERT INTO `tab_doc_root` VALUES
(1,'rené','rene','😀smile','2013-05-07 09:03:00',0,7,' blanks ',0,7,-1,0),
(5,'a; b -- c','日本語','C:\\data\\','1969-12-31 23:59:59',7,-1,'rene',7,-1,0,7),
(9,' blanks ','it\'s',NULL,NULL,-1,0,NULL,-1,0,7,-1);
CREATE TABLE `tab_doc_root_link` (
  `Col_ID` int(11) NOT NULL AUTO_INCREMENT,
  `Col_DispName` varchar(128) DEFAULT '',
  `Col_Style` int(11) DEFAULT 0,
  `Col_HaveSubItem` int(11) DEFAULT 0,
  `Col_P_ObjID` int(11) DEFAULT 0,
  `Col_S_ClassID` int(11) DEFAULT 0,
  `Col_S_ObjID` int(11) DEFAULT 0,
  `Col_IsRef` int(11) DEFAULT 0,
  `Col_RelType` int(11) DEFAULT 0,
  `Col_Ace` int(11) DEFAULT 0,
  `Col_Creator_ID` int(11) DEFAULT 0,
  `Col_Creator_Name` varchar(128) DEFAULT '',
  `Col_Note` varchar(255) DEFAULT '',
  `Col_Order` int(11) DEFAULT 0,
  PRIMARY KEY (`Col_ID`),
  KEY `ix_Tab_Doc_Root_Link_P_ObjID_S_Obj` (`Col_P_ObjID`,`Col_S_ClassID`,`Col_S_ObjID`)
) ENGINE=InnoDB AUTO_INCREMENT=10 DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;
INSERT INTO `tab_doc_root_link` VALUES
(1,'rené',0,7,-1,0,7,-1,0,7,-1,'😀smile','a; b -- c',-1),
(5,'a; b -- c',7,-1,0,7,-1,0,7,-1,0,'C:\\data\\',' blanks ',0),
(9,' blanks ',-1,0,7,-1,0,7,-1,0,7,NULL,'rene',7);
CREATE TABLE `tab_doc_vfolder` (
  `Col_ID` int(11) NOT NULL AUTO_INCREMENT,
  `Col_Name` varchar(128) DEFAULT '',
  `Col_Style` int(11) DEFAULT 0,
  `Col_HaveSubItem` int(11) DEFAULT 0,
  `Col_G_ClassID` int(11) DEFAULT 0,
  `Col_G_ObjID` int(11) DEFAULT 0,
  `Col_Creator_ID` int(11) DEFAULT 0,
  `Col_Creator_Name` varchar(128) DEFAULT '',
  `Col_Dt_Create` datetime DEFAULT NULL,
  PRIMARY KEY (`Col_ID`)
) ENGINE=InnoDB AUTO_INCREMENT=10 DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;
INSERT INTO `tab_doc_vfolder` VALUES
(1,'rené',0,7,-1,0,7,' blanks ','2013-05-07 09:03:00'),
(5,'a; b -- c',7,-1,0,7,-1,'rene','1969-12-31 23:59:59'),
(9,' blanks ',-1,0,7,-1,0,NULL,NULL);
CREATE TABLE `tab_doc_vfolder_link` (
  `Col_ID` int(11) NOT NULL AUTO_INCREMENT,
  `Col_DispName` varchar(128) DEFAULT '',
  `Col_Style` int(11) DEFAULT 0,
  `Col_HaveSubItem` int(11) DEFAULT 0,
  `Col_P_ObjID` int(11) DEFAULT 0,
  `Col_S_ClassID` int(11) DEFAULT 0,
  `Col_S_ObjID` int(11) DEFAULT 0,
  `Col_IsRef` int(11) DEFAULT 0,
  `Col_RelType` int(11) DEFAULT 0,
  `Col_Ace` int(11) DEFAULT 0,
  `Col_Creator_ID` int(11) DEFAULT 0,
  `Col_Creator_Name` varchar(128) DEFAULT '',
  `Col_Note` varchar(255) DEFAULT '',
  `Col_Order` int(11) DEFAULT 0,
  PRIMARY KEY (`Col_ID`),
  KEY `ix_Tab_Doc_VFolder_Link_P_ObjID_S_Obj` (`Col_P_ObjID`,`Col_S_ClassID`,`Col_S_ObjID`)
) ENGINE=InnoDB AUTO_INCREMENT=10 DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;
INSERT INTO `tab_doc_vfolder_link` VALUES
(1,'rené',0,7,-1,0,7,-1,0,7,-1,'😀smile','a; b -- c',-1),
(5,'a; b -- c',7,-1,0,7,-1,0,7,-1,0,'C:\\data\\',' blanks ',0),
(9,' blanks ',-1,0,7,-1,0,7,-1,0,7,NULL,'rene',7);
