#pragma once

// ODBC's own headers.
#include <sql.h>
#include <sqlext.h>
#undef BOOL
