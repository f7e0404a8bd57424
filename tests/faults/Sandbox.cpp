#include "Sandbox.h"

#include "dbaccess/CAConnect.h"
#include "dbaccess/CAException.h"
#include "dbaccess/CARecordset.h"
#include "platform/CodePage.h"
#include "tests/servers/Servers.h"

#include <fmt/format.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <stdexcept>
#include <thread>
#include <utility>

#ifdef __SANITIZE_ADDRESS__
// The compiler comes without the sanitizer's header for it.
extern "C" int __lsan_do_recoverable_leak_check();
#endif

/// main() of the program, under another name.
int QvadminMain(int argc, char* argv[]);

namespace faults {

namespace {

namespace fs = std::filesystem;

constexpr unsigned kLongestRun = 120; // seconds, of a machine that is busy with other things
constexpr int kLeaked = 250;
constexpr const char* kDatabase = "directory.db";
constexpr const char* kPeople =
    "login,name,email,department\n"
    "amy.from.leadworth,Amelia Holt from elsewhere,amy.holt@mail.example.org,Sales and marketing\n"
    "donna.from.chiswick,Donna who is the most important,donna@mail.example.org,Service/Of the evening\n"
    "martha.from.london,Martha who walked the whole earth,martha@mail.example.org,Service\n";

constexpr const char* kDirectory =
    R"({"format":"qvadmin directory","version":1}
{"noun":"user","login":"amy.from.leadworth","name":"Amelia Holt from elsewhere"}
{"noun":"user","login":"donna.from.chiswick","name":"Donna who is the most important"}
{"noun":"group","path":"/Company of many people/Service/Of the evening","description":"Opens at six in the evening"}
{"noun":"member","member":{"user":"donna.from.chiswick"},"of":{"group":"/Company of many people/Service"},"relation":1}
{"noun":"right","holder":{"role":"Editors of the pages"},"genre":"mail of everybody","function":"send to everybody","power":3}
{"noun":"folder","path":"/Archive of documents/Folder of the archive/Folder of an import"}
{"noun":"plan","name":"Yearly backup of all of it"}
)";

constexpr const char* kEntries =
    "dn: ou=Service,dc=example,dc=org\nobjectClass: organizationalUnit\nou: Service\n\n"
    "dn: cn=Donna who is the most important,ou=Service,dc=example,dc=org\nobjectClass: inetOrgPerson\n"
    "uid: donna.from.chiswick\ncn: Donna who is the most important\nsn: Noble of Chiswick\n\n"
    "dn: cn=Readers of all the pages,dc=example,dc=org\nobjectClass: groupOfNames\n"
    "member: cn=Donna who is the most important,ou=Service,dc=example,dc=org\n";

void Write(const fs::path& file, std::string_view text) { std::ofstream(file, std::ios::binary) << text; }

std::string ReadFile(const fs::path& file)
{
    std::ifstream in(file, std::ios::binary);
    std::string text(fs::file_size(file), '\0');
    in.read(text.data(), static_cast<std::streamsize>(text.size()));
    return text;
}

std::string ReadAll(int file)
{
    std::string text(static_cast<std::size_t>(::lseek(file, 0, SEEK_END)), '\0');
    const ssize_t count = ::pread(file, text.data(), text.size(), 0);
    text.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return text;
}

int MakeFile(const char* name)
{
    const int file = ::memfd_create(name, MFD_CLOEXEC);
    if (file < 0) {
        throw std::runtime_error("memfd_create");
    }
    return file;
}

std::vector<std::string> Column(CAConnect& conn, const std::string& sql)
{
    std::vector<std::string> values;
    CARecordset rows;
    rows.Open(sql.c_str(), &conn, adbcCursorForwardOnly, adbcLockReadOnly, adbcCommandText);
    for (; rows.IsEOF() == 0; rows.MoveNext()) {
        values.emplace_back(rows.GetValueToStr(1, true).View());
    }
    return values;
}

std::string RowOf(CARecordset& rows)
{
    std::string row;
    for (long i = 1; i <= rows.GetColumnCount(); ++i) {
        CString value;
        row += rows.GetValue(i, value, true) ? "|" + std::string(value.View()) : "|NULL";
    }
    return row;
}

std::string TableText(CAConnect& conn, const std::string& table)
{
    std::vector<std::string> lines;
    CARecordset rows;
    // Times, the digests that depend on them, and ids, which a rolled-back change uses up, differ from run to run.
    static const std::map<std::string, std::string> kRecord = {
        {"QV_AUDITENTRY", "Col_Who, Col_Command, Col_Reason, Col_Undoes, Col_Rows"},
        {"QV_AUDITROW", "Col_Table, Col_Key, Col_Count, Col_Item, Col_OtherItem, Col_Before, Col_After"}};
    const auto record = kRecord.find(platform::UpperUtf8(table));
    const std::string columns = record == kRecord.end() ? "*" : record->second;
    const std::string condition = table == "sqlite_sequence" ? " WHERE name NOT LIKE 'qv_Audit%'" : "";
    rows.Open(("SELECT " + columns + " FROM " + table + condition).c_str(), &conn, adbcCursorForwardOnly,
              adbcLockReadOnly, adbcCommandText);
    for (; rows.IsEOF() == 0; rows.MoveNext()) {
        lines.push_back(table + RowOf(rows) + "\n");
    }
    std::ranges::sort(lines);
    std::string text;
    for (const std::string& line : lines) {
        text += line;
    }
    return text;
}

std::string AllTables(CAConnect& conn, const std::string& listTables)
{
    std::string text;
    for (const std::string& table : Column(conn, listTables)) {
        text += "table " + table + "\n" + TableText(conn, table);
    }
    return WithoutMoments(text);
}

std::string SqliteState(const fs::path& file)
{
    CAConnect conn;
    conn.Open(("sqlite:" + file.string()).c_str());
    const std::vector<std::string> check = Column(conn, "PRAGMA integrity_check");
    return (check == std::vector<std::string>{"ok"} ? "" : "damaged: " + check.front() + "\n") +
           AllTables(conn, "SELECT name FROM sqlite_master WHERE type = 'table' ORDER BY name");
}

struct ServerTexts {
    const char* tables;
    const char* others; ///< lists the other sessions of the database
    /// Gives statements that have the next id of each table be the one that it is now, or the one behind its rows.
    const char* counters;
};

ServerTexts TextsOf(const std::string& engine)
{
    if (engine == "postgresql") {
        return {"SELECT tablename FROM pg_tables WHERE schemaname = current_schema() ORDER BY tablename",
                "SELECT pid FROM pg_stat_activity WHERE datname = current_database() AND pid <> pg_backend_pid()",
                "SELECT format('SELECT setval(%L, GREATEST(%s, (SELECT MAX(%I) + 1 FROM %I)), false)', counter, "
                "COALESCE(pg_sequence_last_value(counter::regclass), 0) + 1, column_name, table_name) FROM (SELECT "
                "table_name, column_name, pg_get_serial_sequence(table_name, column_name) AS counter FROM "
                "information_schema.columns WHERE table_schema = current_schema() AND is_identity = 'YES') AS ids"};
    }
    return {"SELECT table_name FROM information_schema.tables WHERE table_schema = database() ORDER BY table_name",
            "SELECT id FROM information_schema.processlist WHERE db = database() AND id <> connection_id()",
            "SELECT CONCAT('ALTER TABLE ', table_name, ' AUTO_INCREMENT = ', auto_increment) FROM "
            "information_schema.tables WHERE table_schema = database() AND auto_increment IS NOT NULL"};
}

/// A server may still be at the last statement of a program that has ended.
void WaitForOthers(CAConnect& conn, const std::string& engine)
{
    while (!Column(conn, TextsOf(engine).others).empty()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
}

} // namespace

std::vector<std::string> Words(std::string_view line)
{
    std::vector<std::string> words;
    bool isQuoted = false;
    bool isInside = false;
    for (const char ch : line) {
        if (ch == '\'') {
            isQuoted = !isQuoted;
        }
        const bool isPart = isQuoted || ch != ' ';
        if (isPart && !isInside) {
            words.emplace_back();
        }
        if (isPart && ch != '\'') {
            words.back() += ch;
        }
        isInside = isPart;
    }
    if (isQuoted) {
        throw std::runtime_error("a quote without an end: " + std::string(line));
    }
    return words;
}

std::string WithoutMoments(std::string text)
{
    constexpr std::string_view kForm = "0000-00-00 00:00:00";
    const auto fits = [](char ch, char form) { return form == '0' ? ch >= '0' && ch <= '9' : ch == form; };
    for (std::size_t at = 0; at + kForm.size() <= text.size(); ++at) {
        if (std::equal(kForm.begin(), kForm.end(), text.begin() + static_cast<std::ptrdiff_t>(at),
                       [&fits](char form, char ch) { return fits(ch, form); })) {
            text.replace(at, kForm.size(), kForm);
        }
    }
    return text;
}

Sandbox::Sandbox(std::string engine, bool overOdbc)
    : m_engine(std::move(engine)),
      m_overOdbc(overOdbc),
      m_in(MakeFile("in")),
      m_out(MakeFile("out")),
      m_err(MakeFile("err")),
      m_seen(static_cast<Seen*>(
          ::mmap(nullptr, sizeof(Seen), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0)))
{
    std::string pattern = fs::temp_directory_path() / "qvadmin-faults-XXXXXX";
    m_folder = ::mkdtemp(pattern.data());
    m_url = std::string("sqlite:") + kDatabase;
    fs::create_directory(m_folder + "/run");
    Prepare();
    if (m_engine != "sqlite") {
        MakeServerDatabase();
    }
    m_before = State();
}

Sandbox::~Sandbox()
{
    ::close(m_in);
    ::close(m_out);
    ::close(m_err);
    ::munmap(m_seen, sizeof(Seen));
    std::error_code error;
    fs::remove_all(m_folder, error);
}

/// Makes the directory in the folder.
void Sandbox::Prepare()
{
    const std::string run = m_folder + "/run/";
    Write(run + "people.csv", kPeople);
    Write(run + "directory.jsonl", kDirectory);
    Write(run + "people.ldif", kEntries);
    Write(run + "data.xml", "<data>what an add-in keeps</data>");
    for (const Scenario& scenario : kSetup) {
        RunSetup(scenario);
    }
    RunSetup({"db backup kept.db"});
    {
        CAConnect conn;
        conn.Open(("sqlite:" + run + kDatabase).c_str());
        for (const char* statement : kSetupStatements) {
            conn.Execute(statement);
        }
    }
    fs::copy(run, m_folder + "/before");
    m_file = ReadFile(run + kDatabase);
}

void Sandbox::MakeServerDatabase()
{
    const std::string target = servers::NewDatabase(m_engine);
    const std::string copy = "db copy '" + target + "'";
    m_url = target;
    RunSetup({"db init"});
    m_url = "sqlite:" + m_folder + "/before/" + kDatabase;
    RunSetup({copy});
    m_url = target;
    CAConnect conn;
    conn.Open(m_url.c_str());
    m_counters = Column(conn, TextsOf(m_engine).counters);
}

void Sandbox::ResetCounters()
{
    if (m_engine == "sqlite") {
        return;
    }
    CAConnect conn;
    conn.Open(m_url.c_str());
    for (const std::string& statement : m_counters) {
        if (m_engine == "postgresql") {
            Column(conn, statement);
        } else {
            conn.Execute(statement.c_str());
        }
    }
}

void Sandbox::RunSetup(const Scenario& scenario)
{
    const bool overOdbc = std::exchange(m_overOdbc, false);
    const Outcome outcome = Run(scenario, {});
    m_overOdbc = overOdbc;
    if (outcome.exit != 0) {
        throw std::runtime_error(fmt::format("{}: {}", scenario.line, outcome.err));
    }
}

bool Sandbox::IsUntouched() const
{
    const fs::path run = m_folder + "/run";
    const auto isLeftOver = [](const fs::directory_entry& entry) {
        const std::string name = entry.path().filename();
        return name.starts_with(kDatabase) && name != kDatabase && entry.file_size() != 0;
    };
    return std::none_of(fs::directory_iterator(run), {}, isLeftOver) && !fs::exists(run / "copy.db") &&
           !fs::exists(run / "backup.db") && !fs::exists(run / "backup.db.partial") && fs::exists(run / kDatabase) &&
           ReadFile(run / kDatabase) == m_file;
}

void Sandbox::Restore(const Scenario& scenario)
{
    if (m_engine != "sqlite" && !m_before.empty()) {
        if (State() != m_before) {
            const std::string before = std::exchange(m_before, {});
            MakeServerDatabase();
            m_before = before;
        }
        ResetCounters();
        return;
    }
    const bool writesFile = scenario.line.starts_with("db copy") || scenario.line.starts_with("db backup");
    if (m_isUntouched && scenario.line != "db init" && !writesFile) {
        return;
    }
    const std::string run = m_folder + "/run";
    for (const fs::directory_entry& entry : fs::directory_iterator(run)) {
        fs::remove_all(entry.path());
    }
    fs::copy(m_folder + "/before", run);
    if (scenario.line == "db init") {
        fs::remove(run + "/" + kDatabase);
    }
    if (scenario.line.starts_with("db copy sqlite:")) {
        const std::string url = std::exchange(m_url, "sqlite:copy.db");
        RunSetup({"db init"});
        m_url = url;
    }
}

std::string Sandbox::State()
{
    if (m_engine != "sqlite" && !m_url.starts_with("sqlite:")) {
        CAConnect conn;
        conn.Open(m_url.c_str());
        WaitForOthers(conn, m_engine);
        return AllTables(conn, TextsOf(m_engine).tables);
    }
    m_isUntouched = !m_before.empty() && IsUntouched();
    if (m_isUntouched) {
        return m_before;
    }
    std::string state;
    for (const char* name : {kDatabase, "copy.db"}) {
        const std::string file = m_folder + "/run/" + name;
        state += fs::exists(file) ? SqliteState(file) : "";
    }
    return state;
}

Outcome Sandbox::Run(const Scenario& scenario, const Plan& plan, [[maybe_unused]] bool lookForLeaks)
{
    const std::string url = m_overOdbc ? servers::OverOdbc(m_engine, m_url) : m_url;
    std::vector<std::string> words = Words(scenario.line);
    words.insert(words.begin(), "qvadmin");
    std::vector<char*> argv;
    std::ranges::transform(words, std::back_inserter(argv), [](std::string& word) { return word.data(); });
    argv.push_back(nullptr);
    for (const int file : {m_in, m_out, m_err}) {
        if (::ftruncate(file, 0) != 0 || ::lseek(file, 0, SEEK_SET) != 0) {
            throw std::runtime_error("ftruncate");
        }
    }
    if (::pwrite(m_in, scenario.input.data(), scenario.input.size(), 0) < 0) {
        throw std::runtime_error("pwrite");
    }
    m_isUntouched = false;
    m_seen->counts = {};
    m_seen->struck = 0;
    const pid_t child = ::fork();
    if (child == 0) {
        ::alarm(kLongestRun);
        ::setenv("QVADMIN_DB", url.c_str(), 1);
        ::setenv("HOME", m_folder.c_str(), 1);
        ::setenv("XDG_DATA_HOME", m_folder.c_str(), 1);
        ::dup2(m_in, STDIN_FILENO);
        ::dup2(m_out, STDOUT_FILENO);
        ::dup2(m_err, STDERR_FILENO);
        if (::chdir((m_folder + "/run").c_str()) != 0) {
            ::_exit(EXIT_FAILURE);
        }
        Arm(plan, *m_seen);
        int code = QvadminMain(static_cast<int>(words.size()), argv.data());
        Disarm();
#ifdef __SANITIZE_ADDRESS__
        if (lookForLeaks && __lsan_do_recoverable_leak_check() != 0) {
            code = kLeaked;
        }
#endif
        ::_exit(code);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    Outcome outcome;
    outcome.exit = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    outcome.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    outcome.leaks = outcome.exit == kLeaked;
    outcome.out = ReadAll(m_out);
    outcome.err = ReadAll(m_err);
    return outcome;
}

} // namespace faults
