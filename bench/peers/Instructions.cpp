#include "bench/peers/Instructions.h"

#include <valgrind/callgrind.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string_view>

namespace bench {

void CountIn(const std::string& name, const std::function<void()>& run)
{
    CALLGRIND_ZERO_STATS;
    run();
    CALLGRIND_DUMP_STATS_AT(name.c_str());
}

std::map<std::string, double> CountInstructions(const std::string& folder, const std::string& command)
{
    if (std::system("command -v valgrind >/dev/null") != 0) {
        std::fprintf(stderr, "valgrind is not installed: no instructions are counted\n");
        return {};
    }
    const std::string counts = folder + "/counts";
    std::filesystem::create_directory(counts);
    if (std::system(("valgrind -q --tool=callgrind --callgrind-out-file=" + counts + "/part " + command).c_str()) !=
        0) {
        throw std::runtime_error("counting instructions failed");
    }
    constexpr std::string_view trigger = "desc: Trigger: Client Request: ";
    constexpr std::string_view totals = "totals: ";
    std::map<std::string, double> found;
    for (const auto& part : std::filesystem::directory_iterator(counts)) {
        std::ifstream file(part.path());
        std::string name;
        for (std::string line; std::getline(file, line);) {
            if (line.starts_with(trigger)) {
                name = line.substr(trigger.size());
            } else if (line.starts_with(totals) && !name.empty()) {
                found[name] = std::stod(line.substr(totals.size()));
            }
        }
    }
    return found;
}

} // namespace bench
