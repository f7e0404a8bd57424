#pragma once

#include "bench/Record.h"

#include <memory>
#include <string>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace bench {

/// Gives a connection the function that the directory's indexes are ordered by; without it the engine would not use
/// them.
void RegisterUpper(sqlite3* db);

/// The operations under test written against the engine's C interface, as a careful programmer would: the same
/// statements, one buffer for the statement, texts taken over with the length that the engine knows.
/// @throws std::runtime_error for what the engine refuses.
class ByHand {
public:
    /// Opens a file with the flags and settings of the module's own connections, upper() included.
    explicit ByHand(const std::string& path);

    void Run(const char* sql);
    /// -1 when there is no such user.
    int FindUser(const std::string& loginName);
    /// The same by a statement that is prepared once and bound to each name.
    int FindUserKept(const std::string& loginName);
    bool UserExists(const std::string& loginName);
    void ListUsers(std::vector<unsigned>& ids, std::vector<std::string>& loginNames, std::vector<std::string>& names);
    void ListUsers(std::vector<unsigned>& ids, std::vector<std::string>& loginNames, std::vector<std::string>& names,
                   std::vector<unsigned>& sexes, std::vector<std::string>& mobiles, std::vector<std::string>& eMails,
                   std::vector<std::string>& deptInfos, std::vector<std::string>& jobTitles,
                   std::vector<unsigned>& disabled);
    /// The caller deletes the records.
    void LoadUsers(std::vector<Record*>& users);
    void SaveUser(const Record& user);
    std::string OldestMessage();
    /// The users that are members of a group. The caller deletes the records.
    void LoadGroupUsers(int group, std::vector<Record*>& users);
    void ListGroupUsers(int group, std::vector<unsigned>& ids, std::vector<std::string>& loginNames,
                        std::vector<std::string>& names);
    void ListUsersNotIn(int group, std::vector<unsigned>& ids, std::vector<std::string>& loginNames,
                        std::vector<std::string>& names);
    /// The direct members of an item.
    void ListMembers(int holder, int holderType, std::vector<unsigned>& ids, std::vector<unsigned>& types);
    /// Writes a view's id to the links of all users at every depth below an item.
    void StampView(int holder, int holderType, int view);
    /// The folders directly under a folder.
    void ListSubFolders(int parent, std::vector<std::string>& names, std::vector<unsigned>& ids);
    /// The replies to a notice, the oldest first. Their times are copied as the table has them.
    void ListReplies(const std::string& notice, std::vector<unsigned>& ids, std::vector<std::string>& creators,
                     std::vector<std::string>& times, std::vector<std::string>& contents);
    /// Deletes the messages up to a date, then the attachments and receipts that have no message.
    void Purge(const char* date);
    /// Whether a right of the user's roles has the bit; the first that has it ends the search.
    bool HasBit(int user, const char* genre, const std::string& function, unsigned bit);
    /// Whether the first right of the user's roles has the bit.
    bool FirstHasBit(int user, const char* genre, const std::string& function, unsigned bit);
    /// The bits of all rights of the user's roles.
    unsigned BitsOf(int user, const char* genre, const std::string& function);
    /// The largest limit of the user's roles; -1 for none.
    int LimitOf(int user, const char* genre, const std::string& function);
    /// The views that the user's roles may see.
    void ListViewsOf(int user, const char* genre, const char* function, std::vector<unsigned>& views);
    /// For many rows at once: a statement to bind values to.
    sqlite3_stmt* PrepareFor(const char* sql);

private:
    struct CloseFile {
        void operator()(sqlite3* db) const noexcept;
    };
    struct Finalize {
        void operator()(sqlite3_stmt* statement) const noexcept;
    };
    using Statement = std::unique_ptr<sqlite3_stmt, Finalize>;

    Statement Prepare(const char* sql, std::size_t length);
    bool Step(sqlite3_stmt* statement);
    std::string RoleFilter(int user);
    Statement PreparePowers(int user, const char* genre, const std::string& function);
    void ListNames(const Statement& statement, std::vector<unsigned>& ids, std::vector<std::string>& loginNames,
                   std::vector<std::string>& names);

    std::unique_ptr<sqlite3, CloseFile> m_db;
    Statement m_findUser; // of FindUserKept
};

} // namespace bench
