-- What was changed through the console: by whom, when, why, and the rows before and after.
--
-- The rows are written in the transaction of the change. Entries form a chain by digest; times are in UTC and texts, so
-- that they are the same bytes on every engine. A change that takes several transactions has an entry for each, and
-- those after the first one name the first in Col_PartOf.

CREATE TABLE IF NOT EXISTS qv_AuditEntry (
  Col_ID             INT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  Col_Time           VARCHAR(32) NOT NULL DEFAULT '',
  Col_Who            VARCHAR(255) DEFAULT '',
  Col_FrontEnd       VARCHAR(32) DEFAULT '',
  Col_Command        LONGTEXT,
  Col_Reason         LONGTEXT,
  Col_PartOf         INT NOT NULL DEFAULT 0,
  -- Ids of the entries that this one undid, with blanks between them.
  Col_Undoes         LONGTEXT,
  Col_Rows           INT NOT NULL DEFAULT 0,
  Col_Previous       VARCHAR(64) DEFAULT '',
  Col_Digest         VARCHAR(64) DEFAULT '',
  KEY ix_qv_AuditEntry_PartOf (Col_PartOf)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;

-- Col_Count is how many equal rows came (above 0) or went, for rows without an id of their own.
CREATE TABLE IF NOT EXISTS qv_AuditRow (
  Col_ID             INT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  Col_EntryID        INT NOT NULL DEFAULT 0,
  Col_Table          VARCHAR(64) DEFAULT '',
  Col_Key            VARCHAR(128) DEFAULT '',
  Col_Count          INT NOT NULL DEFAULT 0,
  -- The items that the row is about, as TYPE:ID.
  Col_Item           VARCHAR(32) DEFAULT '',
  Col_OtherItem      VARCHAR(32) DEFAULT '',
  Col_Before         LONGTEXT,
  Col_After          LONGTEXT,
  KEY ix_qv_AuditRow_EntryID (Col_EntryID),
  KEY ix_qv_AuditRow_Table_Key (Col_Table, Col_Key),
  KEY ix_qv_AuditRow_Item (Col_Item),
  KEY ix_qv_AuditRow_OtherItem (Col_OtherItem)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;
