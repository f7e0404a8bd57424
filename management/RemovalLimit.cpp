#include "management/RemovalLimit.h"

#include "management/Command.h"

#include <fmt/format.h>

namespace management {

RemovalLimit::RemovalLimit(std::string_view name, std::string text) : m_isPercent(text.ends_with('%'))
{
    if (m_isPercent) {
        text.pop_back();
    }
    m_most = static_cast<std::size_t>(
        binding::ReadNumber(name, text, m_isPercent ? Range{0, 100} : Range{0, kLimit.most}, {}));
}

bool RemovalLimit::Allows(std::size_t removed, std::size_t all) const
{
    return m_isPercent ? removed * 100 <= all * m_most : removed <= m_most;
}

std::string RemovalLimit::Text() const { return fmt::format("{}{}", m_most, m_isPercent ? "%" : ""); }

} // namespace management
