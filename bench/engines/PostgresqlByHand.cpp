#include "bench/engines/ServerByHand.h"
#include "tests/servers/Servers.h"

#include <libpq-fe.h>

#include <array>
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
struct Free {
    void operator()(char* memory) const noexcept { PQfreemem(memory); }
};
using Result = std::unique_ptr<PGresult, Clear>;

unsigned Number(std::string_view digits)
{
    unsigned number = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return number;
}

/// A row of a result.
struct ResultRow {
    const PGresult* result;

    [[nodiscard]] std::string_view operator[](int column) const
    {
        return {PQgetvalue(result, 0, column), static_cast<std::size_t>(PQgetlength(result, 0, column))};
    }
};

/// A row of COPY's text format, taken apart in place.
class CopyRow {
public:
    CopyRow(char* line, int length)
    {
        char* to = line;
        const char* from = line;
        const char* end = line + length;
        char* field = to;
        for (; from != end; ++from) {
            if (*from == '\t' || *from == '\n') {
                m_fields[m_count++] = {field, static_cast<std::size_t>(to - field)};
                field = to;
            } else if (*from == '\\' && from + 1 != end) {
                to = Unescape(*++from, to);
            } else {
                *to++ = *from;
            }
        }
    }

    [[nodiscard]] std::string_view operator[](int column) const { return m_fields[static_cast<std::size_t>(column)]; }

private:
    static char* Unescape(char code, char* to)
    {
        constexpr std::string_view codes = "tnrbfv";
        constexpr std::string_view meanings = "\t\n\r\b\f\v";
        const std::size_t at = codes.find(code);
        if (code != 'N') { // NULL, an empty text here
            *to++ = at == std::string_view::npos ? code : meanings[at];
        }
        return to;
    }

    std::array<std::string_view, 16> m_fields;
    std::size_t m_count = 0;
};

template <class Row>
void TakeThree(Columns& columns, const Row& row)
{
    columns.ids.push_back(Number(row[0]));
    columns.loginNames.emplace_back(row[1]);
    columns.names.emplace_back(row[2]);
}

template <class Row>
void TakeNine(Columns& columns, const Row& row)
{
    TakeThree(columns, row);
    columns.sexes.push_back(Number(row[3]));
    columns.mobiles.emplace_back(row[4]);
    columns.eMails.emplace_back(row[5]);
    columns.deptInfos.emplace_back(row[6]);
    columns.jobTitles.emplace_back(row[7]);
    columns.disabled.push_back(Number(row[8]));
}

class Connection : public ServerByHand {
public:
    explicit Connection(const std::string& database)
    {
        const servers::Postgresql server = servers::ThePostgresql();
        m_db.reset(PQconnectdb(("host=" + server.socketFolder + " port=" + server.port + " user=qv dbname=" + database +
                                " client_encoding=UTF8")
                                   .c_str()));
        if (PQstatus(m_db.get()) != CONNECTION_OK) {
            Fail();
        }
    }

protected:
    [[nodiscard]] PGconn* Db() const { return m_db.get(); }
    [[noreturn]] void Fail() const { throw std::runtime_error(PQerrorMessage(m_db.get())); }

private:
    std::unique_ptr<PGconn, Finish> m_db;
};

class SingleRows final : public Connection {
public:
    using Connection::Connection;

    void ListThree(Columns& columns) override
    {
        EachRow(statements::kThree, [&columns](const ResultRow& row) { TakeThree(columns, row); });
    }
    void ListNine(Columns& columns) override
    {
        EachRow(statements::kNine, [&columns](const ResultRow& row) { TakeNine(columns, row); });
    }
    int Walk() override
    {
        int rows = 0;
        EachRow(statements::kNine, [&rows](const ResultRow&) { ++rows; });
        return rows;
    }

private:
    template <class Take>
    void EachRow(const char* sql, Take take)
    {
        if (PQsendQuery(Db(), sql) == 0 || PQsetSingleRowMode(Db()) == 0) {
            Fail();
        }
        while (const Result result{PQgetResult(Db())}) {
            if (PQresultStatus(result.get()) == PGRES_SINGLE_TUPLE) {
                take(ResultRow{result.get()});
            } else if (PQresultStatus(result.get()) != PGRES_TUPLES_OK) {
                Fail();
            }
        }
    }
};

class Copies final : public Connection {
public:
    using Connection::Connection;

    void ListThree(Columns& columns) override
    {
        EachRow(statements::kThree, [&columns](const CopyRow& row) { TakeThree(columns, row); });
    }
    void ListNine(Columns& columns) override
    {
        EachRow(statements::kNine, [&columns](const CopyRow& row) { TakeNine(columns, row); });
    }
    int Walk() override
    {
        int rows = 0;
        EachRow(statements::kNine, [&rows](const CopyRow&) { ++rows; });
        return rows;
    }

private:
    template <class Take>
    void EachRow(const std::string& sql, Take take)
    {
        const Result begun(PQexec(Db(), ("COPY (" + sql + ") TO STDOUT").c_str()));
        if (PQresultStatus(begun.get()) != PGRES_COPY_OUT) {
            Fail();
        }
        char* raw = nullptr;
        for (int length = 0; (length = PQgetCopyData(Db(), &raw, 0)) > 0;) {
            const std::unique_ptr<char, Free> line(raw);
            take(CopyRow(raw, length));
        }
        while (const Result result{PQgetResult(Db())}) {
            if (PQresultStatus(result.get()) != PGRES_COMMAND_OK) {
                Fail();
            }
        }
    }
};

} // namespace

std::unique_ptr<ServerByHand> PostgresqlByHand(const std::string& database)
{
    return std::make_unique<SingleRows>(database);
}

std::unique_ptr<ServerByHand> PostgresqlCopyByHand(const std::string& database)
{
    return std::make_unique<Copies>(database);
}

} // namespace bench
