-- Who may use the web console beside super users, and second factors of those who sign in there.

CREATE TABLE qv_ConsoleAccount (
  Col_ID             int IDENTITY(1,1) NOT NULL PRIMARY KEY,
  -- The user.
  Col_QvItemType     int NOT NULL DEFAULT 0,
  Col_QvItemID       int NOT NULL DEFAULT 0,
  -- help-desk or read-only; empty: what the user may do is up to being a super user.
  Col_Level          nvarchar(32) DEFAULT '',
  -- The secret of one-time codes, in Base32; empty: none is asked for.
  Col_Totp           nvarchar(64) DEFAULT '',
  -- The step of 30 seconds whose code was taken last, counted from 1970 on.
  Col_TotpUsed       int NOT NULL DEFAULT 0,
  -- SHA-256 of each recovery code that is left, with blanks between them.
  Col_Recovery       nvarchar(max) DEFAULT ''
);

CREATE INDEX ix_qv_ConsoleAccount_Item ON qv_ConsoleAccount (Col_QvItemType, Col_QvItemID);
