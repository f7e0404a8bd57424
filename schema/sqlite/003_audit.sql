-- What was changed through the console: by whom, when, why, and the rows before and after.
--
-- The rows are written in the transaction of the change. Entries form a chain by digest; times are in UTC and texts, so
-- that they are the same bytes on every engine. A change that takes several transactions has an entry for each, and
-- those after the first one name the first in Col_PartOf.

CREATE TABLE qv_AuditEntry (
  Col_ID             INTEGER PRIMARY KEY AUTOINCREMENT,
  Col_Time           TEXT NOT NULL DEFAULT '',
  Col_Who            TEXT DEFAULT '',
  Col_FrontEnd       TEXT DEFAULT '',
  Col_Command        TEXT DEFAULT '',
  Col_Reason         TEXT DEFAULT '',
  Col_PartOf         INTEGER NOT NULL DEFAULT 0,
  -- Ids of the entries that this one undid, with blanks between them.
  Col_Undoes         TEXT DEFAULT '',
  Col_Rows           INTEGER NOT NULL DEFAULT 0,
  Col_Previous       TEXT DEFAULT '',
  Col_Digest         TEXT DEFAULT ''
);

-- Col_Count is how many equal rows came (above 0) or went, for rows without an id of their own.
CREATE TABLE qv_AuditRow (
  Col_ID             INTEGER PRIMARY KEY AUTOINCREMENT,
  Col_EntryID        INTEGER NOT NULL DEFAULT 0,
  Col_Table          TEXT DEFAULT '',
  Col_Key            TEXT DEFAULT '',
  Col_Count          INTEGER NOT NULL DEFAULT 0,
  -- The items that the row is about, as TYPE:ID.
  Col_Item           TEXT DEFAULT '',
  Col_OtherItem      TEXT DEFAULT '',
  Col_Before         TEXT,
  Col_After          TEXT
);

CREATE INDEX ix_qv_AuditEntry_PartOf ON qv_AuditEntry (Col_PartOf);
CREATE INDEX ix_qv_AuditRow_EntryID ON qv_AuditRow (Col_EntryID);
CREATE INDEX ix_qv_AuditRow_Table_Key ON qv_AuditRow (Col_Table, Col_Key);
CREATE INDEX ix_qv_AuditRow_Item ON qv_AuditRow (Col_Item);
CREATE INDEX ix_qv_AuditRow_OtherItem ON qv_AuditRow (Col_OtherItem);
