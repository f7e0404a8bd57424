#include "console/Commands.h"

#include "console/AddInCommands.h"
#include "console/BoardCommands.h"
#include "console/ExplainCommand.h"
#include "console/LocalCommand.h"
#include "console/MessageCommands.h"
#include "console/ObjectRightCommands.h"
#include "console/Opened.h"
#include "console/RightCommands.h"
#include "console/SettingCommands.h"
#include "console/TerminalFrontEnd.h"
#include "console/UserCommands.h"
#include "management/Changes.h"
#include "management/Text.h"

#include <algorithm>
#include <exception>
#include <new>
#include <optional>

namespace console {

namespace {

constexpr Noun kNouns[] = {
    {"db", "make, upgrade, check and copy the database",
     "  qvadmin db init\n"
     "  qvadmin --db sqlite:/srv/directory.db db status\n"
     "  qvadmin db copy postgresql://quorvel@db1.example.org/directory"},
    {"user", "users: list, show, create, change, lock, delete, import",
     "  qvadmin user list --match smith\n"
     "  qvadmin user create amy --name 'Amy Porter' --email amy@example.org\n"
     "  qvadmin user import people.csv --dry-run"},
    {"group", "groups: tree, list, create, rename, move, delete, find",
     "  qvadmin group tree\n"
     "  qvadmin group create /Company/Sales --description 'Sells things'\n"
     "  qvadmin group move /Company/Sales/North /Company/Service"},
    {"view", "views, the roots of the organisation",
     "  qvadmin view create Company\n"
     "  qvadmin view list"},
    {"role", "roles: list, show, create, change, delete, and who has them",
     "  qvadmin role create Editors --description 'May change pages'\n"
     "  qvadmin role add Editors amy rory\n"
     "  qvadmin role of amy"},
    {"title", "job titles that users hold inside groups",
     "  qvadmin title give /Company/Sales amy Lead\n"
     "  qvadmin title list /Company/Sales"},
    {"member", "who is in which group or view",
     "  qvadmin member list /Company/Sales\n"
     "  qvadmin member add /Company/Sales amy rory"},
    {"right", "what users, groups, roles and views may do",
     "  qvadmin right grant role:Editors mail send 1\n"
     "  qvadmin right matrix Editors Authors\n"
     "  qvadmin right effective amy"},
    {"objright", "rights on objects outside the directory",
     "  qvadmin objright grant user:amy 3 17 docs read 1\n"
     "  qvadmin objright list 3 17"},
    {"docroot", "document roots, the storage areas of the document server",
     "  qvadmin docroot create Main --path /srv/documents --type 1\n"
     "  qvadmin docroot list"},
    {"folder", "virtual folders of documents: tree, create, rename, link, delete",
     "  qvadmin folder tree\n"
     "  qvadmin folder create /Main/Contracts/2024 --parents\n"
     "  qvadmin folder link /Main/Contracts /Archive"},
    {"plan", "backup plans, and the users and groups that they are assigned to",
     "  qvadmin plan create Nightly --data-file nightly.txt\n"
     "  qvadmin plan assign Nightly user:amy group:/Company/Sales\n"
     "  qvadmin plan of user:amy"},
    {"doclog", "the log of what happened to documents",
     "  qvadmin doclog list --class 105 --object 17\n"
     "  qvadmin doclog add 105 17 moved 'Moved to the archive' --creator amy"},
    {"setting", "settings of the server",
     "  qvadmin setting list\n"
     "  qvadmin setting threads --max 64"},
    {"message", "stored messages: how many there are, and deleting old ones",
     "  qvadmin message stats\n"
     "  qvadmin message purge --before 2020-01-01"},
    {"loginlog", "the log of who logged in", "  qvadmin loginlog list --limit 20"},
    {"addin", "add-ins of the server: list, create, change, move, delete",
     "  qvadmin addin list\n"
     "  qvadmin addin disable Calendar\n"
     "  qvadmin addin move Calendar top"},
    {"package", "packages that add-ins come in",
     "  qvadmin package list\n"
     "  qvadmin package install Office --version 3"},
    {"board", "notices of the bulletin board",
     "  qvadmin board list\n"
     "  qvadmin board show 17"},
};

constexpr Command kCommands[] = {


    {"right", "list", "the rights of an item by genre and function",
     "  qvadmin right list role:Editors\n"
     "  qvadmin right list /Company/Sales --genre mail -o json",
     &right::DeclareList, &right::List},
    {"right", "show", "one right, in every row that it has", "  qvadmin right show role:Editors mail send",
     &right::DeclareOne, &right::Show},
    {"right", "grant", "give an item a right that it does not have",
     "  qvadmin right grant role:Editors mail send 1\n"
     "  qvadmin right grant role:id:17 mail size unlimited\n"
     "  qvadmin right grant user:amy pages edit 0x1F --unpower 2",
     &right::DeclareGrant, &right::Grant},
    {"right", "set", "give a right that is there another power", "  qvadmin right set role:Editors mail size 2048",
     &right::DeclareSet, &right::Set},
    {"right", "revoke", "take a right from an item, or, asking first, all of its own",
     "  qvadmin right revoke role:Editors mail send\n"
     "  qvadmin right revoke role:Editors --all",
     &right::DeclareRevoke, &right::Revoke},
    {"right", "on", "rights of one item on another",
     "  qvadmin right on list view:Company\n"
     "  qvadmin right on show role:Editors view:Company pages see\n"
     "  qvadmin right on grant role:Editors view:Company pages see\n"
     "  qvadmin right on set role:Editors view:Company pages see 3\n"
     "  qvadmin right on revoke role:Editors view:Company pages see\n"
     "  qvadmin right on clear view:Company pages see",
     &right::DeclareOn, &right::On},
    {"right", "matrix", "the rights of roles side by side",
     "  qvadmin right matrix Editors Authors\n"
     "  qvadmin right matrix id:17 id:18 -o csv",
     &right::DeclareMatrix, &right::Matrix},
    {"right", "effective", "what a user may by his roles, as programs work it out",
     "  qvadmin right effective amy\n"
     "  qvadmin right effective id:17 -o json",
     &user::DeclareOne, &right::Effective},
    {"right", "views", "the views that a user may see by his roles",
     "  qvadmin right views amy\n"
     "  qvadmin right views amy pages see",
     &right::DeclareViews, &right::Views},
    {"right", "explain", "why a user has a right, or has not: what is found, and which role decides",
     "  qvadmin right explain amy mail send --bit 1\n"
     "  qvadmin right explain amy mail send --mask 0x6\n"
     "  qvadmin right explain amy mail size --limit\n"
     "  qvadmin right explain amy chat join --guest -o json",
     &right::DeclareExplain, &right::Explain},

    {"objright", "list", "the rights on an object, or those on one of its functions, by type of holder",
     "  qvadmin objright list 3 17\n"
     "  qvadmin objright list 3 17 read -o csv",
     &objright::DeclareList, &objright::List},
    {"objright", "show", "everything about a right on an object", "  qvadmin objright show 5 -o json",
     &objright::DeclareOne, &objright::Show},
    {"objright", "grant", "give an item a right on an object and print the new id",
     "  qvadmin objright grant user:amy 3 17 docs read 1\n"
     "  qvadmin objright grant role:Editors 3 17 docs size unlimited --by rory",
     &objright::DeclareGrant, &objright::Grant},
    {"objright", "set", "give a right on an object another power",
     "  qvadmin objright set 5 0x1F\n"
     "  qvadmin objright set 5 3 --unpower 1",
     &objright::DeclareSet, &objright::Set},
    {"objright", "revoke", "take rights on objects away; asks first",
     "  qvadmin objright revoke 5\n"
     "  qvadmin objright revoke 5 6 --yes",
     &objright::DeclareRevoke, &objright::Revoke},
    {"objright", "check", "print true or false; ends with 0 or 3", "  qvadmin objright check user:amy 3 17 docs read",
     &objright::DeclareCheck, &objright::Check},

    {"setting", "list", "settings by genre and name",
     "  qvadmin setting list\n"
     "  qvadmin setting list --genre KelServerConfig -o json",
     &setting::DeclareList, &setting::List},
    {"setting", "get", "a setting and its value", "  qvadmin setting get maxThreads -o json", &setting::DeclareGet,
     &setting::Get},
    {"setting", "set", "add a setting, or give it another value",
     "  qvadmin setting set PasswordEncoding 1 --genre Console", &setting::DeclareSet, &setting::Set},
    {"setting", "delete", "delete a setting; asks first", "  qvadmin setting delete PasswordEncoding --genre Console",
     &setting::DeclareDelete, &setting::Delete},
    {"setting", "threads", "show or set the thread counts of the server",
     "  qvadmin setting threads\n"
     "  qvadmin setting threads --max 64 --task 8",
     &setting::DeclareThreads, &setting::Threads},
    {"setting", "flags", "show the flags of the servers, or set that of the document server",
     "  qvadmin setting flags\n"
     "  qvadmin setting flags --doc-flag 3",
     &setting::DeclareFlags, &setting::Flags},
    {"setting", "picture", "show or set the display picture of the company",
     "  qvadmin setting picture\n"
     "  qvadmin setting picture logo.png --all-users",
     &setting::DeclarePicture, &setting::Picture},
    {"setting", "encryption-key", "show or set the encryption key",
     "  qvadmin setting encryption-key show\n"
     "  qvadmin setting encryption-key set --key-file key.txt",
     &setting::DeclareEncryptionKey, &setting::EncryptionKey},

    {"message", "stats", "how many messages, attachments and receipts there are, and from when",
     "  qvadmin message stats -o json", nullptr, &message::Stats},
    {"message", "oldest", "print the date of the oldest message; ends with 3 when there is none",
     "  qvadmin message oldest", nullptr, &message::Oldest},
    {"message", "purge", "delete old messages and what belongs to them, in batches; asks first",
     "  qvadmin message purge --before 2020-01-01\n"
     "  qvadmin message purge --keep-days 365 --batch 1000 --yes",
     &message::DeclarePurge, &message::Purge},
    {"message", "sweep", "delete attachments and receipts whose message is gone; asks first", "  qvadmin message sweep",
     &message::DeclareSweep, &message::Sweep},

    {"loginlog", "list", "entries of the login log, the latest first",
     "  qvadmin loginlog list --limit 20\n"
     "  qvadmin -o csv loginlog list > log.csv",
     &loginlog::DeclareList, &loginlog::List},
    {"loginlog", "delete", "delete entries of the login log; asks first", "  qvadmin loginlog delete 17 18 --yes",
     &loginlog::DeclareDelete, &loginlog::Delete},

    {"addin", "list", "add-ins in their order, the highest index first",
     "  qvadmin addin list\n"
     "  qvadmin addin list --package Office --type 2 -o json",
     &addin::DeclareList, &addin::List},
    {"addin", "show", "everything about an add-in, its data too",
     "  qvadmin addin show Calendar\n"
     "  qvadmin addin show id:17 -o json",
     &addin::DeclareOne, &addin::Show},
    {"addin", "create", "add an add-in and print the new id",
     "  qvadmin addin create Calendar --type 2 --data-file calendar.xml --package Office --public",
     &addin::DeclareCreate, &addin::Create},
    {"addin", "set", "change what is given and leave all else",
     "  qvadmin addin set Calendar --description 'Who is where' --no-public\n"
     "  qvadmin addin set Calendar --type 2 --data-file calendar.xml",
     &addin::DeclareSet, &addin::Set},
    {"addin", "enable", "switch add-ins on", "  qvadmin addin enable Calendar Clock", &addin::DeclareSeveral,
     &addin::Enable},
    {"addin", "disable", "switch add-ins off", "  qvadmin addin disable Calendar", &addin::DeclareSeveral,
     &addin::Disable},
    {"addin", "move", "move an add-in in the order of all",
     "  qvadmin addin move Calendar up\n"
     "  qvadmin addin move id:17 top",
     &addin::DeclareMove, &addin::Move},
    {"addin", "delete", "delete add-ins; asks first",
     "  qvadmin addin delete Calendar\n"
     "  qvadmin addin delete id:17 id:18 --yes",
     &addin::DeclareDelete, &addin::Delete},

    {"package", "list", "packages by name", "  qvadmin package list -o csv", nullptr, &package::List},
    {"package", "show", "everything about a package, and its add-ins", "  qvadmin package show Office -o json",
     &package::DeclareOne, &package::Show},
    {"package", "install", "add a package, or bring it to another version, and print its id",
     "  qvadmin package install Office --version 3 --description 'Calendar and clock'\n"
     "  qvadmin package install Office --version 2 --downgrade",
     &package::DeclareInstall, &package::Install},
    {"package", "remove", "delete a package with its add-ins; asks first", "  qvadmin package remove Office",
     &package::DeclareRemove, &package::Remove},

    {"board", "list", "notices, the latest first", "  qvadmin board list --limit 10", &board::DeclareList,
     &board::List},
    {"board", "show", "a notice with its attachments, replies and readers",
     "  qvadmin board show 17\n"
     "  qvadmin board show 17 -o json",
     &board::DeclareOne, &board::Show},
    {"board", "delete", "delete notices with all that belongs to them; asks first",
     "  qvadmin board delete 17\n"
     "  qvadmin board delete 17 18 --yes",
     &board::DeclareDelete, &board::Delete},
};

Exit RunTableCommand(const Request& request, Terminal& terminal)
{
    const auto own = std::ranges::find(LocalCommands(), request.tableCommand,
                                       [](const LocalCommand& command) { return &command.row; });
    if (own != LocalCommands().end()) {
        return own->run({request.given, request.arguments, terminal});
    }
    std::optional<Opened> opened;
    const auto open = [&]() -> CAConnect& { return opened.emplace(request.arguments).Directory().Connection(); };
    TerminalFrontEnd frontEnd(*request.tableCommand, request.given, request.arguments.format, terminal);
    Call call(open, frontEnd, request.given.options);
    return frontEnd.Finish(request.tableCommand->run(call, request.given));
}

Exit RunWords(const std::vector<std::string>& words, Terminal& terminal)
{
    if (words.empty()) {
        terminal.err << ProgramHelp();
        throw Error(ErrorCode::invalid, "name a noun and a verb, such as `qvadmin user list`");
    }
    const Request request = ParseCommandLine(words);
    if (request.tableCommand != nullptr) {
        return RunTableCommand(request, terminal);
    }
    if (request.command == nullptr) {
        terminal.out << request.text;
        return Exit::done;
    }
    return request.command->run({request.arguments, terminal});
}

Exit Reported(const Exit code, std::string_view sentence, Terminal& terminal)
{
    terminal.err << "qvadmin: " << Visible(sentence) << '\n';
    return code;
}

Exit RunReporting(const std::vector<std::string>& words, Terminal& terminal)
{
    try {
        return RunWords(words, terminal);
    } catch (const Error& e) {
        return Reported(ExitFor(e.Code()), e.what(), terminal);
    } catch (const std::bad_alloc&) {
        return Reported(Exit::failed, OutOfMemorySentence(), terminal);
    } catch (const std::exception& e) {
        return Reported(Exit::failed, "this should not happen: " + std::string(e.what()), terminal);
    }
}

} // namespace

std::span<const Noun> Nouns() { return kNouns; }

std::span<const Command> Commands() { return kCommands; }

std::string_view OutOfMemorySentence() noexcept
{
    return Changes::MayBeMade() ? "out of memory; some or all of the change may have been made, so look before you run "
                                  "the command again"
                                : "out of memory; nothing was changed";
}

int RunProgram(int count, const char* const* words, Terminal& terminal)
{
    Changes::Reset();
    Exit code = RunReporting({words + 1, words + count}, terminal);
    terminal.out.flush();
    // Who closed it has read enough, which is no failure.
    if (!terminal.out && !terminal.outIsClosed()) {
        code = Reported(Exit::failed, "the output could not be written in full; what the command changed stays changed",
                        terminal);
    }
    return static_cast<int>(code);
}

} // namespace console
