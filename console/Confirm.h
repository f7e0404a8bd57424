#pragma once

#include "console/Commands.h"
#include "management/References.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// What is asked before something is taken away.

namespace console {

/// Whether somebody sits there who can be asked.
bool CanAsk(const Terminal& terminal);
/// Asks for a yes, or, where more than 20 things are removed, for their number.
/// @param question  such as "Delete the group /Main/Sales?".
/// @param removed  how many things are removed, with all that goes along.
/// @param nothingDone  what is said of a no.
/// @throws Error (needsYes) unless yes was said or --yes given.
void RequireConfirmation(const Context& context, const std::string& question, std::size_t removed,
                         std::string_view nothingDone = "nothing was deleted");
/// @throws Error (conflict) always.
[[noreturn]] void ThrowChanged(std::string_view nothingDone);

/// To be called in the transaction that does what was confirmed: the answer may have taken a while.
/// @param shown, present  what was shown and what would be shown now, both read in the same way: the texts themselves,
/// or the rows that they count. @param nothingDone  as for RequireConfirmation.
/// @throws Error (conflict) when they differ.
template <class Shown>
void ThrowIfChanged(const Shown& shown, const Shown& present, std::string_view nothingDone = "nothing was deleted")
{
    if (!(shown == present)) {
        ThrowChanged(nothingDone);
    }
}

} // namespace console
