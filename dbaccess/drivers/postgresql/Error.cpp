#include "dbaccess/drivers/postgresql/Error.h"

#include "platform/CodePage.h"

#include <libpq-fe.h>

#include <algorithm>
#include <string>
#include <string_view>

namespace dbaccess::postgresql {

namespace {

CAException Error(std::string_view message, const char* sqlState)
{
    CString code("PostgreSQL ");
    code += sqlState;
    return CAException(platform::Utf8ToAnsi(message), code);
}

std::string_view WithoutBlanksAround(std::string_view text)
{
    constexpr std::string_view blanks = " \t\r\n";
    text.remove_prefix(std::min(text.size(), text.find_first_not_of(blanks)));
    return text.substr(0, text.find_last_not_of(blanks) + 1);
}

std::string_view FirstLine(std::string_view text) { return WithoutBlanksAround(text.substr(0, text.find('\n'))); }

// The client library writes a line for each host that it tried; one that begins with a tab goes on with the line
// before.
std::string OneLine(std::string_view text)
{
    std::string joined;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(text.size(), line.size() + 1));
        const std::string_view words = WithoutBlanksAround(line);
        if (!joined.empty() && !words.empty()) {
            joined += line.starts_with('\t') ? " " : "; ";
        }
        joined += words;
    }
    return joined;
}

} // namespace

CAException StatementError(const pg_result* result)
{
    const char* message = PQresultErrorField(result, PG_DIAG_MESSAGE_PRIMARY);
    const char* sqlState = PQresultErrorField(result, PG_DIAG_SQLSTATE);
    if (message == nullptr || sqlState == nullptr) {
        return Error(FirstLine(PQresultErrorMessage(result)), "08006");
    }
    return Error(message, sqlState);
}

CAException ConnectError(std::string_view lines) { return Error("cannot connect: " + OneLine(lines), "08001"); }

CAException LostError(const pg_conn* db) { return Error(FirstLine(PQerrorMessage(db)), "08006"); }

} // namespace dbaccess::postgresql
