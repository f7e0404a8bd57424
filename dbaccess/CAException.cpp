#include "dbaccess/CAException.h"

#include "dbaccess/drivers/common/OneLine.h"

#include <string_view>
#include <utility>

CAException::CAException(CString message, CString code) : m_message(std::move(message)), m_code(std::move(code)) {}
CAException::CAException(const CAException&) = default;
CAException::CAException(CAException&&) noexcept = default;
CAException::~CAException() = default;

CString CAException::GetErrorEx(const char* file, int line, const char* sql) const
{
    const auto onOneLine = [](std::string_view part) {
        constexpr std::string_view breaks = "\r\n\t";
        return CString(std::string_view(dbaccess::OnOneLine(part, breaks)));
    };
    CString text;
    text.Format("%s(%d): ", file ? file : "", line);
    text += onOneLine(m_message.View());
    if (!m_code.IsEmpty()) {
        text += " [";
        text += onOneLine(m_code.View());
        text += "]";
    }
    if (sql != nullptr && *sql != '\0') {
        text += ": ";
        text += onOneLine(sql);
    }
    return text;
}
