#include "management/audit/AuditedRow.h"

#include "basefun/ItemTypes.h"
#include "dbaccess/CARecordset.h"
#include "management/Errors.h"
#include "platform/CodePage.h"
#include "schema/Schema.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>

namespace management::audit {

namespace {

constexpr AuditedTable kTables[] = {
    {"qv_User", Keeping::byId, "user", "Col_LoginName", kItemTypeUser},
    {"qv_Group", Keeping::byId, "group", "Col_Name", kItemTypeGroup},
    {"qv_View", Keeping::byId, "view", "Col_Name", kItemTypeView},
    {"qv_Relation", Keeping::byContent, "link"},
    {"qv_Role", Keeping::byId, "role", "Col_Name", kItemTypeRole},
    {"qv_JobTitle", Keeping::byContent, "title", "Col_JobTitle"},
    {"qv_ItemAce", Keeping::byContent, "right", "Col_FunName"},
    {"qv_BIIAce", Keeping::byContent, "right", "Col_FunName"},
    {"Tab_BIOAce", Keeping::byId, "object right", "Col_FunName"},
    {"Tab_Doc_Root", Keeping::byId, "document root", "Col_Name"},
    {"Tab_Doc_Root_Link", Keeping::byId, "folder link"},
    {"Tab_Doc_VFolder", Keeping::byId, "folder", "Col_Name"},
    {"Tab_Doc_VFolder_Link", Keeping::byId, "folder link"},
    {"Tab_Doc_Backup_Plan", Keeping::byId, "plan", "Col_Name"},
    {"Tab_Doc_Backup_Rel", Keeping::byId, "plan assignment"},
    {"Tab_Doc_Log", Keeping::byContent, "document log entry"},
    {"Tab_Config", Keeping::byContent, "setting", "Col_Name"},
    {"kel_Msg", Keeping::countOnly, "message"},
    {"kel_Msg_AttachMent", Keeping::countOnly, "attachment"},
    {"kel_Msg_Rece", Keeping::countOnly, "receipt"},
    {"kel_log", Keeping::countOnly, "login"},
    {"kel_AddIn", Keeping::byId, "add-in", "Col_Name"},
    {"kel_Package", Keeping::byId, "package", "Col_Name"},
    {"Kel_Board", Keeping::byId, "notice", "Col_Subject"},
    {"Kel_Board_Attach", Keeping::byContent, "attachment of a notice", "Col_FileName"},
    {"Kel_Board_Revert", Keeping::byId, "reply to a notice"},
    {"Kel_Board_Visiter", Keeping::byId, "reader of a notice"},
};

/// Names are plain ASCII.
bool SameName(std::string_view a, std::string_view b) { return platform::UpperUtf8(a) == platform::UpperUtf8(b); }

/// Columns that hold the type and the id of an item.
struct ItemColumns {
    std::string_view type;
    std::string_view id;
};

constexpr std::array<ItemColumns, 3> kItemColumns = {
    {{"Col_QvItemType", "Col_QvItemID"}, {"Col_DQvItemType", "Col_DQvItemID"}, {"Col_QvItem_Type", "Col_QvItem_ID"}}};

} // namespace

const AuditedTable* FindAuditedTable(std::string_view name)
{
    const auto* found = std::ranges::find_if(kTables, [name](const AuditedTable& t) { return SameName(t.name, name); });
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
        CString text;
        const bool isThere = rows.GetValue(column++, text, true);
        row.emplace_back(name, isThere ? std::optional<std::string>(text.View()) : std::nullopt);
    }
    return row;
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
           SameName(ValueIn(row, "Col_Name").value_or(""), "EncryptKey");
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
    for (const ItemColumns& columns : kItemColumns) {
        const auto type = ValueIn(row, columns.type);
        const auto id = ValueIn(row, columns.id);
        if (type && id) {
            items.push_back(*type + ":" + *id);
        }
    }
    return items;
}

std::string Packed(const AuditedRow& row)
{
    nlohmann::ordered_json object = nlohmann::ordered_json::object();
    for (const auto& [column, value] : row) {
        if (!value) {
            object[column] = nullptr;
        } else if (!platform::IsValidUtf8(*value)) {
            // JSON has no bytes. As numbers, so that the row can be put back as it was.
            object[column] = std::vector<unsigned char>(value->begin(), value->end());
        } else if (!value->empty()) {
            object[column] = *value;
        }
    }
    return object.dump();
}

AuditedRow Unpacked(std::string_view text)
{
    AuditedRow row;
    try {
        const auto object = nlohmann::ordered_json::parse(text);
        for (const auto& [column, value] : object.items()) {
            if (value.is_null()) {
                row.emplace_back(column, std::nullopt);
            } else if (value.is_array()) {
                const auto bytes = value.get<std::vector<unsigned char>>();
                row.emplace_back(column, std::string(bytes.begin(), bytes.end()));
            } else {
                row.emplace_back(column, value.get<std::string>());
            }
        }
    } catch (const nlohmann::json::exception&) {
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
