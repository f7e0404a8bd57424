#include "console/Commands.h"

#include "console/DbCommands.h"
#include "console/Text.h"
#include "console/UserCommands.h"

#include <exception>

namespace console {

namespace {

constexpr Noun kNouns[] = {
    {"db", "make, upgrade and check the database",
     "  qvadmin db init\n"
     "  qvadmin --db sqlite:/srv/directory.db db status"},
    {"user", "users: list, show, create, change, lock, delete, import",
     "  qvadmin user list --match smith\n"
     "  qvadmin user create amy --name 'Amy Porter' --email amy@example.org\n"
     "  qvadmin user import people.csv --dry-run"},
};

constexpr Command kCommands[] = {
    {"db", "init", "make the database, or bring it up to this program's version",
     "  qvadmin db init\n"
     "  qvadmin --db sqlite:/srv/directory.db db init",
     nullptr, &db::Init},
    {"db", "status", "what there is; ends with 0 when the database is ready for use, else with 8",
     "  qvadmin db status -o json", nullptr, &db::Status},

    {"user", "list", "users by login name",
     "  qvadmin user list\n"
     "  qvadmin user list --locked --match sales --limit 20\n"
     "  qvadmin -o csv user list > users.csv",
     &user::DeclareList, &user::List},
    {"user", "show", "everything about a user",
     "  qvadmin user show amy\n"
     "  qvadmin user show id:17 -o json",
     &user::DeclareOne, &user::Show},
    {"user", "create", "add a user and print the new id",
     "  qvadmin user create amy --name 'Amy Porter' --sex female --birthday 1989-11-28", &user::DeclareCreate,
     &user::Create},
    {"user", "set", "change what is given and leave all else",
     "  qvadmin user set amy --mobile '+44 7700 900001' --no-super\n"
     "  qvadmin user set amy --birthday ''",
     &user::DeclareSet, &user::Set},
    {"user", "rename", "give a user another login name", "  qvadmin user rename amy amy.holt", &user::DeclareRename,
     &user::Rename},
    {"user", "lock", "keep users from logging in", "  qvadmin user lock amy rory", &user::DeclareSeveral, &user::Lock},
    {"user", "unlock", "let locked users log in again", "  qvadmin user unlock amy", &user::DeclareSeveral,
     &user::Unlock},
    {"user", "delete", "delete users and what is kept about them elsewhere; asks first",
     "  qvadmin user delete amy\n"
     "  qvadmin user delete id:17 id:18 --yes",
     &user::DeclareDelete, &user::Delete},
    {"user", "count", "print how many users there are", "  qvadmin user count", nullptr, &user::Count},
    {"user", "exists", "print true or false; ends with 0 or 3", "  qvadmin user exists amy", &user::DeclareExists,
     &user::Exists},
    {"user", "import", "add the users of a file, row by row",
     "  qvadmin user import people.csv --dry-run\n"
     "  qvadmin user import people.csv\n"
     "  qvadmin user import people.csv --update --result outcomes.csv",
     &user::DeclareImport, &user::Import},
};

Exit RunWords(const std::vector<std::string>& words, Terminal& terminal)
{
    if (words.empty()) {
        terminal.err << ProgramHelp();
        throw Refusal(Exit::usage, "name a noun and a verb, such as `qvadmin user list`");
    }
    const Request request = ParseCommandLine(words);
    if (request.command == nullptr) {
        terminal.out << request.text;
        return Exit::done;
    }
    return request.command->run({request.arguments, terminal});
}

Exit Reported(const Exit code, std::string_view sentence, Terminal& terminal)
{
    terminal.err << "qvadmin: " << sentence << '\n';
    return code;
}

Exit RunReporting(const std::vector<std::string>& words, Terminal& terminal)
{
    try {
        return RunWords(words, terminal);
    } catch (const Refusal& e) {
        return Reported(e.Code(), e.what(), terminal);
    } catch (const std::exception& e) {
        return Reported(Exit::failed, "this should not happen: " + Visible(e.what()), terminal);
    }
}

} // namespace

std::span<const Noun> Nouns() { return kNouns; }

std::span<const Command> Commands() { return kCommands; }

int RunProgram(int count, const char* const* words, Terminal& terminal)
{
    Exit code = RunReporting({words + 1, words + count}, terminal);
    terminal.out.flush();
    if (!terminal.out) {
        code = Reported(Exit::failed, "the output could not be written in full; what the command changed stays changed",
                        terminal);
    }
    return static_cast<int>(code);
}

} // namespace console
