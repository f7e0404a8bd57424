#pragma once

#include "basefun/QVBaseFun.h"
#include "bench/Cases.h"
#include "platform/CStringArray.h"
#include "platform/CUIntArray.h"

#include <string>
#include <vector>

namespace bench {

/// A list of users, column by column, in the containers of hand-written code.
struct Columns {
    std::vector<unsigned> ids, sexes, disabled;
    std::vector<std::string> loginNames, names, mobiles, eMails, deptInfos, jobTitles;
};

/// The same in the module's. Loading @throws std::runtime_error unless the list has `count` users.
struct Lists {
    CUIntArray ids, sexes, disabled;
    CStringArray loginNames, names, mobiles, eMails, deptInfos, jobTitles;

    void LoadThree(CAConnect& conn, int count)
    {
        Require(CQVBaseFun::LoadHumanInfo(conn, ids, loginNames, names));
        RequireCount(names.GetSize(), count);
    }
    void LoadNine(CAConnect& conn, int count)
    {
        Require(CQVBaseFun::LoadHumanInfo(conn, ids, loginNames, names, sexes, mobiles, eMails, deptInfos, jobTitles,
                                          disabled));
        RequireCount(disabled.GetSize(), count);
    }
};

} // namespace bench
