#include "management/Command.h"

namespace management {

// The tables of the nouns; nothing else of them is known here.
namespace documents {
std::span<const Command> DocRootCommands();
std::span<const Command> FolderCommands();
} // namespace documents
namespace organisation {
std::span<const Command> GroupCommands();
std::span<const Command> MemberCommands();
std::span<const Command> ViewCommands();
} // namespace organisation
namespace passwords {
std::span<const Command> PasswordCommands();
} // namespace passwords
namespace plans {
std::span<const Command> PlanCommands();
std::span<const Command> DocLogCommands();
} // namespace plans
namespace roles {
std::span<const Command> RoleCommands();
} // namespace roles
namespace titles {
std::span<const Command> TitleCommands();
} // namespace titles
namespace users {
std::span<const Command> UserCommands();
} // namespace users

const std::vector<Command>& Commands()
{
    static const std::vector<Command> commands = [] {
        std::vector<Command> all;
        for (const std::span<const Command> noun :
             {users::UserCommands(), passwords::PasswordCommands(), organisation::GroupCommands(),
              organisation::ViewCommands(), roles::RoleCommands(), titles::TitleCommands(), organisation::MemberCommands(),
              documents::DocRootCommands(), documents::FolderCommands(), plans::PlanCommands(), plans::DocLogCommands()}) {
            all.insert(all.end(), noun.begin(), noun.end());
        }
        return all;
    }();
    return commands;
}

} // namespace management
