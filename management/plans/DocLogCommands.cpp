#include "management/Command.h"
#include "management/Names.h"
#include "management/Text.h"
#include "management/organisation/Organisation.h"
#include "management/plans/Plans.h"
#include "management/users/Users.h"

#include <fmt/format.h>

namespace management::plans {

namespace {

struct NewEntry {
    int classId = 0;
    int objectId = 0;
    std::string type;
    std::string content;
    std::optional<std::string> creator;
};

constexpr Param<NewEntry> kAddParams[] = {
    {"CLASS_ID", &NewEntry::classId, Kind::number, "number of the kind of object"},
    {"OBJECT_ID", &NewEntry::objectId, Kind::number, "number of the object within its kind"},
    {"TYPE", &NewEntry::type, Kind::text, "kind of event, a word as it is"},
    {"CONTENT", &NewEntry::content, Kind::text, "what happened"},
    {"creator", &NewEntry::creator, Kind::user, "login name of the user who did it"},
};

constexpr Param<LogFilter> kListParams[] = {
    {"class", &LogFilter::classId, Kind::number, "only of objects of this kind"},
    {"object", &LogFilter::objectId, Kind::number, "only of objects of this number"},
    {"type", &LogFilter::type, Kind::text, "only this kind of event"},
    {"limit", &LogFilter::limit, Kind::number, "at most so many", kLimit},
};

constexpr Column kColumns[] = {{"class_id", Kind::number},
                               {"object_id", Kind::number},
                               {"type"},
                               {"content"},
                               {"creator_id", Kind::number},
                               {"creator"},
                               {"genre"}};

Result Add(Call& call, const NewEntry& in)
{
    LogEntry entry;
    entry.classId = in.classId;
    entry.objectId = in.objectId;
    entry.type = in.type;
    entry.content = in.content;
    CheckName("type", entry.type);
    if (in.creator) {
        entry.creatorId = FindUser(call.Directory(), *in.creator).id;
        entry.creator = call.Directory().NameOfId(entry.creatorId);
    }
    DocLog(call.Connection()).Add(entry);
    call.Report({"object", entry.objectId, entry.type, "noted",
                 FillPattern("noted {} of object {} of class {}", Quoted(entry.type), entry.objectId, entry.classId)});
    return {};
}

Result List(Call& call, const LogFilter& filter)
{
    DocLog(call.Connection()).List(filter, [&call](const LogEntry& entry) {
        return call.Row(std::int64_t{entry.classId}, std::int64_t{entry.objectId}, entry.type, entry.content,
                        std::int64_t{entry.creatorId}, entry.creator, entry.genre);
    });
    return {};
}

constexpr Command kCommands[] = {
    {.path = {"doclog", "add"},
     .summary = "note what happened to an object",
     .examples = {"qvadmin doclog add 105 17 moved 'Moved to the archive' --creator amy"},
     .effect = Effect::create,
     .handler = Write<&Add, kAddParams>()},
    {.path = {"doclog", "list"},
     .summary = "what is noted, in the order of the table",
     .examples = {"qvadmin doclog list --class 105 --object 17", "qvadmin doclog list --type moved --limit 20 -o csv"},
     .columns = kColumns,
     .handler = Read<&List, kListParams>()},
};

} // namespace

std::span<const Command> DocLogCommands() { return kCommands; }

} // namespace management::plans
