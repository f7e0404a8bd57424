#pragma once

#include "console/Commands.h"
#include "console/Organisation.h"

#include <string>
#include <string_view>
#include <vector>

// What is asked before something is taken away.

namespace console {

/// ", with 2 relations, 1 right"; empty for no traces.
std::string WithTraces(const std::vector<Trace>& traces);
/// Whether somebody sits there who can be asked.
bool CanAsk(const Terminal& terminal);
/// @param question  such as "Delete the group /Main/Sales?".
/// @param nothingDone  what is said of a no.
/// @throws Refusal (needsYes) unless yes was said or --yes given.
void RequireConfirmation(const Context& context, const std::string& question,
                         std::string_view nothingDone = "nothing was deleted");
/// For what was confirmed and is looked at again, in the transaction that deletes it.
/// @throws Refusal (conflict) when it is not what was shown.
void RequireStillSo(bool isStillSo);

} // namespace console
