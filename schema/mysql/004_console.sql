-- Who may use the web console beside super users, and second factors of those who sign in there.

CREATE TABLE IF NOT EXISTS qv_ConsoleAccount (
  Col_ID             INT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  -- The user.
  Col_QvItemType     INT NOT NULL DEFAULT 0,
  Col_QvItemID       INT NOT NULL DEFAULT 0,
  -- help-desk or read-only; empty: what the user may do is up to being a super user.
  Col_Level          VARCHAR(32) DEFAULT '',
  -- The secret of one-time codes, in Base32; empty: none is asked for.
  Col_Totp           VARCHAR(64) DEFAULT '',
  -- The step of 30 seconds whose code was taken last, counted from 1970 on.
  Col_TotpUsed       INT NOT NULL DEFAULT 0,
  -- SHA-256 of each recovery code that is left, with blanks between them.
  Col_Recovery       LONGTEXT,
  KEY ix_qv_ConsoleAccount_Item (Col_QvItemType, Col_QvItemID)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_general_ci;
