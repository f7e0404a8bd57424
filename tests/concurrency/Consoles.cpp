#include "Consoles.h"

#include "dbaccess/CARecordset.h"
#include "schema/Schema.h"
#include "tests/schema/EdgeCaseDirectory.h"
#include "tests/servers/Servers.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string_view>
#include <utility>

const std::vector<Engine>& Engines()
{
    static const std::vector<Engine> engines = {
        {"sqlite", "", {}, ""},
        {"postgresql",
         "SELECT COUNT(*) FROM pg_locks WHERE NOT granted AND locktype = 'advisory' AND database = "
         "(SELECT oid FROM pg_database WHERE datname = current_database())",
         {"BEGIN", "LOCK TABLE {} IN SHARE MODE"},
         "SELECT COUNT(*) FROM pg_locks WHERE NOT granted AND locktype = 'relation' AND database = "
         "(SELECT oid FROM pg_database WHERE datname = current_database())"},
        {"mariadb",
         "SELECT COUNT(*) FROM information_schema.PROCESSLIST WHERE STATE = 'User lock' AND DB = DATABASE()",
         {"LOCK TABLES {} READ"},
         "SELECT COUNT(*) FROM information_schema.PROCESSLIST WHERE STATE LIKE 'Waiting for table%' AND DB = "
         "DATABASE()"}};
    return engines;
}

const Engine& EngineCalled(const std::string& name)
{
    const auto found = std::ranges::find(Engines(), name, &Engine::name);
    if (found == Engines().end()) {
        throw std::runtime_error("there is no engine " + name + "; there are sqlite, postgresql and mariadb");
    }
    return *found;
}

TemporaryFolder::TemporaryFolder()
{
    std::string pattern = std::filesystem::temp_directory_path() / "consoles-XXXXXX";
    if (::mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error("no folder can be made for " + pattern);
    }
    m_path = pattern;
}

void TemporaryFolder::WriteFile(const std::string& name, const std::string& text) const
{
    std::ofstream(Path(name)) << text;
    std::filesystem::permissions(Path(name), std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

Consoles::Consoles(const Engine& engine, std::string program) : m_program(std::move(program))
{
    m_options.directory = m_folder.Path("");
    m_options.environment = {{"HOME", m_options.directory},
                             {"QVADMIN_DB", engine.name == "sqlite" ? "sqlite:" + m_folder.Path("directory.db")
                                                                    : servers::NewDatabase(engine.name)}};
    m_conn.Open(Url().c_str());
    schema::Upgrade(m_conn);
}

ChildProcess Consoles::Start(const std::vector<std::string>& arguments) const
{
    return {m_program, arguments, m_options};
}

ChildProcess Consoles::StartOnTerminal(const std::vector<std::string>& arguments, const std::string& answer) const
{
    ChildOptions options = m_options;
    options.terminal = true;
    options.input = answer;
    return {m_program, arguments, options};
}

int Consoles::Number(const std::string& sql)
{
    CARecordset rs;
    int number = 0;
    rs.Open(sql.c_str(), &m_conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable);
    rs.GetValue(1, number);
    return number;
}

std::string Consoles::Dump()
{
    // With what follows a time up to the end of its column, such as fractions of a second.
    constexpr std::string_view shape = "dd:dd:dd";
    const auto fits = [](char ch, char kind) { return kind == 'd' ? ch >= '0' && ch <= '9' : ch == kind; };
    std::string dump = awkward::Dump(m_conn, awkward::TablesWithoutRecord());
    for (auto place = dump.begin();
         (place = std::search(place, dump.end(), shape.begin(), shape.end(), fits)) != dump.end();) {
        place = dump.erase(place, std::find(place, dump.end(), '>'));
    }
    return dump;
}
