#include "console/Help.h"

#include "console/Translation.h"

#include <CLI/CLI.hpp>

#include <string>
#include <string_view>
#include <utility>

namespace console {

namespace {

constexpr std::size_t kColumn = 34;

class HelpFormatter final : public CLI::Formatter {
public:
    HelpFormatter()
    {
        column_width(kColumn);
        label("Positionals", Translated("Arguments"));
    }

    std::string make_usage(const CLI::App* app, std::string name) const override
    {
        std::string usage = "\n" + Translated("Usage:") + " " + std::move(name) + " [" + Translated("OPTIONS") + "]";
        const bool hasSubcommands = !app->get_subcommands([](const CLI::App*) { return true; }).empty();
        if (hasSubcommands) {
            usage += app->get_parent() == nullptr ? " " + Translated("NOUN VERB ...") : " " + Translated("VERB ...");
        }
        bool isAfterList = false;
        for (const CLI::Option* argument :
             app->get_options([](const CLI::Option* option) { return option->get_positional(); })) {
            const bool isList = argument->get_expected_max() > 1;
            const std::string shown = argument->get_name(true) + (isList ? "..." : "");
            // Names of a list can come from elsewhere too, and are needed all the same; the list takes the word after
            // it, which is given to that argument later.
            const bool isNeeded = argument->get_required() || isList || isAfterList;
            isAfterList = isAfterList || isList;
            usage += isNeeded ? " " + shown : " [" + shown + "]";
        }
        return usage + "\n";
    }

    [[nodiscard]] std::string make_group(std::string group, bool isPositional,
                                         std::vector<const CLI::Option*> options) const override
    {
        // What CLI11 calls the options that have no group.
        return CLI::Formatter::make_group(group == "Options" ? Translated("Options") : std::move(group), isPositional,
                                          std::move(options));
    }

    // CLI11 marks the form that turns a flag off with its value.
    std::string make_option_name(const CLI::Option* option, bool isPositional) const override
    {
        constexpr std::string_view kMark = "{false}";
        std::string name = CLI::Formatter::make_option_name(option, isPositional);
        const std::size_t mark = name.find(kMark);
        return mark == std::string::npos ? name : name.erase(mark, kMark.size());
    }

    std::string make_option_opts(const CLI::Option* option) const override
    {
        return option->get_type_size() == 0 || option->get_type_name().empty() ? "" : " " + option->get_type_name();
    }
};

} // namespace

std::shared_ptr<CLI::FormatterBase> MakeHelpFormatter() { return std::make_shared<HelpFormatter>(); }

} // namespace console
