#include "bench/ByHand.h"
#include "bench/Cases.h"
#include "bench/CommandLine.h"
#include "bench/PeakMemory.h"
#include "bench/People.h"
#include "bench/Report.h"
#include "bench/TemporaryFolder.h"
#include "bench/TestData.h"
#include "bench/peers/Instructions.h"
#include "bench/peers/Peer.h"

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

using namespace bench;

namespace {

constexpr int kNewUsers = 1'000;
constexpr int kOneNameIn = 7;
constexpr std::string_view kCount = "--count=";

const std::vector<PeerSide> kSides = {{"text", &TextPeer},
                                      {"quorvel", &QuorvelPeer},
                                      {"kept", &KeptPeer},
                                      {"sqlitecpp", &SqliteCppPeer},
                                      {"soci", &SociPeer}};

struct Work {
    const char* title;
    const char* name;
    double target;
    int counted; // calls whose instructions are counted
    void (*run)(Peer& peer, std::size_t call);
};

const std::vector<Work> kWorks = {
    {"user id by login name", "lookup", 0.53, 1000, [](Peer& peer, std::size_t call) { peer.FindUser(call); }},
    {"login name taken?", "taken", 0.53, 1000, [](Peer& peer, std::size_t call) { peer.FindTaken(call); }},
    {"1,000 users added", "save", 0.25, 1, [](Peer& peer, std::size_t /*call*/) { peer.SaveUsers(); }},
    {"effective right", "right", 0.30, 100, [](Peer& peer, std::size_t call) { peer.FindRight(call); }},
    {"group of some 38, objects", "objects", 0.70, 100, [](Peer& peer, std::size_t call) { peer.LoadGroup(call); }},
    {"list of 10^4 users, 3 arrays", "three", 0.75, 1, [](Peer& peer, std::size_t /*call*/) { peer.ListThree(); }},
    {"list of 10^4 users, 9 arrays", "nine", 0.65, 1, [](Peer& peer, std::size_t /*call*/) { peer.ListNine(); }},
};

PeerData Read(const std::string& path)
{
    PeerData data{path, SomeLoginNames(path, kOneNameIn), {}};
    People people(1);
    for (int i = 0; i < kNewUsers; ++i) {
        data.newUsers.push_back(people.Next());
    }
    return data;
}

std::string NameOf(const Work& work, const PeerSide& side) { return work.name + std::string("/") + side.name; }

/// In the process that CountInstructions starts.
void Count(const std::string& path)
{
    const PeerData data = Read(path);
    for (const PeerSide& side : kSides) {
        const std::unique_ptr<Peer> peer = side.make(data);
        for (const Work& work : kWorks) {
            // What a connection does but once is not counted.
            work.run(*peer, 0);
            work.run(*peer, 1);
            CountIn(NameOf(work, side), [&] {
                for (int call = 2; call < work.counted + 2; ++call) {
                    work.run(*peer, static_cast<std::size_t>(call));
                }
            });
        }
    }
}

void RunAll()
{
    const TemporaryFolder folder;
    const std::string path = folder.File("directory.db");
    InChild([&path] {
        MakeDirectory(path, PeerData::kUsers, 1);
        ByHand db(path);
        db.Run("BEGIN");
        RoleRights(PeerData::kUsers).Insert(db);
        db.Run("COMMIT");
    });
    PeerTable table;
    const std::string self = std::filesystem::read_symlink("/proc/self/exe").string();
    table.instructions = CountInstructions(folder.File("."), self + " " + std::string(kCount) + path);
    for (const Work& work : kWorks) {
        table.works.push_back({work.title, work.name, work.target});
        for (const PeerSide& side : kSides) {
            const auto count = table.instructions.find(NameOf(work, side));
            if (count != table.instructions.end()) {
                count->second /= work.counted;
            }
        }
    }
    table.sides = {{"text per call", "text"},
                   {"Quorvel", "quorvel"},
                   {"kept and bound", "kept"},
                   {"SQLiteCpp", "sqlitecpp"},
                   {"SOCI", "soci"}};

    const PeerData data = Read(path);
    std::vector<std::unique_ptr<Peer>> peers;
    for (const PeerSide& side : kSides) {
        peers.push_back(side.make(data));
        Peer& peer = *peers.back();
        for (const Work& work : kWorks) {
            Register(NameOf(work, side), [&peer, run = work.run](std::size_t call) { run(peer, call); });
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
    return RunBenchmarks("qvbench_peers", argc, argv, &RunAll);
}
