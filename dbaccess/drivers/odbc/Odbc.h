#pragma once

// ODBC's own headers. They define names of Windows that the platform has already, some as other types.
#define WCHAR OdbcWCHAR
#define HWND OdbcHWND
#include <sql.h>
#include <sqlext.h>
#undef BOOL
#undef HWND
#undef WCHAR
