#include "bench/Cases.h"
#include "bench/CommandLine.h"
#include "bench/Lists.h"
#include "bench/PeakMemory.h"
#include "bench/People.h"
#include "bench/Report.h"
#include "bench/engines/ServerByHand.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "directory/HumanItem.h"
#include "schema/Schema.h"
#include "tests/servers/Servers.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

using namespace bench;

namespace {

constexpr int kUsers = 1'000'000;
constexpr int kUsersOfInsert = 1'000;
constexpr unsigned kOneNameIn = 97;
constexpr std::uint64_t kSeed = 20240229;
constexpr int kEarlyCloses = 50;
constexpr int kSaves = 1'000;
constexpr double kTarget = 1.05;
constexpr double kKeptLookUpTarget = 0.65;
constexpr double kKeptSaveTarget = 0.50;
constexpr double kKeptMariadbSaveTarget = 0.55;
constexpr double kFirstRowTarget = 2;
constexpr double kCloseTarget = 10;

/// A directory of a million users on a server.
struct Server {
    std::string engine;
    std::string url;
    std::vector<std::string> loginNames; // one in so many, in no order
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

std::string DatabaseOf(const std::string& url)
{
    const std::size_t begin = url.find('/', url.find("//") + 2) + 1;
    return url.substr(begin, url.find('?') - begin);
}

std::shared_ptr<ServerByHand> OpenByHand(const Server& server, const HandSide& side)
{
    return side.open(DatabaseOf(server.url));
}

/// @param options  for the end of the URL.
std::shared_ptr<CAConnect> OpenQuorvel(const Server& server, const std::string& options = {})
{
    auto conn = std::make_shared<CAConnect>();
    conn->Open((server.url + options).c_str());
    return conn;
}

// ---- Test data ------------------------------------------------------------------------------------------------------

std::string ValuesOf(const Record& user)
{
    std::string values;
    for (const auto member :
         {&Record::loginName, &Record::name, &Record::password, &Record::eMail, &Record::mobile, &Record::homeCity,
          &Record::companyName, &Record::jobTitle, &Record::officePhone, &Record::deptInfo}) {
        values += (values.empty() ? "('" : ",'") + DoubledQuotes(user.*member) + "'";
    }
    return values + "," + std::to_string(user.sex) + "," + std::to_string(user.deptId) + "," +
           (user.disabled ? "1)" : "0)");
}

std::vector<std::string> Insert(CAConnect& conn)
{
    People people(kSeed);
    std::vector<std::string> names;
    conn.BeginTrans();
    for (int done = 0; done < kUsers; done += kUsersOfInsert) {
        std::string sql = "INSERT INTO qv_User (Col_LoginName, Col_Name, Col_PWord, Col_EMail, Col_Mobile, Col_h_City, "
                          "Col_o_CompanyName, Col_o_JobTitle, Col_o_Phone, Col_DeptInfo, Col_Sex, Col_DeptID, "
                          "Col_Disabled) VALUES ";
        for (int i = 0; i < kUsersOfInsert; ++i) {
            const Record user = people.Next();
            sql += (i == 0 ? "" : ",") + ValuesOf(user);
            if (static_cast<unsigned>(done + i) % kOneNameIn == 0) {
                names.push_back(user.loginName);
            }
        }
        conn.Execute(sql.c_str());
    }
    conn.CommitTrans();
    for (std::size_t i = names.size(); i > 1; --i) {
        std::swap(names[i - 1], names[people.Below(static_cast<unsigned>(i))]);
    }
    return names;
}

Server MakeServer(const std::string& engine)
{
    std::fprintf(stderr, "making a directory of 10^6 users on %s...\n", engine.c_str());
    Server server{engine, servers::NewDatabase(engine), {}};
    const std::shared_ptr<CAConnect> conn = OpenQuorvel(server);
    schema::Upgrade(*conn);
    server.loginNames = Insert(*conn);
    if (engine == "postgresql") {
        // Else the server does it by itself, in the middle of a measurement.
        conn->Execute("VACUUM (FREEZE, ANALYZE) qv_User");
    }
    return server;
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
    const std::vector<std::string>& names = server.loginNames;
    Register(name + "lookup/" + side.name,
             [hand, &names](std::size_t i) { Require(hand->FindUser(names[i % names.size()]) > 0); });
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

/// Users added in a transaction that is rolled back, so that every run meets the same table.
void RegisterSave(const std::string& name, const std::shared_ptr<CAConnect>& conn)
{
    People people(1);
    const auto items = std::make_shared<std::vector<CHumanItem>>(kSaves);
    for (CHumanItem& item : *items) {
        Fill(item, people.Next());
    }
    Register(name, [conn, items](std::size_t) {
        conn->BeginTrans();
        for (CHumanItem& item : *items) {
            Require(item.SaveData(*conn) == 1);
        }
        conn->RollbackTrans();
    })->Iterations(1);
}

void RegisterQuorvel(const Server& server)
{
    const std::string name = server.engine + "/";
    const std::shared_ptr<CAConnect> conn = OpenQuorvel(server);
    const auto texts = std::make_shared<std::vector<CString>>(server.loginNames.begin(), server.loginNames.end());
    Register(name + "lookup/quorvel", [conn, texts](std::size_t i) {
        int id = 0;
        Require(CQVBaseFun::GetHMIDByLoginName(*conn, (*texts)[i % texts->size()], id) && id > 0);
    });
    RegisterSave(name + "save/quorvel", conn);
    RegisterSave(name + "save/texts", OpenQuorvel(server, "&statement-cache=0"));
    Register(name + "list3/quorvel", [conn](std::size_t) { Lists().LoadThree(*conn, kUsers); })->Iterations(1);
    Register(name + "list9/quorvel", [conn](std::size_t) { Lists().LoadNine(*conn, kUsers); })->Iterations(1);
}

std::vector<Pair> PairsOf(const std::string& engine)
{
    const auto pair = [&engine](const char* title, const std::string& what, const char* side, double target = kTarget) {
        return Pair{engine + ": " + title, engine + what + side, engine + what + "quorvel", target};
    };
    const bool keepsQueries = engine == "postgresql";
    std::vector<Pair> pairs = {
        pair("user id by login name", "/lookup/", "hand", keepsQueries ? kKeptLookUpTarget : kTarget),
        pair("users added (base: statement-cache=0)", "/save/", "texts",
             keepsQueries ? kKeptSaveTarget : kKeptMariadbSaveTarget)};
    for (const HandSide& side : HandSides(engine)) {
        const std::string base = std::string(" (base: ") + side.name + ")";
        pairs.push_back(pair(("list, 3 arrays" + base).c_str(), "/list3/", side.name));
        pairs.push_back(pair(("list, 9 arrays" + base).c_str(), "/list9/", side.name));
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
