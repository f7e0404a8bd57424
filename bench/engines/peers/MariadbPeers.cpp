#include "bench/Cases.h"
#include "bench/Lists.h"
#include "bench/engines/peers/ServerPeer.h"
#include "bench/peers/Peer.h"
#include "tests/servers/Servers.h"

#include <mysql.h>

#include <array>
#include <charconv>
#include <stdexcept>
#include <string_view>

namespace bench {

namespace {

struct Close {
    void operator()(MYSQL* db) const noexcept { mysql_close(db); }
    void operator()(MYSQL_STMT* statement) const noexcept { mysql_stmt_close(statement); }
};
struct FreeResult {
    void operator()(MYSQL_RES* result) const noexcept { mysql_free_result(result); }
};
using Result = std::unique_ptr<MYSQL_RES, FreeResult>;

/// A row of a result as texts.
struct TextRow {
    const char* const* values;
    const unsigned long* lengths;

    [[nodiscard]] std::string_view TextAt(int column) const { return {values[column], lengths[column]}; }
    [[nodiscard]] unsigned NumberAt(int column) const
    {
        unsigned number = 0;
        std::from_chars(values[column], values[column] + lengths[column], number);
        return number;
    }
};

template <class Row>
void TakeThree(Columns& columns, const Row& row)
{
    columns.ids.push_back(row.NumberAt(0));
    columns.loginNames.emplace_back(row.TextAt(1));
    columns.names.emplace_back(row.TextAt(2));
}

template <class Row>
void TakeNine(Columns& columns, const Row& row)
{
    TakeThree(columns, row);
    columns.sexes.push_back(row.NumberAt(3));
    columns.mobiles.emplace_back(row.TextAt(4));
    columns.eMails.emplace_back(row.TextAt(5));
    columns.deptInfos.emplace_back(row.TextAt(6));
    columns.jobTitles.emplace_back(row.TextAt(7));
    columns.disabled.push_back(row.NumberAt(8));
}

class Connection : public ServerPeer {
public:
    explicit Connection(const ServerPeerData& data) : m_data(data), m_db(mysql_init(nullptr))
    {
        mysql_options(m_db.get(), MYSQL_SET_CHARSET_NAME, "utf8mb4");
        if (mysql_real_connect(m_db.get(), nullptr, "root", nullptr, data.database.c_str(), 0,
                               servers::TheMariadb().socket.c_str(), 0) == nullptr) {
            throw std::runtime_error(mysql_error(m_db.get()));
        }
    }

    pid_t ServerProcess() override { return MariadbProcess(); }

protected:
    [[nodiscard]] const ServerPeerData& Data() const { return m_data; }
    [[nodiscard]] MYSQL* Db() const { return m_db.get(); }

    void Run(std::string_view sql) const
    {
        if (mysql_real_query(m_db.get(), sql.data(), sql.size()) != 0) {
            throw std::runtime_error(mysql_error(m_db.get()));
        }
    }

private:
    const ServerPeerData& m_data;
    std::unique_ptr<MYSQL, Close> m_db;
};

class Text final : public Connection {
public:
    using Connection::Connection;

    void FindUser(std::size_t call) override
    {
        unsigned id = 0;
        EachRow(FindStatement(Data().LoginName(call)), [&id](const TextRow& row) { id = row.NumberAt(0); });
        Require(id > 0);
    }
    void SaveUsers() override
    {
        Run("START TRANSACTION");
        for (const Record& user : Data().newUsers) {
            Run(InsertStatement(user));
        }
        Run("ROLLBACK");
    }
    void ListThree() override
    {
        Columns columns;
        EachRow(bound::kThree, [&columns](const TextRow& row) { TakeThree(columns, row); });
        RequireCount(columns.names.size(), ServerPeerData::kUsers);
    }
    void ListNine() override
    {
        Columns columns;
        EachRow(bound::kNine, [&columns](const TextRow& row) { TakeNine(columns, row); });
        RequireCount(columns.disabled.size(), ServerPeerData::kUsers);
    }

private:
    template <class Take>
    void EachRow(std::string_view sql, Take take) const
    {
        Run(sql);
        const Result result(mysql_store_result(Db()));
        if (result == nullptr) {
            throw std::runtime_error(mysql_error(Db()));
        }
        while (const char* const* row = mysql_fetch_row(result.get())) {
            take(TextRow{row, mysql_fetch_lengths(result.get())});
        }
    }
};

/// A statement that is prepared once, and where its values and results are.
class Statement {
public:
    /// @param texts  for each column of the result whether it is a text; else it is a number.
    Statement(MYSQL* db, std::string_view sql, const std::vector<bool>& texts)
        : m_statement(mysql_stmt_init(db)), m_columns(texts.size()), m_results(texts.size())
    {
        Check(mysql_stmt_prepare(m_statement.get(), sql.data(), sql.size()));
        for (std::size_t i = 0; i < texts.size(); ++i) {
            m_results[i].buffer_type = texts[i] ? MYSQL_TYPE_STRING : MYSQL_TYPE_LONG;
            m_results[i].buffer = texts[i] ? m_columns[i].text.data() : static_cast<void*>(&m_columns[i].number);
            m_results[i].buffer_length = texts[i] ? m_columns[i].text.size() : sizeof m_columns[i].number;
            m_results[i].length = &m_columns[i].length;
        }
        if (!m_results.empty()) {
            Check(mysql_stmt_bind_result(m_statement.get(), m_results.data()));
        }
    }

    // What is bound must last until Execute.
    void Bind(const std::string& text)
    {
        MYSQL_BIND& bind = m_values.emplace_back();
        bind.buffer_type = MYSQL_TYPE_STRING;
        bind.buffer = const_cast<char*>(text.data());
        bind.buffer_length = text.size();
    }
    void Bind(const int& number)
    {
        MYSQL_BIND& bind = m_values.emplace_back();
        bind.buffer_type = MYSQL_TYPE_LONG;
        bind.buffer = const_cast<int*>(&number);
    }
    void Execute()
    {
        if (!m_values.empty()) {
            Check(mysql_stmt_bind_param(m_statement.get(), m_values.data()));
            m_values.clear();
        }
        Check(mysql_stmt_execute(m_statement.get()));
    }

    template <class Take>
    void EachRow(Take take)
    {
        Execute();
        Check(mysql_stmt_store_result(m_statement.get()));
        int code = 0;
        while ((code = mysql_stmt_fetch(m_statement.get())) == 0) {
            take(*this);
        }
        if (code != MYSQL_NO_DATA) {
            throw std::runtime_error("a row was not read whole");
        }
        mysql_stmt_free_result(m_statement.get());
    }

    [[nodiscard]] std::string_view TextAt(std::size_t column) const
    {
        return {m_columns[column].text.data(), m_columns[column].length};
    }
    [[nodiscard]] unsigned NumberAt(std::size_t column) const { return m_columns[column].number; }

private:
    struct Column {
        std::array<char, 1024> text;
        unsigned number = 0;
        unsigned long length = 0;
    };

    void Check(int code)
    {
        if (code != 0) {
            throw std::runtime_error(mysql_stmt_error(m_statement.get()));
        }
    }

    std::unique_ptr<MYSQL_STMT, Close> m_statement;
    std::vector<MYSQL_BIND> m_values;
    std::vector<Column> m_columns;
    std::vector<MYSQL_BIND> m_results;
};

class Kept final : public Connection {
public:
    explicit Kept(const ServerPeerData& data)
        : Connection(data),
          m_find(Db(), bound::kFind, {false}),
          m_insert(Db(), BoundInsert(), {}),
          m_three(Db(), bound::kThree, {false, true, true}),
          m_nine(Db(), bound::kNine, {false, true, true, false, true, true, true, true, false})
    {
    }

    void FindUser(std::size_t call) override
    {
        unsigned id = 0;
        m_find.Bind(Data().LoginName(call));
        m_find.EachRow([&id](const Statement& row) { id = row.NumberAt(0); });
        Require(id > 0);
    }
    void SaveUsers() override
    {
        Run("START TRANSACTION");
        for (const Record& user : Data().newUsers) {
            const std::string birthday = DateText(user.birthday).data();
            // Flags are made into numbers, which have to last until the statement runs.
            std::vector<int> numbers;
            numbers.reserve(kNumbersOfUser);
            VisitValues(user, birthday, [this, &numbers](const auto& value) { Bind(value, numbers); });
            m_insert.Execute();
        }
        Run("ROLLBACK");
    }
    void ListThree() override
    {
        Columns columns;
        m_three.EachRow([&columns](const Statement& row) { TakeThree(columns, row); });
        RequireCount(columns.names.size(), ServerPeerData::kUsers);
    }
    void ListNine() override
    {
        Columns columns;
        m_nine.EachRow([&columns](const Statement& row) { TakeNine(columns, row); });
        RequireCount(columns.disabled.size(), ServerPeerData::kUsers);
    }

private:
    static constexpr std::size_t kNumbersOfUser = 16;

    void Bind(const std::string& text, std::vector<int>& /*numbers*/) { m_insert.Bind(text); }
    void Bind(int number, std::vector<int>& numbers) { m_insert.Bind(numbers.emplace_back(number)); }

    Statement m_find;
    Statement m_insert;
    Statement m_three;
    Statement m_nine;
};

} // namespace

std::unique_ptr<ServerPeer> MariadbTextPeer(const ServerPeerData& data) { return std::make_unique<Text>(data); }

std::unique_ptr<ServerPeer> MariadbKeptPeer(const ServerPeerData& data) { return std::make_unique<Kept>(data); }

} // namespace bench
