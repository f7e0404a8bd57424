#include "dbaccess/Driver.h"

#include "dbaccess/DriverModule.h"
#include "dbaccess/EngineKind.h"
#include "dbaccess/StatementObserver.h"
#include "dbaccess/drivers/common/NumberText.h"
#if QV_WITH_SQLITE
#include "dbaccess/drivers/sqlite/Driver.h"
#endif

#include <algorithm>
#include <array>
#include <cctype>
#include <functional>
#include <iterator>
#include <mutex>
#include <set>
#include <utility>

namespace dbaccess {

namespace {

/// The drivers that come as modules, in packages of their own.
constexpr std::array<std::string_view, 3> kModuleSchemes = {"mysql", "odbc", "postgresql"};

// Registrations and modules loaded, for all threads. A factory that is there is never taken away, only replaced.
struct Registry {
    std::mutex mutex;
    std::map<std::string, SessionFactory, std::less<>> drivers;
    std::map<std::string, std::string, std::less<>> leftOut;
};

Registry& TheRegistry()
{
    static Registry registry{{},
                             {
#if QV_WITH_SQLITE
                                 {"sqlite", &sqlite::OpenSession},
#endif
                             },
                             {
#ifdef QV_WITHOUT_MYSQL
                                 {"mysql", QV_WITHOUT_MYSQL},
#endif
#ifdef QV_WITHOUT_ODBC
                                 {"odbc", QV_WITHOUT_ODBC},
#endif
#ifdef QV_WITHOUT_POSTGRESQL
                                 {"postgresql", QV_WITHOUT_POSTGRESQL},
#endif
#ifdef QV_WITHOUT_SQLITE
                                 {"sqlite", QV_WITHOUT_SQLITE},
#endif
                             }};
    return registry;
}

std::string Decoded(std::string_view path)
{
    std::string decoded;
    for (std::size_t i = 0; i < path.size(); ++i) {
        const std::string_view code = path.substr(i, 3);
        if (code == "%3F" || code == "%3f" || code == "%25") {
            decoded += code[1] == '3' ? '?' : '%';
            i += 2;
        } else {
            decoded += path[i];
        }
    }
    return decoded;
}

bool IsScheme(std::string_view text)
{
    const auto fits = [](unsigned char ch) { return std::isalnum(ch) != 0 || ch == '+' || ch == '-' || ch == '.'; };
    return std::ranges::all_of(text, fits);
}

/// The schemes that can be opened, for a sentence: "mysql:, sqlite:".
std::string KnownSchemes(const Registry& registry)
{
    std::set<std::string> schemes;
    for (const auto& [scheme, factory] : registry.drivers) {
        schemes.insert(scheme);
    }
    for (const std::string& scheme : InstalledDriverModules()) {
        schemes.insert(scheme);
    }
    std::string text;
    for (const std::string& scheme : schemes) {
        text += (text.empty() ? "" : ", ") + scheme + ":";
    }
    return text;
}

CString Sentence(std::string_view a, std::string_view b, std::string_view c)
{
    CString text{a};
    text += b;
    text += c;
    return text;
}

} // namespace

Cursor::~Cursor() = default;
Session::~Session() = default;
StatementObserver::~StatementObserver() = default;

void RegisterDriver(const std::string& scheme, SessionFactory factory)
{
    Registry& registry = TheRegistry();
    const std::scoped_lock lock(registry.mutex);
    registry.drivers.insert_or_assign(scheme, std::move(factory));
}

void RegisterLeftOutDriver(const std::string& scheme, const std::string& package)
{
    Registry& registry = TheRegistry();
    const std::scoped_lock lock(registry.mutex);
    registry.leftOut.insert_or_assign(scheme, package);
}

SessionFactory FindDriver(std::string_view scheme)
{
    Registry& registry = TheRegistry();
    const std::scoped_lock lock(registry.mutex);
    const auto found = registry.drivers.find(scheme);
    if (found != registry.drivers.end()) {
        return found->second;
    }
    if (SessionFactory factory = LoadDriverModule(scheme)) {
        return registry.drivers.emplace(scheme, std::move(factory)).first->second;
    }
    const auto leftOut = registry.leftOut.find(scheme);
    if (leftOut != registry.leftOut.end()) {
        throw CAException(Sentence("this build has no database driver for \"", scheme,
                                   ":\"; install the Debian package " + leftOut->second + " and build again"));
    }
    if (!IsScheme(scheme)) {
        throw CAException("a connection URL begins with its scheme, such as sqlite:PATH");
    }
    if (std::ranges::find(kModuleSchemes, scheme) != std::end(kModuleSchemes)) {
        throw CAException(
            Sentence("the database driver for \"", scheme,
                     ":\" is not installed; install the Debian package libquorvel-" + std::string(scheme)));
    }
    throw CAException(Sentence("no database driver for \"", scheme, ":\"; there is " + KnownSchemes(registry)));
}

Location ParseLocation(std::string_view location)
{
    const std::size_t mark = location.find('?');
    Location parsed{Decoded(location.substr(0, mark)), {}};
    std::string_view rest = mark == std::string_view::npos ? std::string_view{} : location.substr(mark + 1);
    // By their number: neither a name nor a value is repeated, being perhaps a piece of a password with a & in it.
    for (int number = 1; !rest.empty(); ++number) {
        const std::string_view option = rest.substr(0, rest.find('&'));
        rest.remove_prefix(std::min(rest.size(), option.size() + 1));
        const std::size_t equals = option.find('=');
        if (equals == std::string_view::npos) {
            throw CAException(Sentence("connection option ", std::to_string(number), " is not of the form name=value"));
        }
        if (!parsed.options.emplace(option.substr(0, equals), option.substr(equals + 1)).second) {
            throw CAException(Sentence("connection option ", std::to_string(number), " is given twice"));
        }
    }
    return parsed;
}

int DbTypeOption(const Location& location, int preset)
{
    const auto kind = location.options.find("kind");
    if (kind == location.options.end()) {
        return preset;
    }
    for (const EngineKind known :
         {EngineKind::access, EngineKind::sqlServer, EngineKind::comparesInCapitals, EngineKind::mysql}) {
        if (kind->second == std::to_string(NumberOf(known))) {
            return NumberOf(known);
        }
    }
    throw CAException("the connection option kind must be 0, 1, 3 or 6");
}

std::size_t StatementCacheOption(const Location& location)
{
    constexpr std::size_t preset = 128;
    constexpr std::int64_t most = 1000;
    const auto option = location.options.find(kStatementCache);
    if (option == location.options.end()) {
        return preset;
    }
    const auto number = IntegerIn(option->second);
    if (!number || *number < 0 || *number > most) {
        throw CAException("the connection option statement-cache must be a number from 0 to 1000");
    }
    return static_cast<std::size_t>(*number);
}

} // namespace dbaccess
