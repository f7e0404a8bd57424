#include "basefun/SqlText.h"

#ifdef QV_MISTAKE
CString Statement() { return FormatSql("a = %d", CString("x")); }
#else
CString Statement() { return FormatSql("a = %d", 1); }
#endif
