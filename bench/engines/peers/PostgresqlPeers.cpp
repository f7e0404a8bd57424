#include "bench/Cases.h"
#include "bench/Lists.h"
#include "bench/engines/peers/ServerPeer.h"
#include "bench/peers/Peer.h"
#include "tests/servers/Servers.h"

#include <libpq-fe.h>

#include <charconv>
#include <stdexcept>
#include <string_view>

namespace bench {

namespace {

struct Finish {
    void operator()(PGconn* db) const noexcept { PQfinish(db); }
};
struct Clear {
    void operator()(PGresult* result) const noexcept { PQclear(result); }
};
using Result = std::unique_ptr<PGresult, Clear>;

std::string_view TextAt(const Result& result, int row, int column)
{
    return {PQgetvalue(result.get(), row, column), static_cast<std::size_t>(PQgetlength(result.get(), row, column))};
}

unsigned NumberAt(const Result& result, int row, int column)
{
    const std::string_view digits = TextAt(result, row, column);
    unsigned number = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return number;
}

void TakeThree(Columns& columns, const Result& result, int row)
{
    columns.ids.push_back(NumberAt(result, row, 0));
    columns.loginNames.emplace_back(TextAt(result, row, 1));
    columns.names.emplace_back(TextAt(result, row, 2));
}

class Connection : public ServerPeer {
public:
    explicit Connection(const ServerPeerData& data) : m_data(data)
    {
        const servers::Postgresql server = servers::ThePostgresql();
        m_db.reset(PQconnectdb(("host=" + server.socketFolder + " port=" + server.port +
                                " user=qv client_encoding=UTF8 dbname=" + data.database)
                                   .c_str()));
        if (PQstatus(m_db.get()) != CONNECTION_OK) {
            throw std::runtime_error(PQerrorMessage(m_db.get()));
        }
    }

    pid_t ServerProcess() override { return PQbackendPID(m_db.get()); }

protected:
    [[nodiscard]] const ServerPeerData& Data() const { return m_data; }
    [[nodiscard]] PGconn* Db() const { return m_db.get(); }

    [[nodiscard]] Result Checked(PGresult* raw) const
    {
        Result result(raw);
        const ExecStatusType status = PQresultStatus(raw);
        if (status != PGRES_TUPLES_OK && status != PGRES_COMMAND_OK) {
            throw std::runtime_error(PQerrorMessage(m_db.get()));
        }
        return result;
    }
    void Run(const char* sql) const { static_cast<void>(Checked(PQexec(m_db.get(), sql))); }

    static void RequireUser(const Result& result)
    {
        Require(PQntuples(result.get()) == 1 && NumberAt(result, 0, 0) > 0);
    }
    static void TakeAllThree(const Result& result)
    {
        Columns columns;
        for (int row = 0; row < PQntuples(result.get()); ++row) {
            TakeThree(columns, result, row);
        }
        RequireCount(columns.names.size(), ServerPeerData::kUsers);
    }
    static void TakeAllNine(const Result& result)
    {
        Columns columns;
        for (int row = 0; row < PQntuples(result.get()); ++row) {
            TakeThree(columns, result, row);
            columns.sexes.push_back(NumberAt(result, row, 3));
            columns.mobiles.emplace_back(TextAt(result, row, 4));
            columns.eMails.emplace_back(TextAt(result, row, 5));
            columns.deptInfos.emplace_back(TextAt(result, row, 6));
            columns.jobTitles.emplace_back(TextAt(result, row, 7));
            columns.disabled.push_back(NumberAt(result, row, 8));
        }
        RequireCount(columns.disabled.size(), ServerPeerData::kUsers);
    }

private:
    const ServerPeerData& m_data;
    std::unique_ptr<PGconn, Finish> m_db;
};

class Text final : public Connection {
public:
    using Connection::Connection;

    void FindUser(std::size_t call) override
    {
        RequireUser(Checked(PQexec(Db(), FindStatement(Data().LoginName(call)).c_str())));
    }
    void SaveUsers() override
    {
        Run("BEGIN");
        for (const Record& user : Data().newUsers) {
            Run(InsertStatement(user).c_str());
        }
        Run("ROLLBACK");
    }
    void ListThree() override { TakeAllThree(Checked(PQexec(Db(), bound::kThree))); }
    void ListNine() override { TakeAllNine(Checked(PQexec(Db(), bound::kNine))); }
};

class Kept final : public Connection {
public:
    explicit Kept(const ServerPeerData& data) : Connection(data)
    {
        Prepare("find", bound::kFind);
        Prepare("insert", BoundInsert());
        Prepare("three", bound::kThree);
        Prepare("nine", bound::kNine);
    }

    void FindUser(std::size_t call) override { RequireUser(Execute("find", {Data().LoginName(call).c_str()})); }
    void SaveUsers() override
    {
        Run("BEGIN");
        for (const Record& user : Data().newUsers) {
            const std::string birthday = DateText(user.birthday).data();
            Values values;
            VisitValues(user, birthday, [&values](const auto& value) { values.Add(value); });
            Execute("insert", values.Pointers());
        }
        Run("ROLLBACK");
    }
    void ListThree() override { TakeAllThree(Execute("three", {})); }
    void ListNine() override { TakeAllNine(Execute("nine", {})); }

private:
    /// What a statement is bound to, as the texts that the library takes. Texts must last as long as this.
    class Values {
    public:
        void Add(const std::string& text) { m_all.push_back({text.c_str(), {}}); }
        void Add(int number) { m_all.push_back({nullptr, std::to_string(number)}); }

        [[nodiscard]] std::vector<const char*> Pointers() const
        {
            std::vector<const char*> pointers;
            pointers.reserve(m_all.size());
            for (const Value& value : m_all) {
                pointers.push_back(value.text != nullptr ? value.text : value.digits.c_str());
            }
            return pointers;
        }

    private:
        struct Value {
            const char* text;
            std::string digits;
        };
        std::vector<Value> m_all;
    };

    void Prepare(const char* name, const std::string& sql) const
    {
        static_cast<void>(Checked(PQprepare(Db(), name, Numbered(sql, "$").c_str(), 0, nullptr)));
    }
    Result Execute(const char* name, const std::vector<const char*>& values) const
    {
        return Checked(PQexecPrepared(Db(), name, static_cast<int>(values.size()), values.data(), nullptr, nullptr, 0));
    }
};

} // namespace

std::unique_ptr<ServerPeer> PostgresqlTextPeer(const ServerPeerData& data) { return std::make_unique<Text>(data); }

std::unique_ptr<ServerPeer> PostgresqlKeptPeer(const ServerPeerData& data) { return std::make_unique<Kept>(data); }

} // namespace bench
