#pragma once

#include "schema/Schema.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace schema {

/// What an engine does in the steps from nothing to the newest version, by the files of its statements.
struct StepTexts {
    std::string_view tables;       ///< which every engine has
    std::string_view indexes = {}; ///< nothing where they come with their tables
    std::string_view audit;        ///< those of the record of changes
    std::string_view console;      ///< those of the consoles themselves
    /// The step "names", and what follows the later ones, see Step::furtherStatements. Empty where no engine's rules
    /// for names have to be followed.
    std::function<std::vector<std::string>(CAConnect& conn)> namesOf = {};
};

/// The steps, of which every engine has as many.
std::vector<Step> StepsOf(const StepTexts& texts);

} // namespace schema
