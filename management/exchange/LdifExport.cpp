#include "basefun/ItemTypes.h"
#include "management/Query.h"
#include "management/exchange/DirectoryPart.h"
#include "management/exchange/Export.h"
#include "management/exchange/ExportRun.h"
#include "management/exchange/ItemNames.h"
#include "management/exchange/LdifReader.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

namespace management {

namespace {

/// Columns of users, and the attributes that have them.
constexpr std::pair<std::string_view, std::string_view> kAttributes[] = {
    {"Col_EMail", "mail"},
    {"Col_Mobile", "mobile"},
    {"Col_o_JobTitle", "title"},
    {"Col_o_CompanyName", "o"},
    {"Col_o_Phone", "telephoneNumber"},
    {"Col_o_Fax", "facsimileTelephoneNumber"},
    {"Col_o_Address", "street"},
    {"Col_o_PostCode", "postalCode"},
    {"Col_h_Phone", "homePhone"},
    {"Col_h_Address", "homePostalAddress"},
    {"Col_Description", "description"},
};

/// Writes entries of one directory.
class LdifWriter {
public:
    LdifWriter(CAConnect& conn, const ExportOptions& options, const std::function<bool(const std::string&)>& take)
        : m_conn(conn), m_options(options), m_take(take), m_names(conn)
    {
        if (options.in) {
            m_part.emplace(conn, *options.in);
        }
    }

    /// @return false when it was stopped.
    bool Run() { return WriteUnits() && WritePeople() && WriteRoles(); }

private:
    /// What ItemNames calls a group, or a view with the slash of a path.
    [[nodiscard]] std::optional<std::string> PathOf(MemberKind kind, int id) const
    {
        const std::string* name = m_names.NameOf(kind, id);
        if (name == nullptr) {
            return std::nullopt;
        }
        return kind == MemberKind::group ? *name : "/" + *name;
    }

    /// The distinguished name of a group or view; nothing for one of a single person, or that is nowhere.
    [[nodiscard]] std::optional<std::string> DnOf(MemberKind kind, int id) const
    {
        std::string dn;
        for (std::optional<std::string> path = PathOf(kind, id); path;) {
            const bool isView = path->starts_with('/') && path->find('/', 1) == std::string::npos;
            const ItemName parsed =
                isView ? ParseItemName(MemberKind::view, path->substr(1)) : ParseItemName(MemberKind::group, *path);
            if (!parsed.scope.empty() || (!parsed.parent && !path->starts_with('/'))) {
                return std::nullopt;
            }
            dn += fmt::format("{}ou={}", dn.empty() ? "" : ",", DnEscaped(parsed.name));
            path = parsed.parent;
        }
        return dn.empty() ? std::nullopt : std::optional(WithBase(dn));
    }

    [[nodiscard]] std::string WithBase(const std::string& dn) const
    {
        return m_options.base ? dn + "," + *m_options.base : dn;
    }

    [[nodiscard]] std::string DnOfUser(const std::string& login, int department) const
    {
        const std::optional<std::string> unit = DnOf(MemberKind::group, department);
        const std::string name = "uid=" + DnEscaped(login);
        return unit ? name + "," + *unit : WithBase(name);
    }

    bool WriteUnits()
    {
        for (const auto& [table, kind, type] : {std::tuple("qv_View", MemberKind::view, kItemTypeView),
                                                std::tuple("qv_Group", MemberKind::group, kItemTypeGroup)}) {
            std::vector<std::pair<std::string, std::string>> units; // those above come first
            EachRow(m_conn, fmt::format("SELECT Col_ID, Col_Name, Col_Description FROM {} ORDER BY Col_ID", table),
                    [&, unitKind = kind, unitType = type](CARecordset& row) {
                        const int id = NumberIn(row, 1);
                        const std::optional<std::string> dn = DnOf(unitKind, id);
                        if (!dn || (m_part && !m_part->Has({unitType, id}))) {
                            return;
                        }
                        std::string entry = LdifLine("dn", *dn) + LdifLine("objectClass", "organizationalUnit") +
                                            LdifLine("ou", TextIn(row, 2));
                        const std::string description = TextIn(row, 3);
                        entry += description.empty() ? "" : LdifLine("description", description);
                        units.emplace_back(*dn, std::move(entry));
                    });
            std::ranges::stable_sort(units, {}, [](const auto& unit) { return ParseDn(unit.first).size(); });
            if (!std::ranges::all_of(units, [this](const auto& unit) { return m_take(unit.second); })) {
                return false;
            }
        }
        return true;
    }

    bool WritePeople()
    {
        std::string columns;
        for (const auto& [column, attribute] : kAttributes) {
            columns += fmt::format(", {}", column);
        }
        bool goesOn = true;
        EachRow(
            m_conn,
            fmt::format("SELECT Col_ID, Col_LoginName, Col_Name, Col_DeptID{} FROM qv_User ORDER BY Col_ID", columns),
            [&](CARecordset& row) {
                if (!m_part || m_part->Has({kItemTypeUser, NumberIn(row, 1)})) {
                    goesOn = m_take(Person(row));
                }
                return goesOn;
            });
        return goesOn;
    }

    [[nodiscard]] std::string Person(CARecordset& row) const
    {
        const std::string login = TextIn(row, 2);
        const std::string name = TextIn(row, 3).empty() ? login : TextIn(row, 3);
        // The class cannot be without a surname.
        const std::size_t blank = name.find_last_of(' ');
        std::string entry =
            LdifLine("dn", DnOfUser(login, NumberIn(row, 4))) + LdifLine("objectClass", "inetOrgPerson") +
            LdifLine("uid", login) + LdifLine("cn", name) +
            LdifLine("sn", blank == std::string::npos || blank + 1 == name.size() ? name : name.substr(blank + 1));
        long column = 4;
        for (const auto& [stored, attribute] : kAttributes) {
            std::string value = TextIn(row, ++column);
            if (attribute == "homePostalAddress") {
                std::ranges::replace(value, '\n', '$');
            }
            entry += value.empty() ? "" : LdifLine(attribute, value);
        }
        return entry;
    }

    bool WriteRoles()
    {
        std::string entry;
        int role = 0;
        std::string last;
        bool goesOn = true;
        const auto flush = [&] {
            goesOn = entry.empty() || m_take(entry);
            entry.clear();
        };
        EachRow(
            m_conn,
            fmt::format("SELECT r.Col_ID, r.Col_Name, r.Col_Description, u.Col_ID, u.Col_LoginName, u.Col_DeptID FROM "
                        "qv_Relation l INNER JOIN qv_Role r ON r.Col_ID = l.Col_QvItemID INNER JOIN qv_User u ON "
                        "u.Col_ID = l.Col_DQvItemID WHERE l.Col_QvItemType = {} AND l.Col_DQvItemType = {} ORDER BY "
                        "r.Col_ID, u.Col_ID",
                        kItemTypeRole, kItemTypeUser),
            [&](CARecordset& row) {
                if (m_part && !m_part->Has({kItemTypeUser, NumberIn(row, 4)})) {
                    return true;
                }
                if (NumberIn(row, 1) != role) {
                    flush();
                    role = NumberIn(row, 1);
                    last.clear();
                    const std::string description = TextIn(row, 3);
                    entry = LdifLine("dn", WithBase("cn=" + DnEscaped(TextIn(row, 2)))) +
                            LdifLine("objectClass", "groupOfNames") + LdifLine("cn", TextIn(row, 2)) +
                            (description.empty() ? "" : LdifLine("description", description));
                }
                const std::string member = DnOfUser(TextIn(row, 5), NumberIn(row, 6));
                entry += member == std::exchange(last, member) ? "" : LdifLine("member", member);
                return goesOn;
            });
        if (goesOn) {
            flush();
        }
        return goesOn;
    }

    CAConnect& m_conn;
    const ExportOptions& m_options;
    const std::function<bool(const std::string&)>& m_take;
    ItemNames m_names;
    std::optional<DirectoryPart> m_part;
};

} // namespace

bool ExportLdif(Call& call, const ExportOptions& options, const std::function<void(const std::string&)>& take,
                ExportReport& report)
{
    if (options.base) {
        ParseDn(*options.base);
    }
    return AtOneMoment(call.Connection(), [&] {
        call.Front().ShowProgress(0, std::nullopt);
        const std::function<bool(const std::string&)> takeEntry = [&](const std::string& entry) {
            take("\n" + entry);
            return GoesOn(call, report);
        };
        return LdifWriter(call.Connection(), options, takeEntry).Run();
    });
}

} // namespace management
