#include "management/passwords/Passwords.h"

#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "management/DatabaseError.h"
#include "management/Escape.h"
#include "management/Query.h"
#include "management/Text.h"
#include "management/settings/Settings.h"
#include "management/users/Directory.h"
#include "platform/CodePage.h"

#include <fmt/format.h>
#include <sys/random.h>

#include <array>
#include <cstring>
#include <optional>
#include <utility>

namespace management {

namespace {

constexpr int kTypeWithLogin = 2;
constexpr int kDefaultType = kTypeWithLogin;
constexpr const char* kTypeSetting = "PasswordEncoding";
constexpr const char* kTypeGenre = "Console";

// 32 of them, so that each byte of the system's picks one evenly; no l with 1, no o with 0.
constexpr std::string_view kLetters = "abcdefghijkmnpqrstuvwxyz23456789";
static_assert(kLetters.size() == 32);
constexpr std::size_t kGeneratedLength = 20;

CString Encoded(const UserKey& user, const Secret& password, int type)
{
    CString text = type == kTypeWithLogin ? CString(std::string_view(user.login)) : CString();
    text += password.View();
    CQVBaseFun::Encrypt(text, "", type);
    return text;
}

struct StoredPassword {
    std::string text;
    int type;
};

StoredPassword Load(Directory& directory, const UserKey& user)
{
    const std::optional<FieldValues> values = directory.Load(user.id);
    if (!values) {
        throw Error(ErrorCode::notFound, FillPattern("{} has just been deleted", Named(user)));
    }
    const Field& type = *FindField("password_type");
    const Value number = Shown(type, values->at(&type));
    const auto* known = std::get_if<std::int64_t>(&number);
    return {values->at(FindField("password")).value_or(""), known == nullptr ? 0 : static_cast<int>(*known)};
}

int CountOf(CAConnect& conn, std::string_view login)
{
    const std::string sql =
        fmt::format("SELECT COUNT(*) FROM qv_User WHERE Col_LoginName = '{}'", EscapeLiteral(conn, login).View());
    return WithDatabaseErrors(conn, [&] {
        int count = 0;
        CARecordset rs;
        if (!rs.Open(sql.c_str(), &conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable)) {
            throw CAException("the connection is not open");
        }
        rs.MoveFirst();
        rs.GetValue(1, count);
        return count;
    });
}

} // namespace

Secret::~Secret() { ::explicit_bzero(m_text.data(), m_text.capacity()); }

bool Secret::Append(char byte)
{
    if (m_text.size() >= std::min(kLongest, m_text.capacity())) {
        return false;
    }
    m_text += byte;
    return true;
}

void CheckSecret(const Secret& secret, std::string_view noun)
{
    if (secret.View().find('\0') != std::string_view::npos) {
        throw Error(ErrorCode::invalid, FillPattern("the {} holds a NUL byte, which no directory can store", noun));
    }
    if (!platform::IsValidUtf8(secret.View())) {
        throw Error(ErrorCode::invalid, FillPattern("the {} is not UTF-8", noun));
    }
}

Secret GeneratedPassword()
{
    std::array<unsigned char, kGeneratedLength> bytes{};
    if (::getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
        throw Error(ErrorCode::failed, "the system gives no random numbers for a password");
    }
    Secret password(kGeneratedLength);
    for (const unsigned char byte : bytes) {
        password.Append(kLetters[byte % kLetters.size()]);
    }
    ::explicit_bzero(bytes.data(), bytes.size());
    return password;
}

int Passwords::EncodingType()
{
    std::optional<std::string> chosen;
    for (const Setting& setting : Settings(m_conn).OfGenre(kTypeGenre)) {
        if (setting.name != kTypeSetting) {
            continue;
        }
        if (chosen) {
            throw Error(ErrorCode::conflict, FillPattern("the setting {} of {} is there more than once; delete it",
                                                         kTypeSetting, kTypeGenre));
        }
        chosen = setting.value;
    }
    const std::string type = chosen.value_or(std::to_string(kDefaultType));
    if (type != "0" && type != "1" && type != "2") {
        throw Error(ErrorCode::conflict, FillPattern("the setting {} of {} is {}, and none of 0, 1, 2", kTypeSetting,
                                                     kTypeGenre, Quoted(type)));
    }
    return type[0] - '0';
}

PasswordStatus Passwords::Status(const UserKey& user)
{
    const StoredPassword stored = Load(m_directory, user);
    return {!stored.text.empty(), stored.type};
}

bool Passwords::Matches(const UserKey& user, const Secret& password)
{
    CheckSecret(password, "password");
    RequireOnlyOne(user);
    return Fits(user, password);
}

void Passwords::Set(const UserKey& user, const Secret& password, int type)
{
    CheckSecret(password, "password");
    RequireOnlyOne(user);
    Run(m_conn, [&] {
        return CQVBaseFun::UpdateItemPassword(m_conn, EscapeLiteral(m_conn, user.login),
                                              EscapeLiteral(m_conn, Encoded(user, password, type).View()), type);
    });
    if (!Fits(user, password)) {
        throw Error(ErrorCode::failed, FillPattern("the password of {} does not fit as the database stores it; "
                                                   "nothing was changed",
                                                   Named(user)));
    }
}

void Passwords::RequireOnlyOne(const UserKey& user)
{
    // The module goes by login name, and by the engine's idea of which names are equal.
    const int count = CountOf(m_conn, user.login);
    if (count != 1) {
        throw Error(ErrorCode::conflict,
                    FillPattern("{} users have the login name of {}, and a password goes by login name; "
                                "rename the others first",
                                count, Named(user)));
    }
}

bool Passwords::Fits(const UserKey& user, const Secret& password)
{
    const StoredPassword stored = Load(m_directory, user);
    const CString escaped = EscapeLiteral(m_conn, user.login);
    if (stored.type == kTypeWithLogin && escaped.View() != user.login) {
        // The module puts one and the same text into its statement and into the digest: no text is right for both.
        return stored.text.empty() ? password.View().empty()
                                   : stored.text == Encoded(user, password, stored.type).View();
    }
    bool matches = false;
    Run(m_conn, [&] { return CQVBaseFun::CheckUserPassword(m_conn, escaped, CString(password.View()), matches); });
    return matches;
}

std::string_view NameOfPasswordType(int type)
{
    return type == 1 ? "MD5" : type == kTypeWithLogin ? "MD5 with login name" : "plain text";
}

} // namespace management
