#pragma once

#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"

#include <gtest/gtest.h>

#include <string>

/// Opens a recordset with the rows of a query.
inline void Open(CARecordset& rs, const std::string& sql, CAConnect& conn)
{
    ASSERT_TRUE(rs.Open(sql.c_str(), &conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable));
}

/// The first column of the first row of a query, as text.
inline std::string TextOf(CAConnect& conn, const std::string& sql)
{
    CARecordset rs;
    Open(rs, sql, conn);
    return rs.GetValueToStr(1, true).GetString();
}
