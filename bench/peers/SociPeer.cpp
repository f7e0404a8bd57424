#include "bench/ByHand.h"
#include "bench/Cases.h"
#include "bench/Lists.h"
#include "bench/peers/Peer.h"
#include "bench/peers/SociLists.h"

#include <soci/soci.h>
#include <soci/sqlite3/soci-sqlite3.h>

namespace bench {

namespace {

using soci::into;
using soci::use;

class Soci final : public Peer {
public:
    explicit Soci(const PeerData& data) : m_data(data), m_sql(soci::sqlite3, "dbname=" + data.path)
    {
        // SOCI's library keeps to itself what a checked conversion needs to know of the type.
        // NOLINTNEXTLINE(cppcoreguidelines-pro-type-static-cast-downcast)
        RegisterUpper(static_cast<soci::sqlite3_session_backend&>(*m_sql.get_backend()).conn_);
    }

    void FindUser(std::size_t call) override
    {
        int id = 0;
        m_sql << bound::kFind, into(id), use(m_data.LoginName(call));
        Require(m_sql.got_data() && id > 0);
    }
    void FindTaken(std::size_t call) override
    {
        const std::string capitals = Capitals(m_data.LoginName(call));
        std::string found;
        m_sql << bound::kTaken, into(found), use(capitals);
        Require(m_sql.got_data());
    }
    void SaveUsers() override
    {
        const soci::transaction transaction(m_sql); // rolled back at its end
        for (const Record& user : m_data.newUsers) {
            const std::string birthday = DateText(user.birthday).data();
            soci::statement insert(m_sql);
            VisitValues(user, birthday, [&insert](const auto& value) { insert.exchange(use(value)); });
            insert.alloc();
            insert.prepare(m_insert);
            insert.define_and_bind();
            insert.execute(true);
        }
    }
    void FindRight(std::size_t call) override
    {
        const std::vector<int> roles = RolesOf(m_data.rights.UserOf(call));
        const std::string genre = RoleRights::kGenre;
        const std::string function = RoleRights::FunctionOf(call);
        int power = 0;
        soci::statement query(m_sql);
        query.exchange(into(power));
        query.exchange(use(genre));
        query.exchange(use(function));
        for (const int& role : roles) {
            query.exchange(use(role));
        }
        query.alloc();
        query.prepare(bound::Powers(roles.size()));
        query.define_and_bind();
        query.execute();
        bool has = false;
        while (!has && query.fetch()) {
            has = (static_cast<unsigned>(power) & kBitOfNone) != 0;
        }
        Require(!has);
    }
    void LoadGroup(std::size_t call) override
    {
        const int group = m_data.tree.SmallGroup(call);
        Record row;
        int disabled = 0;
        soci::statement query =
            (m_sql.prepare << bound::kGroup, into(row.id), into(row.loginName), into(row.name), into(row.sex),
             into(row.mobile), into(row.eMail), into(row.deptInfo), into(row.jobTitle), into(disabled), use(group));
        query.execute();
        std::vector<std::unique_ptr<Record>> users;
        while (query.fetch()) {
            row.disabled = disabled != 0;
            users.push_back(std::make_unique<Record>(row));
        }
        Require(!users.empty());
    }
    void ListThree() override { ListThreeBySoci(m_sql, PeerData::kUsers); }
    void ListNine() override { ListNineBySoci(m_sql, PeerData::kUsers); }

private:
    std::vector<int> RolesOf(int user)
    {
        std::vector<int> ids;
        int id = 0;
        std::string name;
        std::string description;
        soci::indicator hasDescription = soci::i_null;
        soci::statement roles =
            (m_sql.prepare << bound::kRoles, into(id), into(name), into(description, hasDescription), use(user));
        roles.execute();
        while (roles.fetch()) {
            ids.push_back(id);
        }
        id = 0;
        m_sql << bound::kEveryone, into(id);
        ids.push_back(id);
        return ids;
    }

    const PeerData& m_data;
    soci::session m_sql;
    std::string m_insert = BoundInsert();
};

} // namespace

std::unique_ptr<Peer> SociPeer(const PeerData& data) { return std::make_unique<Soci>(data); }

} // namespace bench
