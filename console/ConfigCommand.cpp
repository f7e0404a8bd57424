#include "console/DatabasePassword.h"
#include "console/LocalCommand.h"
#include "console/Render.h"
#include "console/Url.h"

namespace console {

namespace {

struct ShowInput {
    bool origin = false;
};

constexpr Param<ShowInput> kShowParams[] = {
    {"origin", &ShowInput::origin, Kind::flag, "also say where each value comes from"}};

constexpr Column kShowColumns[] = {{"setting"}, {"value"}, {"origin"}};

Exit Show(const LocalCall& call)
{
    const auto in = binding::ReadInput<kShowParams>(call.given);
    const Config& config = *call.arguments.config;
    Table table{{"setting", "value"}, {}};
    const auto add = [&](const std::string& name, std::string value, const std::string& origin) {
        std::vector<Value>& row = table.rows.emplace_back(MakeRow(name, std::move(value)));
        if (in.origin) {
            row.emplace_back(origin);
        }
    };
    if (in.origin) {
        table.columns.emplace_back("origin");
    }
    for (const ConfigValue& value : config.Values()) {
        add(value.name, value.name == "db" ? ShownUrl(value.value) : value.value, value.origin);
        if (value.name == "db") {
            const std::string origin = PasswordOrigin(config);
            add("password", origin.empty() ? "" : "***", origin.empty() ? "default" : origin);
        }
    }
    Render(call.arguments.format, table, call.terminal.out, {call.terminal.width, call.terminal.outHasColor});
    return Exit::done;
}

constexpr LocalCommand kConfigCommands[] = {
    {{.path = {"config", "show"},
      .summary = "the settings that hold, of files, the environment and the command line",
      .examples = {"qvadmin config show --origin", "qvadmin -p production config show -o json"},
      .columns = kShowColumns,
      .handler = {&InfosOf<kShowParams>}},
     &Show},
};

} // namespace

std::span<const LocalCommand> ConfigCommands() { return kConfigCommands; }

} // namespace console
