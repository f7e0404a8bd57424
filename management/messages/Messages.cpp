#include "management/messages/Messages.h"

#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CADateTime.h"
#include "dbaccess/CARecordset.h"
#include "management/DatabaseError.h"
#include "management/Query.h"
#include "management/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <utility>

namespace management {

namespace {

constexpr std::string_view kAttachments = "kel_Msg_AttachMent";
constexpr std::string_view kReceipts = "kel_Msg_Rece";

void OpenRows(CARecordset& rs, CAConnect& conn, const std::string& sql)
{
    if (!rs.Open(sql.c_str(), &conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable)) {
        throw CAException("the connection is not open");
    }
}

/// Of a CADateTime or a COleDateTime.
template <class DateTime>
std::string AsText(const DateTime& date)
{
    return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}:{:02}", date.GetYear(), date.GetMonth(), date.GetDay(),
                       date.GetHour(), date.GetMinute(), date.GetSecond());
}

/// The condition by which the module finds orphans: what is counted is what is deleted.
std::string WithoutMessage(std::string_view table)
{
    return fmt::format("{0} WHERE (SELECT COUNT(*) FROM kel_Msg WHERE {0}.Col_MsgID = kel_Msg.Col_ID) = 0", table);
}

/// The rows of a table that belong to the messages of a condition.
std::string PartsOf(std::string_view table, const std::string& messages)
{
    return fmt::format("{} WHERE Col_MsgID IN (SELECT Col_ID FROM kel_Msg WHERE {})", table, messages);
}

std::vector<Value> RowOf(CARecordset& rs, long idColumn)
{
    std::vector<Value> row;
    for (long column = 1; column <= rs.GetColumnCount(); ++column) {
        CString text;
        __int64 id = 0;
        if (column == idColumn && rs.GetValue(column, id)) {
            row.emplace_back(std::int64_t{id});
        } else {
            row.push_back(rs.GetValue(column, text, true) ? Value(std::string(text.View())) : Value());
        }
    }
    return row;
}

} // namespace

// ---- Messages -------------------------------------------------------------------------------------------------------

std::int64_t Messages::Number(const std::string& sql)
{
    std::int64_t number = 0;
    EachRow(m_conn, sql, [&number](CARecordset& row) { ReadColumns(row, number); });
    return number;
}

std::int64_t Messages::Delete(const std::string& condition)
{
    const std::string sql = "DELETE FROM " + condition;
    return WithDatabaseErrors(m_conn, [&] { return std::max(m_conn.Execute(sql.c_str()), 0); });
}

std::optional<std::string> Messages::Date(const std::string& sql)
{
    std::optional<std::string> date;
    EachRow(m_conn, sql, [&date](CARecordset& row) {
        CADateTime value;
        if (row.GetValue(1, value)) {
            date = AsText(value);
        }
    });
    return date;
}

// The module's own deletion takes what was sent at its date as well, so a date one second earlier would be needed
// there, and a message of that last second and a fraction would stay.
std::string Messages::SentBefore(const std::string& date)
{
    const CString literal =
        WithDatabaseErrors(m_conn, [&] { return m_conn.GetDateStrOnSQL(CString(std::string_view(date))); });
    return fmt::format("Col_SendDate < {}", literal.View());
}

MessageCounts Messages::Count()
{
    const auto count = [this](std::string_view table) { return Number(fmt::format("SELECT COUNT(*) FROM {}", table)); };
    return {count("kel_Msg"), count(kAttachments), count(kReceipts)};
}

OrphanCounts Messages::CountOrphans()
{
    return {Number("SELECT COUNT(*) FROM " + WithoutMessage(kAttachments)),
            Number("SELECT COUNT(*) FROM " + WithoutMessage(kReceipts))};
}

std::optional<std::string> Messages::Oldest()
{
    const COleDateTime latest(9999, 12, 31, 23, 59, 59);
    COleDateTime oldest = latest;
    Run(m_conn, [&] { return CQVBaseFun::GetMinDate(m_conn, "", oldest); });
    // Messages without a date come first on some engines, and hide the others from the module.
    return oldest < latest ? std::optional(AsText(oldest)) : Date("SELECT MIN(Col_SendDate) FROM kel_Msg");
}

std::optional<std::string> Messages::Newest() { return Date("SELECT MAX(Col_SendDate) FROM kel_Msg"); }

MessageCounts Messages::CountBefore(const std::string& date)
{
    const std::string messages = SentBefore(date);
    return {Number("SELECT COUNT(*) FROM kel_Msg WHERE " + messages),
            Number("SELECT COUNT(*) FROM " + PartsOf(kAttachments, messages)),
            Number("SELECT COUNT(*) FROM " + PartsOf(kReceipts, messages))};
}

std::vector<MessageSlice> Messages::SlicesBefore(const std::string& date, std::size_t size)
{
    std::vector<MessageSlice> slices;
    const std::string sql = fmt::format("SELECT Col_ID FROM kel_Msg WHERE {} ORDER BY Col_ID", SentBefore(date));
    EachRow(m_conn, sql, [&](CARecordset& row) {
        std::int64_t id = 0;
        ReadColumns(row, id);
        if (slices.empty() || slices.back().messages == size) {
            slices.push_back({id, id, 0});
        }
        slices.back().last = id;
        ++slices.back().messages;
    });
    return slices;
}

MessageCounts Messages::DeleteBefore(const std::string& date, const MessageSlice& slice)
{
    const std::string messages =
        fmt::format("Col_ID >= {} AND Col_ID <= {} AND {}", slice.first, slice.last, SentBefore(date));
    // The bounds a second time, for engines that would go through all parts to look at the list.
    const std::string bounds = fmt::format(" AND Col_MsgID >= {} AND Col_MsgID <= {}", slice.first, slice.last);
    MessageCounts deleted;
    deleted.attachments = Delete(PartsOf(kAttachments, messages) + bounds);
    deleted.receipts = Delete(PartsOf(kReceipts, messages) + bounds);
    deleted.messages = Delete("kel_Msg WHERE " + messages);
    return deleted;
}

void Messages::DeleteOrphans()
{
    Run(m_conn, [&] { return CQVBaseFun::DeleteAttachNoMsg(m_conn) && CQVBaseFun::DeleteRecvNoMsg(m_conn); });
}

// ---- Login log ------------------------------------------------------------------------------------------------------

void LoginLog::Entries(std::size_t limit, const std::function<void(std::vector<std::string>)>& begin,
                       const std::function<bool(const std::vector<Value>&)>& take)
{
    WithDatabaseErrors(m_conn, [&] {
        CARecordset rs;
        OpenRows(rs, m_conn, "SELECT * FROM kel_log ORDER BY Col_ID DESC");
        const long idColumn = rs.GetColumnNumber("Col_ID");
        std::vector<std::string> columns;
        for (long column = 1; column <= rs.GetColumnCount(); ++column) {
            columns.push_back(column == idColumn ? "id" : std::string(rs.GetColumnName(column).View()));
        }
        begin(std::move(columns));
        for (std::size_t i = 0; i < limit && rs.IsEOF() == 0 && take(RowOf(rs, idColumn)); ++i) {
            rs.MoveNext();
        }
    });
}

bool LoginLog::Has(int id)
{
    bool found = false;
    EachRow(m_conn, fmt::format("SELECT Col_ID FROM kel_log WHERE Col_ID = {}", id),
            [&found](CARecordset&) { found = true; });
    return found;
}

void LoginLog::Delete(int id)
{
    Run(m_conn, [&] { return CQVBaseFun::DeleteLoginLogItem(m_conn, id); });
}

// ---- Dates and room -------------------------------------------------------------------------------------------------

std::string WholeDate(const std::string& text)
{
    constexpr std::string_view kShape = "dddd-dd-dd dd:dd:dd";
    constexpr std::size_t kDay = 10;
    std::string whole = text.size() == kDay ? text + " 00:00:00" : text;
    const auto fits = [](char shape, char written) {
        return shape == 'd' ? written >= '0' && written <= '9' : written == shape;
    };
    const auto part = [&whole](std::size_t at, std::size_t digits) {
        int number = 0;
        std::from_chars(whole.data() + at, whole.data() + at + digits, number);
        return number;
    };
    if (!std::ranges::equal(kShape, whole, fits) ||
        COleDateTime(part(0, 4), part(5, 2), part(8, 2), part(11, 2), part(14, 2), part(17, 2)).GetStatus() !=
            COleDateTime::valid) {
        throw Error(ErrorCode::invalid,
                    FillPattern("invalid date {}: expected YYYY-MM-DD or 'YYYY-MM-DD HH:MM:SS'", Quoted(text)));
    }
    return whole;
}

std::string RoomAdvice(std::string_view engineName)
{
    struct Advice {
        std::string_view engine;
        std::string_view sentence;
    };
    constexpr Advice kAdvice[] = {
        {"SQLite", "the file keeps its size and new rows take the freed pages; VACUUM makes the file smaller"},
        {"PostgreSQL", "new rows take the freed room after VACUUM; VACUUM FULL makes the tables smaller"},
        {"MySQL", "new rows take the freed room; OPTIMIZE TABLE makes the tables smaller"},
        {"MariaDB", "new rows take the freed room; OPTIMIZE TABLE makes the tables smaller"},
        {"SQL Server", "new rows take the freed room; DBCC SHRINKDATABASE makes the files smaller"},
        {"Access", "the file keeps its size; Compact and Repair makes it smaller"},
    };
    for (const Advice& advice : kAdvice) {
        if (engineName.find(advice.engine) != std::string_view::npos) {
            return std::string(advice.sentence);
        }
    }
    return "when the room is given back, the engine decides";
}

} // namespace management
