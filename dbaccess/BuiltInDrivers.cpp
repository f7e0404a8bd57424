#include "dbaccess/BuiltInDrivers.h"

#if QV_WITH_MYSQL
#include "dbaccess/drivers/mysql/Driver.h"
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
#if QV_WITH_POSTGRESQL
    add("postgresql", &postgresql::OpenSession);
#endif
#if QV_WITH_SQLITE
    add("sqlite", &sqlite::OpenSession);
#endif
}

} // namespace dbaccess
