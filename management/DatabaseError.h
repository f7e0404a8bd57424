#pragma once

#include "dbaccess/CAException.h"
#include "management/Errors.h"
#include "schema/DirectoryTransaction.h"
#include "schema/Snapshot.h"

#include <string>
#include <utility>

class CAConnect;

namespace management {

/// The engine refused something, or is gone.
class DatabaseError : public Error {
public:
    /// @param engineLine  the engine's message and code.
    /// @param lasting     see IsLasting.
    /// @param lost        whether that was the end of the connection.
    /// @param advice      goes on with the line; a text with translations.
    DatabaseError(const std::string& engineLine, bool lasting, bool lost = false, const char* advice = "");

    [[nodiscard]] const std::string& EngineLine() const noexcept { return m_engineLine; }
    /// Whether the next statement would meet the same trouble: no connection, no room, no permission, a damaged file.
    [[nodiscard]] bool IsLasting() const noexcept { return m_lasting; }

    /// This, of a commit: nobody knows whether the engine has carried it out.
    [[nodiscard]] DatabaseError AtCommit() const;
    /// Whether the change may have been made all the same.
    [[nodiscard]] bool MayBeDone() const noexcept { return m_mayBeDone; }

private:
    DatabaseError(const DatabaseError& other, Sentence sentence)
        : Error(ErrorCode::database, std::move(sentence)), m_engineLine(other.m_engineLine), m_lasting(other.m_lasting)
    {
    }

    std::string m_engineLine;
    bool m_lasting;
    bool m_mayBeDone = false;
};

DatabaseError ErrorFrom(const CAConnect& conn, const CAException& e);
/// The error that an operation of the module has just left.
DatabaseError ModuleError(const CAConnect& conn);

/// Runs the body; what the database access library throws comes out as a DatabaseError.
template <class Body>
auto WithDatabaseErrors(const CAConnect& conn, Body body) -> decltype(body())
{
    try {
        return body();
    } catch (const CAException& e) {
        throw ErrorFrom(conn, e);
    }
}

/// Runs the body where all reads see one moment. @throws DatabaseError, and what the body throws.
template <class Body>
auto AtOneMoment(CAConnect& conn, Body body) -> decltype(body())
{
    return WithDatabaseErrors(conn, [&] {
        const schema::Snapshot snapshot(conn);
        return body();
    });
}

/// A schema::DirectoryTransaction whose failures are DatabaseErrors: what a command reads to decide what it writes, it
/// reads while it has one.
class Transaction {
public:
    explicit Transaction(CAConnect& conn);

    /// @throws DatabaseError, which tells whether the change may have been made all the same.
    void Commit();
    void Rollback() noexcept { m_transaction.Rollback(); }

private:
    CAConnect& m_conn;
    schema::DirectoryTransaction m_transaction;
};

} // namespace management
