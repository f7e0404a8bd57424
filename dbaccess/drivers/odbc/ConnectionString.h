#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace dbaccess::odbc {

/// An ODBC connection string, "KEYWORD=VALUE;KEYWORD={VALUE};...", in UTF-8. Keywords are the same in any case.
class ConnectionString {
public:
    struct Attribute {
        std::string keyword;
        std::string value; // without its braces
    };

    explicit ConnectionString(std::string text);

    [[nodiscard]] const std::string& Text() const noexcept { return m_text; }
    /// Whether the text is a list of keywords with values.
    [[nodiscard]] bool IsWellFormed() const noexcept { return m_wellFormed; }
    [[nodiscard]] const std::vector<Attribute>& Attributes() const noexcept { return m_attributes; }
    /// A keyword's first value, without its braces; empty without one.
    [[nodiscard]] std::string Value(std::string_view keyword) const;
    [[nodiscard]] bool Has(std::string_view keyword) const;
    /// Adds a keyword, with braces around its value where it needs them, as the driver reads it that the string names.
    void Add(std::string_view keyword, std::string_view value);

private:
    [[nodiscard]] const Attribute* Find(std::string_view keyword) const;
    void Read();

    std::string m_text;
    std::vector<Attribute> m_attributes;
    bool m_wellFormed = true;
};

/// Adds what an ODBC driver needs in order to work as this library's drivers do: texts in UTF-8, rows one by one.
/// Nothing that is there already is changed.
/// @param driver  the driver by its registered name or its file, as far as it is known.
/// @return whether the driver is one that something is known of.
bool AddSettings(ConnectionString& string, std::string_view driver);

} // namespace dbaccess::odbc
