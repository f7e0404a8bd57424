#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace management {

/// How many of some things may go: 5 of 100 unless another limit is given.
class RemovalLimit {
public:
    RemovalLimit() = default;
    /// @param name  of the parameter. @param text  such as 20 or 5%. @throws Error (invalid).
    RemovalLimit(std::string_view name, std::string text);

    [[nodiscard]] bool Allows(std::size_t removed, std::size_t all) const;
    /// As it may be given.
    [[nodiscard]] std::string Text() const;

private:
    std::size_t m_most = 5;
    bool m_isPercent = true;
};

} // namespace management
