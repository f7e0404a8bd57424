#pragma once

#include "bench/Record.h"

#include <sys/types.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace bench {

/// A directory on a server, and what the peers do with it.
struct ServerPeerData {
    static constexpr int kUsers = 10'000;

    std::string engine;                  ///< "postgresql" or "mariadb"
    std::string database;                ///< one of the test servers' (tests/servers/Servers.h)
    std::vector<std::string> loginNames; ///< of users that are there, in no order
    std::vector<Record> newUsers;

    [[nodiscard]] const std::string& LoginName(std::size_t call) const { return loginNames[call % loginNames.size()]; }
};

/// One way to reach the directory, on a connection of its own. All ways give the same results; each is written as users
/// of its library would. @throws std::runtime_error for what the engine refuses, and for a result that is not what it
/// should be.
class ServerPeer {
public:
    ServerPeer() = default;
    ServerPeer(const ServerPeer&) = delete;
    ServerPeer& operator=(const ServerPeer&) = delete;
    virtual ~ServerPeer() = default;

    /// The process that serves the connection.
    virtual pid_t ServerProcess() = 0;
    /// The id of a user. @param call  counts the calls from 0 and says which user.
    virtual void FindUser(std::size_t call) = 0;
    /// Adds all new users in a transaction and rolls it back, so that the next call meets the same table.
    virtual void SaveUsers() = 0;
    /// All users, in three and in nine columns.
    virtual void ListThree() = 0;
    virtual void ListNine() = 0;
};

/// The client library with statements as texts: the base of all ratios. The data outlive a peer, here and below.
std::unique_ptr<ServerPeer> PostgresqlTextPeer(const ServerPeerData& data);
std::unique_ptr<ServerPeer> MariadbTextPeer(const ServerPeerData& data);
/// The client library with statements that are prepared once and bound for each call.
std::unique_ptr<ServerPeer> PostgresqlKeptPeer(const ServerPeerData& data);
std::unique_ptr<ServerPeer> MariadbKeptPeer(const ServerPeerData& data);
std::unique_ptr<ServerPeer> QuorvelServerPeer(const ServerPeerData& data);
std::unique_ptr<ServerPeer> SociServerPeer(const ServerPeerData& data);

/// The test servers' MariaDB, which serves all its connections in one process.
pid_t MariadbProcess();

/// The statement that finds a user by a login name, as a text.
std::string FindStatement(const std::string& loginName);

/// A statement with its places for values numbered. @param sql  with a ? for each value. @param sign  goes before each
/// number.
std::string Numbered(const std::string& sql, const std::string& sign);

} // namespace bench
