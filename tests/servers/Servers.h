#pragma once

#include <string>

/// The servers that the test run has started (servers.sh); the variable QV_TEST_SERVERS names the folder that tells
/// where they are.
namespace servers {

struct Postgresql {
    std::string socketFolder;
    std::string port; ///< on 127.0.0.1 and of the socket
};

struct Mariadb {
    std::string socket;
    std::string port; ///< on 127.0.0.1, where the user "qv" has the password "secret"
};

/// What stands in for SQL Server, see tds_responder.py. The user is "sa", the password "secret".
struct Sqlserver {
    std::string address;
    std::string port;
};

/// @throws std::runtime_error when there is no such server.
Postgresql ThePostgresql();
Mariadb TheMariadb();
Sqlserver TheSqlserver();

/// The URL of a database on a server. @param engine  "postgresql", "mariadb" or "sqlserver".
std::string UrlOf(const std::string& engine, const std::string& database);

/// The URL of the same database over ODBC, without an engine kind. @param url  as UrlOf gives it.
std::string OverOdbc(const std::string& engine, const std::string& url);

/// The URL of a new, empty database. It is dropped when the program ends. @throws std::runtime_error, CAException.
std::string NewDatabase(const std::string& engine);

} // namespace servers
