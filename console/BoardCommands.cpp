#include "console/BoardCommands.h"

#include "console/AddInCommands.h"
#include "console/Confirm.h"
#include "console/Opened.h"
#include "console/Render.h"
#include "console/Words.h"
#include "management/DatabaseError.h"
#include "management/Text.h"
#include "management/board/Board.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>

namespace console::board {

namespace {

using namespace words;

constexpr Field kNotice{"ID", "", {}, Field::Use::given, "id of the notice, as it is"};

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

std::string Described(const NoticeParts& parts)
{
    return fmt::format("{}, {} {}, {}", Counted(parts.attachments.size(), "attachment"), parts.replies.size(),
                       parts.replies.size() == 1 ? "reply" : "replies", Counted(parts.readers.size(), "reader"));
}

struct Deletion {
    std::string shown;
    std::size_t removed;
};

Deletion PlanDeletion(Board& board, const std::vector<Notice>& notices)
{
    Deletion deletion{{}, notices.size()};
    for (const Notice& notice : notices) {
        const NoticeParts parts = board.Parts(notice.id);
        deletion.removed += parts.attachments.size() + parts.replies.size() + parts.readers.size();
        deletion.shown +=
            fmt::format("delete {} {}, with {}\n", Visible(notice.id), Quoted(notice.subject), Described(parts));
    }
    return deletion;
}

} // namespace

void DeclareList(CLI::App& app, Arguments& arguments) { DeclareLimit(app, arguments); }

void DeclareOne(CLI::App& app, Arguments& arguments) { DeclareArgument(app, arguments, kNotice); }

void DeclareDelete(CLI::App& app, Arguments& arguments)
{
    DeclareWords(app, arguments, "ID", "id of a notice, as it is");
    DeclareYes(app, arguments);
}

Exit List(const Context& context)
{
    Opened opened(context.arguments);
    std::vector<Notice> notices = Board(opened.Directory().Connection()).List();
    notices.resize(std::min(notices.size(), LimitOf(context.arguments)));
    Table table{{"id", "subject", "creator", "created"}, {}};
    for (const Notice& notice : notices) {
        table.rows.push_back({notice.id, notice.subject, notice.creator, notice.created});
    }
    Render(context.arguments.format, table, context.terminal.out);
    return Exit::done;
}

Exit Show(const Context& context)
{
    Opened opened(context.arguments);
    Board board(opened.Directory().Connection());
    const Notice notice = FindNotices(board, {Given(context.arguments, kNotice).value_or("")}).front();
    const NoticeParts parts = board.Parts(notice.id);
    const Record record = {{"id", notice.id},
                           {"subject", notice.subject},
                           {"creator", notice.creator},
                           {"created", notice.created},
                           {"content", board.Content(notice.id)}};
    Render(context.arguments.format, record, {AttachmentsOf(parts), RepliesOf(parts), ReadersOf(parts)},
           context.terminal.out);
    return Exit::done;
}

Exit Delete(const Context& context)
{
    Opened opened(context.arguments);
    CAConnect& conn = opened.Directory().Connection();
    Board board(conn);
    const std::vector<Notice> notices = FindNotices(board, context.arguments.users);
    const auto [shown, removed] = PlanDeletion(board, notices);
    context.terminal.err << shown;
    RequireConfirmation(context, fmt::format("Delete {}?", Counted(notices.size(), "notice")), removed);
    Transaction transaction(conn);
    ThrowIfChanged(shown, PlanDeletion(board, FindNotices(board, context.arguments.users)).shown);
    for (const Notice& notice : notices) {
        board.Delete(notice.id);
    }
    transaction.Commit();
    context.terminal.err << fmt::format("deleted {}\n", Counted(notices.size(), "notice"));
    return Exit::done;
}

} // namespace console::board
