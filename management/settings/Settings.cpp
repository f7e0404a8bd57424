#include "management/settings/Settings.h"

#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "management/DatabaseError.h"
#include "management/Escape.h"
#include "management/Lengths.h"
#include "management/Query.h"
#include "management/passwords/Passwords.h"
#include "platform/CodePage.h"

#include <fmt/format.h>

#include <algorithm>
#include <tuple>

namespace management {

namespace {

constexpr const char* kMaxThreads = "maxThreads";
constexpr const char* kTaskThreads = "MastTaskThreads"; // spelled so in the rows that servers write
constexpr std::string_view kEncryptionKey = "EncryptKey";

/// Reads a number that the module gives as one of its own types.
template <class Number>
std::uint32_t Read(CAConnect& conn, bool (*operation)(CAConnect&, Number&))
{
    Number number = 0;
    Run(conn, [&] { return operation(conn, number); });
    return static_cast<std::uint32_t>(number);
}

std::vector<Setting> Select(CAConnect& conn, const std::string& condition)
{
    const std::string sql = "SELECT Col_Genre, Col_Name, Col_Data FROM Tab_Config" + condition;
    std::vector<Setting> settings;
    WithDatabaseErrors(conn, [&] {
        CARecordset rs;
        if (!rs.Open(sql.c_str(), &conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable)) {
            throw CAException("the connection is not open");
        }
        for (rs.MoveFirst(); rs.IsEOF() == 0; rs.MoveNext()) {
            settings.push_back(
                {Text(rs.GetValueToStr(1, true)), Text(rs.GetValueToStr(2, true)), Text(rs.GetValueToStr(3, true))});
        }
    });
    return settings;
}

std::vector<Setting> Sorted(std::vector<Setting> settings)
{
    std::ranges::stable_sort(settings, {},
                             [](const Setting& setting) { return std::tie(setting.genre, setting.name); });
    return settings;
}

} // namespace

// ---- Any setting ----------------------------------------------------------------------------------------------------

std::vector<Setting> Settings::All() { return Sorted(Select(m_conn, "")); }

std::vector<Setting> Settings::OfGenre(std::string_view genre)
{
    if (genre.empty()) {
        return Sorted(Select(m_conn, " WHERE Col_Genre = '' OR Col_Genre IS NULL"));
    }
    CStringArray names;
    CStringArray values;
    Run(m_conn, [&] { return CQVBaseFun::LoadTabConfigInfo(m_conn, names, values, EscapeLiteral(m_conn, genre)); });
    std::vector<Setting> settings;
    settings.reserve(static_cast<std::size_t>(names.GetSize()));
    for (int i = 0; i < names.GetSize(); ++i) {
        settings.push_back({std::string(genre), Text(names[i]), Text(values[i])});
    }
    return Sorted(std::move(settings));
}

std::vector<Setting> Settings::Named(std::string_view name)
{
    return Sorted(Select(m_conn, fmt::format(" WHERE Col_Name = '{}'", EscapeLiteral(m_conn, name).View())));
}

void Settings::Insert(std::string_view name, std::string_view value, std::string_view genre)
{
    RequireFits(m_conn, "Tab_Config",
                {{"the name", "Col_Name", name}, {"the value", "Col_Data", value}, {"the genre", "Col_Genre", genre}});
    RequireFits(m_conn, "Tab_Config",
                {{"the name", "Col_Name", name}, {"the value", "Col_Data", value}, {"the genre", "Col_Genre", genre}});
    Run(m_conn, [&] {
        return CQVBaseFun::InsertTabConfigValue(m_conn, EscapeLiteral(m_conn, name), EscapeLiteral(m_conn, value),
                                                EscapeLiteral(m_conn, genre));
    });
}

void Settings::UpdateAll(std::string_view name, std::string_view value)
{
    RequireFits(m_conn, "Tab_Config", {{"the value", "Col_Data", value}});
    Run(m_conn, [&] {
        return CQVBaseFun::UpdateTabConfigValue(m_conn, EscapeLiteral(m_conn, name), EscapeLiteral(m_conn, value));
    });
}

void Settings::Delete(std::string_view name, std::string_view genre)
{
    Run(m_conn, [&] {
        return CQVBaseFun::DeleteTabConfigValue(m_conn, EscapeLiteral(m_conn, name), EscapeLiteral(m_conn, genre));
    });
    if (genre.empty()) {
        const std::string sql = fmt::format("DELETE FROM Tab_Config WHERE Col_Name = '{}' AND Col_Genre IS NULL",
                                            EscapeLiteral(m_conn, name).View());
        WithDatabaseErrors(m_conn, [&] { m_conn.Execute(sql.c_str()); });
    }
}

// ---- The server's own -----------------------------------------------------------------------------------------------

std::uint32_t Settings::MaxThreads() { return Read(m_conn, &CQVBaseFun::GetMaxThreadCount); }

std::uint32_t Settings::TaskThreads() { return Read(m_conn, &CQVBaseFun::GetTaskThreadCount); }

std::uint32_t Settings::ServerFlag() { return Read(m_conn, &CQVBaseFun::GetKelServerConfigInfo); }

std::uint32_t Settings::DocServerFlag() { return Read(m_conn, &CQVBaseFun::GetKelDocServerFlag); }

void Settings::SetMaxThreads(std::uint32_t count) { SetThreads(kMaxThreads, count); }

void Settings::SetTaskThreads(std::uint32_t count) { SetThreads(kTaskThreads, count); }

void Settings::SetThreads(const char* name, std::uint32_t count)
{
    bool exists = false;
    Run(m_conn, [&] {
        return CQVBaseFun::ExistThreadInfo(m_conn, name, exists) &&
               (exists ? CQVBaseFun::UpdateThreadInfo(m_conn, name, count)
                       : CQVBaseFun::InsertThreadInfo(m_conn, name, count));
    });
}

void Settings::SetDocServerFlag(std::uint32_t flag)
{
    bool exists = false;
    Run(m_conn, [&] {
        return CQVBaseFun::ExistKelDocServerFlag(m_conn, exists) &&
               (exists ? CQVBaseFun::UpdateKelDocServerFlag(m_conn, flag)
                       : CQVBaseFun::InsertKelDocServerFlag(m_conn, flag));
    });
}

std::string Settings::Picture()
{
    CString picture;
    Run(m_conn, [&] { return CQVBaseFun::GetCorDisplayPic(m_conn, picture); });
    return Text(picture);
}

void Settings::SetPicture(std::string_view picture)
{
    const CString quoted = EscapeQuotes(m_conn, picture);
    bool exists = false;
    Run(m_conn, [&] {
        return CQVBaseFun::ExistCorDisplayPic(m_conn, exists) &&
               (exists ? CQVBaseFun::UpdateCorDisplayPic(m_conn, quoted)
                       : CQVBaseFun::InsertCorDisplayPic(m_conn, quoted));
    });
}

void Settings::SetUsersPicture(std::string_view picture)
{
    RequireFits(m_conn, "qv_User", {{"the picture", "Col_Picture", picture}});
    Run(m_conn, [&] { return CQVBaseFun::UpdateUserDisplayPic(m_conn, EscapeQuotes(m_conn, picture)); });
}

// ---- The encryption key ---------------------------------------------------------------------------------------------

bool Settings::IsKey(std::string_view name)
{
    // Engines that do not tell case take any spelling for it.
    return platform::UpperUtf8(name) == platform::UpperUtf8(kEncryptionKey);
}

Secret Settings::EncryptionKey()
{
    CString key;
    Run(m_conn, [&] { return CQVBaseFun::GetEncryptKey(m_conn, key); });
    return Secret(key.View());
}

void Settings::SetEncryptionKey(const Secret& key)
{
    CheckSecret(key, "key");
    const std::vector<Setting> present = Named(kEncryptionKey);
    if (present.size() > 1) {
        throw Error(ErrorCode::conflict,
                    FillPattern("there are {} settings {}, of which readers take any; delete them with `qvadmin "
                                "setting delete {} --genre ...` first",
                                present.size(), kEncryptionKey, kEncryptionKey));
    }
    const CString escaped = EscapeLiteral(m_conn, key.View());
    if (present.size() == 1 && present.front().value.empty()) {
        // The module would add a second row beside this one.
        const std::string sql =
            fmt::format("UPDATE Tab_Config SET Col_Data = '{}' WHERE Col_Name = '{}'", escaped.View(), kEncryptionKey);
        WithDatabaseErrors(m_conn, [&] { m_conn.Execute(sql.c_str()); });
    } else {
        Run(m_conn, [&] { return CQVBaseFun::SetEncryptKey(m_conn, escaped); });
    }
    if (EncryptionKey().View() != key.View()) {
        throw Error(ErrorCode::failed, "the key does not come back from the database as given; nothing was changed");
    }
}

} // namespace management
