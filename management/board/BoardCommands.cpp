#include "management/Command.h"
#include "management/Text.h"
#include "management/board/Board.h"

#include <fmt/format.h>

namespace management::board {

namespace {

struct Limited {
    std::optional<int> limit;
};

constexpr Param<Limited> kListParams[] = {{"limit", &Limited::limit, Kind::number, "at most so many", kLimit}};

struct OneNotice {
    std::string id;
};

constexpr Param<OneNotice> kOneParams[] = {{"ID", &OneNotice::id, Kind::text, "id of the notice, as it is"}};

struct SeveralNotices {
    std::vector<std::string> ids;
};

constexpr Param<SeveralNotices> kSeveralParams[] = {
    {"ID", &SeveralNotices::ids, Kind::text, "id of a notice, as it is"}};

constexpr Column kListColumns[] = {{"id"}, {"subject"}, {"creator"}, {"created", Kind::date}};
constexpr Column kShowColumns[] = {{"id"},
                                   {"subject"},
                                   {"creator"},
                                   {"created", Kind::date},
                                   {"content"},
                                   {"attachments", Kind::rows},
                                   {"replies", Kind::rows},
                                   {"readers", Kind::rows}};

// ---- Reading --------------------------------------------------------------------------------------------------------

Part AttachmentsOf(const NoticeParts& parts)
{
    Part part{"attachments", {{"file"}, {}}};
    for (const std::string& file : parts.attachments) {
        part.rows.rows.push_back({file});
    }
    return part;
}

Part RepliesOf(const NoticeParts& parts)
{
    Part part{"replies", {{"id", "creator", "created", "content"}, {}}};
    for (const NoticeReply& reply : parts.replies) {
        part.rows.rows.push_back({reply.id, reply.creator, reply.created, reply.content});
    }
    return part;
}

Part ReadersOf(const NoticeParts& parts)
{
    Part part{"readers", {{"id", "item", "name", "read", "flag"}, {}}};
    for (const NoticeReader& reader : parts.readers) {
        part.rows.rows.push_back({reader.id, reader.item, reader.name, reader.read, reader.flag});
    }
    return part;
}

Result List(Call& call, const Limited& in)
{
    int left = in.limit.value_or(static_cast<int>(kLimit.most));
    for (const Notice& notice : Board(call.Connection()).List()) {
        if (left-- == 0 || !call.Row(notice.id, notice.subject, notice.creator, notice.created)) {
            break;
        }
    }
    return {};
}

Result Show(Call& call, const OneNotice& in)
{
    Board board(call.Connection());
    const Notice notice = FindNotices(board, {in.id}).front();
    const NoticeParts parts = board.Parts(notice.id);
    return ResultOf(Record{{"id", notice.id},
                           {"subject", notice.subject},
                           {"creator", notice.creator},
                           {"created", notice.created},
                           {"content", board.Content(notice.id)}},
                    {AttachmentsOf(parts), RepliesOf(parts), ReadersOf(parts)});
}

// ---- Deleting -------------------------------------------------------------------------------------------------------

Sentence Described(const NoticeParts& parts)
{
    const std::size_t replies = parts.replies.size();
    return Joined({Counted(parts.attachments.size(), "attachment"),
                   FillPlural("{} reply", "{} replies", replies, replies), Counted(parts.readers.size(), "reader")},
                  ", ");
}

struct Deletion : Plan {
    std::vector<std::string> ids;

    bool operator==(const Deletion&) const = default;
};

Deletion PlanDeletion(Call& call, const SeveralNotices& in)
{
    Board board(call.Connection());
    Deletion deletion;
    for (const Notice& notice : FindNotices(board, in.ids)) {
        const NoticeParts parts = board.Parts(notice.id);
        deletion.ids.push_back(notice.id);
        deletion.removed += 1 + parts.attachments.size() + parts.replies.size() + parts.readers.size();
        deletion.lines.push_back(
            FillPattern("delete {} {}, with {}", Visible(notice.id), Quoted(notice.subject), Described(parts)));
    }
    deletion.question = FillPattern("Delete {}?", Counted(deletion.ids.size(), "notice"));
    return deletion;
}

Result Delete(Call& call, const SeveralNotices& /*in*/, const Deletion& deletion)
{
    Board board(call.Connection());
    for (const std::string& id : deletion.ids) {
        board.Delete(id);
    }
    const Sentence deleted = Counted(deletion.ids.size(), "notice");
    call.Report({"notice", 0, deleted, "deleted", FillPattern("deleted {}", deleted)});
    return {};
}

constexpr Command kCommands[] = {
    {.path = {"board", "list"},
     .summary = "notices, the latest first",
     .examples = {"qvadmin board list --limit 10"},
     .columns = kListColumns,
     .handler = Read<&List, kListParams>()},
    {.path = {"board", "show"},
     .summary = "a notice with its attachments, replies and readers",
     .examples = {"qvadmin board show 17", "qvadmin board show 17 -o json"},
     .columns = kShowColumns,
     .handler = Read<&Show, kOneParams>()},
    {.path = {"board", "delete"},
     .summary = "delete notices with all that belongs to them; asks first",
     .examples = {"qvadmin board delete 17", "qvadmin board delete 17 18 --yes"},
     .effect = Effect::remove,
     .asks = true,
     .handler = WritePlanned<&PlanDeletion, &Delete, kSeveralParams>()},
};

} // namespace

std::span<const Command> BoardCommands() { return kCommands; }

} // namespace management::board
