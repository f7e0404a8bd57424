#include "tests/servers/Servers.h"

#include "dbaccess/CAConnect.h"
#include "dbaccess/CAException.h"
#include "dbaccess/Driver.h"

#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <utility>
#include <vector>

namespace servers {

namespace {

std::vector<std::string> LinesAbout(const std::string& engine)
{
    const char* folder = std::getenv("QV_TEST_SERVERS");
    std::ifstream file(std::string(folder != nullptr ? folder : "") + "/" + engine);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) {
        lines.push_back(line);
    }
    if (lines.size() != 2) {
        throw std::runtime_error(
            "no server for " + engine +
            ": start one with tests/servers/servers.sh start FOLDER and set QV_TEST_SERVERS to it");
    }
    return lines;
}

std::string DatabaseThatIsAlwaysThere(const std::string& engine)
{
    return engine == "postgresql" ? "postgres" : engine == "mariadb" ? "mysql" : "master";
}

/// Runs a statement on a server.
void Administer(const std::string& engine, const std::string& sql)
{
    CAConnect conn;
    conn.Open(UrlOf(engine, DatabaseThatIsAlwaysThere(engine)).c_str());
    conn.Execute(sql.c_str());
}

/// The databases of this program.
class Made {
public:
    /// The drivers' registry must outlive this, so it has to be there first.
    Made() { static_cast<void>(dbaccess::FindDriver("mysql")); }
    Made(const Made&) = delete;
    Made& operator=(const Made&) = delete;
    ~Made()
    {
        for (const auto& [engine, name] : m_names) {
            try {
                Administer(engine, "DROP DATABASE " + name + (engine == "postgresql" ? " WITH (FORCE)" : ""));
            } catch (const CAException&) { // a server that a test has killed
            } catch (const std::runtime_error&) {
            }
        }
    }

    std::string New(const std::string& engine)
    {
        const std::string name = "qv_" + std::to_string(::getpid()) + "_" + std::to_string(m_names.size());
        Administer(engine, "CREATE DATABASE " + name);
        m_names.emplace_back(engine, name);
        return UrlOf(engine, name);
    }

private:
    std::vector<std::pair<std::string, std::string>> m_names;
};

} // namespace

Postgresql ThePostgresql()
{
    const std::vector<std::string> lines = LinesAbout("postgresql");
    return {lines[0], lines[1]};
}

Mariadb TheMariadb()
{
    const std::vector<std::string> lines = LinesAbout("mariadb");
    return {lines[0], lines[1]};
}

Sqlserver TheSqlserver()
{
    const std::vector<std::string> lines = LinesAbout("sqlserver");
    return {lines[0], lines[1]};
}

std::string UrlOf(const std::string& engine, const std::string& database)
{
    if (engine == "postgresql") {
        const Postgresql server = ThePostgresql();
        return "postgresql://qv@/" + database + "?host=" + server.socketFolder + "&port=" + server.port;
    }
    if (engine == "sqlserver") {
        const Sqlserver server = TheSqlserver();
        return "odbc:Driver={FreeTDS};Server=" + server.address + ";Port=" + server.port +
               ";UID=sa;PWD=secret;Database=" + database + ";TDS_Version=7.4;ClientCharset=UTF-8?kind=1";
    }
    return "mysql://root@localhost/" + database + "?socket=" + TheMariadb().socket;
}

std::string OverOdbc(const std::string& engine, const std::string& url)
{
    const std::size_t name = url.find('/', url.find("//") + 2) + 1;
    const std::string rest = ";Server=127.0.0.1;Database=" + url.substr(name, url.find('?') - name);
    return engine == "postgresql" ? "odbc:Driver={PostgreSQL Unicode};UID=qv;Port=" + ThePostgresql().port + rest
                                  : "odbc:Driver={MariaDB Unicode};UID=qv;PWD=secret;Port=" + TheMariadb().port + rest;
}

std::string NewDatabase(const std::string& engine)
{
    static Made made;
    return made.New(engine);
}

} // namespace servers
