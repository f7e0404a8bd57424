#include "web/Accounts.h"

#include "dbaccess/CAConnect.h"
#include "management/Query.h"
#include "management/Text.h"
#include "management/audit/Recorder.h"
#include "management/passwords/Passwords.h"
#include "management/users/Users.h"
#include "management/webconsole/ConsoleAccounts.h"
#include "web/PasswordRules.h"
#include "web/Tokens.h"
#include "web/Totp.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace web {

using namespace management;

namespace {

constexpr const char* kAdmin = "Admin";

/// What tells whether a user may use the console, as it is stored.
struct StoredAccount {
    int id = 0;
    std::string login;
    std::string name;
    bool isSuper = false;
    bool isLocked = false;
    std::string password;
    int type = 0;
    webconsole::ConsoleAccount kept = {};

    [[nodiscard]] Level OwnLevel() const { return isSuper ? Level::full : kept.level; }
    [[nodiscard]] bool HasPassword() const { return !password.empty() && password != kFitsNothing; }
    [[nodiscard]] bool IsLetIn() const
    {
        return OwnLevel() != Level::none && !isLocked && HasPassword() && !PasswordStatus{true, type}.IsPlainText();
    }
};

std::vector<StoredAccount> Load(CAConnect& conn, const std::string& condition)
{
    std::vector<StoredAccount> found;
    EachRow(conn,
            "SELECT Col_ID, Col_LoginName, Col_Name, Col_IsSuper, Col_Disabled, Col_PWord, Col_EnType FROM qv_User "
            "WHERE " +
                condition,
            [&found](CARecordset& row) {
                found.push_back({NumberIn(row, 1), TextIn(row, 2), TextIn(row, 3), NumberIn(row, 4) != 0,
                                 NumberIn(row, 5) != 0, TextIn(row, 6), NumberIn(row, 7)});
            });
    return found;
}

std::optional<StoredAccount> LoadOne(CAConnect& conn, int id)
{
    std::vector<StoredAccount> found = Load(conn, fmt::format("Col_ID = {}", id));
    if (found.size() != 1) {
        return std::nullopt;
    }
    found.front().kept = webconsole::ConsoleAccounts(conn).Find(id);
    return std::move(found.front());
}

Account AccountOf(const StoredAccount& stored)
{
    // The mark is compared in this process alone, and never leaves it.
    static const std::string processKey = NewToken();
    return {stored.id,
            stored.login,
            stored.name,
            Digest(fmt::format("{}:{}:{}:{}:{}:{}", processKey, stored.id, NameOf(stored.OwnLevel()), stored.kept.totp,
                               stored.type, stored.password)),
            stored.OwnLevel(),
            !stored.kept.totp.empty()};
}

} // namespace

std::optional<Account> FindAccount(CAConnect& conn, int id)
{
    const std::optional<StoredAccount> found = LoadOne(conn, id);
    return found && found->IsLetIn() ? std::optional(AccountOf(*found)) : std::nullopt;
}

namespace {

/// Changes what is kept of a user in one transaction, and records it as a command. @param change  `bool
/// change(ConsoleAccount&)`; false: nothing is to be changed.
template <class Change>
void ChangeKept(CAConnect& conn, int id, const audit::EntryData& entry, Change change)
{
    Transaction transaction(conn);
    const webconsole::ConsoleAccounts accounts(conn);
    webconsole::ConsoleAccount kept = accounts.Find(id);
    if (!change(kept)) {
        return;
    }
    std::optional<audit::Recorder> recorder;
    WithDatabaseErrors(conn, [&] { recorder.emplace(conn); });
    accounts.Save(id, kept);
    WithDatabaseErrors(conn, [&] { recorder->Write(entry); });
    recorder.reset();
    transaction.Commit();
}

audit::EntryData EntryOf(const std::string& login, std::string_view what)
{
    return {login, "web", fmt::format("console totp {} {}", what, ShellQuoted(login)), "", 0, ""};
}

/// Uses up a one-time code. @return whether it is right and was not used before.
bool UseCode(CAConnect& conn, int id, const std::string& code, std::time_t now)
{
    // Not recorded: it happens at each sign-in.
    Transaction transaction(conn);
    const webconsole::ConsoleAccounts accounts(conn);
    webconsole::ConsoleAccount kept = accounts.Find(id);
    const std::optional<int> step = StepOfCode(kept.totp, code, now);
    if (!step || *step <= kept.totpUsed) {
        return false;
    }
    kept.totpUsed = *step;
    accounts.Save(id, kept);
    transaction.Commit();
    return true;
}

bool UseRecoveryCode(CAConnect& conn, const StoredAccount& stored, const std::string& code)
{
    bool isUsed = false;
    ChangeKept(conn, stored.id, EntryOf(stored.login, "recover"), [&](webconsole::ConsoleAccount& kept) {
        isUsed = std::erase(kept.recovery, RecoveryDigest(code)) != 0;
        return isUsed;
    });
    return isUsed;
}

/// What becomes of somebody whose password is right.
SignIn CheckCode(CAConnect& conn, const StoredAccount& stored, const std::string& code, std::time_t now)
{
    using enum SignIn::Outcome;
    if (stored.kept.totp.empty()) {
        return {letIn, AccountOf(stored)};
    }
    if (code.empty()) {
        return {codeMissing};
    }
    if (UseCode(conn, stored.id, code, now)) {
        return {letIn, AccountOf(stored)};
    }
    if (UseRecoveryCode(conn, stored, code)) {
        return {letIn, AccountOf(stored), {}, true};
    }
    return {codeWrong};
}

/// Why a user is not let in with the right password.
Sentence ReasonAgainst(const StoredAccount& stored)
{
    if (stored.isLocked) {
        return Translatable("this user is locked");
    }
    if (stored.OwnLevel() == Level::none) {
        return Translatable(
            "only super users of the directory, and users to whom one of them gave a level, may use this console");
    }
    return FillPattern("the password is stored as plain text; set a new one first: qvadmin user password set {}",
                       stored.login);
}

} // namespace

SignIn CheckSignIn(CAConnect& conn, const Credentials& given, std::time_t now)
{
    Directory directory(conn);
    std::vector<UserKey> users = directory.FindAll(given.login);
    if (users.size() != 1) {
        return {};
    }
    const UserKey& user = users.front();
    const std::optional<StoredAccount> found = LoadOne(conn, user.id);
    bool isRight = false;
    try {
        isRight = found && found->HasPassword() && Passwords(directory).Matches(user, given.password);
    } catch (const DatabaseError&) {
        throw;
    } catch (const Error&) {
        // A password that cannot be one, or a login name that the engine takes for another's too.
    }
    if (!isRight) {
        return {};
    }
    if (!found->IsLetIn()) {
        return {SignIn::Outcome::refused, {}, ReasonAgainst(*found)};
    }
    return CheckCode(conn, *found, given.code, now);
}

std::vector<std::string> AddTotp(CAConnect& conn, const Account& account, const std::string& secret,
                                 const std::string& code, std::time_t now)
{
    const std::optional<int> step = StepOfCode(secret, code, now);
    if (!step) {
        throw Error(ErrorCode::invalid, "the code is wrong; look whether the clock of the device is right");
    }
    RecoveryCodes recovery = NewRecoveryCodes();
    ChangeKept(conn, account.id, EntryOf(account.login, "add"), [&](webconsole::ConsoleAccount& kept) {
        if (!kept.totp.empty()) {
            throw Error(ErrorCode::conflict, "there are one-time codes already; remove them first");
        }
        kept.totp = secret;
        kept.totpUsed = *step;
        kept.recovery = recovery.digests;
        return true;
    });
    return std::move(recovery.codes);
}

void RemoveTotp(CAConnect& conn, const Account& account)
{
    ChangeKept(conn, account.id, EntryOf(account.login, "remove"), [](webconsole::ConsoleAccount& kept) {
        kept = {.level = kept.level};
        return true;
    });
}

std::size_t RecoveryCodesLeft(CAConnect& conn, const Account& account)
{
    return webconsole::ConsoleAccounts(conn).Find(account.id).recovery.size();
}

bool NeedsSetup(CAConnect& conn)
{
    return std::ranges::none_of(Load(conn, "Col_IsSuper <> 0"), &StoredAccount::HasPassword);
}

void SetUp(CAConnect& conn, const Secret& password)
{
    const PasswordOwner owners[] = {{std::string(kAdmin), "", "", true}};
    if (const std::optional<Problem> weakness = FindWeakness(password.View(), owners)) {
        throw Error(ErrorCode::invalid, weakness->detail);
    }
    Transaction transaction(conn);
    std::optional<audit::Recorder> recorder;
    WithDatabaseErrors(conn, [&] { recorder.emplace(conn); });
    if (!NeedsSetup(conn)) {
        throw Error(ErrorCode::isProtected, "a super user has a password; sign in with it");
    }
    Directory directory(conn);
    const std::vector<UserKey> present = directory.FindAll(kAdmin);
    FieldValues values = {{FindField("super"), "1"}};
    UserKey admin = present.empty() ? UserKey{0, kAdmin} : present.front();
    if (present.empty()) {
        admin.id = CreateUser(directory, admin.login, values);
    } else {
        values[FindField("locked")] = "0";
        ChangeUser(directory, admin.id, values);
    }
    constexpr int withLoginName = 2;
    Passwords(directory).Set(admin, password, withLoginName);
    WithDatabaseErrors(conn, [&] { recorder->Write({"setup", "web", "setup", "", 0, ""}, false); });
    recorder.reset();
    transaction.Commit();
}

} // namespace web
