#include "bench/ByHand.h"
#include "bench/Cases.h"
#include "bench/Lists.h"
#include "bench/peers/Peer.h"

#include <SQLiteCpp/SQLiteCpp.h>

namespace bench {

namespace {

class SqliteCpp final : public Peer {
public:
    explicit SqliteCpp(const PeerData& data)
        : m_data(data), m_db(data.path, SQLite::OPEN_READWRITE | SQLite::OPEN_NOMUTEX)
    {
        RegisterUpper(m_db.getHandle());
    }

    void FindUser(std::size_t call) override
    {
        SQLite::Statement query(m_db, bound::kFind);
        query.bind(1, m_data.LoginName(call));
        Require(query.executeStep() && query.getColumn(0).getInt() > 0);
    }
    void FindTaken(std::size_t call) override
    {
        SQLite::Statement query(m_db, bound::kTaken);
        query.bind(1, Capitals(m_data.LoginName(call)));
        Require(query.executeStep());
    }
    void SaveUsers() override
    {
        const SQLite::Transaction transaction(m_db); // rolled back at its end
        for (const Record& user : m_data.newUsers) {
            SQLite::Statement insert(m_db, m_insert);
            int place = 0;
            VisitValues(user, DateText(user.birthday).data(), [&](const auto& value) { insert.bind(++place, value); });
            insert.exec();
        }
    }
    void FindRight(std::size_t call) override
    {
        const std::vector<int> roles = RolesOf(m_data.rights.UserOf(call));
        SQLite::Statement query(m_db, bound::Powers(roles.size()));
        query.bind(1, RoleRights::kGenre);
        query.bind(2, RoleRights::FunctionOf(call));
        int place = 2;
        for (const int role : roles) {
            query.bind(++place, role);
        }
        bool has = false;
        while (!has && query.executeStep()) {
            has = (query.getColumn(0).getUInt() & kBitOfNone) != 0;
        }
        Require(!has);
    }
    void LoadGroup(std::size_t call) override
    {
        SQLite::Statement query(m_db, bound::kGroup);
        query.bind(1, m_data.tree.SmallGroup(call));
        std::vector<std::unique_ptr<Record>> users;
        while (query.executeStep()) {
            auto user = std::make_unique<Record>();
            user->id = query.getColumn(0).getInt();
            user->loginName = query.getColumn(1).getString();
            user->name = query.getColumn(2).getString();
            user->sex = query.getColumn(3).getInt();
            user->mobile = query.getColumn(4).getString();
            user->eMail = query.getColumn(5).getString();
            user->deptInfo = query.getColumn(6).getString();
            user->jobTitle = query.getColumn(7).getString();
            user->disabled = query.getColumn(8).getInt() != 0;
            users.push_back(std::move(user));
        }
        Require(!users.empty());
    }
    void ListThree() override
    {
        SQLite::Statement query(m_db, bound::kThree);
        Columns columns;
        while (query.executeStep()) {
            AddThree(columns, query);
        }
        RequireCount(columns.names.size(), PeerData::kUsers);
    }
    void ListNine() override
    {
        SQLite::Statement query(m_db, bound::kNine);
        Columns columns;
        while (query.executeStep()) {
            AddThree(columns, query);
            columns.sexes.push_back(query.getColumn(3).getUInt());
            columns.mobiles.push_back(query.getColumn(4).getString());
            columns.eMails.push_back(query.getColumn(5).getString());
            columns.deptInfos.push_back(query.getColumn(6).getString());
            columns.jobTitles.push_back(query.getColumn(7).getString());
            columns.disabled.push_back(query.getColumn(8).getUInt());
        }
        RequireCount(columns.disabled.size(), PeerData::kUsers);
    }

private:
    static void AddThree(Columns& columns, SQLite::Statement& row)
    {
        columns.ids.push_back(row.getColumn(0).getUInt());
        columns.loginNames.push_back(row.getColumn(1).getString());
        columns.names.push_back(row.getColumn(2).getString());
    }

    std::vector<int> RolesOf(int user)
    {
        std::vector<int> ids;
        SQLite::Statement roles(m_db, bound::kRoles);
        roles.bind(1, user);
        while (roles.executeStep()) {
            ids.push_back(roles.getColumn(0).getInt());
        }
        SQLite::Statement everyone(m_db, bound::kEveryone);
        ids.push_back(everyone.executeStep() ? everyone.getColumn(0).getInt() : 0);
        return ids;
    }

    const PeerData& m_data;
    SQLite::Database m_db;
    std::string m_insert = BoundInsert();
};

} // namespace

std::unique_ptr<Peer> SqliteCppPeer(const PeerData& data) { return std::make_unique<SqliteCpp>(data); }

} // namespace bench
