#include "console/Url.h"

#include "console/Environment.h"
#include "console/ExitCode.h"
#include "management/Text.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <string_view>
#include <system_error>
#include <vector>

namespace console {

namespace {

constexpr std::string_view kSqlite = "sqlite:";
constexpr std::string_view kOdbc = "odbc:";

bool HasScheme(std::string_view url)
{
    const std::size_t colon = url.find(':');
    const auto fits = [](unsigned char ch) { return std::isalnum(ch) != 0 || ch == '+' || ch == '-' || ch == '.'; };
    return colon != std::string_view::npos && colon > 0 && std::isalpha(static_cast<unsigned char>(url[0])) != 0 &&
           std::ranges::all_of(url.substr(0, colon), fits);
}

// In a URL, ? begins the options; %3F stands for it, and %25 for a % that would be read as part of such a code.
std::string EncodedPath(std::string_view path)
{
    std::string encoded;
    for (std::size_t i = 0; i < path.size(); ++i) {
        const std::string_view code = path.substr(i, 3);
        if (path[i] == '?') {
            encoded += "%3F";
        } else if (code == "%3F" || code == "%3f" || code == "%25") {
            encoded += "%25";
        } else {
            encoded += path[i];
        }
    }
    return encoded;
}

std::string DecodedPath(std::string_view path)
{
    std::string decoded;
    for (std::size_t i = 0; i < path.size(); ++i) {
        const std::string_view code = path.substr(i, 3);
        if (code == "%3F" || code == "%3f" || code == "%25") {
            decoded += code == "%25" ? '%' : '?';
            i += 2;
        } else {
            decoded += path[i];
        }
    }
    return decoded;
}

std::string DataDirectory()
{
    const std::optional<std::string> directory = BaseDirectory("XDG_DATA_HOME", ".local/share");
    if (!directory) {
        throw Error(ErrorCode::invalid,
                    "there is no home directory to look in; name the database with --db sqlite:PATH");
    }
    return *directory;
}

// Whether a SQLite URL is written as that of a server, as the driver judges it: it may hold a password.
bool NamesServer(std::string_view url)
{
    const std::string_view location = url.substr(std::min(url.size(), kSqlite.size()));
    const bool slashes = location.starts_with("//");
    if (location.starts_with("///") || location.starts_with('.') || (location.starts_with('/') && !slashes)) {
        return false;
    }
    const bool at = location.find('@') != std::string_view::npos;
    const bool colon = location.substr(0, location.find_first_of("/@", 2)).find(':') != std::string_view::npos;
    return (slashes ? 1 : 0) + (at ? 1 : 0) + (colon ? 1 : 0) > 1;
}

std::string_view Options(std::string_view url)
{
    const std::size_t mark = url.find('?');
    return mark == std::string_view::npos ? std::string_view{} : url.substr(mark + 1);
}

/// The value of an option; nothing when it is not there.
std::optional<std::string_view> Option(std::string_view url, std::string_view name)
{
    std::string_view rest = Options(url);
    while (!rest.empty()) {
        const std::string_view option = rest.substr(0, rest.find('&'));
        rest.remove_prefix(std::min(rest.size(), option.size() + 1));
        if (option.starts_with(name) && option.substr(name.size()).starts_with('=')) {
            return option.substr(name.size() + 1);
        }
    }
    return std::nullopt;
}

// The position of a word in a text, in any case; npos when it is not there.
std::size_t Find(std::string_view text, std::string_view lowerWord, std::size_t from = 0)
{
    const auto sameLetter = [](unsigned char a, unsigned char b) { return std::tolower(a) == b; };
    const std::string_view rest = text.substr(from);
    const auto* found = std::search(rest.begin(), rest.end(), lowerWord.begin(), lowerWord.end(), sameLetter);
    return found == rest.end() ? std::string_view::npos : from + static_cast<std::size_t>(found - rest.begin());
}

// Whether a text speaks of a password, other than by the option that names only its file.
bool NamesPassword(std::string_view text)
{
    constexpr std::string_view kFile = "password-file=";
    std::string rest(text);
    const std::size_t file = rest.find(kFile);
    if (file != std::string::npos && file > 0 && (rest[file - 1] == '?' || rest[file - 1] == '&')) {
        rest.erase(file, rest.find('&', file) - file);
    }
    return Find(rest, "password") != std::string::npos || Find(rest, "pwd") != std::string::npos;
}

// Where the value of an ODBC keyword ends that begins here: at a ;, but not at one within {...}, where }} stands for }.
std::size_t EndOfValue(std::string_view url, std::size_t begin)
{
    const std::size_t first = url.find_first_not_of(" \t", begin);
    if (first != std::string_view::npos && url[first] == '{') {
        begin = url.find('}', first);
        while (begin != std::string_view::npos && url.substr(begin + 1).starts_with('}')) {
            begin = url.find('}', begin + 2);
        }
    }
    return std::min(url.find(';', begin), url.size());
}

// The end of an address such as [::1], whose colons begin no password; `begin` where there is none. A bracket in a
// user's name or a password begins no address.
std::size_t EndOfAddress(const std::string& url, std::size_t begin)
{
    if (begin >= url.size() || url[begin] != '[') {
        return begin;
    }
    const std::size_t end = url.find_first_not_of("0123456789abcdefABCDEF:.", begin + 1);
    return end != std::string::npos && url[end] == ']' ? end : begin;
}

// "USER:PASSWORD@HOST", with // before it or without. Up to the last @, since a password may hold one, and to the end
// where the @ is missing and no port is there.
void HideUserPassword(std::string& url)
{
    const std::size_t slashes = url.find("//");
    const std::size_t begin = slashes == std::string::npos ? url.find(':') + 1 : slashes + 2;
    const std::size_t at = url.rfind('@');
    const std::size_t colon = url.find(':', EndOfAddress(url, begin));
    if (colon == std::string::npos) {
        return;
    }
    if (at != std::string::npos && colon < at) {
        url.replace(colon + 1, at - colon - 1, "***");
    } else if (slashes != std::string::npos && at == std::string::npos) {
        const std::size_t end = url.find_first_not_of("0123456789", colon + 1);
        if (end != std::string::npos && std::string_view("/?,").find(url[end]) == std::string_view::npos) {
            url.replace(colon + 1, std::string::npos, "***");
        }
    }
}

bool NamesPasswordOption(std::string_view name)
{
    const bool isFile = name.ends_with("passfile") || name.ends_with("password-file");
    return !isFile && (Find(name, "pass") != std::string_view::npos || Find(name, "pwd") != std::string_view::npos);
}

// "password=..." and the like, to the end of the text: a & or a ; there may be the password's own.
// @param from  where to begin.
void HideNamedPassword(std::string& url, std::size_t from)
{
    for (std::size_t at = from; at < url.size();) {
        const std::size_t end = std::min(url.find_first_of("?&;", at), url.size());
        const std::size_t sign = url.find('=', at);
        if (sign < end && NamesPasswordOption(std::string_view(url).substr(at, sign - at))) {
            url.replace(sign + 1, std::string::npos, "***");
        }
        at = end + 1;
    }
}

// "KEYWORD=VALUE;KEYWORD={VALUE}": the values of PWD and PASSWORD, any that speaks of one, and what has no keyword: it
// may be the rest of a password with a ; in it.
void HideOdbcPasswords(std::string& url)
{
    for (std::size_t at = kOdbc.size(); at < url.size();) {
        const std::size_t sign = std::min(url.find_first_of("=;?", at), url.size());
        const bool hasKeyword = url.substr(sign, 1) == "=";
        const std::size_t begin = hasKeyword ? sign + 1 : at;
        std::size_t end = hasKeyword ? EndOfValue(url, begin) : std::min(url.find(';', sign), url.size());
        if (hasKeyword ? NamesPassword(url.substr(at, sign - at)) || NamesPassword(url.substr(begin, end - begin))
                       : sign > at) {
            url.replace(begin, end - begin, "***");
            end = begin + 3;
        }
        at = end + 1;
    }
}

} // namespace

// A text with a = or an @ may be a connection string or a URL with a password in it, whose scheme has been forgotten.
void RequireScheme(const std::string& url, std::string_view source)
{
    if (url.starts_with(kSqlite) && NamesServer(url)) {
        throw Error(ErrorCode::invalid, FillPattern("{} names a server, and sqlite: takes the path of a file; write "
                                                    "sqlite:PATH",
                                                    source));
    }
    if (!HasScheme(url) && url.find_first_of("=@") != std::string::npos) {
        throw Error(ErrorCode::invalid,
                    FillPattern("{} names no kind of database; a URL begins with one, such as odbc: or "
                                "sqlite:",
                                source));
    }
    if (!HasScheme(url)) {
        throw Error(ErrorCode::invalid, FillPattern("{} {} names no kind of database; write sqlite:{} for a file",
                                                    source, Quoted(url), url.empty() ? "PATH" : Visible(url)));
    }
}

std::string ChooseUrl(const std::optional<std::string>& option)
{
    if (option) {
        RequireScheme(*option, "--db");
        return *option;
    }
    std::string variable(Environment("QVADMIN_DB"));
    if (!variable.empty()) {
        RequireScheme(variable, "QVADMIN_DB");
        return variable;
    }
    return std::string(kSqlite) + EncodedPath(DataDirectory() + "/quorvel/directory.db");
}

bool IsDefault(const std::optional<std::string>& option) { return !option && Environment("QVADMIN_DB").empty(); }

std::string WithoutCreating(const std::string& url)
{
    if (!SqliteFile(url) || Option(url, "mode")) {
        return url;
    }
    return url + (url.find('?') == std::string::npos ? "?" : "&") + "mode=rw";
}

std::optional<std::filesystem::path> SqliteFile(const std::string& url)
{
    if (!url.starts_with(kSqlite)) {
        return std::nullopt;
    }
    const std::string path = DecodedPath(std::string_view(url).substr(kSqlite.size(), url.find('?') - kSqlite.size()));
    return path.empty() || path == ":memory:" ? std::nullopt : std::optional<std::filesystem::path>(path);
}

bool MakesFile(const std::string& url) { return SqliteFile(url) && Option(url, "mode").value_or("rwc") == "rwc"; }

bool IsReadOnly(const std::string& url)
{
    const std::optional<std::filesystem::path> file = SqliteFile(url);
    return file && (Option(url, "mode") == "ro" || ::access(file->c_str(), W_OK) != 0);
}

void PrepareDirectory(const std::string& url, bool parents)
{
    if (!MakesFile(url)) {
        return;
    }
    std::vector<std::filesystem::path> missing;
    std::error_code ignored;
    std::filesystem::path parent = SqliteFile(url)->parent_path();
    while (!parent.empty() && !std::filesystem::exists(parent, ignored)) {
        missing.push_back(parent);
        parent = parent.parent_path();
    }
    if (!missing.empty() && !parents) {
        throw Error(ErrorCode::database,
                    FillPattern("there is no directory {}; nothing was made, add --parents if it is "
                                "to be made",
                                Visible(missing.front().native())));
    }
    std::ranges::reverse(missing);
    for (const std::filesystem::path& directory : missing) {
        if (::mkdir(directory.c_str(), S_IRWXU) != 0 && errno != EEXIST) {
            throw Error(ErrorCode::database,
                        FillPattern("cannot make the directory {}: {}", Visible(directory.native()),
                                    std::generic_category().message(errno)));
        }
    }
}

std::string ShownUrl(const std::string& url)
{
    std::string shown = url;
    if (url.starts_with(kOdbc)) {
        HideOdbcPasswords(shown);
    } else {
        const bool isPath = url.starts_with(kSqlite) && !NamesServer(url);
        if (!isPath) {
            HideUserPassword(shown);
        }
        HideNamedPassword(shown, isPath ? std::min(url.find('?'), url.size()) : 0);
    }
    return Visible(shown);
}

bool HoldsPassword(const std::string& url) { return ShownUrl(url) != Visible(url); }

bool TakesPassword(const std::string& url)
{
    const bool isServer = url.starts_with(kOdbc) || url.find("://") != std::string::npos;
    return isServer && !url.starts_with(kSqlite) && !HoldsPassword(url) && !Option(url, "password-file") &&
           !Option(url, "passfile");
}

std::string WithPassword(const std::string& url, std::string_view password)
{
    if (url.starts_with(kOdbc)) {
        std::string value = "{";
        for (const char ch : password) {
            value += ch == '}' ? "}}" : std::string(1, ch);
        }
        const std::size_t end = std::min(url.find('?'), url.size());
        return fmt::format("{};PWD={}}}{}", url.substr(0, end), EncodedPath(value), url.substr(end));
    }
    std::string encoded;
    for (const char ch : password) {
        encoded += fmt::format("%{:02X}", static_cast<unsigned char>(ch));
    }
    const std::size_t begin = url.find("://") + 3;
    const std::size_t at = url.substr(0, url.find_first_of("/?", begin)).rfind('@');
    if (at == std::string::npos || at < begin) {
        throw Error(ErrorCode::invalid, "there is a password for the database, but its URL names no user; write "
                                        "USER@ before the server's name");
    }
    return url.substr(0, at) + ":" + encoded + url.substr(at);
}

} // namespace console
