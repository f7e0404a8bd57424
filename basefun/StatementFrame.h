#pragma once

#include "basefun/SourceLocation.h"
#include "basefun/SqlText.h"
#include "dbaccess/CAException.h"
#include "dbaccess/CARecordset.h"
#include "platform/CObList.h"
#include "platform/CString.h"
#include "platform/CStringArray.h"
#include "platform/CUIntArray.h"

#include <array>
#include <cstddef>
#include <initializer_list>
#include <memory>
#include <tuple>
#include <variant>

class CAConnect;

// How every operation runs its statement: the only place in the module that opens a result, executes a statement or
// catches CAException. An operation is a shape, its statement, and what to do with a row.

namespace frame {

/// What becomes of an error that the engine raised. The classes differ on purpose: callers rely on which of them leave
/// m_strLastError alone.
enum class OnError {
    keep_and_notify, ///< text to m_strLastError, one message to the notification window: the static operations
    keep,            ///< text to m_strLastError: some record classes
    drop,            ///< formatted and thrown away: the others
};

namespace detail {

void Report(CAConnect& conn, const CAException& e, const CString& sql, OnError policy, SourceLocation at);

/// Opens the statement as every read of the module does. @return false when the connection is not open.
bool OpenResult(CARecordset& rs, const CString& sql, CAConnect& conn);

// The library's exceptions are caught by value: its interface asks for it.
#if !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wcatch-value"
#endif
/// Runs `body()` and turns what the engine raises into the policy's report and a value-initialised result.
template <class Body>
auto Guarded(CAConnect& conn, const CString& sql, OnError policy, SourceLocation at, Body body) -> decltype(body())
{
    try {
        return body();
    } catch (CAException e) {
        Report(conn, e, sql, policy, at);
        return {};
    }
}
#if !defined(__clang__)
#pragma GCC diagnostic pop
#endif

inline void Fetch(CARecordset& row, long column, int& out) { row.GetValue(column, out); }
inline void Fetch(CARecordset& row, long column, bool& out) { row.GetValue(column, out); }
inline void Fetch(CARecordset& row, long column, __int64& out) { row.GetValue(column, out); }
inline void Fetch(CARecordset& row, long column, CString& out) { row.GetValue(column, out, true); }
inline void Fetch(CARecordset& row, long column, CUIntArray& out)
{
    int number = 0;
    row.GetValue(column, number);
    out.Add(static_cast<unsigned int>(number));
}
inline void Fetch(CARecordset& row, long column, CStringArray& out) { out.Add(row.GetValueToStr(column, true)); }

} // namespace detail

/// Reads columns 1, 2, ... of a row into the outputs in their order; an array gets one element more. A NULL leaves an
/// output as it was and appends 0 or the empty text to an array.
template <class... Out>
auto Columns(Out&... out)
{
    return [&out...](CARecordset& row) {
        long column = 0;
        (detail::Fetch(row, ++column, out), ...);
    };
}

/// Reads the first row, if there is one. @return whether the statement ran.
template <class Row>
bool ReadFirst(CAConnect& conn, const CString& sql, Row row, OnError policy = OnError::keep_and_notify,
               SourceLocation at = SourceLocation::current())
{
    CARecordset rs;
    return detail::Guarded(conn, sql, policy, at, [&] {
        if (!detail::OpenResult(rs, sql, conn)) {
            return false;
        }
        rs.MoveFirst();
        if (rs.IsEOF() == 0) {
            row(rs);
        }
        return true;
    });
}

/// Tells by `found` whether there is a row; `found` must be preset to true. Column 1 is then read and thrown away, row
/// or none: a library that raises when it is read past the end makes the call fail after `found` is set, and callers
/// know it so.
bool TestExists(CAConnect& conn, const CString& sql, bool& found, SourceLocation at = SourceLocation::current());

/// Reads every row, in the engine's order. @return whether the statement ran; rows read before a failure stay read.
template <class Row>
bool ReadEach(CAConnect& conn, const CString& sql, Row row, OnError policy = OnError::keep_and_notify,
              SourceLocation at = SourceLocation::current())
{
    CARecordset rs;
    return detail::Guarded(conn, sql, policy, at, [&] {
        if (!detail::OpenResult(rs, sql, conn)) {
            return false;
        }
        for (rs.MoveFirst(); rs.IsEOF() == 0; rs.MoveNext()) {
            row(rs);
        }
        return true;
    });
}

/// A column by name, and the record's member that it fills.
template <class Record>
struct NamedMember {
    const char* column;
    std::variant<int Record::*, bool Record::*, CString Record::*> member;
};

/// Reads every row into a new record that goes to the end of the caller's list. Names are looked up once, when the
/// first row is there; a name that the result does not have raises then. @return as ReadEach; the record of a row that
/// fails is not appended.
template <class Record, std::size_t N>
bool ReadObjects(CAConnect& conn, const CString& sql, CObList& list, const std::array<NamedMember<Record>, N>& members,
                 OnError policy = OnError::keep_and_notify, SourceLocation at = SourceLocation::current())
{
    std::array<long, N> columns{};
    return ReadEach(
        conn, sql,
        [&](CARecordset& row) {
            auto record = std::make_unique<Record>();
            if (columns[0] == 0) {
                for (std::size_t i = 0; i < N; ++i) {
                    columns[i] = row.GetColumnNumber(members[i].column);
                }
            }
            for (std::size_t i = 0; i < N; ++i) {
                std::visit([&](auto member) { detail::Fetch(row, columns[i], record.get()->*member); },
                           members[i].member);
            }
            list.AddTail(record.get());
            static_cast<void>(record.release());
        },
        policy, at);
}

/// Executes one statement; what it returns is not looked at. @return whether nothing was raised.
bool Execute(CAConnect& conn, const CString& sql, OnError policy = OnError::keep_and_notify,
             SourceLocation at = SourceLocation::current());

/// Runs one statement. @return what CACommFun::RunSQL returns: 0 when the connection is not open; 0 after an error.
int Run(CAConnect& conn, const CString& sql, OnError policy, SourceLocation at = SourceLocation::current());

} // namespace frame
