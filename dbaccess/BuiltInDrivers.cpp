#include "dbaccess/BuiltInDrivers.h"

#if QV_WITH_MYSQL
#include "dbaccess/drivers/mysql/Driver.h"
#endif
#if QV_WITH_ODBC
#include "dbaccess/drivers/odbc/Driver.h"
#endif
#if QV_WITH_POSTGRESQL
#include "dbaccess/drivers/postgresql/Driver.h"
#endif
#if QV_WITH_SQLITE
#include "dbaccess/drivers/sqlite/Driver.h"
#endif

namespace dbaccess {

void AddBuiltInDrivers(const std::function<void(const std::string& scheme, SessionFactory factory)>& add)
{
#if QV_WITH_MYSQL
    add("mysql", &mysql::OpenSession);
#endif
#if QV_WITH_ODBC
    add("odbc", &odbc::OpenSession);
#endif
#if QV_WITH_POSTGRESQL
    add("postgresql", &postgresql::OpenSession);
#endif
#if QV_WITH_SQLITE
    add("sqlite", &sqlite::OpenSession);
#endif
}

void AddLeftOutDrivers(
    [[maybe_unused]] const std::function<void(const std::string& scheme, const std::string& package)>& add)
{
#ifdef QV_WITHOUT_MYSQL
    add("mysql", QV_WITHOUT_MYSQL);
#endif
#ifdef QV_WITHOUT_ODBC
    add("odbc", QV_WITHOUT_ODBC);
#endif
#ifdef QV_WITHOUT_POSTGRESQL
    add("postgresql", QV_WITHOUT_POSTGRESQL);
#endif
#ifdef QV_WITHOUT_SQLITE
    add("sqlite", QV_WITHOUT_SQLITE);
#endif
}

} // namespace dbaccess
