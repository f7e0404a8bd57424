#include "bench/Cases.h"
#include "bench/Lists.h"
#include "bench/engines/peers/ServerPeer.h"
#include "bench/peers/Peer.h"
#include "bench/peers/SociLists.h"
#include "tests/servers/Servers.h"

#include <soci/mysql/soci-mysql.h>
#include <soci/postgresql/soci-postgresql.h>
#include <soci/soci.h>

namespace bench {

namespace {

using soci::into;
using soci::use;

soci::connection_parameters ParametersOf(const ServerPeerData& data)
{
    if (data.engine == "postgresql") {
        const servers::Postgresql server = servers::ThePostgresql();
        return {soci::postgresql,
                "host=" + server.socketFolder + " port=" + server.port + " user=qv dbname=" + data.database};
    }
    return {soci::mysql,
            "unix_socket=" + servers::TheMariadb().socket + " user=root charset=utf8mb4 db=" + data.database};
}

class Soci final : public ServerPeer {
public:
    explicit Soci(const ServerPeerData& data) : m_data(data), m_sql(ParametersOf(data)) {}

    pid_t ServerProcess() override
    {
        int process = 0;
        if (m_data.engine == "postgresql") {
            m_sql << "SELECT pg_backend_pid()", into(process);
        } else {
            process = MariadbProcess();
        }
        return process;
    }
    void FindUser(std::size_t call) override
    {
        int id = 0;
        m_sql << m_find, into(id), use(m_data.LoginName(call));
        Require(m_sql.got_data() && id > 0);
    }
    void SaveUsers() override
    {
        const soci::transaction transaction(m_sql); // rolled back at its end
        for (const Record& user : m_data.newUsers) {
            const std::string birthday = DateText(user.birthday).data();
            soci::statement insert(m_sql);
            std::vector<int> numbers; // use() keeps no copy
            numbers.reserve(kNumbersOfUser);
            VisitValues(user, birthday, [&insert, &numbers](const auto& value) { Bind(insert, value, numbers); });
            insert.alloc();
            insert.prepare(m_insert);
            insert.define_and_bind();
            insert.execute(true);
        }
    }
    void ListThree() override { ListThreeBySoci(m_sql, ServerPeerData::kUsers); }
    void ListNine() override { ListNineBySoci(m_sql, ServerPeerData::kUsers); }

private:
    static constexpr std::size_t kNumbersOfUser = 16;

    static void Bind(soci::statement& insert, const std::string& text, std::vector<int>& /*numbers*/)
    {
        insert.exchange(use(text));
    }
    static void Bind(soci::statement& insert, int number, std::vector<int>& numbers)
    {
        insert.exchange(use(numbers.emplace_back(number)));
    }

    const ServerPeerData& m_data;
    soci::session m_sql;
    std::string m_find = Numbered(bound::kFind, ":v");
    std::string m_insert = Numbered(BoundInsert(), ":v");
};

} // namespace

std::unique_ptr<ServerPeer> SociServerPeer(const ServerPeerData& data) { return std::make_unique<Soci>(data); }

} // namespace bench
