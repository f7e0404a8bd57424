#include "management/audit/AuditedRow.h"

#include "basefun/ItemTypes.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "management/Errors.h"
#include "management/JsonLine.h"
#include "management/Query.h"
#include "management/References.h"
#include "schema/Schema.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <utility>
#include <variant>

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
    {"qv_ConsoleAccount", Keeping::byId, "web console account"},
};

} // namespace

bool SameIdentifier(std::string_view a, std::string_view b)
{
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c; };
    return a.size() == b.size() && std::ranges::equal(a, b, {}, lower, lower);
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

AuditedRow NullRow(const AuditedTable& table)
{
    const std::vector<std::string>& columns = ColumnsOf(table);
    AuditedRow row;
    row.reserve(columns.size());
    for (const std::string& name : columns) {
        row.emplace_back(name, std::nullopt);
    }
    return row;
}

void ReadInto(AuditedRow& row, CARecordset& rows, long first)
{
    long column = first;
    CString text;
    for (auto& [name, value] : row) {
        if (rows.GetValue(column++, text, true)) {
            value ? value->assign(text.View()) : value.emplace(text.View());
        } else {
            value.reset();
        }
    }
}

AuditedRow ReadRow(CARecordset& rows, const AuditedTable& table, long first)
{
    AuditedRow row = NullRow(table);
    ReadInto(row, rows, first);
    return row;
}

void OpenRows(CARecordset& rows, CAConnect& conn, const AuditedTable& table, const std::string& condition)
{
    rows.Open(fmt::format("SELECT {} FROM {} {}", ColumnList(table), table.name, condition).c_str(), &conn,
              adbcCursorStatic, adbcLockOptimistic, adbcCommandTable);
}

std::vector<AuditedRow> ReadRows(CAConnect& conn, const AuditedTable& table, const std::string& condition)
{
    std::vector<AuditedRow> all;
    CARecordset rows;
    OpenRows(rows, conn, table, condition);
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

bool IsSecretSetting(std::string_view name) { return SameIdentifier(name, "EncryptKey"); }

bool IsSecret(const AuditedTable& table, const AuditedRow& row, std::string_view column)
{
    if (table.name == "qv_User") {
        return column == "Col_PWord";
    }
    if (table.name == "qv_ConsoleAccount") {
        return column == "Col_Totp" || column == "Col_Recovery";
    }
    return table.name == "Tab_Config" && column == "Col_Data" && IsSecretSetting(ValueIn(row, "Col_Name").value_or(""));
}

std::vector<std::string> ItemsOf(const AuditedTable& table, const AuditedRow& row)
{
    std::vector<std::string> items;
    if (table.itemType != 0) {
        items.push_back(fmt::format("{}:{}", table.itemType, ValueIn(row, "Col_ID").value_or("")));
    }
    for (const ItemColumns& columns : {kHolderColumns, kMemberColumns, kPlanItemColumns}) {
        const auto type = ValueIn(row, columns.type);
        const auto id = type ? ValueIn(row, columns.id) : std::nullopt;
        if (id) {
            items.push_back(*type + ":" + *id);
        }
    }
    return items;
}

namespace {

/// @param shown  gives what is stored of a column's value.
template <class Shown>
std::string PackedBy(const AuditedRow& row, Shown shown)
{
    constexpr std::size_t usualCell = 30;
    std::string text = "{";
    text.reserve(row.size() * usualCell);
    for (const auto& [column, value] : row) {
        if (value && value->empty()) {
            continue;
        }
        text += text.size() == 1 ? "" : ",";
        AppendJsonText(text, column);
        text += ':';
        if (value) {
            AppendJsonText(text, *shown(column, *value));
        } else {
            text += "null";
        }
    }
    text += '}';
    return text;
}

} // namespace

std::string Packed(const AuditedRow& row)
{
    return PackedBy(row, [](const std::string& /*column*/, const std::string& value) { return &value; });
}

std::string PackedWithoutSecrets(const AuditedTable& table, const AuditedRow& row)
{
    static const std::string mark(kSecretMark);
    return PackedBy(row, [&](const std::string& column, const std::string& value) {
        return IsSecret(table, row, column) ? &mark : &value;
    });
}

AuditedRow Unpacked(std::string_view text)
{
    AuditedRow row;
    try {
        for (JsonMember& member : ReadJsonLine(text)) {
            auto* value = std::get_if<TextValue>(&member.value);
            if (!member.part.empty() || (value == nullptr && !std::holds_alternative<std::monostate>(member.value))) {
                throw Error(ErrorCode::invalid, "only texts are recorded");
            }
            row.emplace_back(std::move(member.name),
                             value == nullptr ? std::nullopt : std::optional(std::move(*value)));
        }
    } catch (const Error&) {
        throw Error(ErrorCode::failed, "a recorded row cannot be read; `qvadmin audit verify` tells more");
    }
    return row;
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
