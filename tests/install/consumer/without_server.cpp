// Tests a look-up without a database: gives 0 when the statement and what it finds are right.
#include "basefun/QVBaseFun.h"
#include "testing/ScriptedDriver.h"

#include <string>
#include <vector>

int main()
{
    scripted::Database database;
    database.Answer(scripted::Rows({{"7"}}));
    CAConnect conn;
    database.Connect(conn);
    int id = -1;
    const bool ran = CQVBaseFun::GetHMIDByLoginName(conn, "o'brien", id);
    const std::vector<std::string> expected = {"SELECT Col_ID FROM qv_User WHERE Col_LoginName = 'o''brien'"};
    return ran && id == 7 && database.queries == expected ? 0 : 1;
}
