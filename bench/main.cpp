#include "basefun/QVBaseFun.h"
#include "bench/Cases.h"
#include "bench/CommandLine.h"
#include "bench/Directory.h"
#include "bench/Lists.h"
#include "bench/PeakMemory.h"
#include "bench/People.h"
#include "bench/RelationCases.h"
#include "bench/Report.h"
#include "bench/RightCases.h"
#include "bench/RoleRights.h"
#include "bench/ServerCases.h"
#include "bench/ServerData.h"
#include "bench/TemporaryFolder.h"
#include "bench/TestData.h"
#include "directory/HumanItem.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

using namespace bench;

namespace {

constexpr int kManyUsers = 1'000'000;
constexpr int kManyMessages = 1'000'000;
constexpr int kListedRecords = 100'000;
constexpr int kTenThousand = 10'000;
constexpr int kSavedRecords = 10'000;
constexpr int kFew = 1'000;
constexpr int kOneNameIn = 97;
constexpr int kOneNameInFew = 7;
constexpr int kLongRepetitions = 3;

const std::vector<Pair> kUserPairs = {
    {"user id by login name, of 10^4", "lookup4/hand", "lookup4/quorvel", 0.53},
    {"user id, of 10^4 (base: kept by hand)", "lookup4/kept", "lookup4/quorvel", 0},
    {"login name taken?, of 10^4", "exists4/hand", "exists4/quorvel", 0.53},
    {"user id by login name, of 10^6", "lookup/hand", "lookup/quorvel", 0},
    {"user id, of 10^6 (base: kept by hand)", "lookup/kept", "lookup/quorvel", 0},
    {"login name taken?, of 10^6", "exists/hand", "exists/quorvel", 0},
    {"list of 10^6 users, 3 arrays", "list3/hand", "list3/quorvel", 0.75},
    {"list of 10^6 users, 9 arrays", "list9/hand", "list9/quorvel", 0.65},
    {"list of 10^5 users as records", "records/hand", "records/quorvel", 1.25},
    {"10^4 users added in one transaction", "save/hand", "save/quorvel", 0.25},
    {"oldest of 10^6 messages", "oldest/hand", "oldest/quorvel", 0},
    {"oldest of 10^6 messages (base: look-up)", "lookup/quorvel", "oldest/quorvel", 0},
    {"oldest of 10^6 messages (base: of 10^3)", "oldest_of_few/quorvel", "oldest/quorvel", 0},
};

/// The files of test data. They must exist before a connection or a benchmark makes this process large.
struct Files {
    TemporaryFolder folder;
    std::string many = folder.File("many.db");       // 10^6 users and messages
    std::string records = folder.File("records.db"); // 10^5 users
    std::string tenThousand = folder.File("tenthousand.db");
    std::string few = folder.File("few.db"); // 10^3 users and messages
    std::string shelves = folder.File("shelves.db");
    std::string mails[3] = {folder.File("mail4.db"), folder.File("mail5.db"), folder.File("mail6.db")};
};

// ---- Lists -------------------------------------------------------------------------------------------------------

struct ListsByHand : Columns {
    void LoadThree(ByHand& db)
    {
        db.ListUsers(ids, loginNames, names);
        RequireCount(names.size(), kManyUsers);
    }
    void LoadNine(ByHand& db)
    {
        db.ListUsers(ids, loginNames, names, sexes, mobiles, eMails, deptInfos, jobTitles, disabled);
        RequireCount(disabled.size(), kManyUsers);
    }
};

// A list is freed only after the measurement: it belongs to the task.
std::vector<Peak> MeasurePeaks(const std::string& path)
{
    const auto byHand = [&path](void (ListsByHand::*load)(ByHand&)) {
        return PeakGrowth([&path, load] {
            const auto directory = std::make_shared<Directory>(path);
            const auto lists = std::make_shared<ListsByHand>();
            return [directory, lists, load] { ((*lists).*load)(directory->hand); };
        });
    };
    const auto quorvel = [&path](void (Lists::*load)(CAConnect&, int)) {
        return PeakGrowth([&path, load] {
            const auto directory = std::make_shared<Directory>(path);
            const auto lists = std::make_shared<Lists>();
            return [directory, lists, load] { ((*lists).*load)(directory->conn, kManyUsers); };
        });
    };
    std::vector<Peak> peaks;
    if (IsWanted("list3/memory")) {
        peaks.push_back(
            {"list of 10^6 users, 3 arrays", byHand(&ListsByHand::LoadThree), quorvel(&Lists::LoadThree), 1.00});
    }
    if (IsWanted("list9/memory")) {
        peaks.push_back(
            {"list of 10^6 users, 9 arrays", byHand(&ListsByHand::LoadNine), quorvel(&Lists::LoadNine), 1.00});
    }
    return peaks;
}

// ---- Cases -------------------------------------------------------------------------------------------------------

/// @param size  the end of the cases' names.
void RegisterLookups(Directory& directory, const std::vector<std::string>& names, const std::string& size)
{
    const auto texts = std::make_shared<std::vector<CString>>(names.begin(), names.end());
    Register("lookup" + size + "/hand",
             [&](std::size_t i) { Require(directory.hand.FindUser(names[i % names.size()]) > 0); });
    Register("lookup" + size + "/kept",
             [&](std::size_t i) { Require(directory.hand.FindUserKept(names[i % names.size()]) > 0); });
    Register("lookup" + size + "/quorvel", [&directory, texts](std::size_t i) {
        int id = 0;
        Require(CQVBaseFun::GetHMIDByLoginName(directory.conn, (*texts)[i % texts->size()], id) && id > 0);
    });
    Register("exists" + size + "/hand",
             [&](std::size_t i) { Require(directory.hand.UserExists(names[i % names.size()])); });
    Register("exists" + size + "/quorvel", [&directory, texts](std::size_t i) {
        bool exists = false;
        Require(CQVBaseFun::ExistLoginName(directory.conn, (*texts)[i % texts->size()], exists) && exists);
    });
}

void RegisterLists(Directory& many)
{
    Register("list3/hand", [&](std::size_t) { ListsByHand().LoadThree(many.hand); })->Iterations(1);
    Register("list3/quorvel", [&](std::size_t) { Lists().LoadThree(many.conn, kManyUsers); })->Iterations(1);
    Register("list9/hand", [&](std::size_t) { ListsByHand().LoadNine(many.hand); })->Iterations(1);
    Register("list9/quorvel", [&](std::size_t) { Lists().LoadNine(many.conn, kManyUsers); })->Iterations(1);
}

void RegisterRecords(Directory& directory)
{
    Register("records/hand", [&](std::size_t) {
        std::vector<Record*> users;
        directory.hand.LoadUsers(users);
        RequireCount(users.size(), kListedRecords);
        for (const Record* user : users) {
            delete user;
        }
    })->Iterations(2);
    Register("records/quorvel", [&](std::size_t) {
        CObList users;
        Require(CQVBaseFun::LoadHumanInfo(directory.conn, users));
        RequireCount(users.GetCount(), kListedRecords);
        CQVBaseFun::DetachHumanList(users);
    })->Iterations(2);
}

// Rolled back, so that every run meets the same table.
void RegisterSaves(Directory& few, const std::vector<Record>& records)
{
    Register("save/hand", [&](std::size_t) {
        few.hand.Run("BEGIN IMMEDIATE");
        for (const Record& record : records) {
            few.hand.SaveUser(record);
        }
        few.hand.Run("ROLLBACK");
    })->Iterations(1);
    const auto items = std::make_shared<std::vector<CHumanItem>>(records.size());
    for (std::size_t i = 0; i < records.size(); ++i) {
        Fill((*items)[i], records[i]);
    }
    Register("save/quorvel", [&few, items](std::size_t) {
        few.conn.BeginTrans();
        for (CHumanItem& item : *items) {
            Require(item.SaveData(few.conn) == 1);
        }
        few.conn.RollbackTrans();
    })->Iterations(1);
}

void RequireOldest(CAConnect& conn)
{
    COleDateTime date(9999, 12, 31, 0, 0, 0);
    Require(CQVBaseFun::GetMinDate(conn, "", date) && date.GetYear() < 9999);
}

void RegisterOldest(Directory& many, Directory& few)
{
    Register("oldest/hand", [&](std::size_t) { Require(!many.hand.OldestMessage().empty()); });
    Register("oldest/quorvel", [&](std::size_t) { RequireOldest(many.conn); });
    Register("oldest_of_few/quorvel", [&](std::size_t) { RequireOldest(few.conn); });
}

std::vector<Record> RecordsToSave()
{
    People people(1);
    std::vector<Record> records;
    records.reserve(kSavedRecords);
    for (int i = 0; i < kSavedRecords; ++i) {
        records.push_back(people.Next());
    }
    return records;
}

std::vector<Pair> AllPairs()
{
    std::vector<Pair> pairs = kUserPairs;
    const std::vector<Pair> relations = RelationPairs(kListedRecords);
    pairs.insert(pairs.end(), relations.begin(), relations.end());
    const std::vector<Pair> rights = RightPairs();
    pairs.insert(pairs.end(), rights.begin(), rights.end());
    const std::vector<Pair> server = ServerPairs(kListedRecords);
    pairs.insert(pairs.end(), server.begin(), server.end());
    return pairs;
}

std::vector<Growth> AllGrowths()
{
    const std::vector<int> sizes = {kTenThousand, kListedRecords, kManyUsers};
    std::vector<Growth> growths = RelationGrowths(sizes);
    const std::vector<Growth> purges = PurgeGrowths(sizes);
    growths.insert(growths.end(), purges.begin(), purges.end());
    return growths;
}

void RunAll()
{
    const Files files;
    std::fprintf(stderr, "making test data (some 700 MB, removed at the end)...\n");
    InChild([&files] {
        MakeDirectory(files.many, kManyUsers, kManyMessages);
        MakeDirectory(files.records, kListedRecords, kFew);
        ByHand records(files.records);
        records.Run("BEGIN");
        RoleRights(kListedRecords).Insert(records);
        records.Run("COMMIT");
        MakeDirectory(files.tenThousand, kTenThousand, kFew);
        MakeDirectory(files.few, kFew, kFew);
        MakeShelves(files.shelves);
        MakeMail(files.mails[0], kTenThousand);
        MakeMail(files.mails[1], kListedRecords);
        MakeMail(files.mails[2], kManyMessages);
    });
    const std::vector<Peak> peaks = MeasurePeaks(files.many);
    if (!peaks.empty()) {
        PrintPeaks(peaks);
    }

    Directory many(files.many);
    Directory records(files.records);
    Directory tenThousand(files.tenThousand);
    Directory few(files.few);
    Directory shelves(files.shelves);
    Directory mail4(files.mails[0]);
    Directory mail5(files.mails[1]);
    Directory mail6(files.mails[2]);
    const std::vector<std::string> names = SomeLoginNames(files.many, kOneNameIn);
    const std::vector<std::string> fewNames = SomeLoginNames(files.tenThousand, kOneNameInFew);
    const std::vector<Record> toSave = RecordsToSave();
    RegisterLookups(many, names, "");
    RegisterLookups(tenThousand, fewNames, "4");
    RegisterLists(many);
    RegisterRecords(records);
    RegisterSaves(few, toSave);
    RegisterOldest(many, few);
    RegisterRelationsByHand(records, Tree(kListedRecords));
    RegisterRelations(tenThousand, Tree(kTenThousand), 0);
    RegisterRelations(records, Tree(kListedRecords), 0);
    RegisterRelations(many, Tree(kManyUsers), kLongRepetitions);
    RegisterRights(records, RoleRights(kListedRecords));
    RegisterShelves(shelves);
    RegisterPurgeByHand(mail5);
    RegisterPurge(mail4, kTenThousand, 0);
    RegisterPurge(mail5, kListedRecords, 0);
    RegisterPurge(mail6, kManyMessages, kLongRepetitions);

    PairReporter reporter(AllPairs(), AllGrowths());
    std::fprintf(stderr, "running...\n");
    benchmark::RunSpecifiedBenchmarks(&reporter);
}

} // namespace

int main(int argc, char** argv) { return RunBenchmarks("qvbench", argc, argv, &RunAll); }
