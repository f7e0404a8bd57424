#include "management/Command.h"
#include "management/Text.h"
#include "management/passwords/Passwords.h"
#include "management/settings/Settings.h"

#include <fmt/format.h>

namespace management::settings {

namespace {

constexpr const char* kNothingDone = Translatable("nothing was changed");
constexpr std::string_view kNameHelp = "name of the setting";

// ---- Parameters -----------------------------------------------------------------------------------------------------

struct Listing {
    std::optional<std::string> genre;
};

constexpr Param<Listing> kListParams[] = {
    {"genre", &Listing::genre, Kind::text, "only settings of this genre; all if not given"},
};

/// Which setting is meant.
struct SettingRef {
    std::string name;
    std::optional<std::string> genre;
};

constexpr Param<SettingRef> kGetParams[] = {
    {"NAME", &SettingRef::name, Kind::text, kNameHelp},
    {"genre", &SettingRef::genre, Kind::text, "needed where several genres have the name"},
};

struct SettingToSet {
    std::string name;
    std::string value;
    std::optional<std::string> genre;
};

constexpr Param<SettingToSet> kSetParams[] = {
    {"NAME", &SettingToSet::name, Kind::text, kNameHelp},
    {"VALUE", &SettingToSet::value, Kind::text, "value to have from now on; -- before one that begins with -"},
    {"genre", &SettingToSet::genre, Kind::text, "needed for a new setting"},
};

struct SettingToDelete {
    std::string name;
    std::string genre;
};

constexpr Param<SettingToDelete> kDeleteParams[] = {
    {"NAME", &SettingToDelete::name, Kind::text, kNameHelp},
    {"genre", &SettingToDelete::genre, Kind::text, "genre of the setting; '' for one without"},
};

struct ThreadCounts {
    std::optional<std::uint32_t> most;
    std::optional<std::uint32_t> task;
};

constexpr Param<ThreadCounts> kThreadsParams[] = {
    {"max", &ThreadCounts::most, Kind::number, "set how many threads there may be"},
    {"task", &ThreadCounts::task, Kind::number, "set how many of them are for tasks"},
};

struct Flags {
    std::optional<std::uint32_t> docFlag;
};

constexpr Param<Flags> kFlagsParams[] = {
    {"doc_flag", &Flags::docFlag, Kind::number, "set the flag of the document server"},
};

struct Picture {
    std::optional<std::string> picture;
    bool allUsers = false;
};

constexpr Param<Picture> kPictureParams[] = {
    {"TEXT", &Picture::picture, Kind::text, "picture to have from now on; shown if not given"},
    {"all_users", &Picture::allUsers, Kind::flag, "give every user this picture too; asks first"},
};

struct Reveal {
    bool reveal = false;
};

constexpr Param<Reveal> kShowKeyParams[] = {{"reveal", &Reveal::reveal, Kind::flag, "print the key too"}};

struct NewKey {
    bool isGiven = false;
};

constexpr Param<NewKey> kSetKeyParams[] = {{"key", &NewKey::isGiven, Kind::secret, "the new key"}};

constexpr Column kColumns[] = {{"genre"}, {"name"}, {"value"}};
constexpr Column kThreadsColumns[] = {{"max", Kind::number}, {"task", Kind::number}};
constexpr Column kFlagsColumns[] = {{"server_flag", Kind::number}, {"doc_flag", Kind::number}};
constexpr Column kPictureColumns[] = {{"picture"}};
constexpr Column kShowKeyColumns[] = {{"set", Kind::flag}, {"key", Kind::secret}};

// ---- Sentences ------------------------------------------------------------------------------------------------------

Sentence Described(const Setting& setting)
{
    return setting.genre.empty() ? FillPattern("{} of no genre", Visible(setting.name))
                                 : FillPattern("{} of genre {}", Visible(setting.name), Quoted(setting.genre));
}

Sentence Enumerated(const std::vector<Setting>& settings)
{
    std::vector<Sentence> list;
    std::ranges::transform(settings, std::back_inserter(list),
                           [](const Setting& setting) { return Described(setting); });
    return Joined(list, ", ");
}

Outcome OutcomeOf(const std::string& name, std::string_view outcome, Sentence sentence)
{
    return {"setting", 0, name, outcome, std::move(sentence)};
}

void ThrowIfKey(const std::string& name, std::string_view verb)
{
    if (Settings::IsKey(name)) {
        throw Error(ErrorCode::invalid,
                    FillPattern("{} is a secret; `qvadmin setting encryption-key {}` is for it", Visible(name), verb));
    }
}

// ---- Any setting ----------------------------------------------------------------------------------------------------

/// The value of the encryption key stays away from where all settings are seen.
Value ShownValue(const Setting& setting) { return Settings::IsKey(setting.name) ? Value() : Value(setting.value); }

/// Those of the name, and of the genre when one is given. @throws Error (notFound) when there are none.
std::vector<Setting> FindSettings(Settings& settings, const SettingRef& ref)
{
    std::vector<Setting> found = settings.Named(ref.name);
    if (ref.genre) {
        std::erase_if(found, [&ref](const Setting& setting) { return setting.genre != *ref.genre; });
    }
    if (found.empty()) {
        throw Error(ErrorCode::notFound,
                    FillPattern("there is no setting {}{}; `qvadmin setting list` shows all", Quoted(ref.name),
                                ref.genre ? FillPattern(" of genre {}", Quoted(*ref.genre)) : ""));
    }
    return found;
}

Result List(Call& call, const Listing& in)
{
    Settings settings(call.Connection());
    for (const Setting& setting : in.genre ? settings.OfGenre(*in.genre) : settings.All()) {
        if (!call.Row(setting.genre, setting.name, ShownValue(setting))) {
            break;
        }
    }
    return {};
}

Result Get(Call& call, const SettingRef& in)
{
    ThrowIfKey(in.name, "show");
    Settings settings(call.Connection());
    const std::vector<Setting> found = FindSettings(settings, in);
    if (found.size() > 1) {
        throw Error(ErrorCode::conflict,
                    FillPattern("{} is ambiguous: {}; say which with --genre", Quoted(in.name), Enumerated(found)));
    }
    const Setting& setting = found.front();
    return ResultOf(Record{{"genre", setting.genre}, {"name", setting.name}, {"value", setting.value}});
}

/// Inserts or updates a setting. @return what it is then.
Setting Store(Settings& settings, const SettingToSet& in)
{
    const std::vector<Setting> present = settings.Named(in.name);
    if (present.size() > 1) {
        throw Error(ErrorCode::conflict,
                    FillPattern("{} is the name of {} settings ({}), and a change would reach all of them",
                                Quoted(in.name), present.size(), Enumerated(present)));
    }
    if (present.empty() && !in.genre) {
        throw Error(
            ErrorCode::invalid,
            FillPattern("there is no setting {} yet; say with --genre which genre it is to be of", Quoted(in.name)));
    }
    if (present.empty() || (in.genre && *in.genre != present.front().genre)) {
        settings.Insert(in.name, in.value, *in.genre);
        return {*in.genre, in.name, in.value};
    }
    settings.UpdateAll(in.name, in.value);
    return present.front();
}

Result Set(Call& call, const SettingToSet& in)
{
    ThrowIfKey(in.name, "set");
    if (in.name.empty()) {
        throw Error(ErrorCode::invalid, "the name of the setting is empty");
    }
    Settings settings(call.Connection());
    const Setting stored = Store(settings, in);
    call.Report(OutcomeOf(stored.name, "set", FillPattern("set {}", Described(stored))));
    return {};
}

struct Deletion : Plan {
    std::vector<Setting> settings;

    bool operator==(const Deletion&) const = default;
};

Sentence Described(const Deletion& deletion)
{
    const std::size_t rows = deletion.settings.size();
    const Sentence described = Described(deletion.settings.front());
    return rows > 1 ? FillPattern("{} ({} rows)", described, rows) : described;
}

Deletion PlanDeletion(Call& call, const SettingToDelete& in)
{
    Settings settings(call.Connection());
    Deletion deletion;
    deletion.settings = FindSettings(settings, {in.name, in.genre});
    deletion.question = FillPattern("Delete the setting {}?", Described(deletion));
    deletion.removed = deletion.settings.size();
    deletion.nothingDone = kNothingDone;
    return deletion;
}

Result Delete(Call& call, const SettingToDelete& /*in*/, const Deletion& deletion)
{
    const Setting& setting = deletion.settings.front();
    Settings(call.Connection()).Delete(setting.name, setting.genre);
    call.Report(OutcomeOf(setting.name, "deleted", FillPattern("deleted {}", Described(deletion))));
    return {};
}

// ---- The server's own -----------------------------------------------------------------------------------------------

bool AsksForThreads(const ThreadCounts& in) { return !in.most && !in.task; }

Result ShowThreads(Call& call, const ThreadCounts& /*in*/)
{
    Settings settings(call.Connection());
    return ResultOf(
        Record{{"max", std::int64_t{settings.MaxThreads()}}, {"task", std::int64_t{settings.TaskThreads()}}});
}

Result SetThreads(Call& call, const ThreadCounts& in)
{
    Settings settings(call.Connection());
    if (in.most) {
        settings.SetMaxThreads(*in.most);
    }
    if (in.task) {
        settings.SetTaskThreads(*in.task);
    }
    call.Report(OutcomeOf("threads", "set", Translatable("set the thread counts")));
    return {};
}

Result ShowFlags(Call& call, const Flags& /*in*/)
{
    Settings settings(call.Connection());
    return ResultOf(Record{{"server_flag", std::int64_t{settings.ServerFlag()}},
                           {"doc_flag", std::int64_t{settings.DocServerFlag()}}});
}

Result SetFlags(Call& call, const Flags& in)
{
    Settings(call.Connection()).SetDocServerFlag(in.docFlag.value());
    call.Report(OutcomeOf("doc_flag", "set", "set the flag of the document server"));
    return {};
}

bool AsksForPicture(const Picture& in) { return !in.picture && !in.allUsers; }

Result ShowPicture(Call& call, const Picture& /*in*/)
{
    return ResultOf(Record{{"picture", Settings(call.Connection()).Picture()}});
}

struct PicturePlan : Plan {
    std::size_t users = 0;

    bool operator==(const PicturePlan&) const = default;
};

PicturePlan PlanPicture(Call& call, const Picture& in)
{
    if (!in.picture) {
        throw Error(ErrorCode::invalid, "--all-users needs the picture that they are to have");
    }
    PicturePlan plan;
    plan.nothingDone = kNothingDone;
    if (in.allUsers) {
        plan.users = static_cast<std::size_t>(call.Directory().Count());
        plan.question = FillPattern("Replace the picture of {}?", Counted(plan.users, "user"));
        plan.removed = plan.users;
    }
    return plan;
}

Result SetPicture(Call& call, const Picture& in, const PicturePlan& plan)
{
    Settings settings(call.Connection());
    settings.SetPicture(in.picture.value());
    if (in.allUsers) {
        settings.SetUsersPicture(*in.picture);
    }
    call.Report(OutcomeOf("picture", "set",
                          in.allUsers
                              ? FillPattern("set the display picture, also that of {}", Counted(plan.users, "user"))
                              : Translatable("set the display picture")));
    return {};
}

// ---- The encryption key ---------------------------------------------------------------------------------------------

Result ShowKey(Call& call, const Reveal& in)
{
    const Secret key = Settings(call.Connection()).EncryptionKey();
    Record record = {{"set", !key.View().empty()}};
    if (in.reveal) {
        record.emplace_back("key", std::string(key.View()));
    }
    return ResultOf(std::move(record));
}

// The key is asked for before the transaction: nobody is to wait for somebody's typing.
Result SetKey(Call& call, const ArgumentSource& /*source*/)
{
    const Secret key =
        call.Front().ObtainSecret({"key", Translatable("New encryption key"), true, "--key-stdin or --key-file"});
    if (key.View().empty()) {
        throw Error(ErrorCode::invalid,
                    "the key is empty; `qvadmin setting delete EncryptKey` deletes the present one");
    }
    Change change(call);
    Settings(call.Connection()).SetEncryptionKey(key);
    call.Report(OutcomeOf("EncryptKey", "set", Translatable("set the encryption key")));
    change.Finish();
    return {};
}

constexpr Command kCommands[] = {
    {.path = {"setting", "list"},
     .summary = "settings by genre and name",
     .examples = {"qvadmin setting list", "qvadmin setting list --genre KelServerConfig -o json"},
     .columns = kColumns,
     .handler = Read<&List, kListParams>()},
    {.path = {"setting", "get"},
     .summary = "a setting and its value",
     .examples = {"qvadmin setting get maxThreads -o json"},
     .columns = kColumns,
     .handler = Read<&Get, kGetParams>()},
    {.path = {"setting", "set"},
     .summary = "add a setting, or give it another value",
     .examples = {"qvadmin setting set PasswordEncoding 1 --genre Console"},
     .effect = Effect::change,
     .handler = Write<&Set, kSetParams>()},
    {.path = {"setting", "delete"},
     .summary = "delete a setting; asks first",
     .examples = {"qvadmin setting delete PasswordEncoding --genre Console"},
     .effect = Effect::remove,
     .asks = true,
     .handler = WritePlanned<&PlanDeletion, &Delete, kDeleteParams>()},
    {.path = {"setting", "threads"},
     .summary = "show or set the thread counts of the server",
     .examples = {"qvadmin setting threads", "qvadmin setting threads --max 64 --task 8"},
     .effect = Effect::change,
     .columns = kThreadsColumns,
     .handler = ReadOr<&AsksForThreads, &ShowThreads, &RunInChange<&SetThreads, ThreadCounts>, kThreadsParams>()},
    {.path = {"setting", "flags"},
     .summary = "show the flags of the servers, or set that of the document server",
     .examples = {"qvadmin setting flags", "qvadmin setting flags --doc-flag 3"},
     .effect = Effect::change,
     .columns = kFlagsColumns,
     .handler = ReadOrWrite<&Flags::docFlag, &ShowFlags, &SetFlags, kFlagsParams>()},
    {.path = {"setting", "picture"},
     .summary = "show or set the display picture of the company",
     .examples = {"qvadmin setting picture", "qvadmin setting picture logo.png --all-users"},
     .effect = Effect::change,
     .asks = true,
     .columns = kPictureColumns,
     .handler =
         ReadOr<&AsksForPicture, &ShowPicture, &RunPlanned<&PlanPicture, &SetPicture, Picture>, kPictureParams>()},
    {.path = {"setting", "encryption-key"},
     .summary = "show or set the encryption key",
     .examples = {"qvadmin setting encryption-key show", "qvadmin setting encryption-key set --key-file key.txt"}},
    {.path = {"setting", "encryption-key", "show"},
     .summary = "whether there is one",
     .examples = {"qvadmin setting encryption-key show", "qvadmin setting encryption-key show --reveal"},
     .risk = Risk::stepUp,
     .columns = kShowKeyColumns,
     .handler = Read<&ShowKey, kShowKeyParams>()},
    {.path = {"setting", "encryption-key", "set"},
     .summary = "set or replace it",
     .examples = {"qvadmin setting encryption-key set --key-file key.txt"},
     .effect = Effect::change,
     .risk = Risk::stepUp,
     .handler = {&InfosOf<kSetKeyParams>, &SetKey}},
};

} // namespace

std::span<const Command> SettingCommands() { return kCommands; }

} // namespace management::settings
