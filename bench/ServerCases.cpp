#include "bench/ServerCases.h"

#include "bench/Cases.h"
#include "bench/ServerData.h"

namespace bench {

namespace {

constexpr double kTarget = 1.10;
/// Has no divisor in common with the number of parents, so that its multiples reach them all, in no order.
constexpr std::size_t kStride = 37;
constexpr int kRowsOfMessage = 2 + Mail::kReceipts;

constexpr const char* kPurgeByHand = "purge/hand";

int ParentOf(std::size_t call) { return 1 + static_cast<int>(call * kStride % std::size_t{Shelves::kParents}); }

std::string NoticeOf(std::size_t call) { return Shelves::kNotice + std::to_string(ParentOf(call)); }

std::string PurgeName(int messages) { return "purge/quorvel/" + std::to_string(messages); }

} // namespace

std::vector<Pair> ServerPairs(int purgedMessages)
{
    return {
        {"1,000 folders under one of 100", "folders/hand", "folders/quorvel", kTarget},
        {"1,000 replies to one of 100 notices", "replies/hand", "replies/quorvel", kTarget},
        {"half of 10^5 messages, with parts", kPurgeByHand, PurgeName(purgedMessages), kTarget},
    };
}

std::vector<Growth> PurgeGrowths(const std::vector<int>& messages)
{
    Growth growth{"half of the messages, with parts", {}};
    for (const int count : messages) {
        growth.sizes.push_back({PurgeName(count), static_cast<double>(count) * kRowsOfMessage / 2});
    }
    return {growth};
}

void RegisterShelves(Directory& shelves)
{
    ByHand& db = shelves.hand;
    CAConnect& conn = shelves.conn;
    Register("folders/hand", [&db](std::size_t i) {
        std::vector<std::string> names;
        std::vector<unsigned> ids;
        db.ListSubFolders(ParentOf(i), names, ids);
        RequireCount(ids.size(), Shelves::kChildren);
    });
    Register("folders/quorvel", [&conn](std::size_t i) {
        CStringArray names;
        CUIntArray ids;
        Require(CQVBaseFun::LoadFolderSubFolder(conn, ParentOf(i), names, ids));
        RequireCount(ids.GetSize(), Shelves::kChildren);
    });
    Register("replies/hand", [&db](std::size_t i) {
        std::vector<unsigned> ids;
        std::vector<std::string> creators;
        std::vector<std::string> times;
        std::vector<std::string> contents;
        db.ListReplies(NoticeOf(i), ids, creators, times, contents);
        RequireCount(contents.size(), Shelves::kChildren);
    });
    Register("replies/quorvel", [&conn](std::size_t i) {
        CUIntArray ids;
        CStringArray creators;
        CStringArray times;
        CStringArray contents;
        Require(CQVBaseFun::LoadBulletinReplyInfo(conn, NoticeOf(i).c_str(), ids, creators, times, contents));
        RequireCount(contents.GetSize(), Shelves::kChildren);
    });
}

void RegisterPurgeByHand(Directory& mail)
{
    ByHand& db = mail.hand;
    Register(kPurgeByHand, [&db](std::size_t) {
        db.Run("BEGIN IMMEDIATE");
        db.Purge(Mail::kHalfOfThem);
        db.Run("ROLLBACK");
    })->Iterations(1);
}

void RegisterPurge(Directory& mail, int messages, int repetitions)
{
    CAConnect& conn = mail.conn;
    auto* purge = Register(PurgeName(messages), [&conn](std::size_t) {
                      conn.BeginTrans();
                      Require(CQVBaseFun::ClearMsgData(conn, Mail::kHalfOfThem));
                      conn.RollbackTrans();
                  })->Iterations(1);
    if (repetitions != 0) {
        purge->Repetitions(repetitions);
    }
}

} // namespace bench
