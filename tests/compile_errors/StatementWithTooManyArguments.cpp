#include "basefun/SqlText.h"

#ifdef QV_MISTAKE
CString Statement() { return FormatSql("a = '%s'", "x", 1); }
#else
CString Statement() { return FormatSql("a = '%s'", "x"); }
#endif
