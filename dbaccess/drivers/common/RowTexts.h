#pragma once

#include "dbaccess/Driver.h"
#include "platform/CString.h"
#include "platform/CodePage.h"

#include <cstddef>
#include <string_view>
#include <vector>

namespace dbaccess {

/// The texts of a cursor, which an engine gives in UTF-8, in the ANSI code page. Nothing is copied where that is UTF-8.
class RowTexts {
public:
    [[nodiscard]] bool Converts() const { return m_converts; }
    /// Before the texts of a row are asked for: how many columns it has.
    void SetColumns(int count)
    {
        if (m_converts) {
            m_texts.resize(static_cast<std::size_t>(count));
        }
    }
    /// How many columns a row has, and their names. @param nameOf  gives the name of a column, in UTF-8.
    template <class NameOf>
    void SetColumns(int count, NameOf nameOf)
    {
        SetColumns(count);
        m_names.clear();
        for (int column = 0; m_converts && column < count; ++column) {
            m_names.push_back(platform::Utf8ToAnsi(nameOf(column)));
        }
    }
    /// The name of a column; only where Converts().
    [[nodiscard]] std::string_view Name(int column) const { return m_names[static_cast<std::size_t>(column)].View(); }
    /// A text of the current row. Its bytes last until the next text of this column is asked for.
    [[nodiscard]] Field Text(int column, const char* bytes, std::size_t length)
    {
        if (!m_converts) {
            return Field::Text(bytes, length);
        }
        CString& text = m_texts[static_cast<std::size_t>(column)];
        text = platform::Utf8ToAnsi({bytes, length});
        return Field::Text(text.GetString(), text.View().size());
    }

private:
    bool m_converts = !platform::AnsiIsUtf8();
    std::vector<CString> m_names;
    std::vector<CString> m_texts; // of the current row
};

} // namespace dbaccess
