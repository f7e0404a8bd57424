#pragma once

#include <cstddef>
#include <string>
#include <string_view>

class CAConnect;

namespace management {

/// Inserts rows into a table by as few statements as the engine takes.
class RowsInsert {
public:
    /// @param conn  outlives this. @param columns  of the table, with commas between.
    RowsInsert(CAConnect& conn, std::string_view table, std::string_view columns);

    /// Adds a row, and may execute what has come together. @param append  appends the row's literals to the text that
    /// it is given, with commas between. @throws CAException.
    template <class Append>
    void Add(Append append)
    {
        m_sql += m_rows == 0 ? m_head : "), (";
        append(m_sql);
        if (++m_rows == m_most || m_sql.size() > kMostBytes) {
            Finish();
        }
    }
    /// Executes what is left. @throws CAException.
    void Finish();

private:
    static constexpr std::size_t kMostBytes = std::size_t{512} * 1024;

    CAConnect& m_conn;
    std::string m_head;
    std::size_t m_most; ///< rows of a statement
    std::string m_sql;
    std::size_t m_rows = 0; ///< in it
};

} // namespace management
