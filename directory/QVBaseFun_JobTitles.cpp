#include "basefun/QVBaseFun.h"
#include "basefun/SqlText.h"
#include "basefun/StatementFrame.h"

using frame::Columns;
using frame::Found;

// ---- Job titles --------------------------------------------------------------------------------------------------

bool CQVBaseFun::LoadJobTitleInfo(CAConnect& conn, int holderID, int holderType, CUIntArray& memberIDs,
                                  CStringArray& memberNames, CString jobTitle)
{
    const CString sql = FormatSql("SELECT Col_DQvItemID, Col_DQvItemName FROM qv_JobTitle WHERE Col_QvItemID = %d AND "
                                  "Col_QvItemType = %d AND Col_JobTitle = '%s' ",
                                  holderID, holderType, jobTitle);
    return frame::ReadEach(conn, sql, Columns(memberIDs, memberNames));
}

bool CQVBaseFun::ExistJobTitle(CAConnect& conn, int holderID, int holderType, int memberID, int memberType,
                               CString jobTitle, bool& exists)
{
    exists = false;
    const CString sql =
        FormatSql("SELECT Col_DQvItemName FROM qv_JobTitle WHERE Col_QvItemID = %d AND Col_QvItemType = %d AND "
                  "Col_DQvItemID = %d AND Col_DQvItemType = %d AND Col_JobTitle = '%s'",
                  holderID, holderType, memberID, memberType, jobTitle);
    return frame::ReadFirst(conn, sql, Found(exists));
}

bool CQVBaseFun::DeleteJobTitle(CAConnect& conn, int holderID, int holderType, int memberID, int memberType,
                                CString jobTitle)
{
    // The title is third here and last in the test above.
    const CString sql = FormatSql("DELETE FROM qv_JobTitle WHERE Col_QvItemID = %d AND Col_QvItemType = %d AND "
                                  "Col_JobTitle = '%s' AND Col_DQvItemID = %d AND Col_DQvItemType = %d ",
                                  holderID, holderType, jobTitle, memberID, memberType);
    return frame::Execute(conn, sql);
}
