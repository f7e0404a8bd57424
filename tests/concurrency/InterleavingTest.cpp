#include "Consoles.h"
#include "schema/DirectoryTransaction.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

// Two commands at once, the first of them stopped on its way: they must end as if one had run after the other.

namespace {

using Words = std::vector<std::string>;

struct Pair {
    const char* name;
    std::vector<Words> before;
    Words first;
    Words second;
    const char* table; ///< the first that the first command writes to
};

const std::vector<Words> kAmy = {{"user", "create", "amy"}};
const std::vector<Words> kGroups = {{"view", "create", "V"}, {"group", "create", "/V/A"}, {"group", "create", "/V/B"}};
const std::vector<Words> kFolders = {{"docroot", "create", "D", "--path", "/d", "--type", "1"},
                                     {"folder", "create", "/D/a"},
                                     {"folder", "create", "/D/b"}};
const Words kSetTitle = {"user", "set", "amy", "--title", "Head"};
const Words kLock = {"user", "lock", "amy"};
const Words kSetPassword = {"user", "password", "set", "amy", "--password-file", "password"};
const Words kImport = {"user", "import", "people.csv", "--result", "one.csv"};
const Words kImportAgain = {"user", "import", "people.csv", "--result", "two.csv"};
const Words kUpdate = {"user", "import", "people.csv", "--result", "one.csv", "--update"};

Pair CreateTwice(const char* name, const std::vector<Words>& before, const Words& create, const char* table)
{
    return {name, before, create, create, table};
}

const std::vector<Pair>& Pairs()
{
    static const std::vector<Pair> pairs = {
        {"CreateUserInOtherCase", {}, {"user", "create", "amy"}, {"user", "create", "AMY"}, "qv_User"},
        CreateTwice("CreateGroup", {{"view", "create", "V"}}, {"group", "create", "/V/A"}, "qv_Group"),
        CreateTwice("CreateView", {}, {"view", "create", "V"}, "qv_View"),
        CreateTwice("CreateRole", {}, {"role", "create", "Editors"}, "qv_Role"),
        CreateTwice("CreateAddIn", {}, {"addin", "create", "Chess", "--type", "1"}, "kel_AddIn"),
        CreateTwice("InstallPackage", {}, {"package", "install", "Tools", "--version", "1"}, "kel_Package"),
        CreateTwice("CreateRoot", {}, {"docroot", "create", "D", "--path", "/d", "--type", "1"}, "Tab_Doc_Root"),
        CreateTwice("CreateFolder", kFolders, {"folder", "create", "/D/c"}, "Tab_Doc_VFolder"),
        CreateTwice("CreatePlan", {}, {"plan", "create", "Nightly"}, "Tab_Doc_Backup_Plan"),
        CreateTwice("SetSetting", {}, {"setting", "set", "Colour", "blue", "--genre", "G"}, "Tab_Config"),
        CreateTwice("GrantRight", {{"role", "create", "Editors"}},
                    {"right", "grant", "role:Editors", "Messages", "Size", "50"}, "qv_ItemAce"),
        {"SetOnePowerAndBoth",
         {{"role", "create", "Editors"},
          {"view", "create", "V"},
          {"right", "on", "grant", "role:Editors", "view:V", "pages", "see", "1"}},
         {"right", "on", "set", "role:Editors", "view:V", "pages", "see", "2"},
         {"right", "on", "set", "role:Editors", "view:V", "pages", "see", "3", "--unpower", "4"},
         "qv_BIIAce"},
        {"SetAndLock", kAmy, kSetTitle, kLock, "qv_User"},
        {"SetAndPassword", kAmy, kSetTitle, kSetPassword, "qv_User"},
        {"RenameAndCreate", kAmy, {"user", "rename", "amy", "bob"}, {"user", "create", "BOB"}, "qv_User"},
        {"MoveGroupsBelowEachOther",
         kGroups,
         {"group", "move", "/V/A", "/V/B"},
         {"group", "move", "/V/B", "/V/A"},
         "qv_Relation"},
        {"LinkFoldersBelowEachOther",
         kFolders,
         {"folder", "link", "/D/a", "/D/b"},
         {"folder", "link", "/D/b", "/D/a"},
         "Tab_Doc_VFolder_LINK"},
        {"DeleteGroupAndAddMember",
         {{"view", "create", "V"}, {"group", "create", "/V/A"}, {"user", "create", "amy"}},
         {"group", "delete", "/V/A", "--recursive", "--yes"},
         {"member", "add", "/V/A", "amy"},
         "qv_Group"},
        {"AddMemberAndDeleteGroup",
         {{"view", "create", "V"}, {"group", "create", "/V/A"}, {"user", "create", "amy"}},
         {"member", "add", "/V/A", "amy"},
         {"group", "delete", "/V/A", "--yes"},
         "qv_Relation"},
        {"ImportTwice", {}, kImport, kImportAgain, "qv_User"},
        {"ImportAndLock", kAmy, kUpdate, kLock, "qv_User"},
        {"ImportAndPassword", kAmy, kUpdate, kSetPassword, "qv_User"},
    };
    return pairs;
}

/// How two commands ended, and what they left.
struct Ending {
    std::pair<int, std::string> first;
    std::pair<int, std::string> second;
    std::string dump;

    bool operator==(const Ending&) const = default;
    friend void PrintTo(const Ending& ending, std::ostream* out)
    {
        *out << ending.first.first << ' ' << ending.first.second << '\n'
             << ending.second.first << ' ' << ending.second.second << '\n'
             << ending.dump;
    }
};

class Interleaving : public testing::TestWithParam<std::tuple<Engine, Pair>> {
protected:
    [[nodiscard]] static const Engine& TheEngine() { return std::get<0>(GetParam()); }
    [[nodiscard]] static const Pair& ThePair() { return std::get<1>(GetParam()); }

    static void Prepare(Consoles& consoles)
    {
        consoles.Folder().WriteFile("people.csv", "login,title\namy,Boss\n");
        consoles.Folder().WriteFile("password", "secret\n");
        for (const Words& words : ThePair().before) {
            const ChildResult result = consoles.Run(words);
            ASSERT_EQ(result.exit, 0) << result.err;
        }
    }

    static Ending EndingOf(Consoles& consoles, const ChildResult& first, const ChildResult& second)
    {
        return {{first.exit, first.out}, {second.exit, second.out}, consoles.Dump()};
    }

    /// One after the other, which is what is right.
    static Ending InTurn(bool firstBegins)
    {
        Consoles consoles(TheEngine(), QVADMIN_PROGRAM);
        Prepare(consoles);
        std::optional<ChildResult> second;
        if (!firstBegins) {
            second = consoles.Run(ThePair().second);
        }
        const ChildResult first = consoles.Run(ThePair().first);
        return EndingOf(consoles, first, second ? *second : consoles.Run(ThePair().second));
    }

    /// A removal of what the other has changed since it was shown is refused, and so the other alone has run.
    static Ending WithRemovalRefused()
    {
        Consoles consoles(TheEngine(), QVADMIN_PROGRAM);
        Prepare(consoles);
        ChildResult refused;
        refused.exit = 4;
        if (ThePair().first[1] == "delete") {
            return EndingOf(consoles, refused, consoles.Run(ThePair().second));
        }
        return EndingOf(consoles, consoles.Run(ThePair().first), refused);
    }

    static bool OneRemoves() { return ThePair().first[1] == "delete" || ThePair().second[1] == "delete"; }

    /// Until so many wait, or one has not waited.
    static void WaitFor(Consoles& consoles, const std::string& countWaiting, int count,
                        const std::vector<const ChildProcess*>& processes)
    {
        const auto hasEnded = [](const ChildProcess* process) { return process->HasEnded(); };
        while (!countWaiting.empty() && consoles.Number(countWaiting) < count &&
               std::ranges::none_of(processes, hasEnded)) {
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    }
};

TEST_P(Interleaving, OfTwoThatBeginTogetherEndsAsOneAfterTheOther)
{
    Consoles consoles(TheEngine(), QVADMIN_PROGRAM);
    Prepare(consoles);
    CAConnect holder;
    holder.Open(consoles.Url().c_str());
    std::optional<schema::DirectoryTransaction> held(std::in_place, holder);
    ChildProcess first = consoles.Start(ThePair().first);
    WaitFor(consoles, TheEngine().countWaiting, 1, {&first});
    ChildProcess second = consoles.Start(ThePair().second);
    WaitFor(consoles, TheEngine().countWaiting, 2, {&first, &second});
    held->Commit();
    const ChildResult firstResult = first.Finish();
    EXPECT_THAT(EndingOf(consoles, firstResult, second.Finish()),
                testing::AnyOf(InTurn(true), InTurn(false), OneRemoves() ? WithRemovalRefused() : InTurn(true)));
}

// On servers the next asks for more.
INSTANTIATE_TEST_SUITE_P(Engines, Interleaving,
                         testing::Combine(testing::Values(EngineCalled("sqlite")), testing::ValuesIn(Pairs())),
                         [](const auto& parameter) {
                             return std::get<0>(parameter.param).name + std::get<1>(parameter.param).name;
                         });

/// Where others can be kept from writing and not from reading.
class InterleavingOnServers : public Interleaving {};

TEST_P(InterleavingOnServers, WithOneBetweenItsChecksAndItsWritesEndsAsOneAfterTheOther)
{
    Consoles consoles(TheEngine(), QVADMIN_PROGRAM);
    Prepare(consoles);
    CAConnect holder;
    holder.Open(consoles.Url().c_str());
    for (std::string statement : TheEngine().holdTable) {
        if (const std::size_t place = statement.find("{}"); place != std::string::npos) {
            statement.replace(place, 2, ThePair().table);
        }
        holder.Execute(statement.c_str());
    }
    ChildProcess first = consoles.Start(ThePair().first);
    WaitFor(consoles, TheEngine().countWaitingForTable, 1, {&first});
    ASSERT_FALSE(first.HasEnded()) << first.Finish().err;
    ChildProcess second = consoles.Start(ThePair().second);
    // One that waits for the table as well has not waited for the lock.
    const std::string countBoth =
        "SELECT (" + TheEngine().countWaiting + ") + (" + TheEngine().countWaitingForTable + ")";
    WaitFor(consoles, countBoth, 2, {&second});
    holder.Close();
    const ChildResult firstResult = first.Finish();
    EXPECT_EQ(EndingOf(consoles, firstResult, second.Finish()), InTurn(true));
}

INSTANTIATE_TEST_SUITE_P(Engines, InterleavingOnServers,
                         testing::Combine(testing::Values(EngineCalled("postgresql"), EngineCalled("mariadb")),
                                          testing::ValuesIn(Pairs())),
                         [](const auto& parameter) {
                             return std::get<0>(parameter.param).name + std::get<1>(parameter.param).name;
                         });

} // namespace
