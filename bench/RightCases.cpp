#include "bench/RightCases.h"

#include "bench/Cases.h"

#include <string>

namespace bench {

namespace {

constexpr double kTarget = 0.30;
constexpr const char* kViewGenre = "Views";
constexpr const char* kViewFunction = "See";
constexpr unsigned kPublish = 1;
constexpr unsigned kGuest = 8;
/// A bit that no power has, so that the whole of a user's rights is looked through.
constexpr unsigned kMask = 4;

/// Registers both sides of a right; each gets user and function.
template <class Hand, class Quorvel>
void RegisterBoth(const std::string& name, RoleRights rights, Hand hand, Quorvel quorvel)
{
    Register(name + "/hand", [=](std::size_t i) { hand(rights.UserOf(i), RoleRights::FunctionOf(i)); });
    Register(name + "/quorvel", [=](std::size_t i) { quorvel(rights.UserOf(i), RoleRights::FunctionOf(i).c_str()); });
}

void RegisterFlags(Directory& directory, RoleRights rights)
{
    ByHand& db = directory.hand;
    CAConnect& conn = directory.conn;
    RegisterBoth(
        "right_publish", rights,
        [&db](int user, const std::string& function) {
            Require(!db.HasBit(user, RoleRights::kGenre, function, kPublish));
        },
        [&conn](int user, const char* function) {
            bool allowed = true;
            Require(CQVBaseFun::GetAfficheACE(conn, user, RoleRights::kGenre, function, allowed) && !allowed);
        });
    RegisterBoth(
        "right_mask", rights,
        [&db](int user, const std::string& function) {
            Require(!db.HasBit(user, RoleRights::kGenre, function, kMask));
        },
        [&conn](int user, const char* function) {
            int has = 1;
            Require(CQVBaseFun::HaveBaseACE(conn, user, RoleRights::kGenre, function, kMask, has) && has == 0);
        });
    RegisterBoth(
        "right_bits", rights,
        [&db](int user, const std::string& function) { Require(db.BitsOf(user, RoleRights::kGenre, function) != 0); },
        [&conn](int user, const char* function) {
            unsigned long bits = 0;
            Require(CQVBaseFun::GetHMBaseACE(conn, user, RoleRights::kGenre, function, bits) && bits != 0);
        });
    RegisterBoth(
        "right_guest", rights,
        [&db](int user, const std::string& function) {
            Require(!db.FirstHasBit(user, RoleRights::kGenre, function, kGuest));
        },
        [&conn](int user, const char* function) {
            bool allowed = true;
            Require(CQVBaseFun::GetACEGuestUser(conn, user, RoleRights::kGenre, function, allowed) && !allowed);
        });
}

void RegisterLimit(Directory& directory, RoleRights rights, const char* name,
                   bool (*limitOf)(CAConnect&, int, CString, CString, int&))
{
    ByHand& db = directory.hand;
    CAConnect& conn = directory.conn;
    RegisterBoth(
        name, rights,
        [&db](int user, const std::string& function) { Require(db.LimitOf(user, RoleRights::kGenre, function) > 0); },
        [&conn, limitOf](int user, const char* function) {
            int limit = 0;
            Require(limitOf(conn, user, RoleRights::kGenre, function, limit) && limit > 0);
        });
}

void RegisterViews(Directory& directory, RoleRights rights)
{
    ByHand& db = directory.hand;
    CAConnect& conn = directory.conn;
    RegisterBoth(
        "right_views", rights,
        [&db](int user, const std::string& /*function*/) {
            std::vector<unsigned> views;
            db.ListViewsOf(user, kViewGenre, kViewFunction, views);
            Require(!views.empty());
        },
        [&conn](int user, const char* /*function*/) {
            CUIntArray views;
            Require(CQVBaseFun::LoadHMRoleView(conn, user, kViewGenre, kViewFunction, views) && views.GetSize() > 0);
        });
}

} // namespace

std::vector<Pair> RightPairs()
{
    return {
        {"may publish (bit 1)", "right_publish/hand", "right_publish/quorvel", kTarget},
        {"has a bit of a mask", "right_mask/hand", "right_mask/quorvel", kTarget},
        {"all bits", "right_bits/hand", "right_bits/quorvel", kTarget},
        {"may take guests (first row)", "right_guest/hand", "right_guest/quorvel", kTarget},
        {"limit of attachments", "right_attachment/hand", "right_attachment/quorvel", kTarget},
        {"limit of receivers", "right_receivers/hand", "right_receivers/quorvel", kTarget},
        {"limit of rate", "right_rate/hand", "right_rate/quorvel", kTarget},
        {"views that may be seen", "right_views/hand", "right_views/quorvel", kTarget},
    };
}

void RegisterRights(Directory& directory, RoleRights rights)
{
    RegisterFlags(directory, rights);
    RegisterLimit(directory, rights, "right_attachment", &CQVBaseFun::GetAttachmentSizeACE);
    RegisterLimit(directory, rights, "right_receivers", &CQVBaseFun::GetMultiSendCountACE);
    RegisterLimit(directory, rights, "right_rate", &CQVBaseFun::GetRateLimitACE);
    RegisterViews(directory, rights);
}

} // namespace bench
