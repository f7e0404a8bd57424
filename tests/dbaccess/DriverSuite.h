#pragma once

#include <functional>
#include <ostream>
#include <string>

/// What an engine may do differently, and where to find one: the suite asks this, never the engine's kind.
struct Quirks {
    std::string name;
    /// A URL of an empty database; each call gives a new one.
    std::function<std::string()> freshUrl;
    /// The form of an error that only this engine's code shows.
    std::string missingTableCode;
    /// The literal of midnight of 7 May 2013.
    std::string dateLiteral;
};

/// The URL of a new, empty database over ODBC. @param engine  "sqlite", "postgresql" or "mariadb".
std::string FreshOdbcUrl(const std::string& engine);

inline std::ostream& operator<<(std::ostream& out, const Quirks& quirks) { return out << quirks.name; }
