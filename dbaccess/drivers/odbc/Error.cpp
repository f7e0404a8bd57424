#include "dbaccess/drivers/odbc/Error.h"

#include "dbaccess/drivers/common/OneLine.h"
#include "dbaccess/drivers/odbc/Odbc.h"
#include "dbaccess/drivers/odbc/Text.h"
#include "platform/CodePage.h"

#include <algorithm>
#include <array>

namespace dbaccess::odbc {

namespace {

// "[unixODBC][Driver Manager]Message": the source precedes the message.
std::string_view WithoutNames(std::string_view message)
{
    for (;;) {
        message.remove_prefix(std::min(message.size(), message.find_first_not_of(kBlanks)));
        const std::size_t end = message.starts_with('[') ? message.find(']') : std::string_view::npos;
        if (end == std::string_view::npos) {
            return message;
        }
        message.remove_prefix(end + 1);
    }
}

// PostgreSQL's driver adds what it was doing, such as "Error while executing the query".
std::string_view Trimmed(std::string_view message)
{
    message = WithoutNames(message);
    message = message.substr(0, message.rfind(";\nError while "));
    return message.substr(0, message.find_last_not_of(kBlanks) + 1);
}

void Join(std::string& message, std::string_view more)
{
    if (!more.empty() && message.find(more) == std::string::npos) {
        message += message.empty() ? "" : "; ";
        message += more;
    }
}

} // namespace

CAException Failure::Exception(std::string_view what) const
{
    std::string text(what);
    text += what.empty() ? "" : ": ";
    text += message.empty() ? "the ODBC driver gives no reason" : message;
    std::string code = "ODBC";
    if (!sqlState.empty()) {
        code += " " + sqlState;
    }
    if (number != 0) {
        code += " " + std::to_string(number);
    }
    return CAException(platform::Utf8ToAnsi(text), CString(std::string_view(code)));
}

Failure LastFailure(short handleType, void* handle)
{
    Failure failure;
    std::array<SQLCHAR, SQL_SQLSTATE_SIZE + 1> state{};
    std::array<SQLCHAR, SQL_MAX_MESSAGE_LENGTH * 8> text{};
    SQLINTEGER number = 0;
    SQLSMALLINT length = 0;
    for (SQLSMALLINT record = 1;
         SQL_SUCCEEDED(SQLGetDiagRec(handleType, handle, record, state.data(), &number, text.data(),
                                     static_cast<SQLSMALLINT>(text.size()), &length));
         ++record) {
        if (record == 1) {
            failure.sqlState = reinterpret_cast<const char*>(state.data());
            failure.number = number;
        }
        // Drivers break lines in their messages, which are part of a sentence here.
        Join(failure.message, OnOneLine(Trimmed(reinterpret_cast<const char*>(text.data())), kBlanks));
    }
    return failure;
}

} // namespace dbaccess::odbc
