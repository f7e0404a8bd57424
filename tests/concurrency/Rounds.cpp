#include "Consoles.h"
#include "dbaccess/CAException.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <exception>
#include <fstream>
#include <iostream>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

// Rounds of several consoles that begin together with what must be neither doubled nor undone, nor close a cycle.

namespace {

using Words = std::vector<std::string>;

class Rounds {
public:
    Rounds(const Engine& engine, const std::string& program, std::size_t count)
        : m_consoles(engine, program), m_count(count)
    {
        m_consoles.Folder().WriteFile("password", "secret\n");
        Done({"view", "create", "V"});
        Done({"docroot", "create", "Main", "--path", "/d", "--type", "1"});
    }

    /// @return what is wrong after the round; empty when nothing is.
    std::string Play(int number)
    {
        const std::string name = "n" + std::to_string(number);
        const std::vector<std::string (Rounds::*)(const std::string&)> kinds = {
            &Rounds::OneUser,           &Rounds::OneGroup,      &Rounds::OneView,         &Rounds::OneRole,
            &Rounds::OneAddIn,          &Rounds::OnePackage,    &Rounds::OneFolder,       &Rounds::OneRoot,
            &Rounds::OnePlan,           &Rounds::OneSetting,    &Rounds::SeveralIds,      &Rounds::MovesWithoutCycle,
            &Rounds::LinksWithoutCycle, &Rounds::NothingUndone, &Rounds::ImportsOfOneFile};
        return (this->*kinds[static_cast<std::size_t>(number) % kinds.size()])(name);
    }

private:
    std::string Done(const Words& words)
    {
        ChildResult result = m_consoles.Run(words);
        if (result.exit != 0) {
            throw std::runtime_error(
                fmt::format("{} ended with {}: {}", fmt::join(words, " "), result.exit, result.err));
        }
        return result.out.substr(0, result.out.find('\n'));
    }

    std::vector<ChildResult> Together(const std::vector<Words>& commands)
    {
        std::vector<std::unique_ptr<ChildProcess>> running;
        for (const Words& words : commands) {
            running.emplace_back(new ChildProcess(m_consoles.Start(words)));
        }
        std::vector<ChildResult> results;
        for (const auto& process : running) {
            results.push_back(process->Finish());
        }
        return results;
    }

    /// An end that is not among those expected; empty when there is none.
    static std::string Unexpected(const std::vector<ChildResult>& results, const std::set<int>& expected)
    {
        const auto found =
            std::ranges::find_if(results, [&](const ChildResult& result) { return !expected.contains(result.exit); });
        return found == results.end() ? "" : fmt::format("a command ended with {}: {}", found->exit, found->err);
    }

    /// The same command by all: one row, made by one of them, whose id is the one that was printed.
    std::string OneRow(const Words& command, const std::string& table, const std::string& name,
                       const std::string& column = "Col_Name")
    {
        const std::vector<ChildResult> results = Together(std::vector<Words>(m_count, command));
        const std::string where = fmt::format("FROM {} WHERE {} = '{}'", table, column, name);
        const int rows = m_consoles.Number("SELECT COUNT(*) " + where);
        const auto done = std::ranges::count(results, 0, &ChildResult::exit);
        if (rows != 1 || done != 1) {
            return fmt::format("{} rows of one name by {} commands that ended with 0", rows, done);
        }
        const ChildResult& maker = *std::ranges::find(results, 0, &ChildResult::exit);
        const int id = m_consoles.Number("SELECT Col_ID " + where);
        return maker.out == std::to_string(id) + "\n" ? Unexpected(results, {0, 4})
                                                      : fmt::format("id {} was printed as {}", id, maker.out);
    }

    std::string OneUser(const std::string& name)
    {
        return OneRow({"user", "create", name}, "qv_User", name, "Col_LoginName");
    }
    std::string OneGroup(const std::string& name)
    {
        return OneRow({"group", "create", "/V/" + name}, "qv_Group", name);
    }
    std::string OneView(const std::string& name) { return OneRow({"view", "create", name}, "qv_View", name); }
    std::string OneRole(const std::string& name) { return OneRow({"role", "create", name}, "qv_Role", name); }
    std::string OneAddIn(const std::string& name)
    {
        return OneRow({"addin", "create", name, "--type", "1"}, "kel_AddIn", name);
    }
    std::string OneFolder(const std::string& name)
    {
        return OneRow({"folder", "create", "/Main/" + name}, "Tab_Doc_VFolder", name);
    }
    std::string OneRoot(const std::string& name)
    {
        return OneRow({"docroot", "create", name, "--path", "/d", "--type", "1"}, "Tab_Doc_Root", name);
    }
    std::string OnePlan(const std::string& name)
    {
        return OneRow({"plan", "create", name}, "Tab_Doc_Backup_Plan", name);
    }

    /// Who comes later changes what is there.
    std::string OnePackage(const std::string& name)
    {
        return OneLeft("kel_Package", name, {"package", "install", name, "--version", "1"});
    }
    std::string OneSetting(const std::string& name)
    {
        return OneLeft("Tab_Config", name, {"setting", "set", name, "x", "--genre", "G"});
    }

    std::string OneLeft(const std::string& table, const std::string& name, const Words& command)
    {
        const std::vector<ChildResult> results = Together(std::vector<Words>(m_count, command));
        const int rows = m_consoles.Number(fmt::format("SELECT COUNT(*) FROM {} WHERE Col_Name = '{}'", table, name));
        return rows == 1 ? Unexpected(results, {0}) : fmt::format("{} rows of one name", rows);
    }

    /// Groups of one name below different parents.
    std::string SeveralIds(const std::string& name)
    {
        std::vector<Words> commands;
        for (std::size_t i = 0; i < m_count; ++i) {
            commands.push_back({"group", "create", fmt::format("/V/{}-{}/{}", name, i, name), "--parents"});
        }
        const std::vector<ChildResult> results = Together(commands);
        std::set<std::string> ids;
        for (const ChildResult& result : results) {
            ids.insert(result.out);
        }
        return ids.size() == m_count ? Unexpected(results, {0})
                                     : fmt::format("{} ids printed for {} groups", ids.size(), m_count);
    }

    /// Half of the commands put the first below the second, half the second below the first.
    std::vector<ChildResult> Crosswise(const std::string& noun, const std::string& verb, const std::string& first,
                                       const std::string& second)
    {
        std::vector<Words> commands;
        for (std::size_t i = 0; i < m_count; ++i) {
            commands.push_back(
                {noun, verb, "id:" + (i % 2 == 0 ? first : second), "id:" + (i % 2 == 0 ? second : first)});
        }
        return Together(commands);
    }

    std::string MovesWithoutCycle(const std::string& name)
    {
        const std::string first = Done({"group", "create", "/V/" + name + "a"});
        const std::string second = Done({"group", "create", "/V/" + name + "b"});
        const std::vector<ChildResult> results = Crosswise("group", "move", first, second);
        const int links = m_consoles.Number(fmt::format("SELECT COUNT(*) FROM qv_Relation WHERE Col_QvItemType = "
                                                        "Col_DQvItemType AND Col_QvItemID IN ({0}, {1}) AND "
                                                        "Col_DQvItemID IN ({0}, {1})",
                                                        first, second));
        return links == 1 ? Unexpected(results, {0, 4}) : fmt::format("{} links between two groups", links);
    }

    std::string LinksWithoutCycle(const std::string& name)
    {
        const std::string first = Done({"folder", "create", "/Main/" + name + "a"});
        const std::string second = Done({"folder", "create", "/Main/" + name + "b"});
        const std::vector<ChildResult> results = Crosswise("folder", "link", first, second);
        const int links = m_consoles.Number(fmt::format(
            "SELECT COUNT(*) FROM Tab_Doc_VFolder_LINK WHERE Col_P_ObjID IN ({0}, {1}) AND Col_S_ObjID IN ({0}, {1})",
            first, second));
        return links == 1 ? Unexpected(results, {0, 4}) : fmt::format("{} links between two folders", links);
    }

    /// Changes of different columns of one user: all of them last.
    std::string NothingUndone(const std::string& name)
    {
        Done({"user", "create", name});
        const std::string file = name + ".csv";
        std::ofstream(m_consoles.Folder().Path(file)) << "login,email\n" << name << ",e\n";
        const std::vector<Words> kinds = {{"user", "set", name, "--title", "t"},
                                          {"user", "lock", name},
                                          {"user", "import", file, "--update", "--result", "-"},
                                          {"user", "password", "set", name, "--password-file", "password"},
                                          {"user", "set", name, "--mobile", "m"}};
        std::vector<Words> commands;
        for (std::size_t i = 0; i < m_count; ++i) {
            commands.push_back(kinds[i % kinds.size()]);
        }
        const std::vector<ChildResult> results = Together(commands);
        const std::vector<std::string> marks = {"Col_o_JobTitle = 't'", "Col_Disabled = 1", "Col_EMail = 'e'",
                                                "Col_PWord <> ''", "Col_Mobile = 'm'"};
        for (std::size_t i = 0; i < std::min(marks.size(), m_count); ++i) {
            if (m_consoles.Number(fmt::format("SELECT COUNT(*) FROM qv_User WHERE Col_LoginName = '{}' AND {}", name,
                                              marks[i])) != 1) {
                return fmt::format("what {} did is undone", fmt::join(kinds[i], " "));
            }
        }
        return Unexpected(results, {0});
    }

    std::string ImportsOfOneFile(const std::string& name)
    {
        constexpr int people = 20;
        const std::string file = name + ".csv";
        std::ofstream out(m_consoles.Folder().Path(file));
        out << "login\n";
        for (int i = 0; i < people; ++i) {
            out << name << "x" << i << "\n";
        }
        out.close();
        const std::vector<ChildResult> results =
            Together(std::vector<Words>(m_count, {"user", "import", file, "--result", "-"}));
        const int rows =
            m_consoles.Number(fmt::format("SELECT COUNT(*) FROM qv_User WHERE Col_LoginName LIKE '{}x%'", name));
        return rows == people ? Unexpected(results, {0, 7}) : fmt::format("{} users of a file of {}", rows, people);
    }

    Consoles m_consoles;
    std::size_t m_count;
};

int PlayAll(const std::string& engine, const std::string& program, std::size_t consoles, int count)
{
    Rounds rounds(EngineCalled(engine), program, consoles);
    int wrong = 0;
    for (int number = 0; number < count; ++number) {
        const std::string problem = rounds.Play(number);
        if (!problem.empty()) {
            ++wrong;
            std::cout << fmt::format("round {}: {}\n", number, problem) << std::flush;
        }
    }
    std::cout << fmt::format("{}: {} of {} rounds of {} consoles wrong\n", engine, wrong, count, consoles);
    return wrong == 0 ? 0 : 1;
}

} // namespace

int main(int count, char** words)
{
    CLI::App app(
        "Lets several consoles work on one directory at once; ends with 1 when something is doubled, undone or in "
        "a cycle.");
    std::string engine = "sqlite";
    std::string program = QVADMIN_PROGRAM;
    std::size_t consoles = 8;
    int rounds = 100;
    app.add_option("--engine", engine, "sqlite, postgresql or mariadb; servers as QV_TEST_SERVERS says");
    app.add_option("--rounds", rounds, "how many rounds")->check(CLI::Range(1, 1'000'000));
    app.add_option("--consoles", consoles, "how many consoles a round has")->check(CLI::Range(2, 1000));
    app.add_option("--program", program, "the qvadmin to run");
    CLI11_PARSE(app, count, words);
    try {
        return PlayAll(engine, program, consoles, rounds);
    } catch (const CAException& e) {
        std::cerr << "rounds: " << e.GetErrorText().GetString() << '\n';
    } catch (const std::exception& e) {
        std::cerr << "rounds: " << e.what() << '\n';
    }
    return 2;
}
