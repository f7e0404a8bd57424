#pragma once

#include "management/Call.h"
#include "management/JsonLine.h"

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace management {

struct Noun;

/// The first line of an exported directory as a whole, without its end.
inline constexpr std::string_view kExportHead = R"({"format":"qvadmin directory","version":1})";

struct ExportOptions {
    std::vector<std::string> nouns;       ///< plurals of Nouns(); none: all
    std::optional<std::string> in;        ///< a group or view: it, what is below, the people there and what is theirs
    bool withPasswords = false;           ///< as they are stored, and the encryption key
    std::optional<std::string> base = {}; ///< of distinguished names, such as dc=example,dc=org
    bool atOneMoment = true;              ///< false in a transaction of the caller's
};

struct ExportReport {
    long lines = 0;
    long leftOut = 0; ///< rows that name an item which is gone
    std::chrono::steady_clock::time_point begin = std::chrono::steady_clock::now();
};

/// The first line, without its end: what a part is a part of is said in it. @throws as ExportDirectory.
std::string ExportHead(CAConnect& conn, const ExportOptions& options);

/// Gives the lines of an exported directory after the first one, without their ends, as the directory is at one moment.
/// Rows come in the order in which they were added; what has no id, in the order of its items and by bytes. Holds no
/// more than the items that are not people. The front end is told the progress, and stops it between rows.
/// @return false when it was stopped. @throws Error (invalid, notFound) for the options. @throws DatabaseError.
bool ExportDirectory(Call& call, const ExportOptions& options, const std::function<void(const std::string&)>& take,
                     ExportReport& report);

/// Gives the lines of ExportDirectory as objects: members in their order, the noun first. @return, @throws as
/// ExportDirectory.
bool ExportLines(Call& call, const ExportOptions& options, const std::function<void(const Noun&, JsonObject)>& take,
                 ExportReport& report);

/// Gives all people to the front end: the columns that an import takes, and rows by id, with departments as paths.
/// @return false when it was stopped. @throws as ExportDirectory.
bool ExportPeople(Call& call, const ExportOptions& options, ExportReport& report);

/// Gives the entries of a file of the LDAP Data Interchange Format after its first line, `version: 1`: views and groups
/// as organizational units, people in that of their department, and roles with their members as groups of names.
/// @return false when it was stopped. @throws as ExportDirectory.
bool ExportLdif(Call& call, const ExportOptions& options, const std::function<void(const std::string&)>& take,
                ExportReport& report);

} // namespace management
