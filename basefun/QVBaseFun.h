#pragma once

#include "platform/Api.h"
#include "platform/CObList.h"
#include "platform/COleDateTime.h"
#include "platform/CString.h"
#include "platform/CStringArray.h"
#include "platform/CUIntArray.h"
#include "platform/Types.h"

class CAConnect;

/// The module's operations. All are static and work on the caller's open connection.
///
/// Common to all that return bool: true means that the statements ran, not that a row was found; what was not found
/// keeps the value that the output is preset to, before anything can fail. false means that the engine refused a
/// statement: then m_strLastError holds the error's text, and the connection's notification window, if any, has
/// received one message. A connection that is not open makes reads return false with no text and no message; writes,
/// whose only sign of failure is an error, report it as one. Outputs written before a failure stay written, and of
/// several statements the earlier ones stay done.
///
/// The caller owns the connection, every output and every collection. Lists are appended to, never cleared; the arrays
/// of a list stay parallel.
///
/// The notes say what an operation does to a text before it enters a statement. What it leaves undone the caller must
/// do, or a text from outside can end the statement and begin another: "Not escaped" wants CAConnect::EscapeLiteral;
/// "Quotes doubled" wants CAConnect::EscapeBackslashes, since on engine kind 6 "\'" does not end a literal;
/// "Backslashes doubled on kind 6" wants CAConnect::EscapeQuotes. docs/security.md has them all in a table.
///
/// Threads: a connection serves one call at a time. Callers on several threads, each with a connection of its own, may
/// run operations at the same time; their results and outputs do not meet. Only m_strLastError is shared: operations
/// write it one after another, but it then belongs to the last that failed, on whatever thread. Reading it, in a
/// window's handler too, is safe only while no other thread runs an operation. A caller who needs the text to go with
/// its own failure runs one operation at a time.
class QV_API CQVBaseFun {
public:
    CQVBaseFun();
    CQVBaseFun(const CQVBaseFun& from);
    /// There is nothing to copy.
    CQVBaseFun& operator=(const CQVBaseFun& from);
    virtual ~CQVBaseFun();

    /// The last error that an operation caught, however old; no operation clears it. An error is notified by
    /// SendMessageA(m_hNotifyWnd, m_nNotifyMsg, 0, address of this text), which the window reads during the call. Not
    /// to be read or written while another thread runs an operation.
    static CString m_strLastError;

    // ---- Helpers: text, dates, log -------------------------------------------------------------------------------

    /// Makes a statement template runnable: backslashes are removed, then every "#%s#" becomes the current local time
    /// between # signs (as FormatDBTIMEToStr writes it), every other "%s" becomes "11" and every "%d" becomes "0".
    static CString ReplaceSysSQL(CString sql);
    /// The date as "Y-M-D h:m:s" with no number padded: 2013-5-7 9:3:2.
    static CString FormatDBTIMEToStr(COleDateTime& time);
    /// Converts a text of the ANSI code page to UTF-8. @return always 1.
    static int ToUTF8String(CString& text);
    /// Tests whether a database holds the module's tables, by looking for qv_User the way the engine kind wants it.
    /// @param dbType  0 Access, 1 SQL Server, 6 MySQL ask the engine; 3 is taken as valid without asking.
    /// @param dbName  the schema to look in, for kind 6 only.
    /// @param valid   false, then true when a table was found.
    /// @return false also for any other kind, without touching the connection.
    /// @note Not escaped: dbName.
    static bool IsDataBaseValid(CAConnect& conn, int dbType, CString dbName, bool& valid);
    /// Writes nothing: a hook that callers expect to be there.
    static void WriteToLogFileEx(CString text);

    // ---- Users: look-ups -----------------------------------------------------------------------------------------

    /// A user's id by login name. @param id  -1 when there is none.
    /// @note Quotes doubled: loginName.
    static bool GetHMIDByLoginName(CAConnect& conn, CString loginName, int& id);
    /// Whether a login name is taken, case not counting. The name is upper-cased. On engine
    /// kind 3 it is compared with upper(Col_LoginName); elsewhere with the column, which ignores case only where the
    /// engine does.
    /// @param exists  true, then false when no row came back.
    /// @note Quotes doubled: loginName.
    static bool ExistLoginName(CAConnect& conn, CString loginName, bool& exists);
    /// A user's id by login name, compared as by ExistLoginName. @param id  0 when there is none.
    /// @note Quotes doubled: loginName.
    static bool ExistLoginNameEx(CAConnect& conn, CString loginName, int& id);
    /// @param isSuper  false when there is no such user.
    /// @note Not escaped: loginName.
    static bool IsSuperUser(CAConnect& conn, CString loginName, bool& isSuper);
    /// @param locked  false when there is no such user.
    /// @note Not escaped: loginName.
    static bool IsUserLocked(CAConnect& conn, CString loginName, bool& locked);
    /// @param loginName  empty when there is no such user.
    static bool GetHMLoginName(CAConnect& conn, int id, CString& loginName);
    /// The login name of the first user of a display name. @param loginName  empty when there is none.
    /// @note Quotes doubled: name.
    static bool GetHMLoginName(CAConnect& conn, CString name, CString& loginName);
    /// A display name by login name. @param name  empty when there is none.
    /// @note Quotes doubled: loginName.
    static bool GetHMUserName(CAConnect& conn, CString loginName, CString& name);
    /// @param name  empty when there is no such user.
    static bool GetHMUserName(CAConnect& conn, int id, CString& name);
    /// @param id  0, and @param name  empty, when there is no such user.
    /// @note Not escaped: loginName.
    static bool LoadUserInfo(CAConnect& conn, CString loginName, int& id, CString& name);
    /// What a user's card shows. The outputs have no presets: they stay as they are when there is no such user.
    static bool GetUserInfo(CAConnect& conn, int id, CString& loginName, CString& name, int& itemIndex, int& sex,
                            CString& mobile, CString& eMail, CString& jobTitle);
    /// The number of users. @param count  0 until read.
    static bool GetUserItemCount(CAConnect& conn, int& count);
    static bool GetUserItemCount(CAConnect& conn, __int64& count);

    // ---- Users: lists --------------------------------------------------------------------------------------------

    /// All users by level, one new CHumanItem each with id, login name, name, password and super-user flag; the other
    /// members keep their defaults. The caller frees them with DetachHumanList. The password is read from the column
    /// Col_Password: on a table without it, any row makes the call fail.
    static bool LoadHumanInfo(CAConnect& conn, CObList& users);
    /// Id, login name and name of all users.
    static bool LoadHumanInfo(CAConnect& conn, CUIntArray& ids, CStringArray& loginNames, CStringArray& names);
    /// The same under another name.
    static bool LoadUserInfo(CAConnect& conn, CUIntArray& ids, CStringArray& loginNames, CStringArray& names);
    /// What a list of users shows, of all users.
    static bool LoadHumanInfo(CAConnect& conn, CUIntArray& ids, CStringArray& loginNames, CStringArray& names,
                              CUIntArray& sexes, CStringArray& mobiles, CStringArray& eMails, CStringArray& deptInfos,
                              CStringArray& jobTitles, CUIntArray& disabled);
    /// The users that a directory item holds, by relations of any type.
    static bool LoadHumanInfo(CAConnect& conn, int holderId, int holderType, CUIntArray& ids, CStringArray& loginNames,
                              CStringArray& names, CUIntArray& sexes, CStringArray& mobiles, CStringArray& eMails,
                              CStringArray& deptInfos, CStringArray& jobTitles);
    /// The users that are members of a directory item, each once.
    static bool LoadUsers(CAConnect& conn, int holderId, int holderType, CUIntArray& ids, CStringArray& names);
    /// The users that are members of a directory item, one row per relation.
    static bool LoadUsers(CAConnect& conn, int holderId, int holderType, CUIntArray& ids, CStringArray& loginNames,
                          CStringArray& names, CStringArray& jobTitles);

    // ---- Users: writes -------------------------------------------------------------------------------------------

    /// Deletes a user, but never the one whose login name is "Admin". True also when nothing was deleted. What refers
    /// to the user elsewhere stays.
    static bool DeleteUserItemByID(CAConnect& conn, int id);
    static bool SetUserLocked(CAConnect& conn, int id, bool locked);
    /// Sets a user's department. @param always  false: only when the department id is still 0.
    /// @note Not escaped: deptInfo.
    static bool UpdateUserDeptInfo(CAConnect& conn, int id, int deptId, CString deptInfo, bool always);
    /// Adds a user.
    /// @note Not escaped: loginName, name.
    static bool InsertUser(CAConnect& conn, CString loginName, CString name);
    /// Adds a user with an encoded password.
    /// @note Not escaped: loginName, name, password.
    static bool InsertUser(CAConnect& conn, CString loginName, CString name, CString password, int enType);
    /// Updates what a user may change of himself.
    /// @note Quotes doubled: loginName, name, deptInfo, jobTitle, officePhone, mobile, officeFax, eMail, userData,
    /// homePhone.
    static bool UpdateHumanInfo(CAConnect& conn, int id, CString loginName, CString name, CString deptInfo,
                                CString jobTitle, CString officePhone, CString mobile, CString officeFax, CString eMail,
                                CString userData, CString homePhone, int deptId);

    // ---- Groups --------------------------------------------------------------------------------------------------

    /// The highest group id of all. @param name  without effect. @param id  -1 when there is no group.
    /// @note Not in a statement: name.
    static bool GetGroupIDByName(CAConnect& conn, CString name, int& id);
    /// A group of exactly this name that any kind of item with this id holds by any relation. @param id  -1 when there
    /// is none.
    /// @note Not escaped: name.
    static bool GetGroupIDByNameAndOwner(CAConnect& conn, CString name, int& id, int ownerID);
    /// Whether any group has this name. On engine kind 3 case does not count, here and in the next two.
    /// @param exists  false when there is none, here and below.
    /// @note Not escaped: name.
    static bool ExistGroupName(CAConnect& conn, CString name, bool& exists);
    /// Whether a group of this name is a member directly under a parent.
    /// @note Not escaped: name.
    static bool ExistGroupName(CAConnect& conn, CString name, int parentID, int parentType, bool& exists);
    /// The id of such a group. @return 0 when there is none, and after a failure.
    /// @note Not escaped: name.
    static int ExistGroupName(CAConnect& conn, CString name, int parentID, int parentType);
    /// The groups directly under a parent, by sort index and name.
    static bool LoadGroup(CAConnect& conn, int parentID, int parentType, CUIntArray& ids, CStringArray& names);
    /// The outputs have no presets: they stay as they are when there is no such group.
    static bool LoadGroupInfo(CAConnect& conn, int id, CString& name, int& itemIndex, CString& description);
    /// @note Not escaped: name, description.
    static bool UpdateGroupInfo(CAConnect& conn, int id, CString name, int itemIndex, CString description);
    /// @param style  0 when there is no such group. @return true also when the connection is not open.
    static bool GetGroupStyle(CAConnect& conn, int id, int& style);
    static bool UpdateGroupStyle(CAConnect& conn, int id, int style);
    /// Deletes the group's own row; its relations stay.
    static bool DelGroupItemByID(CAConnect& conn, int id);

    // ---- Views ---------------------------------------------------------------------------------------------------

    /// A view of exactly this name and type. @param id  0 when there is none.
    /// @note Not escaped: name.
    static bool GetViewIDByName(CAConnect& conn, CString name, int type, int& id);
    /// The same, case not counting on engine kind 3. @return 0 when there is none, and after a failure.
    /// @note Not escaped: name.
    static int ExistViewName(CAConnect& conn, CString name, int type);
    /// The views of a type, by sort index and name.
    static bool LoadView(CAConnect& conn, CUIntArray& ids, CStringArray& names, int type);
    /// An owner's views of a type, by sort index and name. When the arrays are still empty then and `createIfEmpty` is
    /// set, a view named "_Empty" is added and read. @return 1, or 0 after a failure.
    static int LoadViewbyUserID(CAConnect& conn, int ownerID, CUIntArray& ids, CStringArray& names, int type,
                                bool createIfEmpty);
    /// The system views, unordered, one new CViewItem each with id, name, type, description and sort index.
    static bool LoadSysView(CAConnect& conn, CObList& views);
    /// @param name  empty when there is no such view.
    static bool GetViewNameByID(CAConnect& conn, int id, CString& name);
    /// @note Not escaped: name.
    static bool UpdateViewName(CAConnect& conn, int id, CString name);
    /// The name of the first system view without an owner. @param name  empty when there is none.
    static bool GetDefaultSysView(CAConnect& conn, CString& name);
    /// Renames the system view without an owner, only while it is still called "_Empty".
    /// @note Not escaped: name.
    static bool UpdateDefaultSysView(CAConnect& conn, CString name);
    /// @param flag  true when there IS a system view, against the operation's name; callers know it so.
    static bool HasNoSysView(CAConnect& conn, bool& flag);
    /// @param count  0 until read. @return true also when the connection is not open.
    static bool GetSysViewCount(CAConnect& conn, int& count);
    /// Deletes the view's own row; its relations stay.
    static bool DeleteViewItem(CAConnect& conn, int id);

    // ---- Relations: users of a holder ----------------------------------------------------------------------------

    /// The users that are members of a group or view, unordered, one new CHumanItem each with what a list shows.
    static bool LoadGroupUser(CAConnect& conn, int groupID, CObList& users);
    static bool LoadViewUser(CAConnect& conn, int viewID, CObList& users);
    /// Their ids and names alone.
    static bool LoadGroupUser(CAConnect& conn, int groupID, CUIntArray& ids, CStringArray& loginNames,
                              CStringArray& names);
    static bool LoadViewUser(CAConnect& conn, int viewID, CUIntArray& ids, CStringArray& loginNames,
                             CStringArray& names);
    /// Ids and names of the users that are no members of a group, view or other holder.
    static bool LoadUserNotInGroup(CAConnect& conn, int groupID, CUIntArray& ids, CStringArray& loginNames,
                                   CStringArray& names);
    static bool LoadUserNotInView(CAConnect& conn, int viewID, CUIntArray& ids, CStringArray& loginNames,
                                  CStringArray& names);
    static bool LoadUserNotIn(CAConnect& conn, int holderID, int holderType, CUIntArray& ids, CStringArray& loginNames,
                              CStringArray& names);

    // ---- Relations: links ----------------------------------------------------------------------------------------

    /// The direct members of an item, unordered.
    static bool LoadSubMember(CAConnect& conn, int holderID, int holderType, CUIntArray& memberIDs,
                              CUIntArray& memberTypes);
    /// Whether an item is a member of another. @param exists  false when it is not.
    static bool ExitMemberRelation(CAConnect& conn, int holderID, int holderType, int memberID, int memberType,
                                   bool& exists);
    /// Deletes the membership between two items.
    static bool DeleteRelation(CAConnect& conn, int holderID, int holderType, int memberID, int memberType);
    /// Deletes the relations of every type between two items.
    static bool DelRelation(CAConnect& conn, int holderID, int holderType, int memberID, int memberType);
    /// Deletes every relation in which the item is the holder.
    static bool DelRelationByQvItem(CAConnect& conn, int itemID, int itemType);
    /// Deletes every relation in which the item is the dependent. @return what CAConnect::Execute gave, 0 after an
    /// error.
    static int DelRelationByDQVItem(CAConnect& conn, int itemID, int itemType);
    /// Stamps a view's id onto the user links at every depth below an item; the links of groups keep theirs. Stops at
    /// the first failure. Never returns when a group is below itself; what callers do: see InsertGroupFileBackPlan.
    static bool UpdateRelationViewID(CAConnect& conn, int holderID, int holderType, int viewID);

    // ---- Roles ---------------------------------------------------------------------------------------------------

    /// A role of exactly this name. @param id  0 when there is none.
    /// @note Not escaped: name, appName.
    static bool GetRoleIDByName(CAConnect& conn, CString name, CString appName, int domainID, int& id);
    /// Whether there is such a role; on engine kind 3 case does not count in either name.
    /// @note Not escaped: name, appName.
    static bool ExistRoleName(CAConnect& conn, CString name, CString appName, int domainID, bool& exists);
    /// The roles of an application and domain, unordered.
    /// @note Not escaped: appName.
    static bool LoadRole(CAConnect& conn, CString appName, int domainID, CUIntArray& ids, CStringArray& names);
    /// @note Not escaped: appName.
    static bool LoadRole(CAConnect& conn, CString appName, int domainID, CUIntArray& ids, CStringArray& names,
                         CStringArray& descriptions);
    /// @param name  empty when there is no such role. @return true also when the connection is not open.
    static bool GetRoleNameByID(CAConnect& conn, int id, CString& name);
    /// Deletes the role's own row; its relations and rights stay.
    static bool DeleteRole(CAConnect& conn, int id);
    /// The roles linked to a user, of every application and relation type.
    static bool LoadHMRole(CAConnect& conn, int userID, CUIntArray& ids, CStringArray& names);
    /// The roles of this system linked to a user and, last, the default role: id 0 and empty texts when there is none,
    /// and a second time when it is linked too.
    static bool LoadHMRole(CAConnect& conn, int userID, CUIntArray& ids, CStringArray& names,
                           CStringArray& descriptions);
    static bool LoadHMRole(CAConnect& conn, int userID, CUIntArray& ids);
    /// The role "everyone". @param id  0, and name and description as they were, when there is none.
    static bool GetDefaultRoleInfo(CAConnect& conn, int& id, CString& name, CString& description);
    static bool GetDefaultRoleID(CAConnect& conn, int& id);

    // ---- Job titles ----------------------------------------------------------------------------------------------

    /// The members that hold a title inside a holder, with the names stored beside the title.
    /// @note Not escaped: jobTitle.
    static bool LoadJobTitleInfo(CAConnect& conn, int holderID, int holderType, CUIntArray& memberIDs,
                                 CStringArray& memberNames, CString jobTitle);
    /// @param exists  false when the member does not hold the title inside the holder.
    /// @note Not escaped: jobTitle.
    static bool ExistJobTitle(CAConnect& conn, int holderID, int holderType, int memberID, int memberType,
                              CString jobTitle, bool& exists);
    /// Deletes every equal row of a title.
    /// @note Not escaped: jobTitle.
    static bool DeleteJobTitle(CAConnect& conn, int holderID, int holderType, int memberID, int memberType,
                               CString jobTitle);

    // ---- Passwords -----------------------------------------------------------------------------------------------

    /// Encodes a password as it is stored. @param type  1: MD5 of its bytes; 2: MD5 of its UTF-16LE form, where the
    /// caller has put the login name before the password; any other: unchanged. @return always true.
    static bool Encrypt(CString& text, CString unused, int type);
    /// Checks a password against a user's row. Both empty match, whatever the type. For type 2 the login name counts as
    /// it is written here, case included.
    /// @param matches  false, also after any failure.
    /// @return true only when there is such a user.
    /// @note Not escaped: loginName. Not in a statement: password.
    static bool CheckUserPassword(CAConnect& conn, CString loginName, CString password, bool& matches);
    /// Stores a password that is encoded already.
    /// @return true also when there is no such user.
    /// @note Not escaped: loginName, encodedPassword.
    static bool UpdateItemPassword(CAConnect& conn, CString loginName, CString encodedPassword, int type);
    /// A text that is kept for the whole site and not used here. @param key  empty when there is none.
    static bool GetEncryptKey(CAConnect& conn, CString& key);
    /// Where the present key is empty a row is added, also beside one that holds it.
    /// @note Not escaped: key.
    static bool SetEncryptKey(CAConnect& conn, CString key);

    // ---- Item rights ---------------------------------------------------------------------------------------------
    // A right is the power that an item has on a function, which two texts name: its genre and its name.
    // Nothing keeps two rows of one right apart: callers ask first.

    /// @note Not escaped: funGenre, funName.
    static bool InsertItemAce(CAConnect& conn, int itemID, int itemType, CString funGenre, CString funName, int power,
                              int unPower);
    /// Sets the power alone. True also when there is no such right.
    /// @note Not escaped: funGenre, funName.
    static bool UpdateItemAce(CAConnect& conn, int itemID, int itemType, CString funGenre, CString funName, int power);
    /// @note Not escaped: funGenre, funName.
    static bool DeleteItemAce(CAConnect& conn, int itemID, int itemType, CString funGenre, CString funName);
    /// Deletes every right of the item; what it holds with respect to other items stays.
    static bool DeleteItemAce(CAConnect& conn, int itemID, int itemType);
    /// @param exists  false when there is no such right.
    /// @note Not escaped: funGenre, funName.
    static bool ExistItemAce(CAConnect& conn, int itemID, int itemType, CString funGenre, CString funName,
                             bool& exists);
    /// @param power  of the first such row; as it was when there is none.
    /// @note Not escaped: funGenre, funName.
    static bool LoadItemAceInfo(CAConnect& conn, int itemID, int itemType, CString funGenre, CString funName,
                                int& power);
    /// The item's rights of a genre, unordered. Powers stand as 32 bits without a sign.
    /// @note Not escaped: funGenre.
    static bool LoadItemAceInfo(CAConnect& conn, int itemID, int itemType, CString funGenre, CStringArray& funNames,
                                CUIntArray& powers);

    // ---- Item rights with respect to a second item ---------------------------------------------------------------

    /// @note Not escaped: funGenre, funName.
    static bool InsertBIIAceInfo(CAConnect& conn, int itemID, int itemType, int dItemID, int dItemType,
                                 CString funGenre, CString funName, int power, int unPower);
    /// Sets both powers. True also when there is no such right.
    /// @note Not escaped: funGenre, funName.
    static bool UpdateBIIAceInfo(CAConnect& conn, int itemID, int itemType, int dItemID, int dItemType,
                                 CString funGenre, CString funName, int power, int unPower);
    /// @note Not escaped: funGenre, funName.
    static bool DeleteBIIAceInfo(CAConnect& conn, int itemID, int itemType, int dItemID, int dItemType,
                                 CString funGenre, CString funName);
    /// Deletes the right on the second item from every holder.
    /// @note Not escaped: funGenre, funName.
    static bool DeleteBIIAceInfo(CAConnect& conn, int dItemID, int dItemType, CString funGenre, CString funName);
    /// @param exists  false when there is no such right.
    /// @note Not escaped: funGenre, funName.
    static bool ExistBIIAceInfo(CAConnect& conn, int itemID, int itemType, int dItemID, int dItemType, CString funGenre,
                                CString funName, bool& exists);
    /// @param power  of the first such row, 0 when there is none.
    /// @note Not escaped: funGenre, funName.
    static bool GetBIIAceInfo(CAConnect& conn, int itemID, int itemType, int dItemID, int dItemType, CString funGenre,
                              CString funName, int& power);
    /// The items that hold the right on the second item with a power of exactly 1, unordered. The name comes before the
    /// genre here, and nowhere else.
    /// @note Not escaped: funName, funGenre.
    static bool LoadBIIAceInfo(CAConnect& conn, int dItemID, int dItemType, CString funName, CString funGenre,
                               CUIntArray& itemIDs, CUIntArray& itemTypes);

    // ---- Effective rights ----------------------------------------------------------------------------------------
    // What a user may do is what his roles may: the linked ones of this system and the default role. Rights of the user
    // himself and of his groups do not count. All but the first return false, besides the usual, when no role could be
    // read; the preset output stands then. For a limit that preset means unlimited, so false is no denial.

    /// The condition that finds the rows of a user's roles, one term each and " OR " between them.
    /// @param filter  empty when not even the default role could be read.
    static bool GetHMRoleQueryParam(CAConnect& conn, int userID, CString& filter);
    /// @param allowed  whether a role's power has bit 1; false until read.
    /// @note Not escaped: funGenre, funName.
    static bool GetAfficheACE(CAConnect& conn, int userID, CString funGenre, CString funName, bool& allowed);
    /// @param mask  32 bits. @param has  1 when a role's power shares a bit with the mask, else 0.
    /// @note Not escaped: funGenre, funName.
    static bool HaveBaseACE(CAConnect& conn, int userID, CString funGenre, CString funName, unsigned long mask,
                            int& has);
    /// @param rights  the bits of all roles' powers together, within 32 bits; 0 until read.
    /// @note Not escaped: funGenre, funName.
    static bool GetHMBaseACE(CAConnect& conn, int userID, CString funGenre, CString funName, unsigned long& rights);
    /// @param allowed  whether the power in the first row that the engine returns has bit 8; no other row counts, as
    /// callers know it.
    /// @note Not escaped: funGenre, funName.
    static bool GetACEGuestUser(CAConnect& conn, int userID, CString funGenre, CString funName, bool& allowed);
    /// @param limit  -1, for unlimited, when no role has the right or one role has it with -1; else the largest of the
    /// roles' powers. The next two are the same rule for other limits.
    /// @note Not escaped: funGenre, funName.
    static bool GetAttachmentSizeACE(CAConnect& conn, int userID, CString funGenre, CString funName, int& limit);
    /// @note Not escaped: funGenre, funName.
    static bool GetMultiSendCountACE(CAConnect& conn, int userID, CString funGenre, CString funName, int& limit);
    /// @note Not escaped: funGenre, funName.
    static bool GetRateLimitACE(CAConnect& conn, int userID, CString funGenre, CString funName, int& limit);
    /// The views on which one of the roles holds the right with a power of exactly 1, each once, unordered.
    /// @note Not escaped: funGenre, funName.
    static bool LoadHMRoleView(CAConnect& conn, int userID, CString funGenre, CString funName, CUIntArray& viewIDs);

    // ---- Object rights -------------------------------------------------------------------------------------------
    // The right of an item on an object outside the directory: a class id and an object id name it. CTabBIOAceItem adds
    // one.

    /// The rights on an object's function, of every genre, by holder type. Powers stand as 32 bits without a sign.
    /// @note Not escaped: funName.
    static bool LoadTabBIOAceInfo(CAConnect& conn, int classID, int objID, CString funName, CUIntArray& ids,
                                  CUIntArray& itemTypes, CUIntArray& itemIDs, CStringArray& itemNames,
                                  CUIntArray& powers);
    /// @param id  of the first such right, 0 when there is none.
    /// @note Not escaped: funName, funGenre.
    static bool ExistTabBIOAceItem(CAConnect& conn, int classID, int objID, int itemID, int itemType, CString funName,
                                   CString funGenre, int& id);
    /// Whether anyone has a right on the object's function, of any genre. @param exists  false when nobody has.
    /// @note Not escaped: funName. Not in a statement: unused.
    static bool ExistTabBIOAce(CAConnect& conn, int classID, int objID, CString funName, CString unused, bool& exists);
    /// The outputs have no presets: they stay as they are when there is no such right.
    static bool LoadACEInfo(CAConnect& conn, int id, int& itemType, CString& itemName, int& power);
    static bool UpdateTabBIOAceInfo(CAConnect& conn, int id, int power, int unPower);
    static bool DeleteTabBIOAceItem(CAConnect& conn, int id);

    // ---- Settings: numbers ---------------------------------------------------------------------------------------
    // A missing row, and a text that does not begin with a number, read as 0; a number keeps its 32 bits.

    static bool GetKelServerConfigInfo(CAConnect& conn, unsigned long& flag);
    static bool GetMaxThreadCount(CAConnect& conn, unsigned int& count);
    static bool GetTaskThreadCount(CAConnect& conn, unsigned int& count);
    static bool GetKelDocServerFlag(CAConnect& conn, unsigned long& flag);

    // ---- Settings: tests -----------------------------------------------------------------------------------------
    // exists is false when there is no row.

    /// @note Not escaped: name.
    static bool ExistThreadInfo(CAConnect& conn, CString name, bool& exists);
    /// @note Not escaped: name.
    static bool ExistKelDocConfig(CAConnect& conn, CString name, bool& exists);
    static bool ExistKelDocServerFlag(CAConnect& conn, bool& exists);
    static bool ExistCorDisplayPic(CAConnect& conn, bool& exists);
    /// @note Not escaped: name, genre.
    static bool ExistTabConfigName(CAConnect& conn, CString name, CString genre, bool& exists);

    // ---- Settings: texts -----------------------------------------------------------------------------------------

    /// @param value  as it was when there is no row.
    /// @note Not escaped: name.
    static bool GetKelDocConfig(CAConnect& conn, CString name, CString& value);
    /// @param picture  empty when there is no row. @return true also when the connection is not open.
    static bool GetCorDisplayPic(CAConnect& conn, CString& picture);
    /// All settings of a genre, unordered.
    /// @note Not escaped: genre.
    static bool LoadTabConfigInfo(CAConnect& conn, CStringArray& names, CStringArray& values, CString genre);

    // ---- Settings: writes ----------------------------------------------------------------------------------------
    // Numbers are written as signed 32-bit. Where there is no row to update or delete, nothing happens and it is true.

    /// @note Not escaped: name.
    static bool InsertThreadInfo(CAConnect& conn, CString name, unsigned int count);
    /// @note Not escaped: name.
    static bool UpdateThreadInfo(CAConnect& conn, CString name, unsigned int count);
    /// @note Not escaped: name, value.
    static bool InsertKelDocConfig(CAConnect& conn, CString name, CString value);
    /// @note Not escaped: name, value.
    static bool UpdateKelDocConfig(CAConnect& conn, CString name, CString value);
    static bool InsertKelDocServerFlag(CAConnect& conn, unsigned long flag);
    static bool UpdateKelDocServerFlag(CAConnect& conn, unsigned long flag);
    /// The display picture of the company.
    /// @note Backslashes doubled on kind 6: picture.
    static bool InsertCorDisplayPic(CAConnect& conn, CString picture);
    /// @note Backslashes doubled on kind 6: picture.
    static bool UpdateCorDisplayPic(CAConnect& conn, CString picture);
    /// Sets the picture of every user.
    /// @note Backslashes doubled on kind 6: picture.
    static bool UpdateUserDisplayPic(CAConnect& conn, CString picture);
    /// @note Not escaped: name, value, genre.
    static bool InsertTabConfigValue(CAConnect& conn, CString name, CString value, CString genre);
    /// Sets every setting of this name, whatever its genre.
    /// @note Not escaped: name, value.
    static bool UpdateTabConfigValue(CAConnect& conn, CString name, CString value);
    /// @note Not escaped: name, genre.
    static bool DeleteTabConfigValue(CAConnect& conn, CString name, CString genre);

    // ---- Document roots ------------------------------------------------------------------------------------------
    // A root is a named storage area; roots are looked up by name and type. Lists are unordered; their
    // dates are texts, empty where the table has none.

    /// All roots. @param created  days: 2013-05-07.
    static bool LoadDocRootInfo(CAConnect& conn, CUIntArray& ids, CStringArray& names, CStringArray& paths,
                                CStringArray& created, CUIntArray& types);
    /// The roots of a type. @param created  with the time of day: 2013-05-07 09:03:00. @param styles  32 bits.
    static bool LoadDocRootInfo(CAConnect& conn, int type, CUIntArray& ids, CStringArray& names, CStringArray& paths,
                                CStringArray& created, CUIntArray& styles);
    /// The roots of types 1 and 2. @param created  days.
    static bool LoadDocRootInfoEx(CAConnect& conn, CUIntArray& ids, CStringArray& names, CStringArray& paths,
                                  CStringArray& created, CUIntArray& types);
    static bool LoadDocRootInfo(CAConnect& conn, CUIntArray& ids, CStringArray& names, CUIntArray& types);
    static bool LoadDocRootInfo(CAConnect& conn, CUIntArray& ids, CStringArray& names, int type);
    /// @param exists  false when there is no such root.
    /// @note Not escaped: name.
    static bool ExistDocRootItem(CAConnect& conn, CString name, int type, bool& exists);
    /// @param id  0 when there is no such root; in the next one too, which is the same under another name.
    /// @note Not escaped: name.
    static bool GetDRItemIDByName(CAConnect& conn, CString name, int type, int& id);
    /// @note Not escaped: name.
    static bool GetDocRootID(CAConnect& conn, CString name, int type, int& id);
    /// @param path  empty, and @param style  0, when there is no such root. The style has 32 bits.
    /// @note Not escaped: name.
    static bool GetDocRootInfo(CAConnect& conn, CString name, int type, CString& path, unsigned long& style);
    /// @param result  true when there IS a root of type 1, against the operation's name; callers know it so.
    static bool HasNoDefCorpDocRoot(CAConnect& conn, bool& result);
    /// @note Not escaped: name. Backslashes doubled on kind 6: path.
    static bool UpdateDocRoot(CAConnect& conn, int id, CString name, CString path, int style);
    /// Deletes the root's own row; its links, the folders under it and rights on it stay. So do the next two.
    static bool DeleteDRItem(CAConnect& conn, int id);
    static bool DeleteDocRoot(CAConnect& conn, int id);
    /// @note Not escaped: name.
    static bool DeleteDocRoot(CAConnect& conn, CString name, int type);
    /// Deletes the links of an object under a root.
    static bool DeleteDocRootLink(CAConnect& conn, int parentId, int classId, int objectId);

    // ---- Folders of documents ------------------------------------------------------------------------------------
    // Links place a folder, named by class 105 and its id, under roots and under folders, also under several.

    /// The highest id of all folders, which another caller's new folder may have. @param id  0 when there is none.
    static bool GetMaxIDFromDocVFolder(CAConnect& conn, int& id);
    /// Whether a folder of exactly this name stands directly under a root. @param exists  false when none does.
    /// @note Not escaped: name.
    static bool ExistFolderInRootLink(CAConnect& conn, CString name, int rootId, bool& exists);
    /// The same under a folder.
    /// @note Not escaped: name.
    static bool ExistFolderInVFolderLink(CAConnect& conn, CString name, int parentFolderId, bool& exists);
    /// The folders directly under a root, unordered.
    static bool LoadDocRootFolder(CAConnect& conn, int rootId, CStringArray& names, CUIntArray& ids);
    /// The folders directly under a folder, unordered.
    static bool LoadFolderSubFolder(CAConnect& conn, int parentFolderId, CStringArray& names, CUIntArray& ids);
    /// @param name  empty, and @param created  empty, when there is no such folder; created is 2013-05-07 09:03:00.
    static bool GetFolerInfo(CAConnect& conn, int id, CString& name, CString& created);
    /// @param style  32 bits.
    static bool UpdateFolderStyle(CAConnect& conn, int id, unsigned long style);
    /// @note Not escaped: name.
    static bool UpdateFolderName(CAConnect& conn, int id, CString name);
    /// Deletes the folder's own row; its links stay.
    static bool DeleteDocVFolder(CAConnect& conn, int id);
    /// Deletes the links of an object under a folder.
    static bool DeleteDocVFolderLink(CAConnect& conn, int parentFolderId, int classId, int objectId);

    // ---- Backup plans --------------------------------------------------------------------------------------------

    /// All plans, unordered.
    static bool LoadFileBackPlan(CAConnect& conn, CUIntArray& ids, CStringArray& names, CStringArray& descriptions);
    static bool LoadFileBackPlan(CAConnect& conn, CUIntArray& ids, CStringArray& names);
    /// @param data  a plan's settings; as it was when there is no such plan.
    static bool GetFileBackPlanInfo(CAConnect& conn, int id, CString& data);
    /// @param id  as it was when there is no such plan.
    /// @note Not escaped: name.
    static bool GetBackupPlanID(CAConnect& conn, CString name, int& id);
    /// @param exists  whether there is a plan of this name with an id above 0. @return always true, also after a
    /// failure.
    /// @note Not escaped: name.
    static bool ExistBackupPlan(CAConnect& conn, CString name, bool& exists);
    /// @note Not escaped: name, description, data.
    static bool InsertBackupPlanInfo(CAConnect& conn, CString name, CString description, CString data);
    /// @note Not escaped: name, description, data.
    static bool UpdateBackupPlanInfo(CAConnect& conn, int id, CString name, CString description, CString data);
    /// Deletes the plan's own row; its assignments stay.
    static bool DeleteBackupPlan(CAConnect& conn, int id);
    /// Deletes an assignment. @param id  its own, not the plan's.
    static bool DeleteBackupRel(CAConnect& conn, int id);
    /// The plans whose ids are those of the item's assignment rows, by chance as it were; callers know it so. The next
    /// one lists the plans that are assigned to the item. Both take the id before the type, against the others.
    static bool LoadItemFileBackPlanInfo(CAConnect& conn, int itemId, int itemType, CUIntArray& planIds,
                                         CStringArray& planNames);
    static bool LoadItemFileBackPlanInfo(CAConnect& conn, int itemId, int itemType, CUIntArray& planIds,
                                         CStringArray& planNames, CStringArray& planDescriptions);
    /// @param exists  false when the plan is not assigned to the item.
    static bool ExistItemFileBackPlanRel(CAConnect& conn, int itemType, int itemId, int planId, bool& exists);
    /// Assigns a plan to an item; nothing keeps it from being assigned already.
    static bool InsertFileBackPlan(CAConnect& conn, int itemType, int itemId, int planId);
    static bool DeleteFileBackPlan(CAConnect& conn, int itemType, int itemId, int planId);
    /// Assigns a plan to a group, to the groups below it at every depth and to the users in them, one row for each
    /// membership. Stops at the first failure; what is done stays done. Never returns when a group is below itself:
    /// callers look for cycles below the group first, and keep others from closing one until it has returned.
    static bool InsertGroupFileBackPlan(CAConnect& conn, int groupId, int planId);
    /// Takes a plan from a group and from those who are below it now. Cycles: see InsertGroupFileBackPlan.
    static bool DeleteGroupFileBackPlan(CAConnect& conn, int groupId, int planId);

    // ---- Document log --------------------------------------------------------------------------------------------

    /// Notes what happened to an object. @param type  the kind of event, a word.
    /// @note Not escaped: content, type, creatorName.
    static bool InsertDocLog(CAConnect& conn, int classId, int objectId, CString content, CString type, int creatorId,
                             CString creatorName);

    // ---- Messages and login log ----------------------------------------------------------------------------------

    /// Deletes the messages up to a date, and then every attachment and receipt that has no message. Stops at the first
    /// failure; what is deleted stays deleted. @param date  as the next one takes it.
    /// @note Checked to be a date: date.
    static bool ClearMsgData(CAConnect& conn, CString date);
    /// @param date  YYYY-MM-DD or YYYY-MM-DD HH:MM:SS; messages of that very moment are deleted too. Any other text is
    /// an error, reported as the engine's are, and deletes nothing.
    /// @note Checked to be a date: date.
    static bool DeleteMsgData(CAConnect& conn, CString date);
    static bool DeleteAttachNoMsg(CAConnect& conn);
    static bool DeleteRecvNoMsg(CAConnect& conn);
    /// The date of the oldest message. @param text  without effect. @param minDate  set only when that date is before
    /// it, so that callers pass a later one, such as now; its status stays.
    /// @note Not in a statement: text.
    static bool GetMinDate(CAConnect& conn, CString text, COleDateTime& minDate);
    static bool DeleteLoginLogItem(CAConnect& conn, int id);

    // ---- Add-ins -------------------------------------------------------------------------------------------------

    /// Adds an add-in. Whether it is switched on is left to the table's default.
    /// @note Not escaped: name, desc, packageName. Quotes doubled, on kind 6 backslashes too: data.
    static bool InsertAddInInfo(CAConnect& conn, CString name, CString data, int addInType, bool isPublic, CString desc,
                                CString packageName, int index);
    /// @param id  0 when there is no such add-in.
    /// @note Not escaped: name.
    static bool ExistAddInInfo(CAConnect& conn, CString name, int addInType, int& id);
    /// @note Not escaped: name, packageName.
    static bool ExistAddInItem(CAConnect& conn, int addInType, CString name, CString packageName, int& id);
    /// @note Not escaped: name, desc. Quotes doubled, on kind 6 backslashes too: data.
    static bool UpdateAddInInfo(CAConnect& conn, CString name, int addInType, CString data, CString desc);
    /// @note Quotes doubled, on kind 6 backslashes too: data. Not escaped: desc.
    static bool UpdateAddInInfo(CAConnect& conn, int id, CString data, CString desc);
    /// @param data  as it was when there is no such add-in.
    /// @note Not escaped: name.
    static bool GetAddInInfo(CAConnect& conn, CString name, int addInType, CString& data);
    /// All add-ins, the highest index first. The flags come into the arrays that bear their names, though the statement
    /// has them the other way round.
    static bool LoadKelAddIn(CAConnect& conn, CUIntArray& ids, CUIntArray& types, CStringArray& names,
                             CUIntArray& disabled, CUIntArray& isPublic, CStringArray& descs,
                             CStringArray& packageNames);
    /// @param disabled  true switches the add-in OFF, against the operation's name; callers know it so. Only read.
    static bool EnableAddInItem(CAConnect& conn, int id, bool& disabled);
    static bool DeleteAddInItem(CAConnect& conn, int id);
    /// Deletes every add-in of a package.
    /// @note Not escaped: packageName.
    static bool DeleteAddIn(CAConnect& conn, CString packageName);
    /// @param index  0 when there is no add-in.
    static bool GetAddInItemMaxIndex(CAConnect& conn, int& index);
    static bool GetAddInItemIndex(CAConnect& conn, int id, int& index);
    static bool UpdateAddInItemIndex(CAConnect& conn, int id, int index);

    // ---- Packages ------------------------------------------------------------------------------------------------

    /// All packages, unordered; their versions are texts here.
    static bool LoadAddInPackageInfo(CAConnect& conn, CUIntArray& ids, CStringArray& names, CStringArray& versions,
                                     CStringArray& descs, CUIntArray& disabled);
    /// @param id, version  0 when there is no such package.
    /// @note Not escaped: name.
    static bool GetPackageInfo(CAConnect& conn, CString name, int& id, int& version);
    /// @param modifyTime  as the engine takes a date between quotes.
    /// @note Not escaped: modifyTime, desc.
    static bool UpdatePackageInfo(CAConnect& conn, CString modifyTime, int version, CString desc, int id);
    /// Adds a package. @param id  the highest of all packages then, whether the engine took this one or not; as it was
    /// when there is none. @return whether the highest id was read; a refused package shows in m_strLastError alone.
    /// @note Not escaped: name, modifyTime, desc.
    static bool InsertPackageInfo(CAConnect& conn, CString name, CString modifyTime, int version, CString desc,
                                  int& id);
    /// Deletes the package's own row; its add-ins stay.
    static bool DeletePackage(CAConnect& conn, int id);

    // ---- Bulletin board ------------------------------------------------------------------------------------------
    // Ids of notices are texts. Dates are texts, 2013-05-07 09:03:00. The reads are true also on a connection that is
    // not open.

    /// All notices, the newest first. The subjects come before the creators.
    static bool LoadBulletinInfo(CAConnect& conn, CStringArray& ids, CStringArray& subjects, CStringArray& creators,
                                 CStringArray& times);
    /// @param content  as it was when there is no such notice.
    /// @note Not escaped: boardID.
    static bool GetBulletinContent(CAConnect& conn, CString boardID, CString& content);
    /// @note Not escaped: boardID.
    static bool LoadBulletinAttachments(CAConnect& conn, CString boardID, CStringArray& fileNames);
    /// The replies to a notice, the oldest first.
    /// @note Not escaped: boardID.
    static bool LoadBulletinReplyInfo(CAConnect& conn, CString boardID, CUIntArray& ids, CStringArray& creators,
                                      CStringArray& times, CStringArray& contents);
    /// Who has read a notice, the earliest first. @param items  the readers, as the table has them.
    /// @note Not escaped: boardID.
    static bool LoadBulletinVisiterInfo(CAConnect& conn, CString boardID, CUIntArray& ids, CStringArray& items,
                                        CStringArray& itemNames, CStringArray& times, CUIntArray& readFlags);
    /// Each of the four deletes one kind of row; a notice goes with all four.
    /// @note Not escaped: boardID.
    static bool DeleteBulletinItem(CAConnect& conn, CString boardID);
    /// @note Not escaped: boardID.
    static bool DeleteBulletinAttach(CAConnect& conn, CString boardID);
    /// @note Not escaped: boardID.
    static bool DeleteBulletinReply(CAConnect& conn, CString boardID);
    /// @note Not escaped: boardID.
    static bool DeleteBulletinVisiter(CAConnect& conn, CString boardID);

    // ---- Record lists --------------------------------------------------------------------------------------------

    /// Deletes every record of a list and empties it; null entries are skipped. For lists of any record class.
    static void DetachHumanList(CObList& list);

protected:
    /// Replaces a text by the MD5 of its bytes.
    static void MD5Encrypt(CString& text);
    /// Replaces a text by the MD5 of its UTF-16LE form.
    static void MD5UnicodeEncrypt(CString& text);
};
