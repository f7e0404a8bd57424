#pragma once

#include "console/Commands.h"
#include "management/users/Fields.h"

#include <cstddef>
#include <optional>
#include <string>

// Options and arguments that commands of several nouns declare and read alike: their words are kept in
// Arguments::fields, as written.

namespace console::words {

inline constexpr Field kName{"NAME", "Col_Name", {}, Field::Use::given, "the name as it is, not as in a path"};
inline constexpr Field kDescription{"description", "Col_Description", {}, Field::Use::given, "what it is for"};
inline constexpr Field kSortIndex{"sort_index", "Col_ItemIndex", {}, Field::Use::given, "position; lower comes first"};
inline constexpr Field kStyle{"style", "Col_Style", {}, Field::Use::given, "style number"};
inline constexpr Field kDomainId{"domain_id", "Col_DomainID", {}, Field::Use::given, "domain number"};
inline constexpr Field kCreator{"creator", "Col_Creator_Name", {}, Field::Use::given, "who made it"};

void DeclareOption(CLI::App& app, Arguments& arguments, const Field& field);
/// An option that takes a number.
void DeclareNumber(CLI::App& app, Arguments& arguments, const Field& field);
/// An argument without an option's name.
void DeclareArgument(CLI::App& app, Arguments& arguments, const Field& field, bool required = true);
void DeclareFlag(CLI::App& app, Arguments& arguments, const Field& field);
void DeclareYes(CLI::App& app, Arguments& arguments);
/// An argument of which a command takes several; its words are in Arguments::users, whatever they name.
void DeclareWords(CLI::App& app, Arguments& arguments, const char* name, const std::string& help);
/// --limit, for lists.
void DeclareLimit(CLI::App& app, Arguments& arguments);
/// As many as there can be where it was not given.
std::size_t LimitOf(const Arguments& arguments);
/// A third word of the command line, below a noun's verb: its app, which sets `chosen` to `run` when it is named.
CLI::App* AddThirdWord(CLI::App& verb, const std::string& name, const std::string& summary,
                       Exit (*&chosen)(const Context&), Exit (*run)(const Context&));

/// What was written for it.
std::optional<std::string> Given(const Arguments& arguments, const Field& field);
std::optional<int> GivenNumber(const Arguments& arguments, const Field& field);

} // namespace console::words
