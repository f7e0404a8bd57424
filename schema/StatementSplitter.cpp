#include "schema/StatementSplitter.h"

#include <algorithm>

namespace schema {

namespace {

bool EndsStatement(std::string_view statement, std::string_view line)
{
    return line.ends_with(';') && (!statement.starts_with("CREATE TRIGGER") || line == "END;");
}

bool IsBlankOrComment(std::string_view line)
{
    const std::size_t begin = line.find_first_not_of(' ');
    return begin == std::string_view::npos || line.substr(begin).starts_with("--");
}

} // namespace

std::vector<std::string> SplitStatements(std::string_view file)
{
    std::vector<std::string> statements;
    std::string statement;
    while (!file.empty()) {
        const std::string_view line = file.substr(0, file.find('\n'));
        file.remove_prefix(std::min(file.size(), line.size() + 1));
        if (IsBlankOrComment(line)) {
            continue;
        }
        statement += line;
        if (EndsStatement(statement, line)) {
            statement.pop_back();
            statements.push_back(std::move(statement));
            statement.clear();
        } else {
            statement += '\n';
        }
    }
    return statements;
}

} // namespace schema
