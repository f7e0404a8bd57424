#include "basefun/SqlText.h"

#ifdef QV_MISTAKE
CString Statement() { return FormatSql("a = %d", 1LL); }
#else
CString Statement() { return FormatSql("a = %d", 1); }
#endif
