#include "management/Command.h"

namespace management {

// The tables of the nouns; nothing else of them is known here.
namespace addins {
std::span<const Command> AddInCommands();
std::span<const Command> PackageCommands();
} // namespace addins
namespace board {
std::span<const Command> BoardCommands();
} // namespace board
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
std::span<const Command> ObjectRightCommands();
} // namespace rights
namespace settings {
std::span<const Command> SettingCommands();
} // namespace settings

const std::vector<Command>& Commands()
{
    static const std::vector<Command> commands = [] {
        std::vector<Command> all;
        for (const std::span<const Command> noun :
             {rights::RightCommands(), rights::ExplainCommands(), rights::ObjectRightCommands(), plans::PlanCommands(),
              plans::DocLogCommands(), settings::SettingCommands(), messages::MessageCommands(),
              messages::LoginLogCommands(), addins::AddInCommands(), addins::PackageCommands(),
              board::BoardCommands()}) {
            all.insert(all.end(), noun.begin(), noun.end());
        }
        return all;
    }();
    return commands;
}

} // namespace management
