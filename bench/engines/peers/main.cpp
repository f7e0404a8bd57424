#include "bench/Cases.h"
#include "bench/CommandLine.h"
#include "bench/People.h"
#include "bench/Report.h"
#include "bench/TemporaryFolder.h"
#include "bench/engines/ServerDirectory.h"
#include "bench/engines/peers/ServerPeer.h"
#include "bench/peers/Instructions.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

using namespace bench;

namespace {

constexpr int kNewUsers = 1'000;
constexpr int kOneNameIn = 7;
constexpr std::string_view kCount = "--count=";

struct Side {
    const char* name;
    std::unique_ptr<ServerPeer> (*make)(const ServerPeerData& data);
};

struct Engine {
    const char* name;
    const char* title;
    double findTarget;
    double saveTarget;
    std::vector<Side> sides;
};

const std::vector<Engine> kEngines = {{"postgresql",
                                       "PostgreSQL",
                                       0.65,
                                       0.50,
                                       {{"text", &PostgresqlTextPeer},
                                        {"quorvel", &QuorvelServerPeer},
                                        {"kept", &PostgresqlKeptPeer},
                                        {"soci", &SociServerPeer}}},
                                      {"mariadb",
                                       "MariaDB",
                                       1.05,
                                       0.55,
                                       {{"text", &MariadbTextPeer},
                                        {"quorvel", &QuorvelServerPeer},
                                        {"kept", &MariadbKeptPeer},
                                        {"soci", &SociServerPeer}}}};

struct Work {
    const char* title;
    const char* name;
    double Engine::* target; // nullptr: none
    int counted;             // calls whose instructions are counted
    void (*run)(ServerPeer& peer, std::size_t call);
};

const std::vector<Work> kWorks = {
    {"user id by login name", "lookup", &Engine::findTarget, 1000,
     [](ServerPeer& peer, std::size_t call) { peer.FindUser(call); }},
    {"1,000 users added", "save", &Engine::saveTarget, 1,
     [](ServerPeer& peer, std::size_t /*call*/) { peer.SaveUsers(); }},
    {"10^4 users, 3 arrays", "three", nullptr, 1, [](ServerPeer& peer, std::size_t /*call*/) { peer.ListThree(); }},
    {"10^4 users, 9 arrays", "nine", nullptr, 1, [](ServerPeer& peer, std::size_t /*call*/) { peer.ListNine(); }},
};

ServerPeerData DataOf(const std::string& engine, const std::string& database)
{
    ServerPeerData data{engine, database, {}, {}};
    People users(kServerUsers);
    for (int i = 0; i < ServerPeerData::kUsers; ++i) {
        const std::string name = users.Next().loginName;
        if (i % kOneNameIn == 0) {
            data.loginNames.push_back(name);
        }
    }
    for (std::size_t i = data.loginNames.size(); i > 1; --i) {
        std::swap(data.loginNames[i - 1], data.loginNames[users.Below(static_cast<unsigned>(i))]);
    }
    People others(1);
    for (int i = 0; i < kNewUsers; ++i) {
        data.newUsers.push_back(others.Next());
    }
    return data;
}

std::string WorkOn(const Engine& engine, const Work& work) { return std::string(engine.name) + "/" + work.name; }

std::string NameOf(const Engine& engine, const Work& work, const Side& side)
{
    return WorkOn(engine, work) + "/" + side.name;
}

/// In the process that CountInstructions starts.
void Count(const Engine& engine, const std::string& database)
{
    const ServerPeerData data = DataOf(engine.name, database);
    for (const Side& side : engine.sides) {
        const std::unique_ptr<ServerPeer> peer = side.make(data);
        for (const Work& work : kWorks) {
            // What a connection does but once is not counted.
            work.run(*peer, 0);
            work.run(*peer, 1);
            CountIn(NameOf(engine, work, side), [&] {
                for (int call = 2; call < work.counted + 2; ++call) {
                    work.run(*peer, static_cast<std::size_t>(call));
                }
            });
        }
    }
}

/// @param what  ENGINE/DATABASE.
void Count(std::string_view what)
{
    const std::size_t slash = what.find('/');
    for (const Engine& engine : kEngines) {
        if (engine.name == what.substr(0, slash)) {
            Count(engine, std::string(what.substr(slash + 1)));
        }
    }
}

void CountAll(const Engine& engine, const std::string& database, PeerTable& table)
{
    const TemporaryFolder folder;
    const std::string self = std::filesystem::read_symlink("/proc/self/exe").string();
    for (const auto& [name, count] :
         CountInstructions(folder.File("."), fmt::format("{} {}{}/{}", self, kCount, engine.name, database))) {
        table.instructions[name] = count;
    }
    for (const Work& work : kWorks) {
        table.works.push_back({std::string(engine.title) + ": " + work.title, WorkOn(engine, work),
                               work.target == nullptr ? 0 : engine.*work.target});
        for (const Side& side : engine.sides) {
            const auto count = table.instructions.find(NameOf(engine, work, side));
            if (count != table.instructions.end()) {
                count->second /= work.counted;
            }
        }
    }
}

bool IsWantedOf(const Engine& engine)
{
    return std::ranges::any_of(
        kWorks, [&engine](const Work& work) { return IsWanted(NameOf(engine, work, engine.sides.front()).c_str()); });
}

void RunAll()
{
    PeerTable table;
    table.sides = {{"text per call", "text"}, {"Quorvel", "quorvel"}, {"kept and bound", "kept"}, {"SOCI", "soci"}};
    std::vector<std::unique_ptr<ServerPeerData>> all;
    std::vector<std::unique_ptr<ServerPeer>> peers;
    for (const Engine& engine : kEngines) {
        if (!IsWantedOf(engine)) {
            continue;
        }
        const std::string database = DatabaseOf(MakeServerDirectory(engine.name, ServerPeerData::kUsers));
        CountAll(engine, database, table);
        all.push_back(std::make_unique<ServerPeerData>(DataOf(engine.name, database)));
        for (const Side& side : engine.sides) {
            peers.push_back(side.make(*all.back()));
            ServerPeer& peer = *peers.back();
            const pid_t process = peer.ServerProcess();
            for (const Work& work : kWorks) {
                Register(
                    NameOf(engine, work, side), [&peer, run = work.run](std::size_t call) { run(peer, call); },
                    process);
            }
        }
    }
    PeerReporter reporter(table);
    benchmark::RunSpecifiedBenchmarks(&reporter);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc == 2 && std::string_view(argv[1]).starts_with(kCount)) {
        Count(argv[1] + kCount.size());
        return 0;
    }
    return RunBenchmarks("qvbench_server_peers", argc, argv, &RunAll);
}
