#pragma once

#include "platform/Api.h"
#include "platform/CString.h"

class CAConnect;

/// Free-standing helpers of the library.
class QV_API CACommFun {
public:
    /// Runs a statement that returns no rows.
    /// @param second, third  without effect; callers pass "" and -1.
    /// @return 1 when it ran; 0, and nothing else, when there is no connection or it is not open.
    /// @throws CAException for what the engine refuses.
    static int RunSQL(CAConnect* conn, CString sql, CString second, int third);
};
