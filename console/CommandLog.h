#pragma once

#include "console/ExitCode.h"

#include <string>
#include <string_view>

namespace console {

/// The file that --log names: a line of JSON for each command.
class CommandLog {
public:
    /// Opens the file, or makes it for its owner alone. @throws Error (failed).
    explicit CommandLog(std::string file);
    CommandLog(const CommandLog&) = delete;
    CommandLog& operator=(const CommandLog&) = delete;
    ~CommandLog();

    /// Adds a line in one piece, so that several programs may write to one file. @param changed  whether the command
    /// has changed the directory. @throws Error (failed) when it cannot be written in full.
    void Write(std::string_view command, Exit exit, bool changed);

private:
    [[noreturn]] void ThrowUnwritable(std::string_view what) const;

    std::string m_name;
    int m_file;
};

} // namespace console
