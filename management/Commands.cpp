#include "management/Command.h"

namespace management {

// The tables of the nouns; nothing else of them is known here.
namespace documents {
std::span<const Command> DocRootCommands();
std::span<const Command> FolderCommands();
} // namespace documents
namespace organisation {
std::span<const Command> GroupCommands();
std::span<const Command> ViewCommands();
} // namespace organisation
namespace plans {
std::span<const Command> PlanCommands();
std::span<const Command> DocLogCommands();
} // namespace plans

const std::vector<Command>& Commands()
{
    static const std::vector<Command> commands = [] {
        std::vector<Command> all;
        for (const std::span<const Command> noun :
             {organisation::GroupCommands(), organisation::ViewCommands(), documents::DocRootCommands(),
              documents::FolderCommands(), plans::PlanCommands(), plans::DocLogCommands()}) {
            all.insert(all.end(), noun.begin(), noun.end());
        }
        return all;
    }();
    return commands;
}

} // namespace management
