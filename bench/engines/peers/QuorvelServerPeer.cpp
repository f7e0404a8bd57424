#include "bench/Cases.h"
#include "bench/Lists.h"
#include "bench/People.h"
#include "bench/engines/peers/ServerPeer.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "directory/HumanItem.h"
#include "tests/servers/Servers.h"

namespace bench {

namespace {

class Quorvel final : public ServerPeer {
public:
    explicit Quorvel(const ServerPeerData& data)
        : m_isPostgresql(data.engine == "postgresql"),
          m_loginNames(data.loginNames.begin(), data.loginNames.end()),
          m_newUsers(data.newUsers.size())
    {
        for (std::size_t i = 0; i < m_newUsers.size(); ++i) {
            Fill(m_newUsers[i], data.newUsers[i]);
        }
        m_conn.Open(servers::UrlOf(data.engine, data.database).c_str());
    }

    pid_t ServerProcess() override
    {
        if (!m_isPostgresql) {
            return MariadbProcess();
        }
        CARecordset rs;
        rs.Open("SELECT pg_backend_pid()", &m_conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable);
        return std::stoi(rs.GetValueToStr(1, true).GetString());
    }
    void FindUser(std::size_t call) override
    {
        int id = 0;
        Require(CQVBaseFun::GetHMIDByLoginName(m_conn, m_loginNames[call % m_loginNames.size()], id) && id > 0);
    }
    void SaveUsers() override
    {
        m_conn.BeginTrans();
        for (CHumanItem& user : m_newUsers) {
            Require(user.SaveData(m_conn) == 1);
        }
        m_conn.RollbackTrans();
    }
    void ListThree() override { Lists().LoadThree(m_conn, ServerPeerData::kUsers); }
    void ListNine() override { Lists().LoadNine(m_conn, ServerPeerData::kUsers); }

private:
    bool m_isPostgresql;
    std::vector<CString> m_loginNames;
    std::vector<CHumanItem> m_newUsers;
    CAConnect m_conn;
};

} // namespace

std::unique_ptr<ServerPeer> QuorvelServerPeer(const ServerPeerData& data) { return std::make_unique<Quorvel>(data); }

} // namespace bench
