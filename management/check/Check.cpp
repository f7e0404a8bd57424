#include "management/check/Check.h"

#include "basefun/ItemTypes.h"
#include "dbaccess/CARecordset.h"
#include "management/Escape.h"
#include "management/Names.h"
#include "management/Query.h"
#include "management/References.h"
#include "management/Text.h"
#include "management/audit/AuditedRow.h"
#include "management/documents/Documents.h"
#include "management/organisation/Organisation.h"
#include "management/roles/Roles.h"
#include "management/users/UserDepartment.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <unicode/normalizer2.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <unordered_map>

namespace management::check {

namespace {

constexpr std::array<std::pair<int, std::string_view>, 4> kItemTables = {
    {{kItemTypeUser, "qv_User"}, {kItemTypeGroup, "qv_Group"}, {kItemTypeRole, "qv_Role"}, {kItemTypeView, "qv_View"}}};

constexpr const char* kOrphanRepair = Translatable("--fix deletes them");

/// Rows of a table that name an item which is not there.
std::string OrphanCondition(const ReferenceKind& kind)
{
    std::vector<std::string> conditions;
    for (const auto& [type, id] : kind.sides) {
        for (const auto& [number, table] : kItemTables) {
            conditions.push_back(fmt::format("({} = {} AND {} > 0 AND {} NOT IN (SELECT i.Col_ID FROM {} i))", type,
                                             number, id, id, table));
        }
    }
    return fmt::format("{}", fmt::join(conditions, " OR "));
}

/// Collects what was found.
class Finder {
public:
    explicit Finder(CAConnect& conn) : m_conn(conn), m_organisation(conn) {}

    std::vector<Problem> Find(const std::function<void(long done, long total)>& progress)
    {
        const std::vector<std::function<void()>> steps = Steps();
        long done = 0;
        for (const auto& step : steps) {
            if (progress) {
                progress(done, static_cast<long>(steps.size()));
            }
            step();
            ++done;
        }
        return std::move(m_problems);
    }

private:
    /// What is done one after the other.
    std::vector<std::function<void()>> Steps()
    {
        std::vector<std::function<void()>> steps;
        for (const ReferenceKind& kind : ReferenceKinds()) {
            steps.emplace_back([this, &kind] { FindOrphansOf(kind); });
        }
        for (const auto step :
             {&Finder::FindOtherOrphans, &Finder::FindUnknownTypes, &Finder::FindDoubledLinks, &Finder::FindPlaces,
              &Finder::FindUsers, &Finder::FindDepartments, &Finder::FindDefaultRoles}) {
            steps.emplace_back([this, step] { (this->*step)(); });
        }
        return steps;
    }

    void Add(Problem problem)
    {
        if (problem.count != 0) {
            m_problems.push_back(std::move(problem));
        }
    }

    [[nodiscard]] std::int64_t Count(std::string_view table, const std::string& condition)
    {
        return Number(m_conn, fmt::format("SELECT COUNT(*) FROM {} WHERE {}", table, condition));
    }

    /// The first row that fulfils a condition, as sentences show it.
    std::string Example(std::string_view table, const std::string& condition)
    {
        const audit::AuditedTable& audited = *audit::FindAuditedTable(table);
        std::string example;
        EachRow(
            m_conn, fmt::format("SELECT {} FROM {} WHERE {}", audit::ColumnList(audited), table, condition),
            [&](CARecordset& row) {
                for (const auto& [column, value] : audit::ReadRow(row, audited)) {
                    if (value && !value->empty() && *value != "0") {
                        example +=
                            fmt::format("{}{} {}", example.empty() ? "" : ", ", column.substr(4), Visible(*value));
                    }
                }
            },
            1);
        return example;
    }

    void AddRows(std::string_view name, Sentence sentence, std::string_view table, const std::string& condition,
                 Sentence repair, bool isMended)
    {
        const std::int64_t count = Count(table, condition);
        if (count != 0) {
            Add({name, std::move(sentence), count, Example(table, condition), std::move(repair),
                 isMended ? std::vector{fmt::format("DELETE FROM {} WHERE {}", table, condition)}
                          : std::vector<std::string>()});
        }
    }

    void FindOrphansOf(const ReferenceKind& kind)
    {
        AddRows("orphans", FillPattern("{} of or to something that is gone, in {}", Sentence(kind.nouns), kind.table),
                kind.table, OrphanCondition(kind), kOrphanRepair, true);
    }

    void FindOtherOrphans()
    {
        AddRows("orphans", Translatable("assignments of backup plans that are gone"), "Tab_Doc_Backup_Rel",
                "Col_PlanID NOT IN (SELECT p.Col_ID FROM Tab_Doc_Backup_Plan p)", kOrphanRepair, true);
        const std::string gone = fmt::format(
            "(Col_S_ClassID = {} AND Col_S_ObjID NOT IN (SELECT f.Col_ID FROM Tab_Doc_VFolder f))", kFolderClass);
        for (const auto& [table, parents] :
             {std::pair("Tab_Doc_Root_Link", "Tab_Doc_Root"), std::pair("Tab_Doc_VFolder_Link", "Tab_Doc_VFolder")}) {
            AddRows(
                "orphans",
                FillPattern("{} of or to something that is gone, in {}", Sentence(Translatable("folder links")), table),
                table, fmt::format("Col_P_ObjID NOT IN (SELECT p.Col_ID FROM {} p) OR {}", parents, gone),
                kOrphanRepair, true);
        }
    }

    void FindUnknownTypes()
    {
        AddRows("unknown_types", Translatable("links of items of a type that this program does not know"),
                "qv_Relation", "Col_QvItemType NOT IN (1, 2, 3, 4) OR Col_DQvItemType NOT IN (1, 2, 3, 4)",
                Translatable("look what other program wrote them"), false);
    }

    // All equal rows but one go. A statement cannot spare one of them, so all go, and one comes back.
    void FindDoubledLinks()
    {
        const audit::AuditedTable& table = *audit::FindAuditedTable("qv_Relation");
        const std::string columns = audit::ColumnList(table);
        Problem problem{.name = "doubled_links",
                        .sentence = Translatable("links that are there more than once"),
                        .repair = Translatable("--fix leaves one of each")};
        EachRow(m_conn, fmt::format("SELECT {0}, COUNT(*) FROM qv_Relation GROUP BY {0} HAVING COUNT(*) > 1", columns),
                [&](CARecordset& row) {
                    std::vector<std::string> values;
                    std::vector<std::string> conditions;
                    for (const auto& [column, value] : audit::ReadRow(row, table)) {
                        values.push_back(value.value_or("0"));
                        conditions.push_back(fmt::format("{} = {}", column, values.back()));
                    }
                    ++problem.count;
                    problem.example = problem.example.IsEmpty()
                                          ? Sentence(fmt::format("{}", fmt::join(conditions, ", ")))
                                          : problem.example;
                    problem.statements.push_back(
                        fmt::format("DELETE FROM qv_Relation WHERE {}", fmt::join(conditions, " AND ")));
                    problem.statements.push_back(
                        fmt::format("INSERT INTO qv_Relation ({}) VALUES ({})", columns, fmt::join(values, ", ")));
                });
        Add(std::move(problem));
    }

    void FindPlaces()
    {
        FindLostGroups();
        FindCycles();
        FindDoubledGroups();
    }

    void FindLostGroups()
    {
        Problem lost{.name = "groups_without_view",
                     .sentence = Translatable("groups below no view, which nobody sees"),
                     .repair =
                         Translatable("`qvadmin group move` gives them a place, `qvadmin group delete` removes them")};
        for (const Node& node : m_organisation.Nodes()) {
            if (!node.isReachable) {
                ++lost.count;
                lost.example = lost.example.IsEmpty() ? m_organisation.Named(node.key) : lost.example;
            }
        }
        Add(std::move(lost));
    }

    /// The first one says enough.
    void FindCycles()
    {
        Problem cycles{.name = "cycles",
                       .sentence = Translatable("groups that are below themselves"),
                       .repair = Translatable("`qvadmin group move` or `qvadmin member remove` ends the cycle")};
        for (const Node& node : m_organisation.Nodes()) {
            const bool mayBegin = cycles.count == 0 && (node.parents.empty() || !node.isReachable);
            const std::vector<ItemKey> cycle = mayBegin ? m_organisation.FindCycle(node.key) : std::vector<ItemKey>();
            if (!cycle.empty()) {
                cycles.count = 1;
                cycles.example = m_organisation.CycleText(cycle);
            }
        }
        Add(std::move(cycles));
    }

    void FindDoubledGroups()
    {
        Problem doubled{.name = "doubled_names",
                        .sentence = Translatable("groups with the same name in one place"),
                        .repair = "`qvadmin group rename`"};
        std::map<std::pair<ItemKey, std::string>, int> names;
        for (const Node& node : m_organisation.Nodes()) {
            for (const std::size_t child : node.children) {
                const Node& group = m_organisation.Nodes()[child];
                if (++names[{node.key, group.nameKey}] == 2) {
                    ++doubled.count;
                    doubled.example = m_organisation.Named(group.key);
                }
            }
        }
        Add(std::move(doubled));
    }

    /// The text by which names look alike: without case, composed, without characters that show nothing.
    static std::string LookOf(const std::string& name)
    {
        UErrorCode error = U_ZERO_ERROR;
        const icu::Normalizer2* folding = icu::Normalizer2::getNFKCCasefoldInstance(error);
        if (U_FAILURE(error) != 0) {
            return NameKey(name);
        }
        std::string look;
        folding->normalize(icu::UnicodeString::fromUTF8(name), error).toUTF8String(look);
        return U_FAILURE(error) != 0 ? NameKey(name) : look;
    }

    void FindUsers()
    {
        Problem doubled{.name = "doubled_logins",
                        .sentence = Translatable("login names that several users have"),
                        .repair = "`qvadmin user rename id:N`"};
        Problem alike{.name = "alike_logins",
                      .sentence = Translatable("login names that look like another one and differ from it"),
                      .repair = Translatable("`qvadmin user rename`, where one of them is meant to deceive")};
        std::unordered_map<std::string, std::string> seen;
        EachRow(m_conn, "SELECT Col_LoginName FROM qv_User", [&](CARecordset& row) {
            const std::string login = TextIn(row, 1);
            const auto [known, isNew] = seen.emplace(LookOf(login), login);
            if (!isNew) {
                Problem& problem = SameName(known->second, login) ? doubled : alike;
                ++problem.count;
                problem.example = FillPattern("{} and {}", Quoted(known->second), Quoted(login));
            }
        });
        Add(std::move(doubled));
        Add(std::move(alike));
        AddUsers("plain_passwords", Translatable("users whose password is stored as plain text"),
                 std::string(kHasPlainPassword), "`qvadmin user password set`");
        AddUsers("no_password", Translatable("users without a password who are not locked"),
                 std::string(kHasNoPassword), Translatable("`qvadmin user password set`, or `qvadmin user lock`"));
    }

    void AddUsers(std::string_view name, Sentence sentence, const std::string& condition, Sentence repair,
                  std::vector<std::string> statements = {})
    {
        std::string example;
        const std::int64_t count = Count("qv_User", condition);
        EachRow(
            m_conn, "SELECT Col_LoginName FROM qv_User WHERE " + condition,
            [&example](CARecordset& row) { example = Visible(TextIn(row, 1)); }, 1);
        Add({name, std::move(sentence), count, std::move(example), std::move(repair), std::move(statements)});
    }

    void FindDepartments()
    {
        const std::string gone = "Col_DeptID <> 0 AND Col_DeptID NOT IN (SELECT g.Col_ID FROM qv_Group g)";
        AddUsers("lost_departments", Translatable("users whose department is a group that is gone"), gone,
                 Translatable("--fix takes the department away"),
                 {"UPDATE qv_User SET Col_DeptID = 0, Col_DeptInfo = '' WHERE " + gone});
        FindStaleDepartments();
    }

    void FindStaleDepartments()
    {
        Problem stale{
            .name = "stale_departments",
            .sentence = Translatable("users whose department's text is not the path of the group that it names by id"),
            .repair = Translatable("--fix writes the path")};
        struct Department {
            int id = 0;
            std::string text;
            int users = 0;
        };
        const std::vector<Department> departments = ReadRecords(
            m_conn,
            "SELECT Col_DeptID, Col_DeptInfo, COUNT(*) FROM qv_User WHERE Col_DeptID <> 0 GROUP BY Col_DeptID, "
            "Col_DeptInfo",
            &Department::id, &Department::text, &Department::users);
        for (const Department& department : departments) {
            const ItemKey group{kItemTypeGroup, department.id};
            const std::string path = m_organisation.Find(group) == nullptr ? "" : m_organisation.PathOf(group);
            const std::size_t view = path.find('/', 1);
            if (!path.starts_with('/') || view == std::string::npos ||
                std::ranges::count(GroupsOfText(m_organisation, department.text), group) != 0) {
                continue;
            }
            const std::string text = path.substr(view + 1);
            stale.count += department.users;
            stale.example = FillPattern("{} in place of {}", Quoted(department.text), Quoted(text));
            stale.statements.push_back(
                fmt::format("UPDATE qv_User SET Col_DeptInfo = {} WHERE Col_DeptID = {} AND Col_DeptInfo = {}",
                            Literal(m_conn, text), department.id, Literal(m_conn, department.text)));
        }
        Add(std::move(stale));
    }

    void FindDefaultRoles()
    {
        Problem several{.name = "default_roles",
                        .sentence =
                            Translatable("roles that have the name of the role of every user, beside the first"),
                        .repair = Translatable("`qvadmin role set id:N --name`, or `qvadmin role delete id:N`")};
        bool isFirst = true;
        for (const ListedRole& role : Roles(m_conn).List(RoleScope())) {
            if (SameName(role.name, kDefaultRole) && !std::exchange(isFirst, false)) {
                ++several.count;
                several.example = FillPattern("role {} (id {})", Visible(role.name), role.id);
            }
        }
        Add(std::move(several));
    }

    CAConnect& m_conn;
    Organisation m_organisation;
    std::vector<Problem> m_problems;
};

} // namespace

std::vector<Problem> FindProblems(CAConnect& conn, const std::function<void(long done, long total)>& progress)
{
    return Finder(conn).Find(progress);
}

} // namespace management::check
