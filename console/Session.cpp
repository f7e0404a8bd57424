#include "console/Session.h"

#include "console/ExitCode.h"
#include "console/Url.h"
#include "management/DatabaseError.h"
#include "management/Text.h"

#include <fmt/format.h>

#include <filesystem>
#include <string_view>
#include <system_error>

namespace console {

namespace {

[[noreturn]] void ThrowNotReady(const schema::Status& status, const Arguments& arguments)
{
    switch (status.state) {
    case schema::State::empty:
        throw Error(ErrorCode::database,
                    FillPattern("the database has no tables yet; run `{}`", InitCommand(arguments)));
    case schema::State::older:
        throw Error(ErrorCode::database,
                    FillPattern("the directory is of version {}, this program works with {}; run `{}` to upgrade it",
                                status.version, status.newest, InitCommand(arguments)));
    case schema::State::newer:
        throw Error(ErrorCode::database,
                    FillPattern("the directory is of version {}, made by a later qvadmin; this one knows {}",
                                status.version, status.newest));
    default:
        throw Error(ErrorCode::database,
                    "the database holds other tables than a directory's; check the name given with --db");
    }
}

void RequireCurrent(CAConnect& conn, const Arguments& arguments)
{
    const schema::Status status = WithDatabaseErrors(conn, [&] { return schema::Inspect(conn); });
    if (status.state != schema::State::current) {
        ThrowNotReady(status, arguments);
    }
}

} // namespace

Session::Session(const Arguments& arguments, Indexes indexes) : m_directory(m_conn)
{
    Connect(m_conn, WithoutCreating(ChooseUrl(arguments.db)), arguments);
    RequireCurrent(m_conn, arguments);
    if (indexes == Indexes::refreshed) {
        WithDatabaseErrors(m_conn, [&] { schema::RefreshIndexes(m_conn); });
    }
}

void Connect(CAConnect& conn, const std::string& url, const Arguments& arguments)
{
    std::error_code error;
    const std::optional<std::filesystem::path> file = SqliteFile(url);
    if (file && !MakesFile(url) && !std::filesystem::exists(*file, error) && !error) {
        throw Error(ErrorCode::database, FillPattern("there is no database {}; run `{}` to make it",
                                                     Visible(file->native()), InitCommand(arguments)));
    }
    try {
        conn.Open(CString(std::string_view(url)));
    } catch (const CAException& e) {
        throw Error(ErrorCode::database, ErrorFrom(conn, e).EngineLine());
    }
}

std::string InitCommand(const Arguments& arguments)
{
    if (!arguments.db) {
        return "qvadmin db init";
    }
    // To be pasted: without a password that is hidden here, and in quotes where a shell needs them.
    const std::string shown = ShownUrl(*arguments.db);
    if (shown != *arguments.db) {
        return "qvadmin --db URL db init";
    }
    return fmt::format("qvadmin --db {} db init", ShellQuoted(shown));
}

std::string_view NameOf(schema::State state)
{
    switch (state) {
    case schema::State::empty:
        return "empty";
    case schema::State::foreign:
        return "foreign";
    case schema::State::older:
        return "older";
    case schema::State::current:
        return "current";
    default:
        return "newer";
    }
}

} // namespace console
