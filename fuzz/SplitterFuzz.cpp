// The statements of a file hold every line that is neither empty nor a comment, in order, up to the last one that ends.

#include "fuzz/Fuzz.h"
#include "schema/StatementSplitter.h"

#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view file = fuzz::Text(data, size);
    std::string joined;
    for (const std::string& statement : schema::SplitStatements(file)) {
        joined += statement + ";\n";
    }
    std::string lines;
    for (std::size_t begin = 0; begin < file.size();) {
        const std::size_t end = std::min(file.find('\n', begin), file.size());
        const std::string_view line = file.substr(begin, end - begin);
        begin = end + 1;
        if (!line.empty() && !line.starts_with("--")) {
            lines += std::string(line) + "\n";
        }
    }
    fuzz::Require(lines.starts_with(joined), "nothing is lost, added or exchanged");
    const std::string open = lines.substr(joined.size());
    fuzz::Require(open.starts_with("CREATE TRIGGER") || open.find(";\n") == std::string::npos,
                  "every statement that ends is there");
    return 0;
}
