#pragma once

#include "bench/Lists.h"

#include <memory>
#include <string>

namespace bench {

/// Lists of a large directory on a server, written against its client library, as a careful programmer would: the same
/// statements, and texts taken over with the length that the library knows. @throws std::runtime_error.
class ServerByHand {
public:
    ServerByHand() = default;
    ServerByHand(const ServerByHand&) = delete;
    ServerByHand& operator=(const ServerByHand&) = delete;
    virtual ~ServerByHand() = default;

    /// All users, in three and in nine columns, with flat memory but for the columns.
    virtual void ListThree(Columns& columns) = 0;
    virtual void ListNine(Columns& columns) = 0;
    /// Reads the rows of ListNine and keeps none. @return how many there are.
    virtual int Walk() = 0;
};

namespace statements {

constexpr const char* kThree = "SELECT Col_ID, Col_LoginName, Col_Name FROM qv_User";
constexpr const char* kNine = "SELECT Col_ID,Col_LoginName,Col_Name,Col_Sex, Col_Mobile,Col_EMail,Col_DeptInfo,"
                              "Col_o_JobTitle, Col_Disabled FROM qv_User";

} // namespace statements

/// libpq; lists in its single-row mode. @param database  one of the test servers' (tests/servers/Servers.h).
std::unique_ptr<ServerByHand> PostgresqlByHand(const std::string& database);
/// libpq; lists by COPY.
std::unique_ptr<ServerByHand> PostgresqlCopyByHand(const std::string& database);
/// The MariaDB client library; lists by mysql_use_result.
std::unique_ptr<ServerByHand> MariadbByHand(const std::string& database);

} // namespace bench
