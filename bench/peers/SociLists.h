#pragma once

#include "bench/Cases.h"
#include "bench/Lists.h"
#include "bench/peers/Peer.h"

#include <soci/soci.h>

#include <cstddef>

namespace bench {

// The lists of Peer and ServerPeer, as its guide shows, which are the same for all engines. They are to have `count`
// rows.

inline void AddThree(Columns& columns, const Record& row)
{
    columns.ids.push_back(static_cast<unsigned>(row.id));
    columns.loginNames.push_back(row.loginName);
    columns.names.push_back(row.name);
}

inline void ListThreeBySoci(soci::session& sql, int count)
{
    using soci::into;
    Record row;
    soci::statement query = (sql.prepare << bound::kThree, into(row.id), into(row.loginName), into(row.name));
    query.execute();
    Columns columns;
    while (query.fetch()) {
        AddThree(columns, row);
    }
    RequireCount(columns.names.size(), count);
}

inline void ListNineBySoci(soci::session& sql, int count)
{
    using soci::into;
    Record row;
    int disabled = 0;
    soci::statement query =
        (sql.prepare << bound::kNine, into(row.id), into(row.loginName), into(row.name), into(row.sex),
         into(row.mobile), into(row.eMail), into(row.deptInfo), into(row.jobTitle), into(disabled));
    query.execute();
    Columns columns;
    while (query.fetch()) {
        AddThree(columns, row);
        columns.sexes.push_back(static_cast<unsigned>(row.sex));
        columns.mobiles.push_back(row.mobile);
        columns.eMails.push_back(row.eMail);
        columns.deptInfos.push_back(row.deptInfo);
        columns.jobTitles.push_back(row.jobTitle);
        columns.disabled.push_back(static_cast<unsigned>(disabled));
    }
    RequireCount(columns.disabled.size(), count);
}

} // namespace bench
