#pragma once

#include "console/Commands.h"
#include "console/Organisation.h"

#include <optional>
#include <string>

// What commands on groups and views have in common: their words are kept in Arguments::fields, as written.

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

/// What was written for it.
std::optional<std::string> Given(const Arguments& arguments, const Field& field);
std::optional<int> GivenNumber(const Arguments& arguments, const Field& field);

} // namespace console::words

namespace console {

/// ", with 2 relations, 1 right"; empty for no traces.
std::string WithTraces(const std::vector<Trace>& traces);
/// @param question  such as "Delete the group /Main/Sales?". @throws Refusal (needsYes) unless yes was said or --yes
/// given.
void RequireConfirmation(const Context& context, const std::string& question);
/// For what was confirmed and is looked at again, in the transaction that deletes it.
/// @throws Refusal (conflict) when it is not what was shown.
void RequireStillSo(bool isStillSo);

} // namespace console

namespace console::group {

void DeclareTree(CLI::App& app, Arguments& arguments);
void DeclareList(CLI::App& app, Arguments& arguments);
void DeclareOne(CLI::App& app, Arguments& arguments);
void DeclareCreate(CLI::App& app, Arguments& arguments);
void DeclareSet(CLI::App& app, Arguments& arguments);
void DeclareRename(CLI::App& app, Arguments& arguments);
void DeclareMove(CLI::App& app, Arguments& arguments);
void DeclareStyle(CLI::App& app, Arguments& arguments);
void DeclareDelete(CLI::App& app, Arguments& arguments);
void DeclareFind(CLI::App& app, Arguments& arguments);

Exit Tree(const Context& context);
Exit List(const Context& context);
Exit Show(const Context& context);
Exit Create(const Context& context);
Exit Set(const Context& context);
Exit Rename(const Context& context);
Exit Move(const Context& context);
Exit Style(const Context& context);
Exit Delete(const Context& context);
Exit Find(const Context& context);

} // namespace console::group
