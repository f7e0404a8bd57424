#include "bench/ByHand.h"
#include "bench/Cases.h"
#include "bench/Lists.h"
#include "bench/peers/Peer.h"

namespace bench {

namespace {

class Text final : public Peer {
public:
    explicit Text(const PeerData& data) : m_data(data), m_db(data.path) {}

    void FindUser(std::size_t call) override { Require(m_db.FindUser(m_data.LoginName(call)) > 0); }
    void FindTaken(std::size_t call) override { Require(m_db.UserExists(m_data.LoginName(call))); }
    void SaveUsers() override
    {
        m_db.Run("BEGIN IMMEDIATE");
        for (const Record& user : m_data.newUsers) {
            m_db.SaveUser(user);
        }
        m_db.Run("ROLLBACK");
    }
    void FindRight(std::size_t call) override
    {
        Require(!m_db.HasBit(m_data.rights.UserOf(call), RoleRights::kGenre, RoleRights::FunctionOf(call), kBitOfNone));
    }
    void LoadGroup(std::size_t call) override
    {
        std::vector<Record*> users;
        m_db.LoadGroupUsers(m_data.tree.SmallGroup(call), users);
        Require(!users.empty());
        for (const Record* user : users) {
            delete user;
        }
    }
    void ListThree() override
    {
        Columns columns;
        m_db.ListUsers(columns.ids, columns.loginNames, columns.names);
        RequireCount(columns.names.size(), PeerData::kUsers);
    }
    void ListNine() override
    {
        Columns columns;
        m_db.ListUsers(columns.ids, columns.loginNames, columns.names, columns.sexes, columns.mobiles, columns.eMails,
                       columns.deptInfos, columns.jobTitles, columns.disabled);
        RequireCount(columns.disabled.size(), PeerData::kUsers);
    }

private:
    const PeerData& m_data;
    ByHand m_db;
};

} // namespace

std::unique_ptr<Peer> TextPeer(const PeerData& data) { return std::make_unique<Text>(data); }

} // namespace bench
