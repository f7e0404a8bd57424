#include "management/Command.h"
#include "management/FindEach.h"
#include "management/Text.h"
#include "management/messages/Messages.h"

#include <fmt/format.h>

#include <functional>

namespace management::messages {

namespace {

struct Limited {
    std::optional<int> limit;
};

constexpr Param<Limited> kListParams[] = {{"limit", &Limited::limit, Kind::number, "at most so many", kLimit}};

struct SeveralEntries {
    std::vector<std::string> ids;
};

constexpr Param<SeveralEntries> kDeleteParams[] = {{"ID", &SeveralEntries::ids, Kind::text, "id of an entry"}};

Result List(Call& call, const Limited& in)
{
    LoginLog(call.Connection())
        .Entries(
            static_cast<std::size_t>(in.limit.value_or(static_cast<int>(kLimit.most))),
            [&call](std::vector<std::string> columns) { call.Front().TakeColumns(std::move(columns)); },
            [&call](const std::vector<Value>& row) { return call.Front().TakeRow(row); });
    return {};
}

/// Those given, each once. @throws Error (invalid, notFound) when one of them is none.
std::vector<int> FindEntries(LoginLog& log, const std::vector<std::string>& arguments)
{
    const auto find = [&log](const std::string& argument) {
        const auto id = static_cast<int>(binding::ReadNumber(kDeleteParams[0].name, argument, kIds, kIds));
        if (!log.Has(id)) {
            throw Error(ErrorCode::notFound,
                        FillPattern("there is no entry {} in the login log; nothing was deleted", id));
        }
        return id;
    };
    return FindEach(arguments, Translatable("entries in the login log"), Translatable("nothing was deleted"), find,
                    std::identity());
}

struct Deletion : Plan {
    std::vector<int> ids;

    bool operator==(const Deletion&) const = default;
};

/// "2 entries of the login log".
Sentence Described(const Deletion& deletion)
{
    return FillPattern("{} of the login log", Counted(deletion.ids.size(), "entry"));
}

Deletion PlanDeletion(Call& call, const SeveralEntries& in)
{
    LoginLog log(call.Connection());
    Deletion deletion;
    deletion.ids = FindEntries(log, in.ids);
    deletion.question = FillPattern("Delete {}?", Described(deletion));
    deletion.removed = deletion.ids.size();
    return deletion;
}

Result Delete(Call& call, const SeveralEntries& /*in*/, const Deletion& deletion)
{
    LoginLog log(call.Connection());
    for (const int id : deletion.ids) {
        log.Delete(id);
    }
    const Sentence deleted = Described(deletion);
    call.Report({"loginlog", 0, deleted, "deleted", FillPattern("deleted {}", deleted)});
    return {};
}

constexpr Command kCommands[] = {
    {.path = {"loginlog", "list"},
     .summary = "entries of the login log, the latest first",
     .examples = {"qvadmin loginlog list --limit 20", "qvadmin -o csv loginlog list > log.csv"},
     .handler = Read<&List, kListParams>()},
    {.path = {"loginlog", "delete"},
     .summary = "delete entries of the login log; asks first",
     .examples = {"qvadmin loginlog delete 17 18 --yes"},
     .effect = Effect::remove,
     .asks = true,
     .handler = WritePlanned<&PlanDeletion, &Delete, kDeleteParams>()},
};

} // namespace

std::span<const Command> LoginLogCommands() { return kCommands; }

} // namespace management::messages
