#include "bench/Cases.h"
#include "bench/CommandLine.h"
#include "bench/Lists.h"
#include "bench/PeakMemory.h"
#include "bench/Report.h"
#include "bench/engines/ServerByHand.h"
#include "bench/engines/ServerDirectory.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

using namespace bench;

namespace {

constexpr int kUsers = 1'000'000;
constexpr int kEarlyCloses = 50;
constexpr double kTarget = 1.05;
constexpr double kFirstRowTarget = 2;
constexpr double kCloseTarget = 10;

/// A directory of a million users on a server.
struct Server {
    std::string engine;
    std::string url;
};

struct HandSide {
    const char* name;
    std::unique_ptr<ServerByHand> (*open)(const std::string& database);
};

/// The flat ways to read a list.
std::vector<HandSide> HandSides(const std::string& engine)
{
    if (engine == "postgresql") {
        return {{"hand", &PostgresqlByHand}, {"copy", &PostgresqlCopyByHand}};
    }
    return {{"hand", &MariadbByHand}};
}

std::shared_ptr<ServerByHand> OpenByHand(const Server& server, const HandSide& side)
{
    return side.open(DatabaseOf(server.url));
}

std::shared_ptr<CAConnect> OpenQuorvel(const Server& server)
{
    auto conn = std::make_shared<CAConnect>();
    conn->Open(server.url.c_str());
    return conn;
}

Server MakeServer(const std::string& engine)
{
    std::fprintf(stderr, "making a directory of 10^6 users on %s...\n", engine.c_str());
    return {engine, MakeServerDirectory(engine, kUsers)};
}

// ---- What is measured once ------------------------------------------------------------------------------------------

int Walk(CAConnect& conn)
{
    CARecordset rs;
    rs.Open(statements::kNine, &conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable);
    int rows = 0;
    for (rs.MoveFirst(); rs.IsEOF() == 0; rs.MoveNext()) {
        ++rows;
    }
    return rows;
}

Peak MeasurePeak(const Server& server)
{
    const HandSide side = HandSides(server.engine).front();
    return {server.engine + ": reading 10^6 rows", PeakGrowth([&] {
                const std::shared_ptr<ServerByHand> hand = OpenByHand(server, side);
                return [hand] { RequireCount(hand->Walk(), kUsers); };
            }),
            PeakGrowth([&] {
                const std::shared_ptr<CAConnect> conn = OpenQuorvel(server);
                return [conn] { RequireCount(Walk(*conn), kUsers); };
            }),
            0};
}

double MillisecondsSince(std::chrono::steady_clock::time_point begin)
{
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
}

/// Opens the list, reads its first row and closes it.
std::vector<Waits> MeasureEarlyCloses(const Server& server)
{
    const std::shared_ptr<CAConnect> conn = OpenQuorvel(server);
    Waits open{server.engine + ": first row of 10^6", {}, kFirstRowTarget};
    Waits close{server.engine + ": closing there", {}, kCloseTarget};
    for (int i = 0; i < kEarlyCloses; ++i) {
        const auto begin = std::chrono::steady_clock::now();
        CARecordset rs;
        rs.Open(statements::kNine, conn.get(), adbcCursorStatic, adbcLockOptimistic, adbcCommandTable);
        Require(!rs.GetValueToStr(1, true).IsEmpty());
        open.milliseconds.push_back(MillisecondsSince(begin));
        const auto opened = std::chrono::steady_clock::now();
        rs.Close();
        close.milliseconds.push_back(MillisecondsSince(opened));
    }
    return {open, close};
}

// ---- Cases ----------------------------------------------------------------------------------------------------------

void RegisterByHand(const Server& server, const HandSide& side)
{
    const std::string name = server.engine + "/";
    const std::shared_ptr<ServerByHand> hand = OpenByHand(server, side);
    Register(name + "list3/" + side.name, [hand](std::size_t) {
        Columns columns;
        hand->ListThree(columns);
        RequireCount(columns.names.size(), kUsers);
    })->Iterations(1);
    Register(name + "list9/" + side.name, [hand](std::size_t) {
        Columns columns;
        hand->ListNine(columns);
        RequireCount(columns.disabled.size(), kUsers);
    })->Iterations(1);
}

void RegisterQuorvel(const Server& server)
{
    const std::string name = server.engine + "/";
    const std::shared_ptr<CAConnect> conn = OpenQuorvel(server);
    Register(name + "list3/quorvel", [conn](std::size_t) { Lists().LoadThree(*conn, kUsers); })->Iterations(1);
    Register(name + "list9/quorvel", [conn](std::size_t) { Lists().LoadNine(*conn, kUsers); })->Iterations(1);
}

std::vector<Pair> PairsOf(const std::string& engine)
{
    std::vector<Pair> pairs;
    for (const HandSide& side : HandSides(engine)) {
        const auto add = [&](const std::string& title, const std::string& list) {
            pairs.push_back({fmt::format("{}: list, {} (base: {})", engine, title, side.name),
                             fmt::format("{}/{}/{}", engine, list, side.name),
                             fmt::format("{}/{}/quorvel", engine, list), kTarget});
        };
        add("3 arrays", "list3");
        add("9 arrays", "list9");
    }
    return pairs;
}

/// Whether the command line asks for anything on the engine.
bool IsWantedOf(const std::string& engine)
{
    return std::ranges::any_of(PairsOf(engine), [](const Pair& pair) { return IsWanted(pair.other.c_str()); });
}

void RunAll()
{
    std::vector<Server> all;
    std::vector<Peak> peaks;
    std::vector<Waits> waits;
    for (const char* engine : {"postgresql", "mariadb"}) {
        if (IsWantedOf(engine)) {
            all.push_back(MakeServer(engine));
            peaks.push_back(MeasurePeak(all.back()));
        }
    }
    std::vector<Pair> pairs;
    for (const Server& server : all) {
        const std::vector<Waits> closes = MeasureEarlyCloses(server);
        waits.insert(waits.end(), closes.begin(), closes.end());
        const std::vector<Pair> some = PairsOf(server.engine);
        pairs.insert(pairs.end(), some.begin(), some.end());
        for (const HandSide& side : HandSides(server.engine)) {
            RegisterByHand(server, side);
        }
        RegisterQuorvel(server);
    }
    PrintPeaks(peaks);
    PrintWaits(waits);
    PairReporter reporter(pairs, {});
    std::fprintf(stderr, "running...\n");
    benchmark::RunSpecifiedBenchmarks(&reporter);
}

} // namespace

int main(int argc, char** argv) { return RunBenchmarks("qvbench_engines", argc, argv, &RunAll); }
