#include "basefun/SqlText.h"

#ifdef QV_MISTAKE
CString Statement(const char* sql) { return FormatSql(sql, 1); }
#else
CString Statement(const char* sql) { return FormatSql("%s %d", sql, 1); }
#endif
