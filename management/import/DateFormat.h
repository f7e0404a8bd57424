#pragma once

#include "management/users/Fields.h"

#include <string>

namespace management {

/// Reads dates of a form such as DD.MM.YYYY.
class DateFormat {
public:
    /// @param form  empty for YYYY-MM-DD. @throws Error (invalid) unless it has a day, a month and a year.
    explicit DateFormat(std::string form);

    /// The date as ParseValue takes it. A day and a month may have one digit. @throws Error (invalid) for another form
    /// and a day that there is not.
    [[nodiscard]] std::string Converted(const Field& field, const std::string& text) const;

private:
    std::string m_form;
};

} // namespace management
