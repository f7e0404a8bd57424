#include "bench/ByHand.h"
#include "bench/Cases.h"
#include "bench/Lists.h"
#include "bench/peers/Peer.h"

#include <sqlite3.h>

#include <map>

namespace bench {

namespace {

struct Finalize {
    void operator()(sqlite3_stmt* statement) const noexcept { sqlite3_finalize(statement); }
};
using Statement = std::unique_ptr<sqlite3_stmt, Finalize>;

bool Step(sqlite3_stmt* statement)
{
    const int code = sqlite3_step(statement);
    if (code != SQLITE_ROW && code != SQLITE_DONE) {
        throw std::runtime_error(sqlite3_errmsg(sqlite3_db_handle(statement)));
    }
    return code == SQLITE_ROW;
}

std::string TextAt(sqlite3_stmt* row, int column)
{
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(row, column));
    return text == nullptr ? std::string()
                           : std::string(text, static_cast<std::size_t>(sqlite3_column_bytes(row, column)));
}

unsigned NumberAt(sqlite3_stmt* row, int column) { return static_cast<unsigned>(sqlite3_column_int(row, column)); }

/// A statement in use; reset at the end, so that it holds no lock.
class Use {
public:
    explicit Use(const Statement& statement) : m_statement(statement.get()) {}
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;
    ~Use() { sqlite3_reset(m_statement); }

    // The text must last as long as this.
    void Bind(const std::string& text)
    {
        sqlite3_bind_text(m_statement, ++m_bound, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
    }
    void Bind(int number) { sqlite3_bind_int(m_statement, ++m_bound, number); }
    bool Next() { return Step(m_statement); }
    [[nodiscard]] sqlite3_stmt* Row() const { return m_statement; }

private:
    sqlite3_stmt* m_statement;
    int m_bound = 0;
};

class Kept final : public Peer {
public:
    explicit Kept(const PeerData& data)
        : m_data(data),
          m_db(data.path),
          m_find(m_db.PrepareFor(bound::kFind)),
          m_taken(m_db.PrepareFor(bound::kTaken)),
          m_insert(m_db.PrepareFor(BoundInsert().c_str())),
          m_roles(m_db.PrepareFor(bound::kRoles)),
          m_everyone(m_db.PrepareFor(bound::kEveryone)),
          m_group(m_db.PrepareFor(bound::kGroup)),
          m_three(m_db.PrepareFor(bound::kThree)),
          m_nine(m_db.PrepareFor(bound::kNine))
    {
    }

    void FindUser(std::size_t call) override
    {
        Use find(m_find);
        find.Bind(m_data.LoginName(call));
        Require(find.Next() && sqlite3_column_int(find.Row(), 0) > 0);
    }
    void FindTaken(std::size_t call) override
    {
        const std::string capitals = Capitals(m_data.LoginName(call));
        Use taken(m_taken);
        taken.Bind(capitals);
        Require(taken.Next());
    }
    void SaveUsers() override
    {
        m_db.Run("BEGIN IMMEDIATE");
        for (const Record& user : m_data.newUsers) {
            const std::string birthday = DateText(user.birthday).data();
            Use insert(m_insert);
            VisitValues(user, birthday, [&insert](const auto& value) { insert.Bind(value); });
            insert.Next();
        }
        m_db.Run("ROLLBACK");
    }
    void FindRight(std::size_t call) override
    {
        const std::vector<int> roles = RolesOf(m_data.rights.UserOf(call));
        Statement& statement = m_powers[roles.size()];
        if (statement == nullptr) {
            statement.reset(m_db.PrepareFor(bound::Powers(roles.size()).c_str()));
        }
        const std::string genre = RoleRights::kGenre;
        const std::string function = RoleRights::FunctionOf(call);
        Use powers(statement);
        powers.Bind(genre);
        powers.Bind(function);
        for (const int role : roles) {
            powers.Bind(role);
        }
        bool has = false;
        while (!has && powers.Next()) {
            has = (NumberAt(powers.Row(), 0) & kBitOfNone) != 0;
        }
        Require(!has);
    }
    void LoadGroup(std::size_t call) override
    {
        Use group(m_group);
        group.Bind(m_data.tree.SmallGroup(call));
        std::vector<std::unique_ptr<Record>> users;
        while (group.Next()) {
            auto user = std::make_unique<Record>();
            user->id = sqlite3_column_int(group.Row(), 0);
            user->loginName = TextAt(group.Row(), 1);
            user->name = TextAt(group.Row(), 2);
            user->sex = sqlite3_column_int(group.Row(), 3);
            user->mobile = TextAt(group.Row(), 4);
            user->eMail = TextAt(group.Row(), 5);
            user->deptInfo = TextAt(group.Row(), 6);
            user->jobTitle = TextAt(group.Row(), 7);
            user->disabled = sqlite3_column_int(group.Row(), 8) != 0;
            users.push_back(std::move(user));
        }
        Require(!users.empty());
    }
    void ListThree() override
    {
        Use list(m_three);
        Columns columns;
        while (list.Next()) {
            AddThree(columns, list.Row());
        }
        RequireCount(columns.names.size(), PeerData::kUsers);
    }
    void ListNine() override
    {
        Use list(m_nine);
        Columns columns;
        while (list.Next()) {
            AddThree(columns, list.Row());
            columns.sexes.push_back(NumberAt(list.Row(), 3));
            columns.mobiles.push_back(TextAt(list.Row(), 4));
            columns.eMails.push_back(TextAt(list.Row(), 5));
            columns.deptInfos.push_back(TextAt(list.Row(), 6));
            columns.jobTitles.push_back(TextAt(list.Row(), 7));
            columns.disabled.push_back(NumberAt(list.Row(), 8));
        }
        RequireCount(columns.disabled.size(), PeerData::kUsers);
    }

private:
    static void AddThree(Columns& columns, sqlite3_stmt* row)
    {
        columns.ids.push_back(NumberAt(row, 0));
        columns.loginNames.push_back(TextAt(row, 1));
        columns.names.push_back(TextAt(row, 2));
    }

    std::vector<int> RolesOf(int user)
    {
        std::vector<int> ids;
        Use roles(m_roles);
        roles.Bind(user);
        while (roles.Next()) {
            ids.push_back(sqlite3_column_int(roles.Row(), 0));
        }
        Use everyone(m_everyone);
        ids.push_back(everyone.Next() ? sqlite3_column_int(everyone.Row(), 0) : 0);
        return ids;
    }

    const PeerData& m_data;
    ByHand m_db; // the connection alone
    Statement m_find;
    Statement m_taken;
    Statement m_insert;
    Statement m_roles;
    Statement m_everyone;
    Statement m_group;
    Statement m_three;
    Statement m_nine;
    std::map<std::size_t, Statement> m_powers; // by the number of roles
};

} // namespace

std::unique_ptr<Peer> KeptPeer(const PeerData& data) { return std::make_unique<Kept>(data); }

std::string bound::Powers(std::size_t roles)
{
    std::string sql = "SELECT Col_Power FROM qv_ItemAce WHERE Col_FunGenre = ? AND Col_FunName = ? AND ( ";
    for (std::size_t i = 0; i < roles; ++i) {
        sql += i == 0 ? "" : " OR ";
        sql += "( Col_QvItemID = ? AND Col_QvItemType = 3 )";
    }
    return sql + " )";
}

} // namespace bench
