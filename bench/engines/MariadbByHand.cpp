#include "bench/engines/ServerByHand.h"
#include "tests/servers/Servers.h"

#include <mysql.h>

#include <charconv>
#include <stdexcept>

namespace bench {

namespace {

struct Close {
    void operator()(MYSQL* db) const noexcept { mysql_close(db); }
};
struct FreeResult {
    void operator()(MYSQL_RES* result) const noexcept { mysql_free_result(result); }
};
using Result = std::unique_ptr<MYSQL_RES, FreeResult>;

class Connection final : public ServerByHand {
public:
    explicit Connection(const std::string& database) : m_db(mysql_init(nullptr))
    {
        mysql_options(m_db.get(), MYSQL_SET_CHARSET_NAME, "utf8mb4");
        if (mysql_real_connect(m_db.get(), nullptr, "root", nullptr, database.c_str(), 0,
                               servers::TheMariadb().socket.c_str(), 0) == nullptr) {
            Fail();
        }
    }

    void ListThree(Columns& columns) override
    {
        EachRow(statements::kThree,
                [&columns](const char* const* row, const unsigned long* lengths) { TakeThree(columns, row, lengths); });
    }
    void ListNine(Columns& columns) override
    {
        EachRow(statements::kNine, [&columns](const char* const* row, const unsigned long* lengths) {
            TakeThree(columns, row, lengths);
            columns.sexes.push_back(Number(row[3], lengths[3]));
            columns.mobiles.emplace_back(row[4], lengths[4]);
            columns.eMails.emplace_back(row[5], lengths[5]);
            columns.deptInfos.emplace_back(row[6], lengths[6]);
            columns.jobTitles.emplace_back(row[7], lengths[7]);
            columns.disabled.push_back(Number(row[8], lengths[8]));
        });
    }
    int Walk() override
    {
        int rows = 0;
        EachRow(statements::kNine, [&rows](const char* const*, const unsigned long*) { ++rows; });
        return rows;
    }

private:
    static unsigned Number(const char* digits, std::size_t length)
    {
        unsigned number = 0;
        std::from_chars(digits, digits + length, number);
        return number;
    }

    static void TakeThree(Columns& columns, const char* const* row, const unsigned long* lengths)
    {
        columns.ids.push_back(Number(row[0], lengths[0]));
        columns.loginNames.emplace_back(row[1], lengths[1]);
        columns.names.emplace_back(row[2], lengths[2]);
    }

    void Send(std::string_view sql)
    {
        if (mysql_real_query(m_db.get(), sql.data(), sql.size()) != 0) {
            Fail();
        }
    }

    template <class Take>
    void EachRow(const char* sql, Take take)
    {
        Send(sql);
        const Result result(mysql_use_result(m_db.get()));
        if (result == nullptr) {
            Fail();
        }
        while (const char* const* row = mysql_fetch_row(result.get())) {
            take(row, mysql_fetch_lengths(result.get()));
        }
        if (mysql_errno(m_db.get()) != 0) {
            Fail();
        }
    }

    [[noreturn]] void Fail() { throw std::runtime_error(mysql_error(m_db.get())); }

    std::unique_ptr<MYSQL, Close> m_db;
};

} // namespace

std::unique_ptr<ServerByHand> MariadbByHand(const std::string& database)
{
    return std::make_unique<Connection>(database);
}

} // namespace bench
