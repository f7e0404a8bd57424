#include "dbaccess/CAException.h"

#include <string>
#include <string_view>
#include <utility>

CAException::CAException(CString message, CString code) : m_message(std::move(message)), m_code(std::move(code)) {}
CAException::CAException(const CAException&) = default;
CAException::CAException(CAException&&) noexcept = default;
CAException::~CAException() = default;

namespace {

void AppendOnOneLine(CString& line, std::string_view text)
{
    std::string flat;
    flat.reserve(text.size());
    for (const char ch : text) {
        const bool isBreak = ch == '\r' || ch == '\n' || ch == '\t';
        if (!isBreak) {
            flat += ch;
        } else if (!flat.empty() && flat.back() != ' ') {
            flat += ' ';
        }
    }
    line += flat;
}

} // namespace

CString CAException::GetErrorEx(const char* file, int line, const char* sql) const
{
    CString text;
    text.Format("%s(%d): ", file ? file : "", line);
    AppendOnOneLine(text, m_message.View());
    if (!m_code.IsEmpty()) {
        text += " [";
        AppendOnOneLine(text, m_code.View());
        text += "]";
    }
    if (sql != nullptr && *sql != '\0') {
        text += ": ";
        AppendOnOneLine(text, sql);
    }
    return text;
}
