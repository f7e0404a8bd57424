#include "bench/Cases.h"
#include "bench/Lists.h"
#include "bench/People.h"
#include "bench/peers/Peer.h"
#include "dbaccess/CAConnect.h"
#include "directory/HumanItem.h"

namespace bench {

namespace {

class Quorvel final : public Peer {
public:
    explicit Quorvel(const PeerData& data)
        : m_data(data), m_loginNames(data.loginNames.begin(), data.loginNames.end()), m_newUsers(data.newUsers.size())
    {
        for (std::size_t i = 0; i < m_newUsers.size(); ++i) {
            Fill(m_newUsers[i], data.newUsers[i]);
        }
        m_conn.Open(("sqlite:" + data.path).c_str());
    }

    void FindUser(std::size_t call) override
    {
        int id = 0;
        Require(CQVBaseFun::GetHMIDByLoginName(m_conn, LoginName(call), id) && id > 0);
    }
    void FindTaken(std::size_t call) override
    {
        bool isTaken = false;
        Require(CQVBaseFun::ExistLoginName(m_conn, LoginName(call), isTaken) && isTaken);
    }
    void SaveUsers() override
    {
        m_conn.BeginTrans();
        for (CHumanItem& user : m_newUsers) {
            Require(user.SaveData(m_conn) == 1);
        }
        m_conn.RollbackTrans();
    }
    void FindRight(std::size_t call) override
    {
        bool isAllowed = true;
        Require(CQVBaseFun::GetAfficheACE(m_conn, m_data.rights.UserOf(call), RoleRights::kGenre,
                                          RoleRights::FunctionOf(call).c_str(), isAllowed) &&
                !isAllowed);
    }
    void LoadGroup(std::size_t call) override
    {
        CObList users;
        Require(CQVBaseFun::LoadGroupUser(m_conn, m_data.tree.SmallGroup(call), users) && !users.IsEmpty());
        CQVBaseFun::DetachHumanList(users);
    }
    void ListThree() override { Lists().LoadThree(m_conn, PeerData::kUsers); }
    void ListNine() override { Lists().LoadNine(m_conn, PeerData::kUsers); }

private:
    [[nodiscard]] const CString& LoginName(std::size_t call) const { return m_loginNames[call % m_loginNames.size()]; }

    const PeerData& m_data;
    std::vector<CString> m_loginNames;
    std::vector<CHumanItem> m_newUsers;
    CAConnect m_conn;
};

} // namespace

std::unique_ptr<Peer> QuorvelPeer(const PeerData& data) { return std::make_unique<Quorvel>(data); }

} // namespace bench
