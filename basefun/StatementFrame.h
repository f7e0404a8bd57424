#pragma once

#include "basefun/SourceLocation.h"
#include "basefun/SqlText.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CAException.h"
#include "dbaccess/CARecordset.h"
#include "platform/CObList.h"
#include "platform/COleDateTime.h"
#include "platform/CString.h"
#include "platform/CStringArray.h"
#include "platform/CUIntArray.h"

#include <array>
#include <cstddef>
#include <initializer_list>
#include <memory>
#include <tuple>
#include <utility>
#include <variant>

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
inline void Fetch(CARecordset& row, long column, unsigned long& out) { row.GetValue(column, out); }
inline void Fetch(CARecordset& row, long column, CString& out) { row.GetValue(column, out, true); }
void Fetch(CARecordset& row, long column, COleDateTime& out);
inline void Fetch(CARecordset& row, long column, CUIntArray& out)
{
    int number = 0;
    row.GetValue(column, number);
    out.Add(static_cast<unsigned int>(number));
}
inline void Fetch(CARecordset& row, long column, CStringArray& out) { out.Add(row.GetValueToStr(column, true)); }

/// A text that is asked for without the library's flag.
template <class Out>
struct WithoutFlagOut {
    Out& out;
};
inline void Fetch(CARecordset& row, long column, WithoutFlagOut<CStringArray>& text)
{
    text.out.Add(row.GetValueToStr(column, false));
}
inline void Fetch(CARecordset& row, long column, WithoutFlagOut<CString>& text)
{
    row.GetValue(column, text.out, false);
}

/// A date that goes out as text: to a text, or to the end of an array.
template <class Out>
struct DateOut {
    Out& out;
    const char* format; // null: date and time
};
CString FetchDateText(CARecordset& row, long column, const char* format);
inline void Fetch(CARecordset& row, long column, DateOut<CStringArray>& date)
{
    date.out.Add(FetchDateText(row, column, date.format));
}
inline void Fetch(CARecordset& row, long column, DateOut<CString>& date)
{
    date.out = FetchDateText(row, column, date.format);
}

enum class Next : bool { stop, go_on };

/// A row for Walk: `row` reads it, and what comes next does not hang on it.
template <class Row>
auto Then(Row& row, Next next)
{
    return [&row, next](CARecordset& rs) {
        row(rs);
        return next;
    };
}

/// What a read makes of a connection that is not open.
enum class OnClosed : bool { fails, has_no_rows };

/// The one walk of all reads. @param row  reads a row and says whether the next one is wanted.
template <class Row>
bool Walk(CAConnect& conn, const CString& sql, Row row, OnError policy, SourceLocation at,
          OnClosed onClosed = OnClosed::fails)
{
    CARecordset rs;
    return Guarded(conn, sql, policy, at, [&] {
        if (!OpenResult(rs, sql, conn) && onClosed == OnClosed::fails) {
            return false;
        }
        for (rs.MoveFirst(); rs.IsEOF() == 0; rs.MoveNext()) {
            if (row(rs) == Next::stop) {
                break;
            }
        }
        return true;
    });
}

} // namespace detail

/// A text column, asked for as the board's operations ask: with the flag of the library's text getters off.
template <class Out>
detail::WithoutFlagOut<Out> WithoutFlag(Out& out)
{
    return {out};
}

/// A date column as text. A NULL is the empty text. @param out  a text, or an array. @param format  as
/// COleDateTime::Format takes it.
template <class Out>
detail::DateOut<Out> AsDate(Out& out, const char* format)
{
    return {out, format};
}

/// A date column as YYYY-MM-DD HH:MM:SS, the year always with four digits; quick enough for long lists.
template <class Out>
detail::DateOut<Out> AsDateAndTime(Out& out)
{
    return {out, nullptr};
}

/// Reads columns 1, 2, ... of a row into the outputs in their order; an array gets one element more. A NULL leaves an
/// output as it was and appends 0 or the empty text to an array.
template <class... Out>
auto Columns(Out&&... out)
{
    return [outputs = std::tuple<Out...>(std::forward<Out>(out)...)](CARecordset& row) mutable {
        long column = 0;
        std::apply([&](auto&... each) { (detail::Fetch(row, ++column, each), ...); }, outputs);
    };
}

/// Gives a date another date's value; its status stays.
void TakeValue(COleDateTime& date, const COleDateTime& from);

/// A column that counts rows: 64 bits wide where the engine kind is 6, an int on all others. @return 0 for a NULL.
__int64 ReadCount(const CAConnect& conn, CARecordset& row, long column);

/// Notes that there is a row; `found` must be preset to false.
inline auto Found(bool& found)
{
    return [&found](CARecordset&) { found = true; };
}

/// Reads the first row, if there is one. @return whether the statement ran.
template <class Row>
bool ReadFirst(CAConnect& conn, const CString& sql, Row row, OnError policy = OnError::keep_and_notify,
               SourceLocation at = SourceLocation::current())
{
    return detail::Walk(conn, sql, detail::Then(row, detail::Next::stop), policy, at);
}

/// Reads the first row. @return true only when there was one.
template <class Row>
bool FindFirst(CAConnect& conn, const CString& sql, Row row, OnError policy = OnError::keep_and_notify,
               SourceLocation at = SourceLocation::current())
{
    bool found = false;
    const auto read = [&](CARecordset& rs) {
        row(rs);
        found = true;
        return detail::Next::stop;
    };
    return detail::Walk(conn, sql, read, policy, at) && found;
}

/// Reads the first row, if there is one, without looking at whether the statement opened: on a connection that is not
/// open the outputs keep their presets and the result is true. Callers know these few operations so.
template <class Row>
bool ReadFirstIgnoringClosed(CAConnect& conn, const CString& sql, Row row,
                             SourceLocation at = SourceLocation::current())
{
    return detail::Walk(conn, sql, detail::Then(row, detail::Next::stop), OnError::keep_and_notify, at,
                        detail::OnClosed::has_no_rows);
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
    return detail::Walk(conn, sql, detail::Then(row, detail::Next::go_on), policy, at);
}

/// Reads every row without looking at whether the statement opened, as ReadFirstIgnoringClosed does.
template <class Row>
bool ReadEachIgnoringClosed(CAConnect& conn, const CString& sql, Row row, SourceLocation at = SourceLocation::current())
{
    return detail::Walk(conn, sql, detail::Then(row, detail::Next::go_on), OnError::keep_and_notify, at,
                        detail::OnClosed::has_no_rows);
}

/// Reads rows until `row` finds what it looks for and returns true. @return whether the statement ran.
template <class Row>
bool ReadUntil(CAConnect& conn, const CString& sql, Row row, OnError policy = OnError::keep_and_notify,
               SourceLocation at = SourceLocation::current())
{
    const auto read = [&](CARecordset& rs) { return row(rs) ? detail::Next::stop : detail::Next::go_on; };
    return detail::Walk(conn, sql, read, policy, at);
}

/// Reads columns 1, 2, ... of a row into members of a record, in their order.
template <class Record, class... Member>
auto Members(Member Record::*... members)
{
    return [members...](CARecordset& row, Record& record) {
        long column = 0;
        (detail::Fetch(row, ++column, record.*members), ...);
    };
}

/// A column by name, and the record's member that it fills.
template <class Record>
struct NamedMember {
    const char* column;
    std::variant<int Record::*, bool Record::*, CString Record::*> member;
};

/// Reads columns by name into members of a record. Names are looked up once, when the first row is there; a name that
/// the result does not have raises then.
template <class Record, std::size_t N>
auto MembersByName(const std::array<NamedMember<Record>, N>& members)
{
    return [&members, columns = std::array<long, N>{}](CARecordset& row, Record& record) mutable {
        if (columns[0] == 0) {
            for (std::size_t i = 0; i < N; ++i) {
                columns[i] = row.GetColumnNumber(members[i].column);
            }
        }
        for (std::size_t i = 0; i < N; ++i) {
            std::visit([&](auto member) { detail::Fetch(row, columns[i], record.*member); }, members[i].member);
        }
    };
}

/// Reads every row into a new record, filled by `fill(row, record)`, that goes to the end of the caller's list.
/// @return as ReadEach; the record of a row that fails is not appended.
template <class Record, class Fill>
bool ReadObjects(CAConnect& conn, const CString& sql, CObList& list, Fill fill,
                 OnError policy = OnError::keep_and_notify, SourceLocation at = SourceLocation::current())
{
    const auto append = [&](CARecordset& row) {
        auto record = std::make_unique<Record>();
        fill(row, *record);
        list.AddTail(record.get());
        static_cast<void>(record.release());
        return detail::Next::go_on;
    };
    return detail::Walk(conn, sql, append, policy, at);
}

/// Executes one statement; what it returns is not looked at. @return whether nothing was raised.
bool Execute(CAConnect& conn, const CString& sql, OnError policy = OnError::keep_and_notify,
             SourceLocation at = SourceLocation::current());

/// Executes the statement that `build()` makes; an error on the way there is reported like one of the statement,
/// without its text. @return whether nothing was raised.
template <class Build>
bool ExecuteBuilt(CAConnect& conn, Build build, SourceLocation at = SourceLocation::current())
{
    CString sql;
    return detail::Guarded(conn, sql, OnError::keep_and_notify, at, [&] {
        sql = build();
        conn.Execute(sql);
        return true;
    });
}

/// Executes one statement. @return what CAConnect::Execute returns; 0 after an error.
int ExecuteCounted(CAConnect& conn, const CString& sql, SourceLocation at = SourceLocation::current());

/// Runs one statement. @return what CACommFun::RunSQL returns: 0 when the connection is not open; 0 after an error.
int Run(CAConnect& conn, const CString& sql, OnError policy, SourceLocation at = SourceLocation::current());

} // namespace frame
