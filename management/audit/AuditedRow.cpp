#include "management/audit/AuditedRow.h"

#include "basefun/ItemTypes.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "management/Errors.h"
#include "management/Query.h"
#include "management/References.h"
#include "platform/CodePage.h"
#include "schema/Schema.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cctype>

namespace management::audit {

namespace {

constexpr AuditedTable kTables[] = {
    {"qv_User", Keeping::byId, "user", "Col_LoginName", true, kItemTypeUser},
    {"qv_Group", Keeping::byId, "group", "Col_Name", false, kItemTypeGroup},
    {"qv_View", Keeping::byId, "view", "Col_Name", true, kItemTypeView},
    {"qv_Relation", Keeping::byContent, "link"},
    {"qv_Role", Keeping::byId, "role", "Col_Name", true, kItemTypeRole},
    {"qv_JobTitle", Keeping::byContent, "title", "Col_JobTitle"},
    {"qv_ItemAce", Keeping::byContent, "right", "Col_FunName"},
    {"qv_BIIAce", Keeping::byContent, "right", "Col_FunName"},
    {"Tab_BIOAce", Keeping::byId, "object right", "Col_FunName"},
    {"Tab_Doc_Root", Keeping::byId, "document root", "Col_Name", true},
    {"Tab_Doc_Root_Link", Keeping::byId, "folder link"},
    {"Tab_Doc_VFolder", Keeping::byId, "folder", "Col_Name"},
    {"Tab_Doc_VFolder_Link", Keeping::byId, "folder link"},
    {"Tab_Doc_Backup_Plan", Keeping::byId, "plan", "Col_Name", true},
    {"Tab_Doc_Backup_Rel", Keeping::byId, "plan assignment"},
    {"Tab_Doc_Log", Keeping::byContent, "document log entry"},
    {"Tab_Config", Keeping::byContent, "setting", "Col_Name"},
    {"kel_Msg", Keeping::countOnly, "message"},
    {"kel_Msg_AttachMent", Keeping::countOnly, "attachment"},
    {"kel_Msg_Rece", Keeping::countOnly, "receipt"},
    {"kel_log", Keeping::countOnly, "login"},
    {"kel_AddIn", Keeping::byId, "add-in", "Col_Name"},
    {"kel_Package", Keeping::byId, "package", "Col_Name", true},
    {"Kel_Board", Keeping::byId, "notice", "Col_Subject"},
    {"Kel_Board_Attach", Keeping::byContent, "attachment of a notice", "Col_FileName"},
    {"Kel_Board_Revert", Keeping::byId, "reply to a notice"},
    {"Kel_Board_Visiter", Keeping::byId, "reader of a notice"},
};

/// Takes what a packed row is made of.
class RowReader final : public nlohmann::json::json_sax_t {
public:
    AuditedRow TakeRow() { return std::move(m_row); }

    bool null() override { return Add(std::nullopt); }
    bool boolean(bool /*value*/) override { return false; }
    bool number_integer(number_integer_t /*value*/) override { return false; }
    bool number_unsigned(number_unsigned_t value) override
    {
        if (!m_isInBytes || value > kGreatestByte) {
            return false;
        }
        *m_row.back().second += static_cast<char>(value);
        return true;
    }
    bool number_float(number_float_t /*value*/, const string_t& /*text*/) override { return false; }
    bool string(string_t& value) override { return Add(std::move(value)); }
    bool binary(binary_t& /*value*/) override { return false; }
    bool start_object(std::size_t /*elements*/) override { return ++m_depth == 1; }
    bool key(string_t& value) override
    {
        m_row.emplace_back(std::move(value), std::string());
        return true;
    }
    bool end_object() override { return true; }
    bool start_array(std::size_t /*elements*/) override
    {
        m_isInBytes = !m_row.empty();
        return m_isInBytes;
    }
    bool end_array() override
    {
        m_isInBytes = false;
        return true;
    }
    bool parse_error(std::size_t /*position*/, const std::string& /*token*/,
                     const nlohmann::json::exception& /*error*/) override
    {
        return false;
    }

private:
    static constexpr number_unsigned_t kGreatestByte = 255;

    bool Add(std::optional<std::string> value)
    {
        if (m_row.empty() || m_isInBytes) {
            return false;
        }
        m_row.back().second = std::move(value);
        return true;
    }

    AuditedRow m_row;
    int m_depth = 0;
    bool m_isInBytes = false;
};

} // namespace

bool SameIdentifier(std::string_view a, std::string_view b)
{
    const auto lower = [](unsigned char c) { return std::tolower(c); };
    return std::ranges::equal(a, b, {}, lower, lower);
}

const AuditedTable* FindAuditedTable(std::string_view name)
{
    const auto* found =
        std::ranges::find_if(kTables, [name](const AuditedTable& t) { return SameIdentifier(t.name, name); });
    return found == std::end(kTables) ? nullptr : found;
}

const std::vector<std::string>& ColumnsOf(const AuditedTable& table)
{
    const auto& all = schema::Tables();
    return std::ranges::find(all, table.name, &schema::TableColumns::name)->columns;
}

std::string ColumnList(const AuditedTable& table) { return fmt::format("{}", fmt::join(ColumnsOf(table), ", ")); }

AuditedRow ReadRow(CARecordset& rows, const AuditedTable& table, long first)
{
    AuditedRow row;
    long column = first;
    for (const std::string& name : ColumnsOf(table)) {
        row.emplace_back(name, OptionalTextIn(rows, column++));
    }
    return row;
}

std::vector<AuditedRow> ReadRows(CAConnect& conn, const AuditedTable& table, const std::string& condition)
{
    std::vector<AuditedRow> all;
    CARecordset rows;
    rows.Open(fmt::format("SELECT {} FROM {} {}", ColumnList(table), table.name, condition).c_str(), &conn,
              adbcCursorStatic, adbcLockOptimistic, adbcCommandTable);
    for (; rows.IsEOF() == 0; rows.MoveNext()) {
        all.push_back(ReadRow(rows, table));
    }
    return all;
}

std::optional<std::string> ValueIn(const AuditedRow& row, std::string_view column)
{
    const auto found = std::ranges::find(row, column, &AuditedRow::value_type::first);
    return found == row.end() ? std::nullopt : found->second;
}

bool IsSecret(const AuditedTable& table, const AuditedRow& row, std::string_view column)
{
    if (table.name == "qv_User") {
        return column == "Col_PWord";
    }
    return table.name == "Tab_Config" && column == "Col_Data" &&
           SameIdentifier(ValueIn(row, "Col_Name").value_or(""), "EncryptKey");
}

AuditedRow WithoutSecrets(const AuditedTable& table, AuditedRow row)
{
    for (auto& [column, value] : row) {
        if (value && !value->empty() && IsSecret(table, row, column)) {
            value = kSecretMark;
        }
    }
    return row;
}

std::vector<std::string> ItemsOf(const AuditedTable& table, const AuditedRow& row)
{
    std::vector<std::string> items;
    if (table.itemType != 0) {
        items.push_back(fmt::format("{}:{}", table.itemType, ValueIn(row, "Col_ID").value_or("")));
    }
    for (const ItemColumns& columns : {kHolderColumns, kMemberColumns, kPlanItemColumns}) {
        const auto type = ValueIn(row, columns.type);
        const auto id = ValueIn(row, columns.id);
        if (type && id) {
            items.push_back(*type + ":" + *id);
        }
    }
    return items;
}

// Written and read piece by piece: to destroy the library's objects and arrays takes memory, and ends the program when
// there is none.
std::string Packed(const AuditedRow& row)
{
    std::string text;
    for (const auto& [column, value] : row) {
        if (value && value->empty()) {
            continue;
        }
        text += fmt::format("{}{}:", text.empty() ? "" : ",", nlohmann::json(column).dump());
        if (!value) {
            text += "null";
        } else if (platform::IsValidUtf8(*value)) {
            text += nlohmann::json(*value).dump();
        } else {
            // JSON has no bytes. As numbers, so that the row can be put back as it was.
            const std::vector<unsigned int> bytes(reinterpret_cast<const unsigned char*>(value->data()),
                                                  reinterpret_cast<const unsigned char*>(value->data()) +
                                                      value->size());
            text += fmt::format("[{}]", fmt::join(bytes, ","));
        }
    }
    return "{" + text + "}";
}

AuditedRow Unpacked(std::string_view text)
{
    RowReader reader;
    if (!nlohmann::json::sax_parse(text, &reader)) {
        throw Error(ErrorCode::failed, "a recorded row cannot be read; `qvadmin audit verify` tells more");
    }
    return reader.TakeRow();
}

AuditedRow Completed(const AuditedTable& table, const AuditedRow& row)
{
    AuditedRow complete;
    for (const std::string& column : ColumnsOf(table)) {
        const auto found = std::ranges::find(row, column, &AuditedRow::value_type::first);
        complete.emplace_back(column, found == row.end() ? std::optional<std::string>("") : found->second);
    }
    return complete;
}

} // namespace management::audit
