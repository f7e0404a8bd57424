#include "console/Commands.h"

#include "console/CopyCommand.h"
#include "console/DbCommands.h"
#include "console/DocRootCommands.h"
#include "console/FolderCommands.h"
#include "console/GroupCommands.h"
#include "console/MemberCommands.h"
#include "console/Opened.h"
#include "console/PasswordCommands.h"
#include "console/RoleCommands.h"
#include "console/TerminalFrontEnd.h"
#include "console/TitleCommands.h"
#include "console/UserCommands.h"
#include "console/ViewCommands.h"
#include "management/Changes.h"
#include "management/Text.h"

#include <exception>
#include <new>

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
    {"db", "init", "make the database, or bring it up to this program's version",
     "  qvadmin db init\n"
     "  qvadmin --db sqlite:/srv/directory.db db init",
     &db::DeclareInit, &db::Init},
    {"db", "status", "what there is; ends with 0 when the database is ready for use, else with 8",
     "  qvadmin db status -o json", nullptr, &db::Status},
    {"db", "copy", "carry the whole directory over to another database, of any engine, with all ids",
     "  qvadmin db copy postgresql://quorvel@db1.example.org/directory\n"
     "  qvadmin --db mysql://quorvel@localhost/directory db copy sqlite:/srv/directory.db",
     &db::DeclareCopy, &db::Copy},

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
    {"user", "rename", "give a user another login name",
     "  qvadmin user rename amy amy.holt\n"
     "  qvadmin user rename amy amy.holt --generate",
     &user::DeclareRename, &user::Rename},
    {"user", "password", "set and check a user's password",
     "  qvadmin user password set amy\n"
     "  qvadmin user password set amy --generate\n"
     "  qvadmin user password check amy --password-file secret.txt\n"
     "  qvadmin user password status amy",
     &user::DeclarePassword, &user::Password},
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
    {"user", "roles", "the roles of a user, that of every user among them", "  qvadmin user roles amy",
     &user::DeclareOne, &role::OfUser},
    {"user", "titles", "the job titles of a user, and in which groups", "  qvadmin user titles amy", &user::DeclareOne,
     &title::OfUser},
    {"user", "groups", "the groups and views that a user is in", "  qvadmin user groups amy", &user::DeclareOne,
     &member::OfUser},
    {"user", "import", "add the users of a file, row by row",
     "  qvadmin user import people.csv --dry-run\n"
     "  qvadmin user import people.csv\n"
     "  qvadmin user import people.csv --update --result outcomes.csv\n"
     "  qvadmin user import people.csv --departments Company --make-view --dry-run",
     &user::DeclareImport, &user::Import},

    {"group", "tree", "draw the organisation, with how many people are where",
     "  qvadmin group tree\n"
     "  qvadmin group tree /Company/Sales --depth 2 --users",
     &group::DeclareTree, &group::Tree},
    {"group", "list", "all groups, or those directly under a view or group",
     "  qvadmin group list\n"
     "  qvadmin group list /Company -o csv",
     &group::DeclareList, &group::List},
    {"group", "show", "everything about a group",
     "  qvadmin group show /Company/Sales\n"
     "  qvadmin group show id:17 -o json",
     &group::DeclareOne, &group::Show},
    {"group", "create", "add a group and print the new id",
     "  qvadmin group create /Company/Sales --description 'Sells things'\n"
     "  qvadmin group create /Company/Sales/North/Team --parents\n"
     "  qvadmin group create '/Company/Research\\/Development'",
     &group::DeclareCreate, &group::Create},
    {"group", "set", "change what is given and leave all else", "  qvadmin group set /Company/Sales --sort-index 10",
     &group::DeclareSet, &group::Set},
    {"group", "rename", "give a group another name", "  qvadmin group rename /Company/Sales Selling",
     &group::DeclareRename, &group::Rename},
    {"group", "move", "hang a group, with all below it, under another parent",
     "  qvadmin group move /Company/Sales/North /Company/Service\n"
     "  qvadmin group move id:17 /Company --from /Old",
     &group::DeclareMove, &group::Move},
    {"group", "style", "print a group's style, or set it",
     "  qvadmin group style /Company/Sales\n"
     "  qvadmin group style /Company/Sales 2",
     &group::DeclareStyle, &group::Style},
    {"group", "delete", "delete a group and what is kept about it elsewhere; asks first",
     "  qvadmin group delete /Company/Sales\n"
     "  qvadmin group delete id:17 --recursive --yes",
     &group::DeclareDelete, &group::Delete},
    {"group", "find", "groups with a text in the name, wherever they are", "  qvadmin group find sales",
     &group::DeclareFind, &group::Find},

    {"view", "list", "the system's views",
     "  qvadmin view list\n"
     "  qvadmin view list --all",
     &view::DeclareList, &view::List},
    {"view", "show", "everything about a view",
     "  qvadmin view show Company\n"
     "  qvadmin view show view:4",
     &view::DeclareOne, &view::Show},
    {"view", "create", "add a view of the system and print the new id",
     "  qvadmin view create Company --description 'Who works where'", &view::DeclareCreate, &view::Create},
    {"view", "set", "change what is given and leave all else", "  qvadmin view set Company --sort-index 10",
     &view::DeclareSet, &view::Set},
    {"view", "rename", "give a view another name", "  qvadmin view rename Company 'The Company'", &view::DeclareRename,
     &view::Rename},
    {"view", "default", "print the name of the default view, or name it for the first time",
     "  qvadmin view default\n"
     "  qvadmin view default Company",
     &view::DeclareDefault, &view::Default},
    {"view", "delete", "delete a view and its links; asks first", "  qvadmin view delete view:4", &view::DeclareDelete,
     &view::Delete},
    {"view", "stamp", "write the view's id into the links of all users below it", "  qvadmin view stamp Company",
     &view::DeclareOne, &view::Stamp},

    {"role", "list", "roles by name",
     "  qvadmin role list\n"
     "  qvadmin role list --domain 2 -o json",
     &role::DeclareList, &role::List},
    {"role", "show", "everything about a role",
     "  qvadmin role show Editors\n"
     "  qvadmin role show id:17 -o json",
     &role::DeclareOne, &role::Show},
    {"role", "create", "add a role and print the new id",
     "  qvadmin role create Editors --description 'May change pages'", &role::DeclareCreate, &role::Create},
    {"role", "set", "change what is given and leave all else",
     "  qvadmin role set Editors --name Authors\n"
     "  qvadmin role set Editors --description ''",
     &role::DeclareSet, &role::Set},
    {"role", "delete", "delete roles and what is kept about them elsewhere; asks first",
     "  qvadmin role delete Editors\n"
     "  qvadmin role delete id:17 id:18 --yes",
     &role::DeclareDelete, &role::Delete},
    {"role", "members", "the users who are linked to a role", "  qvadmin role members Editors", &role::DeclareOne,
     &role::Members},
    {"role", "add", "give users a role", "  qvadmin role add Editors amy rory", &role::DeclareUsers, &role::Add},
    {"role", "remove", "take a role from users", "  qvadmin role remove Editors amy", &role::DeclareUsers,
     &role::Remove},
    {"role", "of", "the roles of a user, that of every user among them", "  qvadmin role of amy", &user::DeclareOne,
     &role::OfUser},
    {"role", "default", "show the role that every user has",
     "  qvadmin role default\n"
     "  qvadmin role default --create",
     &role::DeclareDefault, &role::Default},

    {"title", "give", "give a user a title inside a group",
     "  qvadmin title give /Company/Sales amy Lead --description 'since May'", &title::DeclareGive, &title::Give},
    {"title", "take", "take a title from a user", "  qvadmin title take /Company/Sales amy Lead", &title::DeclareOne,
     &title::Take},
    {"title", "list", "who holds which title inside a group",
     "  qvadmin title list /Company/Sales\n"
     "  qvadmin title list /Company/Sales Lead -o csv",
     &title::DeclareList, &title::List},
    {"title", "check", "print true or false; ends with 0 or 3", "  qvadmin title check /Company/Sales amy Lead",
     &title::DeclareOne, &title::Check},

    {"member", "list", "the groups and users directly in a group or view",
     "  qvadmin member list /Company/Sales\n"
     "  qvadmin member list /Company -o json",
     &member::DeclareList, &member::List},
    {"member", "add", "make users members of a group or view", "  qvadmin member add /Company/Sales amy rory",
     &member::DeclareUsers, &member::Add},
    {"member", "remove", "end the membership of users in a group or view", "  qvadmin member remove /Company/Sales amy",
     &member::DeclareUsers, &member::Remove},
    {"member", "detach", "take a user out of all groups and views; asks first", "  qvadmin member detach amy",
     &member::DeclareDetach, &member::Detach},

    {"docroot", "list", "document roots by name",
     "  qvadmin docroot list\n"
     "  qvadmin docroot list --type 1 -o json",
     &docroot::DeclareList, &docroot::List},
    {"docroot", "show", "everything about a document root",
     "  qvadmin docroot show Main\n"
     "  qvadmin docroot show id:4 -o json",
     &docroot::DeclareOne, &docroot::Show},
    {"docroot", "create", "add a document root and print the new id",
     "  qvadmin docroot create Main --path /srv/documents --type 1 --max-size 1000000", &docroot::DeclareCreate,
     &docroot::Create},
    {"docroot", "set", "change what is given and leave all else",
     "  qvadmin docroot set Main --path /srv/new\n"
     "  qvadmin docroot set Main --type 2 --name Archive --owner amy",
     &docroot::DeclareSet, &docroot::Set},
    {"docroot", "delete", "delete a document root and its links; asks first",
     "  qvadmin docroot delete Main\n"
     "  qvadmin docroot delete id:4 --recursive --yes",
     &docroot::DeclareDelete, &docroot::Delete},
    {"docroot", "default", "print whether the company has a document root; ends with 0 or 3",
     "  qvadmin docroot default", nullptr, &docroot::Default},

    {"folder", "tree", "draw document roots and the folders below them",
     "  qvadmin folder tree\n"
     "  qvadmin folder tree Main --depth 2\n"
     "  qvadmin folder tree /Main/Contracts -o csv",
     &folder::DeclareTree, &folder::Tree},
    {"folder", "list", "the folders directly under a document root or folder",
     "  qvadmin folder list /Main\n"
     "  qvadmin folder list /Main/Contracts -o csv",
     &folder::DeclareList, &folder::List},
    {"folder", "show", "everything about a folder, and where it is linked",
     "  qvadmin folder show /Main/Contracts\n"
     "  qvadmin folder show id:17 -o json",
     &folder::DeclareOne, &folder::Show},
    {"folder", "create", "add a folder and print the new id",
     "  qvadmin folder create /Main/Contracts --creator amy\n"
     "  qvadmin folder create /Main/Contracts/2024/May --parents\n"
     "  qvadmin folder create '/Main/In\\/Out'",
     &folder::DeclareCreate, &folder::Create},
    {"folder", "rename", "give a folder another name", "  qvadmin folder rename /Main/Contracts Agreements",
     &folder::DeclareRename, &folder::Rename},
    {"folder", "style", "print a folder's style, or set it",
     "  qvadmin folder style /Main/Contracts\n"
     "  qvadmin folder style /Main/Contracts 2",
     &folder::DeclareStyle, &folder::Style},
    {"folder", "link", "hang a folder, with all below it, in a further place",
     "  qvadmin folder link /Main/Contracts /Archive\n"
     "  qvadmin folder link id:17 root:4",
     &folder::DeclareLink, &folder::Link},
    {"folder", "unlink", "take a folder out of one of its places; asks first when no other is left",
     "  qvadmin folder unlink /Archive/Contracts\n"
     "  qvadmin folder unlink id:17 --from /Archive",
     &folder::DeclareUnlink, &folder::Unlink},
    {"folder", "delete", "delete a folder and its links, wherever it hangs; asks first",
     "  qvadmin folder delete /Main/Contracts\n"
     "  qvadmin folder delete id:17 --recursive --yes",
     &folder::DeclareDelete, &folder::Delete},
};

Exit RunTableCommand(const Request& request, Terminal& terminal)
{
    Opened opened(request.arguments);
    TerminalFrontEnd frontEnd(*request.tableCommand, request.given, request.arguments.format, terminal);
    Call call(opened.Directory().Connection(), frontEnd, request.given.options);
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
