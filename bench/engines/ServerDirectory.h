#pragma once

#include <cstdint>
#include <string>

namespace bench {

/// The users of a directory on a server are those that People makes from it.
inline constexpr std::uint64_t kServerUsers = 20240229;

/// Makes a database with a directory of so many users; it goes with the program.
/// @param engine  "postgresql" or "mariadb". @return its URL. @throws std::runtime_error, CAException.
std::string MakeServerDirectory(const std::string& engine, int users);

/// The database's name in a URL that MakeServerDirectory has given.
std::string DatabaseOf(const std::string& url);

} // namespace bench
