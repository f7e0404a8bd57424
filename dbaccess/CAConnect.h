#pragma once

#include "platform/Api.h"
#include "platform/CString.h"
#include "platform/Window.h"

#include <memory>

namespace dbaccess {
class Cursor;
class Session;
class StatementObserver;
} // namespace dbaccess
class CAException;

/// A connection to a database. Not copyable; belongs to one thread at a time.
///
/// A text from outside must pass through EscapeLiteral, EscapeBackslashes or EscapeQuotes before it reaches a
/// statement, also by way of an operation, whose declaration says which. Doubling quotes is not enough on MariaDB and
/// MySQL, where "\'" does not end a literal.
///
/// All three go by the characters of the ANSI code page: the second byte of a character is never taken for a backslash.
class QV_API CAConnect {
public:
    /// Not open; no window is notified.
    CAConnect();
    CAConnect(const CAConnect&) = delete;
    CAConnect& operator=(const CAConnect&) = delete;
    /// Closes the connection; a transaction that is still open is rolled back.
    virtual ~CAConnect();

    /// Connects by URL, "SCHEME:LOCATION"; a connection that is open is closed first. docs/connections.md lists the
    /// schemes and their options. Sets m_nDBType.
    /// @throws CAException with a sentence for people; the connection is then not open.
    void Open(const CString& url);
    /// Takes over a session that the caller made, not null; a connection that is open is closed first. Sets m_nDBType.
    void Open(std::unique_ptr<dbaccess::Session> session);
    /// Closes the connection; nothing happens when it is not open. Results that are still being read stay readable and
    /// hold the engine's connection until they are closed.
    void Close() noexcept;
    /// Whether the connection is open: false before Open, after Close, and once the engine is found to be gone.
    [[nodiscard]] bool IsOpen() const noexcept;

    /// Runs one statement; rows that it returns are dropped.
    /// @return rows changed, -1 where the engine does not say.
    /// @throws CAException for what the engine refuses and when the connection is not open: a write counts as done when
    ///         nothing was thrown.
    int Execute(const char* sql);
    /// Shows every statement that Execute runs to an observer; null: to none. The observer has to outlive this or be
    /// replaced first. Close leaves it set.
    /// @return the observer before it, null for none.
    dbaccess::StatementObserver* SetObserver(dbaccess::StatementObserver* observer) noexcept;

    /// The engine's literal for a date. @param date  "YYYY-MM-DD" or "YYYY-MM-DD HH:MM:SS".
    /// @throws CAException for any other text, for what is no real date, and when the connection is not open.
    CString GetDateStrOnSQL(CString date);

    /// Begins a transaction; no operation of the module does. It is meant for writing: where the engine locks whole
    /// databases, other writers wait from here on. When an engine gives a transaction up by itself (a full disk), every
    /// further statement is refused until RollbackTrans, so that nothing of it is applied half.
    /// @throws CAException, also when the connection is not open.
    void BeginTrans();
    /// Commits the transaction. @throws CAException, also when the connection is not open; when the connection is lost
    /// meanwhile, the transaction may have been committed or not.
    void CommitTrans();
    /// Rolls the transaction back; does nothing without one.
    /// @throws CAException, also when the connection is not open.
    void RollbackTrans();

    /// The text as it must be written between the quotes of a literal on this engine: for statements of your own, and
    /// for operations that put a text in as it is.
    /// @throws CAException for a text with a NUL byte, and when the connection is not open.
    [[nodiscard]] CString EscapeLiteral(const CString& text) const;
    /// The text for operations that double quotes themselves: backslashes are doubled where the engine takes them for
    /// escapes, quotes stay single.
    /// @throws CAException for a text with a NUL byte, and when the connection is not open.
    [[nodiscard]] CString EscapeBackslashes(const CString& text) const;
    /// The text for operations that double backslashes themselves on engine kind 6, and never quotes: quotes are
    /// doubled, and backslashes, too, where the engine takes them for escapes and the kind is not 6.
    /// @throws CAException for a text with a NUL byte, and when the connection is not open.
    [[nodiscard]] CString EscapeQuotes(const CString& text) const;
    /// The engine's name and version, for people. @throws CAException when the connection is not open.
    [[nodiscard]] CString GetEngineName() const;

    /// Why the last statement failed; in a transaction and on a connection that is lost, why the first one did, since
    /// later statements fail for that reason. Null when it succeeded. Valid until the next call.
    [[nodiscard]] const CAException* GetFailure() const noexcept;

    /// The number of a dbaccess::EngineKind: 0, 1, 3 or 6. Read by the module.
    int m_nDBType = 0;
    /// The message that m_hNotifyWnd receives for an error of an operation.
    UINT m_nNotifyMsg = 0;
    /// The window that receives m_nNotifyMsg, with the address of CQVBaseFun::m_strLastError as LPARAM; null: none
    /// does.
    HWND m_hNotifyWnd = nullptr;

private:
    friend class CARecordset;

    [[nodiscard]] dbaccess::Session& Required() const;
    /// Of a connection that is open.
    std::unique_ptr<dbaccess::Cursor> Query(const char* sql);
    template <class Body>
    auto RecordFailure(Body body) -> decltype(body());

    std::shared_ptr<dbaccess::Session> m_session;
    std::unique_ptr<CAException> m_failure;
    dbaccess::StatementObserver* m_observer = nullptr;
    bool m_inTransaction = false;
};
