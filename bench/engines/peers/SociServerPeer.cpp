#include "bench/Cases.h"
#include "bench/Lists.h"
#include "bench/engines/peers/ServerPeer.h"
#include "bench/peers/Peer.h"
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
    void ListThree() override
    {
        Record row;
        soci::statement query = (m_sql.prepare << bound::kThree, into(row.id), into(row.loginName), into(row.name));
        query.execute();
        Columns columns;
        while (query.fetch()) {
            AddThree(columns, row);
        }
        RequireCount(columns.names.size(), ServerPeerData::kUsers);
    }
    void ListNine() override
    {
        Record row;
        int disabled = 0;
        soci::statement query =
            (m_sql.prepare << bound::kNine, into(row.id), into(row.loginName), into(row.name), into(row.sex),
             into(row.mobile), into(row.eMail), into(row.deptInfo), into(row.jobTitle), into(disabled));
        query.execute();
        Columns columns;
        while (query.fetch()) {
            AddThree(columns, row);
            columns.sexes.push_back(static_cast<unsigned>(row.sex));
            columns.mobiles.push_back(row.mobile);
            columns.eMails.push_back(row.eMail);
            columns.deptInfos.push_back(row.deptInfo);
            columns.jobTitles.push_back(row.jobTitle);
            columns.disabled.push_back(static_cast<unsigned>(disabled));
        }
        RequireCount(columns.disabled.size(), ServerPeerData::kUsers);
    }

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
    static void AddThree(Columns& columns, const Record& row)
    {
        columns.ids.push_back(static_cast<unsigned>(row.id));
        columns.loginNames.push_back(row.loginName);
        columns.names.push_back(row.name);
    }

    const ServerPeerData& m_data;
    soci::session m_sql;
    std::string m_find = Numbered(bound::kFind, ":v");
    std::string m_insert = Numbered(BoundInsert(), ":v");
};

} // namespace

std::unique_ptr<ServerPeer> SociServerPeer(const ServerPeerData& data) { return std::make_unique<Soci>(data); }

} // namespace bench
