#include "basefun/SqlText.h"

#ifdef QV_MISTAKE
CString Statement() { return FormatSql("a = %u", 1U); }
#else
CString Statement() { return FormatSql("a = %d", 1U); }
#endif
