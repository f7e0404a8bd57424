#pragma once

#include "bench/Record.h"
#include "bench/RoleRights.h"
#include "bench/Tree.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace bench {

/// A directory file, and what the peers do with it. What a peer needs of it in a form of its own is made beforehand.
struct PeerData {
    static constexpr int kUsers = 10'000;

    std::string path;
    std::vector<std::string> loginNames; ///< of users that are there, in no order
    std::vector<Record> newUsers;
    Tree tree{kUsers};
    RoleRights rights{kUsers};

    [[nodiscard]] const std::string& LoginName(std::size_t call) const { return loginNames[call % loginNames.size()]; }
};

/// One way to reach the directory, on a connection of its own. All ways send the same statements and give the same
/// results; each is written as users of its library would. @throws std::runtime_error for what the engine refuses, and
/// for a result that is not what it should be.
class Peer {
public:
    Peer() = default;
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;
    virtual ~Peer() = default;

    /// The id of a user. @param call  counts the calls from 0 and says which user; likewise below.
    virtual void FindUser(std::size_t call) = 0;
    /// Whether a login name is taken.
    virtual void FindTaken(std::size_t call) = 0;
    /// Adds all new users in a transaction and rolls it back, so that the next call meets the same table.
    virtual void SaveUsers() = 0;
    /// Whether one of a user's roles has a bit, which none has.
    virtual void FindRight(std::size_t call) = 0;
    /// The users of a small group as objects.
    virtual void LoadGroup(std::size_t call) = 0;
    /// All users, in three and in nine columns.
    virtual void ListThree() = 0;
    virtual void ListNine() = 0;
};

/// A way to make a peer. The data outlive it.
struct PeerSide {
    const char* name;
    std::unique_ptr<Peer> (*make)(const PeerData& data);
};

/// The engine's C library with statements as texts that are prepared for each call: the base of all ratios.
std::unique_ptr<Peer> TextPeer(const PeerData& data);
/// The same library with statements that are prepared once and bound for each call.
std::unique_ptr<Peer> KeptPeer(const PeerData& data);
std::unique_ptr<Peer> QuorvelPeer(const PeerData& data);
std::unique_ptr<Peer> SqliteCppPeer(const PeerData& data);
std::unique_ptr<Peer> SociPeer(const PeerData& data);

/// No power has it.
inline constexpr unsigned kBitOfNone = 1;

/// Statements with a place for each value, for peers that bind.
namespace bound {

inline constexpr const char* kFind = "SELECT Col_ID FROM qv_User WHERE Col_LoginName = ?";
inline constexpr const char* kTaken = "SELECT Col_LoginName FROM qv_User WHERE upper(Col_LoginName) = ?";
inline constexpr const char* kThree = "SELECT Col_ID, Col_LoginName, Col_Name FROM qv_User";
inline constexpr const char* kNine = "SELECT Col_ID,Col_LoginName,Col_Name,Col_Sex, Col_Mobile,Col_EMail,Col_DeptInfo,"
                                     "Col_o_JobTitle, Col_Disabled FROM qv_User";
inline constexpr const char* kGroup =
    "SELECT qv_User.Col_ID, qv_User.Col_LoginName, qv_User.Col_Name, qv_User.Col_Sex, qv_User.Col_Mobile, "
    "qv_User.Col_EMail, qv_User.Col_DeptInfo, qv_User.Col_o_JobTitle, qv_User.Col_Disabled FROM qv_User,qv_Relation "
    "WHERE qv_Relation.Col_QvItemType = 2 AND qv_Relation.Col_QvItemID = ? AND qv_Relation.Col_DQvItemType = 1 AND "
    "qv_Relation.Col_DQvItemID = qv_User.Col_ID AND qv_Relation.Col_RelType = 1";
inline constexpr const char* kRoles =
    "SELECT qv_Role.Col_ID, qv_Role.Col_Name, qv_Role.Col_Description FROM qv_Role,qv_Relation WHERE qv_Role.Col_ID = "
    "qv_Relation.Col_QvItemID AND qv_Relation.Col_QvItemType = 3 AND qv_Relation.Col_DQvItemID = ? AND "
    "qv_Relation.Col_DQvItemType = 1 AND qv_Role.Col_AppName = 'Tolvan'";
inline constexpr const char* kEveryone =
    "SELECT Col_ID FROM qv_Role WHERE Col_Name = 'everyone' AND Col_AppName = 'Tolvan' ";

/// The powers of so many roles: bound to genre, function and the roles' ids.
std::string Powers(std::size_t roles);

} // namespace bound

} // namespace bench
