#include "basefun/SqlText.h"

#ifdef QV_MISTAKE
CString Statement() { return FormatSql("a = '%s' AND b = %d", "x"); }
#else
CString Statement() { return FormatSql("a = '%s' AND b = %d", "x", 1); }
#endif
