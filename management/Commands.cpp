#include "management/Command.h"

namespace management {

// The tables of the nouns; nothing else of them is known here.
// NOLINTBEGIN(readability-redundant-declaration): the files may be compiled together with this one.
namespace addins {
std::span<const Command> AddInCommands();
std::span<const Command> PackageCommands();
} // namespace addins
namespace audit {
std::span<const Command> AuditCommands();
} // namespace audit
namespace board {
std::span<const Command> BoardCommands();
} // namespace board
namespace check {
std::span<const Command> CheckCommands();
} // namespace check
namespace documents {
std::span<const Command> DocRootCommands();
std::span<const Command> FolderCommands();
} // namespace documents
namespace exchange {
std::span<const Command> ApplyCommands();
} // namespace exchange
namespace organisation {
std::span<const Command> GroupCommands();
std::span<const Command> MemberCommands();
std::span<const Command> UserMoveCommands();
std::span<const Command> ViewCommands();
} // namespace organisation
namespace passwords {
std::span<const Command> PasswordCommands();
} // namespace passwords
namespace messages {
std::span<const Command> MessageCommands();
std::span<const Command> LoginLogCommands();
} // namespace messages
namespace plans {
std::span<const Command> PlanCommands();
std::span<const Command> DocLogCommands();
} // namespace plans
namespace rights {
std::span<const Command> RightCommands();
std::span<const Command> ExplainCommands();
std::span<const Command> RightDiffCommands();
std::span<const Command> RightEditCommands();
std::span<const Command> RightHolderCommands();
std::span<const Command> ObjectRightCommands();
} // namespace rights
namespace roles {
std::span<const Command> RoleCommands();
} // namespace roles
namespace settings {
std::span<const Command> SettingCommands();
} // namespace settings
namespace titles {
std::span<const Command> TitleCommands();
} // namespace titles
namespace users {
std::span<const Command> UserCommands();
} // namespace users
namespace webconsole {
std::span<const Command> ConsoleCommands();
} // namespace webconsole
// NOLINTEND(readability-redundant-declaration)

const std::vector<Command>& Commands()
{
    static const std::vector<Command> commands = [] {
        std::vector<Command> all;
        for (const std::span<const Command> noun :
             {users::UserCommands(),         passwords::PasswordCommands(),  organisation::UserMoveCommands(),
              organisation::GroupCommands(), organisation::ViewCommands(),   roles::RoleCommands(),
              titles::TitleCommands(),       organisation::MemberCommands(), rights::RightCommands(),
              rights::ExplainCommands(),     rights::RightHolderCommands(),  rights::RightDiffCommands(),
              rights::RightEditCommands(),   rights::ObjectRightCommands(),  documents::DocRootCommands(),
              documents::FolderCommands(),   plans::PlanCommands(),          plans::DocLogCommands(),
              settings::SettingCommands(),   messages::MessageCommands(),    messages::LoginLogCommands(),
              addins::AddInCommands(),       addins::PackageCommands(),      board::BoardCommands(),
              audit::AuditCommands(),        webconsole::ConsoleCommands(),  check::CheckCommands(),
              exchange::ApplyCommands()}) {
            all.insert(all.end(), noun.begin(), noun.end());
        }
        return all;
    }();
    return commands;
}

} // namespace management
