#pragma once

#include <string_view>

/// The commands that are run with calls that fail, each on the directory that kSetup makes.
namespace faults {

/// A command line as in a shell, with single quotes only.
struct Scenario {
    std::string_view line;
    std::string_view input = {};
    /// It is carried out in steps, each of them whole; run again after a failure it does the rest.
    bool inSteps = false;
    /// One of the main jobs, which are walked on servers too.
    bool isMain = false;
    /// The sentence is followed by lines that say what became of the parts.
    bool tellsOfParts = false;
};

inline constexpr Scenario kSetup[] = {
    {"db init"},
    {"view create 'Company of many people' --description 'Who works where in the company'"},
    {"view create 'A second view to delete'"},
    {"group create '/Company of many people/Sales and marketing' --description 'Sells things to whom it may concern'"},
    {"group create '/Company of many people/Sales and marketing/North of the river'"},
    {"group create '/Company of many people/Service'"},
    {"user create amy.from.leadworth --name 'Amelia Jessica Porter' --email amy.porter@mail.example.org"},
    {"user create rory.from.leadworth --name 'Rory Arthur Porter the nurse'"},
    {"user create clara.from.blackpool --name 'Clara Oswin from Blackpool'"},
    {"user lock clara.from.blackpool"},
    {"console set clara.from.blackpool read-only"},
    {"user password set amy.from.leadworth --password-stdin", "a long and secret password\n"},
    {"member add '/Company of many people/Sales and marketing' amy.from.leadworth rory.from.leadworth"},
    {"member add '/Company of many people/Sales and marketing/North of the river' clara.from.blackpool"},
    {"role default --create"},
    {"role create 'Editors of the pages' --description 'May change the pages of all'"},
    {"role create 'Authors of the pages'"},
    {"role add 'Editors of the pages' amy.from.leadworth rory.from.leadworth"},
    {"title give '/Company of many people/Sales and marketing' amy.from.leadworth 'Lead of the department'"},
    {"right grant 'role:Editors of the pages' 'mail of everybody' 'send to everybody' 1"},
    {"right grant 'role:Authors of the pages' 'mail of everybody' 'size of an attachment' 2048"},
    {"right grant user:amy.from.leadworth pages edit 0x1F --unpower 2"},
    {"right on grant 'role:Editors of the pages' 'view:Company of many people' pages see"},
    {"objright grant user:amy.from.leadworth 3 17 'documents of all' 'read the documents' 1"},
    {"docroot create 'Main storage of documents' --path /srv/documents/of/all/people --type 1"},
    {"docroot create 'Archive of documents' --path /srv/documents/of/old --type 2"},
    {"folder create '/Main storage of documents/Contracts of all years' --creator amy.from.leadworth"},
    {"folder create '/Main storage of documents/Contracts of all years/The year 2024'"},
    {"folder create '/Archive of documents/Folder of the archive'"},
    {"folder link '/Archive of documents/Folder of the archive' '/Main storage of documents'"},
    {"plan create 'Nightly backup of all' --data 'what is to be kept each night'"},
    {"plan create 'Weekly backup of all' --data 'what is to be kept each week'"},
    {"plan assign 'Nightly backup of all' user:amy.from.leadworth"},
    {"doclog add 105 17 'moved elsewhere' 'Moved to the archive of all' --creator amy.from.leadworth"},
    {"setting set PasswordEncodingOfUsers 'MD5 with login names' --genre 'Console of all'"},
    {"package install 'Office package for all' --version 3 --description 'Calendar and clock of all'"},
    {"addin create 'Calendar of the office' --type 2 --data-file data.xml --package 'Office package for all'"},
    {"addin create 'Clock of the office' --type 2 --data-file data.xml"},
};

/// Rows that no command makes.
inline constexpr const char* kSetupStatements[] = {
    "INSERT INTO kel_Msg VALUES (1, '2019-05-01 00:00:00'), (2, '2019-06-01 00:00:00'), (3, '2024-06-01 00:00:00')",
    "INSERT INTO kel_Msg_AttachMent (Col_MsgID) VALUES (1), (3), (99)",
    "INSERT INTO kel_Msg_Rece (Col_MsgID) VALUES (1), (1), (2), (98)",
    "INSERT INTO kel_log VALUES (1), (2), (3)",
    "INSERT INTO Kel_Board VALUES ('1', 'amy.from.leadworth', 'A subject that is long', '2013-05-07 09:03:00', "
    "'Two\nlines')",
    "INSERT INTO Kel_Board VALUES ('2', 'rory.from.leadworth', 'Another long subject', '2014-05-07 09:03:00', 'One "
    "line')",
    "INSERT INTO Kel_Board_Attach VALUES ('1', 'a-file-with-a-long-name.txt'), ('2', 'another-file-of-them.txt')",
    "INSERT INTO Kel_Board_Revert VALUES (7, '1', 'rory.from.leadworth', '2013-05-08 00:00:00', 'a reply that is "
    "long')",
    "INSERT INTO Kel_Board_Visiter VALUES (3, '1', 'user-17-of-the-directory', 'Amelia Porter', '2013-05-09 00:00:00', "
    "1)",
};

inline constexpr Scenario kScenarios[] = {
    {"db init", {}, true},
    {"db status -o json", {}, false, true},
    {"config show --origin"},
    {"db copy sqlite:copy.db", {}, true},
    {"db backup backup.db", {}, true},
    {"db restore kept.db --replace --yes"},

    {"user list", {}, false, true},
    {"user list -o json"},
    {"user list -o csv --match porter --limit 1"},
    {"user list --in '/Company of many people' --deep --title 'lead of the department' --where name~porter "
     "--sort -name"},
    {"user show amy.from.leadworth", {}, false, true},
    {"user show amy.from.leadworth rory.from.leadworth"},
    {"user create donna.from.chiswick --name 'Donna who is the most important' --sex female", {}, false, true},
    {"user set amy.from.leadworth --mobile '+44 7700 900001 900002 900003' --no-super", {}, false, true},
    {"user rename rory.from.leadworth rory.the.last.centurion"},
    {"user rename amy.from.leadworth amy.from.new.york --drop-password"},
    {"user password set rory.from.leadworth --password-stdin", "another long and secret one\n"},
    {"user password set --in '/Company of many people/Sales and marketing' --password-stdin --yes",
     "another long and secret one\n"},
    {"user password check amy.from.leadworth --password-stdin", "a long and secret password\n"},
    {"user password status amy.from.leadworth"},
    {"user lock amy.from.leadworth rory.from.leadworth"},
    {"user unlock clara.from.blackpool"},
    {"user lock --in '/Company of many people/Sales and marketing' --yes"},
    {"user move amy.from.leadworth rory.from.leadworth '/Company of many people/Service'", {}, false, true},
    {"user delete amy.from.leadworth rory.from.leadworth --yes", {}, false, true},
    {"user count"},
    {"user count --role 'Editors of the pages' --where email~example"},
    {"user exists amy.from.leadworth"},
    {"user roles amy.from.leadworth"},
    {"user titles amy.from.leadworth"},
    {"user groups amy.from.leadworth"},
    {"user import people.csv --update", {}, true, true},
    {"user import people.csv --update --departments 'Company of many people'", {}, true},
    {"user import people.csv --dry-run --update"},
    {"user import people.csv --sync --scope '/Company of many people' --leavers lock --max-leavers 100%", {}, true},

    {"export all.jsonl --with-passwords"},
    {"export --format csv --in '/Company of many people'"},
    {"import directory.jsonl --update", {}, true},
    {"import directory.jsonl --dry-run"},
    {"export --format ldif --base dc=example,dc=org"},
    {"import people.ldif --view 'Company of many people'", {}, true},

    {"group tree --users", {}, false, true},
    {"group list"},
    {"group show '/Company of many people/Sales and marketing'"},
    {"group create '/Company of many people/New group/Of two steps' --parents", {}, false, true},
    {"group set '/Company of many people/Service' --sort-index 10"},
    {"group rename '/Company of many people/Service' 'Service department of all'"},
    {"group move '/Company of many people/Sales and marketing/North of the river' '/Company of many people/Service'"},
    {"group style '/Company of many people/Service' 2"},
    {"group delete '/Company of many people/Sales and marketing' --recursive --yes", {}, false, true},
    {"group find marketing"},

    {"view list --all"},
    {"view show 'Company of many people'"},
    {"view create 'Another view of the people' --description 'Of no use to anybody'"},
    {"view set 'Company of many people' --sort-index 10"},
    {"view rename 'Company of many people' 'The company of all the people'"},
    {"view default"},
    {"view delete 'A second view to delete' --yes"},
    {"view stamp 'Company of many people'"},

    {"role list"},
    {"role show 'Editors of the pages'"},
    {"role create 'Readers of the pages' --description 'May read what is there'", {}, false, true},
    {"role set 'Editors of the pages' --name 'Editors of other pages'"},
    {"role delete 'Editors of the pages' 'Authors of the pages' --yes", {}, false, true},
    {"role members 'Editors of the pages'"},
    {"role add 'Authors of the pages' amy.from.leadworth rory.from.leadworth"},
    {"role remove 'Editors of the pages' amy.from.leadworth rory.from.leadworth"},
    {"role of amy.from.leadworth"},
    {"role default"},

    {"console list"},
    {"console set rory.from.leadworth help-desk"},
    {"console remove clara.from.blackpool"},
    {"console totp remove amy.from.leadworth"},

    {"title give '/Company of many people/Service' amy.from.leadworth 'Helper of the service' --description 'since "
     "May'"},
    {"title take '/Company of many people/Sales and marketing' amy.from.leadworth 'Lead of the department'"},
    {"title list '/Company of many people/Sales and marketing'"},
    {"title check '/Company of many people/Sales and marketing' amy.from.leadworth 'Lead of the department'"},

    {"member list '/Company of many people/Sales and marketing'"},
    {"member add '/Company of many people/Service' amy.from.leadworth rory.from.leadworth", {}, false, true},
    {"member remove '/Company of many people/Sales and marketing' amy.from.leadworth rory.from.leadworth"},
    {"member detach amy.from.leadworth --yes"},

    {"right list 'role:Editors of the pages'"},
    {"right show 'role:Editors of the pages' 'mail of everybody' 'send to everybody'"},
    {"right grant 'role:Authors of the pages' 'pages of everybody' 'edit of all' 0x1F --unpower 2", {}, false, true},
    {"right set 'role:Editors of the pages' 'mail of everybody' 'send to everybody' 2"},
    {"right revoke 'role:Editors of the pages' --all --yes"},
    {"right on list 'view:Company of many people'"},
    {"right on grant 'role:Authors of the pages' 'view:Company of many people' pages see"},
    {"right on show 'role:Editors of the pages' 'view:Company of many people' pages see"},
    {"right on revoke 'role:Editors of the pages' 'view:Company of many people' pages see"},
    {"setting encryption-key show"},
    {"completion bash"},
    {"manual user"},
    {"commands -o json"},
    {"right on set 'role:Editors of the pages' 'view:Company of many people' pages see 3"},
    {"right on clear 'view:Company of many people' pages see --yes"},
    {"right edit '/Editors of the pages/mail of everybody/send to everybody=3' '/Authors of the pages/pages of "
     "everybody/edit of all=0x1F' --yes"},
    {"right matrix 'Editors of the pages' 'Authors of the pages'"},
    {"right effective amy.from.leadworth", {}, false, true},
    {"right views amy.from.leadworth pages see"},
    {"right explain amy.from.leadworth 'mail of everybody' 'send to everybody' --bit 1"},
    {"right explain clara.from.blackpool 'mail of everybody' 'send to everybody' --if-role 'Editors of the pages'"},
    {"right who 'mail of everybody' 'send to everybody' --bit 1"},
    {"right diff amy.from.leadworth clara.from.blackpool"},
    {"role diff 'Editors of the pages' 'Authors of the pages'"},

    {"objright list 3 17"},
    {"objright show 1"},
    {"objright grant user:rory.from.leadworth 3 17 'documents of all' 'read the documents' 1"},
    {"objright set 1 0x1F --unpower 1"},
    {"objright revoke 1 --yes"},
    {"objright check user:amy.from.leadworth 3 17 'documents of all' 'read the documents'"},

    {"docroot list"},
    {"docroot show 'Main storage of documents'"},
    {"docroot create 'Another storage of documents' --path /srv/another/place/of/all --type 1 --max-size 1000000"},
    {"docroot set 'Main storage of documents' --path /srv/new/place/of/documents --owner amy.from.leadworth"},
    {"docroot delete 'Main storage of documents' --recursive --yes"},
    {"docroot default"},

    {"folder tree"},
    {"folder list '/Main storage of documents'"},
    {"folder show '/Main storage of documents/Contracts of all years'"},
    {"folder create '/Main storage of documents/Another folder/Of two steps' --parents"},
    {"folder rename '/Main storage of documents/Contracts of all years' 'Agreements of all years'"},
    {"folder style '/Main storage of documents/Contracts of all years' 2"},
    {"folder link '/Main storage of documents/Contracts of all years' '/Archive of documents'"},
    {"folder move '/Main storage of documents/Contracts of all years' '/Archive of documents'"},
    {"folder unlink '/Archive of documents/Folder of the archive' --from '/Archive of documents' --yes"},
    {"folder delete '/Main storage of documents/Contracts of all years' --recursive --yes"},

    {"plan list -o json"},
    {"plan show 'Nightly backup of all'"},
    {"plan create 'Monthly backup of all' --description 'Each month, at its end'"},
    {"plan set 'Nightly backup of all' --name 'Backup of each second night'"},
    {"plan delete 'Nightly backup of all' --yes"},
    {"plan of user:amy.from.leadworth"},
    {"plan assign 'Weekly backup of all' user:amy.from.leadworth 'group:/Company of many people/Sales and marketing'"},
    {"plan unassign 'Nightly backup of all' user:amy.from.leadworth"},

    {"doclog add 105 18 'moved once more' 'Moved to another archive' --creator amy.from.leadworth"},
    {"doclog list --class 105 --object 17"},

    {"setting list"},
    {"setting get PasswordEncodingOfUsers -o json"},
    {"setting set PasswordEncodingOfUsers 'plain text as it is' --genre 'Console of all'"},
    {"setting delete PasswordEncodingOfUsers --genre 'Console of all' --yes"},
    {"setting threads --max 64 --task 8"},
    {"setting flags --doc-flag 3"},
    {"setting picture the-picture-of-the-company.png --all-users --yes"},
    {"setting encryption-key set --key-stdin", "0123456789abcdef0123456789abcdef\n"},

    {"message stats"},
    {"message oldest"},
    {"message purge --before 2020-01-01 --batch 1 --yes", {}, true, true},
    {"message sweep --yes", {}, true},

    {"loginlog list --limit 2"},
    {"loginlog delete 1 2 --yes"},

    {"addin list"},
    {"addin show 'Calendar of the office'"},
    {"addin create 'Notes of the office' --type 2 --data-file data.xml --public"},
    {"addin set 'Calendar of the office' --description 'Who is where and when' --no-public"},
    {"addin enable 'Calendar of the office' 'Clock of the office'"},
    {"addin disable 'Calendar of the office' 'Clock of the office'"},
    {"addin move 'Calendar of the office' top"},
    {"addin delete 'Calendar of the office' 'Clock of the office' --yes"},

    {"package list -o csv"},
    {"package show 'Office package for all'"},
    {"package install 'Another package for all' --version 2 --description 'Nothing of any use'"},
    {"package remove 'Office package for all' --yes"},

    {"board list"},
    {"board show 1"},
    {"board delete 1 2 --yes"},
    {"audit list --noun user --item user:amy.from.leadworth"},
    {"audit show 7"},
    {"audit undo 9 --yes --reason 'it was the wrong person'", {}, false, true},
    {"audit verify"},
    {"audit prune 2999-01-01 --yes"},
    {"user history amy.from.leadworth"},
    {"group history '/Company of many people/Service'"},
    {"role history 'Editors of the pages'"},
    {"db check"},
    {"db check --fix --yes"},
    {"db diff sqlite:kept.db"},
    {"db apply - --yes --max-removals 100%",
     R"({"format":"qvadmin directory","version":1}
{"noun":"user","login":"amy.from.leadworth","email":"another.address@mail.example.org"}
{"noun":"user","login":"donna.from.chiswick","name":"Donna who is the most important"}
{"noun":"group","path":"/Company of many people/Sales and marketing"}
{"noun":"group","path":"/Company of many people/Research into the future"}
{"noun":"member","member":{"user":"donna.from.chiswick"},"of":{"group":"/Company of many people/Research into the future"},"relation":1,"reference":0,"view":null}
)",
     false, true},
    {"batch - --one-transaction", "user lock amy.from.leadworth\nuser lock rory.from.leadworth\n", false, false, true},
    {"shell", "user lock amy.from.leadworth\n", false, false, true},
};

} // namespace faults
