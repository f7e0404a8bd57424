#include "management/board/Board.h"

#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "management/DatabaseError.h"
#include "management/Escape.h"
#include "management/FindEach.h"
#include "management/Query.h"
#include "management/Text.h"

#include <fmt/format.h>

#include <algorithm>

namespace management {

namespace {

/// Runs an operation of the module. On a connection that is not open any more the reads of the board find nothing and
/// call it a success.
template <class Operation>
void RunWhileOpen(const CAConnect& conn, Operation operation)
{
    Run(conn, [&] { return operation() && conn.IsOpen(); });
}

} // namespace

std::vector<Notice> Board::List()
{
    CStringArray ids;
    CStringArray subjects;
    CStringArray creators;
    CStringArray times;
    RunWhileOpen(m_conn, [&] { return CQVBaseFun::LoadBulletinInfo(m_conn, ids, subjects, creators, times); });
    std::vector<Notice> notices;
    notices.reserve(static_cast<std::size_t>(ids.GetSize()));
    for (int i = 0; i < ids.GetSize(); ++i) {
        notices.push_back({Text(ids[i]), Text(subjects[i]), Text(creators[i]), Text(times[i])});
    }
    return notices;
}

std::string Board::Content(const std::string& id)
{
    CString content;
    RunWhileOpen(m_conn, [&] { return CQVBaseFun::GetBulletinContent(m_conn, EscapeLiteral(m_conn, id), content); });
    return Text(content);
}

NoticeParts Board::Parts(const std::string& id)
{
    const CString escaped = EscapeLiteral(m_conn, id);
    CStringArray files;
    CUIntArray replyIds;
    CStringArray replyCreators;
    CStringArray replyTimes;
    CStringArray replyContents;
    CUIntArray readerIds;
    CStringArray items;
    CStringArray names;
    CStringArray readTimes;
    CUIntArray flags;
    RunWhileOpen(m_conn, [&] {
        return CQVBaseFun::LoadBulletinAttachments(m_conn, escaped, files) &&
               CQVBaseFun::LoadBulletinReplyInfo(m_conn, escaped, replyIds, replyCreators, replyTimes, replyContents) &&
               CQVBaseFun::LoadBulletinVisiterInfo(m_conn, escaped, readerIds, items, names, readTimes, flags);
    });
    NoticeParts parts;
    for (int i = 0; i < files.GetSize(); ++i) {
        parts.attachments.push_back(Text(files[i]));
    }
    for (int i = 0; i < replyIds.GetSize(); ++i) {
        parts.replies.push_back(
            {std::int64_t{replyIds[i]}, Text(replyCreators[i]), Text(replyTimes[i]), Text(replyContents[i])});
    }
    for (int i = 0; i < readerIds.GetSize(); ++i) {
        parts.readers.push_back(
            {std::int64_t{readerIds[i]}, Text(items[i]), Text(names[i]), Text(readTimes[i]), std::int64_t{flags[i]}});
    }
    return parts;
}

void Board::Delete(const std::string& id)
{
    const CString escaped = EscapeLiteral(m_conn, id);
    RunWhileOpen(m_conn, [&] {
        return CQVBaseFun::DeleteBulletinAttach(m_conn, escaped) && CQVBaseFun::DeleteBulletinReply(m_conn, escaped) &&
               CQVBaseFun::DeleteBulletinVisiter(m_conn, escaped) && CQVBaseFun::DeleteBulletinItem(m_conn, escaped);
    });
}

std::vector<Notice> FindNotices(Board& board, const std::vector<std::string>& ids)
{
    const std::vector<Notice> all = board.List();
    const auto find = [&all](const std::string& id) -> Notice {
        const auto notice = std::ranges::find(all, id, &Notice::id);
        if (notice == all.end()) {
            throw Error(ErrorCode::notFound,
                        FillPattern("there is no notice {}; `qvadmin board list` shows all", Quoted(id)));
        }
        return *notice;
    };
    return FindEach(ids, Translatable("notices"), Translatable("`qvadmin board list` shows all"), find, &Notice::id);
}

} // namespace management
