#include "basefun/QVBaseFun.h"
#include "basefun/SqlText.h"
#include "basefun/StatementFrame.h"
#include "dbaccess/CAConnect.h"

#include <cstdint>
#include <cstdlib>

using frame::Columns;
using frame::Found;

namespace {

constexpr const char* kServerGenre = "KelServerConfig";
constexpr const char* kDocGenre = "KelDocConfig";
constexpr const char* kServerFlag = "KelServerFlag";
constexpr const char* kMaxThreads = "maxThreads";
constexpr const char* kTaskThreads = "MastTaskThreads"; // spelled so in the rows that servers write
constexpr const char* kDisplayPicture = "CorDisplayPic";
constexpr const char* kDocServerFlag = "KelDocServerFlag";

// By atoi's rules, kept to 32 bits whatever their sign.
std::uint32_t NumberIn(const CString& text) { return static_cast<std::uint32_t>(std::strtol(text, nullptr, 10)); }

// Reads column 1 as a number. An empty value reads as 0, as a missing row does.
template <class Number>
auto NumberColumn(Number& out)
{
    return [&out](CARecordset& row) { out = NumberIn(row.GetValueToStr(1, true)); };
}

bool ReadThreadCount(CAConnect& conn, const char* name, unsigned int& count,
                     SourceLocation at = SourceLocation::current())
{
    count = 0;
    const CString sql =
        FormatSql("SELECT Col_Data FROM Tab_Config WHERE Col_Name = '%s' AND Col_GENRE = '%s'", name, kServerGenre);
    return frame::ReadFirst(conn, sql, NumberColumn(count), frame::OnError::keep_and_notify, at);
}

template <class Number>
CString NumberText(Number number)
{
    return FormatSql("%d", number);
}

} // namespace

// ---- Settings: numbers -------------------------------------------------------------------------------------------

bool CQVBaseFun::GetKelServerConfigInfo(CAConnect& conn, unsigned long& flag)
{
    flag = 0;
    const CString sql = FormatSql("SELECT Col_Data FROM Tab_Config WHERE Col_Name = '%s' AND Col_Genre = '%s'",
                                  kServerFlag, kServerGenre);
    return frame::ReadFirst(conn, sql, NumberColumn(flag));
}

bool CQVBaseFun::GetMaxThreadCount(CAConnect& conn, unsigned int& count)
{
    return ReadThreadCount(conn, kMaxThreads, count);
}

bool CQVBaseFun::GetTaskThreadCount(CAConnect& conn, unsigned int& count)
{
    return ReadThreadCount(conn, kTaskThreads, count);
}

bool CQVBaseFun::GetKelDocServerFlag(CAConnect& conn, unsigned long& flag)
{
    flag = 0;
    const CString sql = FormatSql("SELECT Col_Data FROM Tab_Config WHERE Col_Name = '%s' AND Col_Genre = '%s' ",
                                  kDocServerFlag, kDocGenre);
    return frame::ReadFirst(conn, sql, NumberColumn(flag));
}

// ---- Settings: tests ---------------------------------------------------------------------------------------------

bool CQVBaseFun::ExistThreadInfo(CAConnect& conn, CString name, bool& exists)
{
    exists = false;
    const CString sql =
        FormatSql("SELECT Col_Data FROM Tab_Config WHERE Col_Name = '%s' AND Col_Genre = '%s' ", name, kServerGenre);
    return frame::ReadFirst(conn, sql, Found(exists));
}

bool CQVBaseFun::ExistKelDocConfig(CAConnect& conn, CString name, bool& exists)
{
    exists = false;
    const CString sql =
        FormatSql("SELECT Col_Name FROM Tab_Config WHERE Col_Name = '%s' AND Col_Genre = '%s' ", name, kDocGenre);
    return frame::ReadFirst(conn, sql, Found(exists));
}

bool CQVBaseFun::ExistKelDocServerFlag(CAConnect& conn, bool& exists)
{
    exists = false;
    const CString sql = FormatSql("SELECT Col_Data FROM Tab_Config WHERE Col_Name = '%s' AND Col_Genre = '%s' ",
                                  kDocServerFlag, kDocGenre);
    return frame::ReadFirst(conn, sql, Found(exists));
}

bool CQVBaseFun::ExistCorDisplayPic(CAConnect& conn, bool& exists)
{
    exists = false;
    const CString sql = FormatSql("SELECT Col_Data FROM Tab_Config WHERE Col_Name = '%s' AND Col_Genre = '%s'",
                                  kDisplayPicture, kServerGenre);
    return frame::ReadFirst(conn, sql, Found(exists));
}

bool CQVBaseFun::ExistTabConfigName(CAConnect& conn, CString name, CString genre, bool& exists)
{
    exists = false;
    const CString sql =
        FormatSql("SELECT Col_Name FROM Tab_Config WHERE Col_Name = '%s' AND Col_Genre = '%s' ", name, genre);
    return frame::ReadFirst(conn, sql, Found(exists));
}

// ---- Settings: texts ---------------------------------------------------------------------------------------------

bool CQVBaseFun::GetKelDocConfig(CAConnect& conn, CString name, CString& value)
{
    const CString sql =
        FormatSql("SELECT Col_Data FROM Tab_Config WHERE Col_Name = '%s' AND Col_Genre = '%s' ", name, kDocGenre);
    return frame::ReadFirst(conn, sql, Columns(value));
}

bool CQVBaseFun::GetCorDisplayPic(CAConnect& conn, CString& picture)
{
    picture = "";
    const CString sql = FormatSql("SELECT Col_Data FROM Tab_Config WHERE Col_Name = '%s' AND Col_Genre = '%s'",
                                  kDisplayPicture, kServerGenre);
    return frame::ReadFirstIgnoringClosed(conn, sql, Columns(picture));
}

bool CQVBaseFun::LoadTabConfigInfo(CAConnect& conn, CStringArray& names, CStringArray& values, CString genre)
{
    return frame::ReadEach(conn, FormatSql("SELECT Col_Name, Col_Data FROM Tab_Config WHERE Col_Genre = '%s'", genre),
                           Columns(names, values));
}

// ---- Settings: writes --------------------------------------------------------------------------------------------

bool CQVBaseFun::InsertThreadInfo(CAConnect& conn, CString name, unsigned int count)
{
    return frame::Execute(conn,
                          FormatSql("INSERT INTO Tab_Config (Col_Name, Col_Data, Col_Genre) VALUES ('%s','%s', '%s') ",
                                    name, NumberText(count), kServerGenre));
}

bool CQVBaseFun::UpdateThreadInfo(CAConnect& conn, CString name, unsigned int count)
{
    return frame::Execute(conn,
                          FormatSql("UPDATE Tab_Config SET Col_Data = '%s' WHERE Col_Name = '%s' AND Col_Genre = '%s' ",
                                    NumberText(count), name, kServerGenre));
}

bool CQVBaseFun::InsertKelDocConfig(CAConnect& conn, CString name, CString value)
{
    return frame::Execute(conn,
                          FormatSql("INSERT INTO Tab_Config (Col_Name, Col_Data, Col_Genre) VALUES ('%s','%s','%s')",
                                    name, value, kDocGenre));
}

bool CQVBaseFun::UpdateKelDocConfig(CAConnect& conn, CString name, CString value)
{
    return frame::Execute(conn,
                          FormatSql("UPDATE Tab_Config SET Col_Data = '%s' WHERE Col_Name = '%s' AND Col_Genre = '%s'",
                                    value, name, kDocGenre));
}

bool CQVBaseFun::InsertKelDocServerFlag(CAConnect& conn, unsigned long flag)
{
    // A number into the text column here, a quoted text in the update: readers take either.
    return frame::Execute(
        conn, FormatSql("INSERT INTO Tab_Config ( Col_Name, Col_Data, Col_Genre ) VALUES ( '%s', %d, '%s' )",
                        kDocServerFlag, flag, kDocGenre));
}

bool CQVBaseFun::UpdateKelDocServerFlag(CAConnect& conn, unsigned long flag)
{
    return frame::Execute(conn,
                          FormatSql("UPDATE Tab_Config SET Col_Data = '%s' WHERE Col_Name = '%s' AND Col_Genre = '%s' ",
                                    NumberText(flag), kDocServerFlag, kDocGenre));
}

bool CQVBaseFun::InsertCorDisplayPic(CAConnect& conn, CString picture)
{
    return frame::Execute(conn,
                          FormatSql("INSERT INTO Tab_Config (Col_Name, Col_Data, Col_Genre) VALUES ('%s', '%s', '%s')",
                                    kDisplayPicture, DoubleSlashes(conn, picture), kServerGenre));
}

bool CQVBaseFun::UpdateCorDisplayPic(CAConnect& conn, CString picture)
{
    return frame::Execute(conn,
                          FormatSql("UPDATE Tab_Config SET Col_Data = '%s' WHERE Col_Name = '%s' AND Col_Genre = '%s'",
                                    DoubleSlashes(conn, picture), kDisplayPicture, kServerGenre));
}

bool CQVBaseFun::UpdateUserDisplayPic(CAConnect& conn, CString picture)
{
    return frame::Execute(conn, FormatSql("UPDATE qv_User SET Col_Picture = '%s'", DoubleSlashes(conn, picture)));
}

bool CQVBaseFun::InsertTabConfigValue(CAConnect& conn, CString name, CString value, CString genre)
{
    return frame::Execute(
        conn,
        FormatSql("INSERT INTO Tab_Config (Col_Name,Col_Data,Col_Genre) VALUES ('%s','%s', '%s')", name, value, genre));
}

bool CQVBaseFun::UpdateTabConfigValue(CAConnect& conn, CString name, CString value)
{
    // No genre: every setting of the name is set, whatever it belongs to.
    return frame::Execute(conn, FormatSql("UPDATE Tab_Config SET Col_Data = '%s' WHERE Col_Name = '%s'", value, name));
}

bool CQVBaseFun::DeleteTabConfigValue(CAConnect& conn, CString name, CString genre)
{
    return frame::Execute(conn,
                          FormatSql("DELETE FROM Tab_Config WHERE Col_Name = '%s' AND Col_Genre = '%s' ", name, genre));
}
