#pragma once

#include "console/Arguments.h"
#include "dbaccess/CAConnect.h"
#include "management/users/Directory.h"
#include "schema/Schema.h"

#include <cstdint>

namespace console {

/// The directory that a command works on: found, open, and of this program's version.
class Session {
public:
    /// What becomes of indexes whose order is that of earlier rules.
    enum class Indexes : std::uint8_t { refreshed, leftAlone };

    /// Never makes a file. @throws Error (database) that says what to do about it.
    explicit Session(const Arguments& arguments, Indexes indexes = Indexes::refreshed);

    [[nodiscard]] management::Directory& Directory() { return m_directory; }

private:
    CAConnect m_conn;
    management::Directory m_directory;
};

/// Connects to a database whatever is in it. @throws Error (database).
void Connect(CAConnect& conn, const std::string& url, const Arguments& arguments);

/// How to run `db init` on the same database.
std::string InitCommand(const Arguments& arguments);

/// The name of a state, for people and programs.
std::string_view NameOf(schema::State state);

} // namespace console
