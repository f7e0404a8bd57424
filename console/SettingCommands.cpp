#include "console/SettingCommands.h"

#include "console/Confirm.h"
#include "console/Opened.h"
#include "console/Render.h"
#include "console/Secrets.h"
#include "console/Words.h"
#include "management/DatabaseError.h"
#include "management/Text.h"
#include "management/settings/Settings.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <charconv>
#include <cstdint>
#include <optional>

namespace console::setting {

namespace {

constexpr std::string_view kKeyAdvice = "--key-stdin or --key-file";
constexpr std::string_view kNothingDone = "nothing was changed";

/// What these commands take beside the arguments that all commands share.
struct SettingOptions {
    std::string name;
    std::string value;
    std::optional<std::string> genre;
    std::optional<std::uint32_t> maxThreads;
    std::optional<std::uint32_t> taskThreads;
    std::optional<std::uint32_t> docFlag;
    std::optional<std::string> picture;
    bool allUsers = false;
    Exit (*keyRun)(const Context&) = nullptr;
    SecretSource keySource;
    bool reveal = false;
};

/// Those of this run: one command line is read in each.
SettingOptions& Options()
{
    static SettingOptions options;
    return options;
}

// ---- Declaring ------------------------------------------------------------------------------------------------------

void DeclareName(CLI::App& app)
{
    app.add_option("NAME", Options().name, "name of the setting")->required()->type_name("");
}

CLI::Option* DeclareGenre(CLI::App& app, const char* help)
{
    return app.add_option("--genre", Options().genre, help)->type_name("GENRE");
}

void DeclareNumber(CLI::App& app, const std::string& option, std::optional<std::uint32_t>& number, const char* help)
{
    const auto take = [option, &number](const std::string& text) {
        std::uint32_t read = 0;
        const auto end = std::from_chars(text.data(), text.data() + text.size(), read);
        if (end.ec != std::errc() || end.ptr != text.data() + text.size()) {
            throw Error(ErrorCode::invalid,
                        fmt::format("{} {} is no whole number from 0 to 4294967295", option, Quoted(text)));
        }
        number = read;
    };
    app.add_option_function<std::string>(option, take, help)->type_name("N");
}

// ---- Sentences ------------------------------------------------------------------------------------------------------

std::string Described(const Setting& setting)
{
    return fmt::format("{} of {}", Visible(setting.name),
                       setting.genre.empty() ? "no genre" : "genre " + Quoted(setting.genre));
}

std::string Enumerated(const std::vector<Setting>& settings)
{
    std::string list;
    for (const Setting& setting : settings) {
        list += (list.empty() ? "" : ", ") + Described(setting);
    }
    return list;
}

void RefuseKey(std::string_view verb)
{
    if (Settings::IsKey(Options().name)) {
        throw Error(ErrorCode::invalid, fmt::format("{} is a secret; `qvadmin setting encryption-key {}` is for it",
                                                    Visible(Options().name), verb));
    }
}

/// The value of the encryption key stays away from where all settings are seen.
Value ShownValue(const Setting& setting) { return Settings::IsKey(setting.name) ? Value() : Value(setting.value); }

/// Those of the name, and of the genre when one is given. @throws Error (notFound) when there are none.
std::vector<Setting> FindSettings(Settings& settings)
{
    const SettingOptions& options = Options();
    std::vector<Setting> found = settings.Named(options.name);
    if (options.genre) {
        std::erase_if(found, [&](const Setting& setting) { return setting.genre != *options.genre; });
    }
    if (found.empty()) {
        throw Error(ErrorCode::notFound,
                    fmt::format("there is no setting {}{}; `qvadmin setting list` shows all", Quoted(options.name),
                                options.genre ? " of genre " + Quoted(*options.genre) : ""));
    }
    return found;
}

/// Inserts or updates the setting of the options. @return what it is then.
Setting Write(Settings& settings)
{
    const SettingOptions& options = Options();
    const std::vector<Setting> present = settings.Named(options.name);
    if (present.size() > 1) {
        throw Error(ErrorCode::conflict,
                    fmt::format("{} is the name of {} settings ({}), and a change would reach all of them",
                                Quoted(options.name), present.size(), Enumerated(present)));
    }
    if (present.empty() && !options.genre) {
        throw Error(ErrorCode::invalid,
                    fmt::format("there is no setting {} yet; say with --genre which genre it is to be of",
                                Quoted(options.name)));
    }
    if (present.empty() || (options.genre && *options.genre != present.front().genre)) {
        settings.Insert(options.name, options.value, *options.genre);
        return {*options.genre, options.name, options.value};
    }
    settings.UpdateAll(options.name, options.value);
    return present.front();
}

// ---- The encryption key ---------------------------------------------------------------------------------------------

Exit ShowKey(const Context& context)
{
    Opened opened(context.arguments);
    const Secret key = Settings(opened.Directory().Connection()).EncryptionKey();
    Record record = {{"set", !key.View().empty()}};
    if (Options().reveal) {
        record.emplace_back("key", std::string(key.View()));
    }
    Render(context.arguments.format, record, context.terminal.out);
    return Exit::done;
}

Exit SetKey(const Context& context)
{
    Opened opened(context.arguments);
    CAConnect& conn = opened.Directory().Connection();
    const Secret key =
        ObtainSecret(Options().keySource, {"key", "New encryption key", true, kKeyAdvice}, context.terminal);
    if (key.View().empty()) {
        throw Error(ErrorCode::invalid,
                    "the key is empty; `qvadmin setting delete EncryptKey` deletes the present one");
    }
    Transaction transaction(conn);
    Settings(conn).SetEncryptionKey(key);
    transaction.Commit();
    context.terminal.err << "set the encryption key\n";
    return Exit::done;
}

} // namespace

// ---- Arguments and options ------------------------------------------------------------------------------------------

void DeclareList(CLI::App& app, Arguments& /*arguments*/)
{
    Options() = {};
    DeclareGenre(app, "only settings of this genre; all if not given");
}

void DeclareGet(CLI::App& app, Arguments& /*arguments*/)
{
    Options() = {};
    DeclareName(app);
    DeclareGenre(app, "needed where several genres have the name");
}

void DeclareSet(CLI::App& app, Arguments& /*arguments*/)
{
    Options() = {};
    DeclareName(app);
    app.add_option("VALUE", Options().value, "value to have from now on; -- before one that begins with -")
        ->required()
        ->type_name("");
    DeclareGenre(app, "needed for a new setting");
}

void DeclareDelete(CLI::App& app, Arguments& arguments)
{
    Options() = {};
    DeclareName(app);
    DeclareGenre(app, "genre of the setting; '' for one without")->required();
    words::DeclareYes(app, arguments);
}

void DeclareThreads(CLI::App& app, Arguments& /*arguments*/)
{
    Options() = {};
    DeclareNumber(app, "--max", Options().maxThreads, "set how many threads there may be");
    DeclareNumber(app, "--task", Options().taskThreads, "set how many of them are for tasks");
}

void DeclareFlags(CLI::App& app, Arguments& /*arguments*/)
{
    Options() = {};
    DeclareNumber(app, "--doc-flag", Options().docFlag, "set the flag of the document server");
}

void DeclarePicture(CLI::App& app, Arguments& arguments)
{
    Options() = {};
    app.add_option("TEXT", Options().picture, "picture to have from now on; shown if not given")->type_name("");
    app.add_flag("--all-users", Options().allUsers, "give every user this picture too; asks first");
    words::DeclareYes(app, arguments);
}

void DeclareEncryptionKey(CLI::App& app, Arguments& /*arguments*/)
{
    Options() = {};
    SettingOptions& options = Options();
    app.require_subcommand(0, 1);
    words::AddThirdWord(app, "show", "whether there is one", options.keyRun, &ShowKey)
        ->add_flag("--reveal", options.reveal, "print the key too");
    DeclareSecretSource(*words::AddThirdWord(app, "set", "set or replace it", options.keyRun, &SetKey),
                        options.keySource, "key");
}

// ---- Any setting ----------------------------------------------------------------------------------------------------

Exit List(const Context& context)
{
    Opened opened(context.arguments);
    Settings settings(opened.Directory().Connection());
    Table table{{"genre", "name", "value"}, {}};
    for (const Setting& setting : Options().genre ? settings.OfGenre(*Options().genre) : settings.All()) {
        table.rows.push_back({setting.genre, setting.name, ShownValue(setting)});
    }
    Render(context.arguments.format, table, context.terminal.out);
    return Exit::done;
}

Exit Get(const Context& context)
{
    RefuseKey("show");
    Opened opened(context.arguments);
    Settings settings(opened.Directory().Connection());
    const std::vector<Setting> found = FindSettings(settings);
    if (found.size() > 1) {
        throw Error(ErrorCode::conflict, fmt::format("{} may be any of {}", Quoted(Options().name), Enumerated(found)));
    }
    const Setting& setting = found.front();
    Render(context.arguments.format, Record{{"genre", setting.genre}, {"name", setting.name}, {"value", setting.value}},
           context.terminal.out);
    return Exit::done;
}

Exit Set(const Context& context)
{
    RefuseKey("set");
    if (Options().name.empty()) {
        throw Error(ErrorCode::invalid, "the name of the setting is empty");
    }
    Opened opened(context.arguments);
    CAConnect& conn = opened.Directory().Connection();
    Settings settings(conn);
    Transaction transaction(conn);
    const Setting written = Write(settings);
    transaction.Commit();
    context.terminal.err << fmt::format("set {}\n", Described(written));
    return Exit::done;
}

Exit Delete(const Context& context)
{
    Opened opened(context.arguments);
    CAConnect& conn = opened.Directory().Connection();
    Settings settings(conn);
    const std::vector<Setting> found = FindSettings(settings);
    const std::string what =
        Described(found.front()) + (found.size() > 1 ? fmt::format(" ({} rows)", found.size()) : "");
    RequireConfirmation(context, fmt::format("Delete the setting {}?", what), found.size(), kNothingDone);
    Transaction transaction(conn);
    ThrowIfChanged(found, FindSettings(settings), kNothingDone);
    settings.Delete(found.front().name, found.front().genre);
    transaction.Commit();
    context.terminal.err << fmt::format("deleted {}\n", what);
    return Exit::done;
}

// ---- The server's own -----------------------------------------------------------------------------------------------

Exit Threads(const Context& context)
{
    const SettingOptions& options = Options();
    Opened opened(context.arguments);
    CAConnect& conn = opened.Directory().Connection();
    Settings settings(conn);
    if (!options.maxThreads && !options.taskThreads) {
        const Record record = {{"max", std::int64_t{settings.MaxThreads()}},
                               {"task", std::int64_t{settings.TaskThreads()}}};
        Render(context.arguments.format, record, context.terminal.out);
        return Exit::done;
    }
    Transaction transaction(conn);
    if (options.maxThreads) {
        settings.SetMaxThreads(*options.maxThreads);
    }
    if (options.taskThreads) {
        settings.SetTaskThreads(*options.taskThreads);
    }
    transaction.Commit();
    context.terminal.err << "set the thread counts\n";
    return Exit::done;
}

Exit Flags(const Context& context)
{
    Opened opened(context.arguments);
    CAConnect& conn = opened.Directory().Connection();
    Settings settings(conn);
    if (!Options().docFlag) {
        const Record record = {{"server_flag", std::int64_t{settings.ServerFlag()}},
                               {"doc_flag", std::int64_t{settings.DocServerFlag()}}};
        Render(context.arguments.format, record, context.terminal.out);
        return Exit::done;
    }
    Transaction transaction(conn);
    settings.SetDocServerFlag(*Options().docFlag);
    transaction.Commit();
    context.terminal.err << "set the flag of the document server\n";
    return Exit::done;
}

Exit Picture(const Context& context)
{
    const SettingOptions& options = Options();
    if (options.allUsers && !options.picture) {
        throw Error(ErrorCode::invalid, "--all-users needs the picture that they are to have");
    }
    Opened opened(context.arguments);
    CAConnect& conn = opened.Directory().Connection();
    Settings settings(conn);
    if (!options.picture) {
        Render(context.arguments.format, Record{{"picture", settings.Picture()}}, context.terminal.out);
        return Exit::done;
    }
    const auto users = static_cast<std::size_t>(options.allUsers ? opened.Directory().Count() : 0);
    if (options.allUsers) {
        RequireConfirmation(context, fmt::format("Replace the picture of {}?", Counted(users, "user")), users,
                            kNothingDone);
    }
    Transaction transaction(conn);
    settings.SetPicture(*options.picture);
    if (options.allUsers) {
        ThrowIfChanged(users, static_cast<std::size_t>(opened.Directory().Count()), kNothingDone);
        settings.SetUsersPicture(*options.picture);
    }
    transaction.Commit();
    context.terminal.err << (options.allUsers
                                 ? fmt::format("set the display picture, also that of {}\n", Counted(users, "user"))
                                 : "set the display picture\n");
    return Exit::done;
}

Exit EncryptionKey(const Context& context)
{
    if (Options().keyRun == nullptr) {
        throw Error(ErrorCode::invalid, "name what to do, such as `qvadmin setting encryption-key show`; see `qvadmin "
                                        "setting encryption-key --help`");
    }
    return Options().keyRun(context);
}

} // namespace console::setting
