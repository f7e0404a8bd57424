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
/// **Results.** "Whether the statement ran" is true also when no row was found or changed; an output then keeps the
/// preset that the operation documents, which is set before anything can fail. false means that the engine refused a
/// statement: m_strLastError holds the error's text, and the connection's notification window, if any, has received
/// one message. On a connection that is not open, reads return false without text or message; writes, whose only sign
/// of failure is an error, report one. Operations that differ say so. Outputs written before a failure stay written,
/// and of several statements the earlier ones stay in effect: no operation opens a transaction.
///
/// **Ownership.** The caller owns the connection, every output and every collection. Lists are appended to, never
/// cleared; the arrays of a list stay parallel. A NULL in a column leaves a single output as it was and adds 0 or an
/// empty text to an array.
///
/// **Item types.** Users, groups, roles and views are named by id and type; basefun/ItemTypes.h has the types.
///
/// **Texts.** The notes say what an operation does to each text before it enters a statement. The caller must do the
/// rest, or a text from outside can end the statement and begin another: "Not escaped" requires
/// CAConnect::EscapeLiteral; "Quotes doubled" requires CAConnect::EscapeBackslashes, since on engine kind 6 "\'" does
/// not end a literal; "Backslashes doubled on kind 6" requires CAConnect::EscapeQuotes. docs/security.md lists all.
///
/// **Threads.** A connection serves one call at a time. Several threads, each with a connection of its own, may run
/// operations at the same time; their results and outputs are independent. Only m_strLastError is shared: it belongs
/// to the operation that failed last, on whatever thread, so read it (in a window's handler too) only while no other
/// thread runs an operation.
class QV_API CQVBaseFun {
public:
    /// Has no effect: the class has no state of its own.
    CQVBaseFun();
    /// Has no effect: there is nothing to copy.
    CQVBaseFun(const CQVBaseFun& from);
    /// Has no effect: there is nothing to copy.
    CQVBaseFun& operator=(const CQVBaseFun& from);
    /// Has no effect on connections or m_strLastError.
    virtual ~CQVBaseFun();

    /// The last error that an operation caught, however old; no operation clears it. An error is notified by
    /// SendMessageA(m_hNotifyWnd, m_nNotifyMsg, 0, address of this text), which the window reads during the call. Not
    /// to be read or written while another thread runs an operation.
    static CString m_strLastError;

    // ---- Helpers: text, dates, log -------------------------------------------------------------------------------

    /// Makes a statement template runnable: backslashes are removed, then every `#%s#` becomes the current local time
    /// between # signs (as FormatDBTIMEToStr writes it), every other `%s` becomes "11" and every `%d` becomes "0".
    /// @return the statement; nothing fails.
    static CString ReplaceSysSQL(CString sql);
    /// Writes a date as "Y-M-D h:m:s" with no number padded: 2013-5-7 9:3:2. A part of an invalid date is -1.
    static CString FormatDBTIMEToStr(COleDateTime& time);
    /// Converts a text from the ANSI code page to UTF-8, up to its first NUL. @return always 1.
    static int ToUTF8String(CString& text);
    /// Tests whether a database holds the module's tables, by looking for qv_User in the way of an engine kind.
    /// @param dbType  0 Access, 1 SQL Server, 6 MySQL ask the engine; 3 counts as valid without asking.
    /// @param dbName  the database to look in, for kind 6 only.
    /// @param valid   false, then true when a table was found.
    /// @return whether the statement ran; false also for any other kind, without touching the connection.
    /// @note Not escaped: dbName.
    static bool IsDataBaseValid(CAConnect& conn, int dbType, CString dbName, bool& valid);
    /// Does nothing: a hook that existing callers expect.
    static void WriteToLogFileEx(CString text);

    // ---- Users: look-ups -----------------------------------------------------------------------------------------

    /// Finds a user's id by login name, compared as the engine compares texts. @param id  -1 when there is none.
    /// @return whether the statement ran.
    /// @note Quotes doubled: loginName.
    static bool GetHMIDByLoginName(CAConnect& conn, CString loginName, int& id);
    /// Tests whether a login name is taken, in any case. The name is upper-cased; on engine kind 3 it is compared with
    /// upper(Col_LoginName), elsewhere with the column, where case is ignored only if the engine ignores it.
    /// @param exists  true, then false when no row came back: after a failure the name counts as taken.
    /// @return whether the statement ran.
    /// @note Quotes doubled: loginName.
    static bool ExistLoginName(CAConnect& conn, CString loginName, bool& exists);
    /// Finds a user's id by login name in any case. The name is upper-cased; on engine kind 3 it is compared with
    /// upper(Col_LoginName), elsewhere with the column, where case is ignored only if the engine ignores it.
    /// @param id  0 when there is none. @return whether the statement ran.
    /// @note Quotes doubled: loginName.
    static bool ExistLoginNameEx(CAConnect& conn, CString loginName, int& id);
    /// Reads a user's super-user flag. @param isSuper  false when there is no such user.
    /// @return whether the statement ran.
    /// @note Not escaped: loginName.
    static bool IsSuperUser(CAConnect& conn, CString loginName, bool& isSuper);
    /// Reads whether a user's account is locked. @param locked  false when there is no such user.
    /// @return whether the statement ran.
    /// @note Not escaped: loginName.
    static bool IsUserLocked(CAConnect& conn, CString loginName, bool& locked);
    /// Reads a user's login name by id. @param loginName  empty when there is no such user.
    /// @return whether the statement ran.
    static bool GetHMLoginName(CAConnect& conn, int id, CString& loginName);
    /// Reads the login name of the first user with a display name. @param loginName  empty when there is none.
    /// @return whether the statement ran.
    /// @note Quotes doubled: name.
    static bool GetHMLoginName(CAConnect& conn, CString name, CString& loginName);
    /// Reads a user's display name by login name. @param name  empty when there is no such user.
    /// @return whether the statement ran.
    /// @note Quotes doubled: loginName.
    static bool GetHMUserName(CAConnect& conn, CString loginName, CString& name);
    /// Reads a user's display name by id. @param name  empty when there is no such user.
    /// @return whether the statement ran.
    static bool GetHMUserName(CAConnect& conn, int id, CString& name);
    /// Reads a user's id and display name. @param id  0, and @param name  empty, when there is no such user.
    /// @return whether the statement ran.
    /// @note Not escaped: loginName.
    static bool LoadUserInfo(CAConnect& conn, CString loginName, int& id, CString& name);
    /// Reads what a user's card shows. The outputs have no presets: they stay as they are when there is no such user.
    /// @return whether the statement ran.
    static bool GetUserInfo(CAConnect& conn, int id, CString& loginName, CString& name, int& itemIndex, int& sex,
                            CString& mobile, CString& eMail, CString& jobTitle);
    /// Counts all users. @param count  0 until read. @return whether the statement ran.
    static bool GetUserItemCount(CAConnect& conn, int& count);
    /// Counts all users, in 64 bits. @param count  0 until read. @return whether the statement ran.
    static bool GetUserItemCount(CAConnect& conn, __int64& count);

    // ---- Users: lists --------------------------------------------------------------------------------------------

    /// Appends all users, ordered by level: one new CHumanItem each with id, login name, display name, password and
    /// super-user flag; the other members keep their defaults. The caller frees them with DetachHumanList.
    /// @return whether the statement ran. The password is read from the column Col_Password: on a table without it, any
    ///         row makes the call fail.
    static bool LoadHumanInfo(CAConnect& conn, CObList& users);
    /// Appends id, login name and display name of all users, unordered. @return whether the statement ran.
    static bool LoadHumanInfo(CAConnect& conn, CUIntArray& ids, CStringArray& loginNames, CStringArray& names);
    /// Appends id, login name and display name of all users, unordered; equal to LoadHumanInfo with the same arrays.
    /// @return whether the statement ran.
    static bool LoadUserInfo(CAConnect& conn, CUIntArray& ids, CStringArray& loginNames, CStringArray& names);
    /// Appends what a list of users shows, of all users, unordered. @param disabled  1 for a locked account, else 0.
    /// @return whether the statement ran.
    static bool LoadHumanInfo(CAConnect& conn, CUIntArray& ids, CStringArray& loginNames, CStringArray& names,
                              CUIntArray& sexes, CStringArray& mobiles, CStringArray& eMails, CStringArray& deptInfos,
                              CStringArray& jobTitles, CUIntArray& disabled);
    /// Appends the users that a directory item holds by relations of any type, one entry per relation, unordered.
    /// @return whether the statement ran.
    static bool LoadHumanInfo(CAConnect& conn, int holderId, int holderType, CUIntArray& ids, CStringArray& loginNames,
                              CStringArray& names, CUIntArray& sexes, CStringArray& mobiles, CStringArray& eMails,
                              CStringArray& deptInfos, CStringArray& jobTitles);
    /// Appends the users that are direct members of a directory item, each once, unordered.
    /// @return whether the statement ran.
    static bool LoadUsers(CAConnect& conn, int holderId, int holderType, CUIntArray& ids, CStringArray& names);
    /// Appends the users that are direct members of a directory item, one entry per relation, unordered.
    /// @return whether the statement ran.
    static bool LoadUsers(CAConnect& conn, int holderId, int holderType, CUIntArray& ids, CStringArray& loginNames,
                          CStringArray& names, CStringArray& jobTitles);

    // ---- Users: writes -------------------------------------------------------------------------------------------

    /// Deletes a user's own row, but never that of the login name "Admin". Relations, job titles, rights and backup
    /// plans of the user stay. @return whether the statement ran, also when nothing was deleted.
    static bool DeleteUserItemByID(CAConnect& conn, int id);
    /// Locks or unlocks a user's account. @return whether the statement ran, also when there is no such user.
    static bool SetUserLocked(CAConnect& conn, int id, bool locked);
    /// Sets a user's department, both its id and its text. @param always  false: only while the stored id is 0.
    /// @return whether the statement ran, also when no row was changed.
    /// @note Not escaped: deptInfo.
    static bool UpdateUserDeptInfo(CAConnect& conn, int id, int deptId, CString deptInfo, bool always);
    /// Adds a user; all other columns get the table's defaults, and nothing checks whether the login name is taken.
    /// @return whether the statement ran.
    /// @note Not escaped: loginName, name.
    static bool InsertUser(CAConnect& conn, CString loginName, CString name);
    /// Adds a user with a password; nothing checks whether the login name is taken.
    /// @param password  already encoded, see Encrypt. @param enType  the encoding: 0 plain text, 1 or 2 MD5.
    /// @return whether the statement ran.
    /// @note Not escaped: loginName, name, password.
    static bool InsertUser(CAConnect& conn, CString loginName, CString name, CString password, int enType);
    /// Sets the columns that a user may change of his own account, all of them.
    /// @return whether the statement ran, also when there is no such user.
    /// @note Quotes doubled: loginName, name, deptInfo, jobTitle, officePhone, mobile, officeFax, eMail, userData,
    /// homePhone.
    static bool UpdateHumanInfo(CAConnect& conn, int id, CString loginName, CString name, CString deptInfo,
                                CString jobTitle, CString officePhone, CString mobile, CString officeFax, CString eMail,
                                CString userData, CString homePhone, int deptId);

    // ---- Groups --------------------------------------------------------------------------------------------------

    /// Reads the highest group id of all; existing callers ask right after adding a group.
    /// @param name  without effect. @param id  -1 when there is no group. @return whether the statement ran.
    /// @note Not in a statement: name.
    static bool GetGroupIDByName(CAConnect& conn, CString name, int& id);
    /// Finds a group of this name that an item with this id holds, whatever the item's type and the relation's.
    /// @param id  -1 when there is none. @return whether the statement ran.
    /// @note Not escaped: name.
    static bool GetGroupIDByNameAndOwner(CAConnect& conn, CString name, int& id, int ownerID);
    /// Tests whether any group has this name; on engine kind 3 in any case.
    /// @param exists  false when there is none. @return whether the statement ran.
    /// @note Not escaped: name.
    static bool ExistGroupName(CAConnect& conn, CString name, bool& exists);
    /// Tests whether a group of this name is a member directly under a parent; on engine kind 3 in any case.
    /// @param exists  false when there is none. @return whether the statement ran.
    /// @note Not escaped: name.
    static bool ExistGroupName(CAConnect& conn, CString name, int parentID, int parentType, bool& exists);
    /// Finds a group of this name that is a member directly under a parent; on engine kind 3 in any case.
    /// @return its id; 0 when there is none, and after a failure.
    /// @note Not escaped: name.
    static int ExistGroupName(CAConnect& conn, CString name, int parentID, int parentType);
    /// Appends the groups directly under a parent, ordered by sort index and name. @return whether the statement ran.
    static bool LoadGroup(CAConnect& conn, int parentID, int parentType, CUIntArray& ids, CStringArray& names);
    /// Reads a group. The outputs have no presets: they stay as they are when there is no such group.
    /// @return whether the statement ran.
    static bool LoadGroupInfo(CAConnect& conn, int id, CString& name, int& itemIndex, CString& description);
    /// Sets a group's name, sort index and description. @return whether the statement ran, also without such a group.
    /// @note Not escaped: name, description.
    static bool UpdateGroupInfo(CAConnect& conn, int id, CString name, int itemIndex, CString description);
    /// Reads a group's style. @param style  0 when there is no such group.
    /// @return whether nothing was raised; true also when the connection is not open.
    static bool GetGroupStyle(CAConnect& conn, int id, int& style);
    /// Sets a group's style. @return whether the statement ran, also when there is no such group.
    static bool UpdateGroupStyle(CAConnect& conn, int id, int style);
    /// Deletes a group's own row; its relations stay. @return whether the statement ran, also without such a group.
    static bool DelGroupItemByID(CAConnect& conn, int id);

    // ---- Views ---------------------------------------------------------------------------------------------------

    /// Finds a view of this name and type, compared as the engine compares texts. @param id  0 when there is none.
    /// @return whether the statement ran.
    /// @note Not escaped: name.
    static bool GetViewIDByName(CAConnect& conn, CString name, int type, int& id);
    /// Finds a view of this name and type; on engine kind 3 in any case.
    /// @return its id; 0 when there is none, and after a failure.
    /// @note Not escaped: name.
    static int ExistViewName(CAConnect& conn, CString name, int type);
    /// Appends the views of a type, ordered by sort index and name. @return whether the statement ran.
    static bool LoadView(CAConnect& conn, CUIntArray& ids, CStringArray& names, int type);
    /// Appends an owner's views of a type, ordered by sort index and name. When `ids` is still empty then and
    /// `createIfEmpty` is set, a view named "_Empty" is added and read. @return 1, or 0 after a failure.
    static int LoadViewbyUserID(CAConnect& conn, int ownerID, CUIntArray& ids, CStringArray& names, int type,
                                bool createIfEmpty);
    /// Appends the system views, unordered: one new CViewItem each with id, name, description and sort index; the other
    /// members keep their defaults. The caller frees them with DetachHumanList. @return whether the statement ran.
    static bool LoadSysView(CAConnect& conn, CObList& views);
    /// Reads a view's name. @param name  empty when there is no such view. @return whether the statement ran.
    static bool GetViewNameByID(CAConnect& conn, int id, CString& name);
    /// Renames a view. @return whether the statement ran, also when there is no such view.
    /// @note Not escaped: name.
    static bool UpdateViewName(CAConnect& conn, int id, CString name);
    /// Reads the name of the first system view without an owner. @param name  empty when there is none.
    /// @return whether the statement ran.
    static bool GetDefaultSysView(CAConnect& conn, CString& name);
    /// Renames the system view without an owner, only while it is still called "_Empty".
    /// @return whether the statement ran, also when nothing was renamed.
    /// @note Not escaped: name.
    static bool UpdateDefaultSysView(CAConnect& conn, CString name);
    /// Tests for system views. @param flag  true when there IS one, contrary to the operation's name: existing callers
    /// rely on it. false when there is none. @return whether the statement ran.
    static bool HasNoSysView(CAConnect& conn, bool& flag);
    /// Counts the system views. @param count  0 until read.
    /// @return whether nothing was raised; true also when the connection is not open.
    static bool GetSysViewCount(CAConnect& conn, int& count);
    /// Deletes a view's own row; its relations stay. @return whether the statement ran, also without such a view.
    static bool DeleteViewItem(CAConnect& conn, int id);

    // ---- Relations: users of a holder ----------------------------------------------------------------------------

    /// Appends the users that are direct members of a group, unordered: one new CHumanItem each with id, login name,
    /// display name, sex, mobile, e-mail, department, job title and lock. The caller frees them with DetachHumanList.
    /// @return whether the statement ran.
    static bool LoadGroupUser(CAConnect& conn, int groupID, CObList& users);
    /// Appends the users that are direct members of a view, unordered: one new CHumanItem each with id, login name,
    /// display name, sex, mobile, e-mail, department, job title and lock. The caller frees them with DetachHumanList.
    /// @return whether the statement ran.
    static bool LoadViewUser(CAConnect& conn, int viewID, CObList& users);
    /// Appends ids and names of the users that are direct members of a group, unordered.
    /// @return whether the statement ran.
    static bool LoadGroupUser(CAConnect& conn, int groupID, CUIntArray& ids, CStringArray& loginNames,
                              CStringArray& names);
    /// Appends ids and names of the users that are direct members of a view, unordered.
    /// @return whether the statement ran.
    static bool LoadViewUser(CAConnect& conn, int viewID, CUIntArray& ids, CStringArray& loginNames,
                             CStringArray& names);
    /// Appends ids and names of all users that are not direct members of a group, unordered.
    /// @return whether the statement ran.
    static bool LoadUserNotInGroup(CAConnect& conn, int groupID, CUIntArray& ids, CStringArray& loginNames,
                                   CStringArray& names);
    /// Appends ids and names of all users that are not direct members of a view, unordered.
    /// @return whether the statement ran.
    static bool LoadUserNotInView(CAConnect& conn, int viewID, CUIntArray& ids, CStringArray& loginNames,
                                  CStringArray& names);
    /// Appends ids and names of all users that are not direct members of a directory item, unordered.
    /// @return whether the statement ran.
    static bool LoadUserNotIn(CAConnect& conn, int holderID, int holderType, CUIntArray& ids, CStringArray& loginNames,
                              CStringArray& names);

    // ---- Relations: links ----------------------------------------------------------------------------------------

    /// Appends the direct members of an item, unordered. @return whether the statement ran.
    static bool LoadSubMember(CAConnect& conn, int holderID, int holderType, CUIntArray& memberIDs,
                              CUIntArray& memberTypes);
    /// Tests whether an item is a direct member of another. @param exists  false when it is not.
    /// @return whether the statement ran.
    static bool ExitMemberRelation(CAConnect& conn, int holderID, int holderType, int memberID, int memberType,
                                   bool& exists);
    /// Deletes the membership between two items, every equal row. @return whether the statement ran, also when there
    /// was none.
    static bool DeleteRelation(CAConnect& conn, int holderID, int holderType, int memberID, int memberType);
    /// Deletes the relations of every type between two items. @return whether the statement ran, also when there was
    /// none.
    static bool DelRelation(CAConnect& conn, int holderID, int holderType, int memberID, int memberType);
    /// Deletes every relation in which the item is the holder. @return whether the statement ran, also when there was
    /// none.
    static bool DelRelationByQvItem(CAConnect& conn, int itemID, int itemType);
    /// Deletes every relation in which the item is the dependent. @return what CAConnect::Execute gave; 0 after an
    /// error.
    static int DelRelationByDQVItem(CAConnect& conn, int itemID, int itemType);
    /// Writes a view's id into the links of users at every depth below an item; the links of groups keep theirs. Never
    /// returns when a group is below itself: look for cycles below the item first, and prevent others from closing one
    /// until the call has returned, both in one schema::DirectoryTransaction.
    /// @return false after the first write that failed, with which it stops. A read of members that failed is reported,
    ///         but the walk goes on with the members read so far.
    static bool UpdateRelationViewID(CAConnect& conn, int holderID, int holderType, int viewID);

    // ---- Roles ---------------------------------------------------------------------------------------------------

    /// Finds a role by name, application and domain, compared as the engine compares texts.
    /// @param id  0 when there is none. @return whether the statement ran.
    /// @note Not escaped: name, appName.
    static bool GetRoleIDByName(CAConnect& conn, CString name, CString appName, int domainID, int& id);
    /// Tests whether there is a role of this name, application and domain; on engine kind 3 both names in any case.
    /// @param exists  false when there is none. @return whether the statement ran.
    /// @note Not escaped: name, appName.
    static bool ExistRoleName(CAConnect& conn, CString name, CString appName, int domainID, bool& exists);
    /// Appends the roles of an application and domain, unordered. @return whether the statement ran.
    /// @note Not escaped: appName.
    static bool LoadRole(CAConnect& conn, CString appName, int domainID, CUIntArray& ids, CStringArray& names);
    /// Appends the roles of an application and domain with their descriptions, unordered.
    /// @return whether the statement ran.
    /// @note Not escaped: appName.
    static bool LoadRole(CAConnect& conn, CString appName, int domainID, CUIntArray& ids, CStringArray& names,
                         CStringArray& descriptions);
    /// Reads a role's name. @param name  empty when there is no such role.
    /// @return whether nothing was raised; true also when the connection is not open.
    static bool GetRoleNameByID(CAConnect& conn, int id, CString& name);
    /// Deletes a role's own row; its relations and rights stay. @return whether the statement ran, also without such a
    /// role.
    static bool DeleteRole(CAConnect& conn, int id);
    /// Appends the roles linked to a user, of every application and by every relation type, without the default role.
    /// @return whether the statement ran.
    static bool LoadHMRole(CAConnect& conn, int userID, CUIntArray& ids, CStringArray& names);
    /// Appends the roles of the application "Tolvan" that are linked to a user and then the default role "everyone":
    /// id 0 and empty texts when there is none, a second time when it is linked too, and left out when reading it
    /// failed. @return whether the linked roles were read.
    static bool LoadHMRole(CAConnect& conn, int userID, CUIntArray& ids, CStringArray& names,
                           CStringArray& descriptions);
    /// Appends the ids of the roles of the application "Tolvan" that are linked to a user and then that of the default
    /// role "everyone": 0 when there is none, a second time when it is linked too, and left out when reading it
    /// failed. @return whether the linked roles were read.
    static bool LoadHMRole(CAConnect& conn, int userID, CUIntArray& ids);
    /// Reads the role "everyone" of the application "Tolvan", which every user has.
    /// @param id  0, and name and description as they were, when there is none. @return whether the statement ran.
    static bool GetDefaultRoleInfo(CAConnect& conn, int& id, CString& name, CString& description);
    /// Reads the id of the role "everyone" of the application "Tolvan". @param id  0 when there is none.
    /// @return whether the statement ran.
    static bool GetDefaultRoleID(CAConnect& conn, int& id);

    // ---- Job titles ----------------------------------------------------------------------------------------------

    /// Appends the members that hold a title inside a holder, with the names stored beside the title, unordered.
    /// @return whether the statement ran.
    /// @note Not escaped: jobTitle.
    static bool LoadJobTitleInfo(CAConnect& conn, int holderID, int holderType, CUIntArray& memberIDs,
                                 CStringArray& memberNames, CString jobTitle);
    /// Tests whether a member holds a title inside a holder. @param exists  false when it does not.
    /// @return whether the statement ran.
    /// @note Not escaped: jobTitle.
    static bool ExistJobTitle(CAConnect& conn, int holderID, int holderType, int memberID, int memberType,
                              CString jobTitle, bool& exists);
    /// Takes a title that a member holds inside a holder away: every equal row is deleted.
    /// @return whether the statement ran, also when there was none.
    /// @note Not escaped: jobTitle.
    static bool DeleteJobTitle(CAConnect& conn, int holderID, int holderType, int memberID, int memberType,
                               CString jobTitle);

    // ---- Passwords -----------------------------------------------------------------------------------------------

    /// Encodes a password as it is stored. @param unused  without effect.
    /// @param type  1: MD5 of the text's bytes; 2: MD5 of its UTF-16LE form, where the caller has put the login name
    ///              before the password; any other: unchanged.
    /// @return always true.
    static bool Encrypt(CString& text, CString unused, int type);
    /// Checks a password against a user's row. Two empty passwords match, whatever the type. For type 2 the login name
    /// counts as it is given here, case included.
    /// @param matches  false, also after any failure.
    /// @return true only when there is such a user.
    /// @note Not escaped: loginName. Not in a statement: password.
    static bool CheckUserPassword(CAConnect& conn, CString loginName, CString password, bool& matches);
    /// Stores a password that is encoded already. @param type  the encoding: 0 plain text, 1 or 2 MD5, see Encrypt.
    /// @return whether the statement ran, also when there is no such user.
    /// @note Not escaped: loginName, encodedPassword.
    static bool UpdateItemPassword(CAConnect& conn, CString loginName, CString encodedPassword, int type);
    /// Reads the site's encryption key, a text that this library stores and does not use.
    /// @param key  empty when there is none. @return whether the statement ran.
    static bool GetEncryptKey(CAConnect& conn, CString& key);
    /// Stores the site's encryption key. While the stored one is empty a row is added, even where a row with an empty
    /// key exists. @return whether the write ran.
    /// @note Not escaped: key.
    static bool SetEncryptKey(CAConnect& conn, CString key);

    // ---- Item rights ---------------------------------------------------------------------------------------------

    /// Adds a right: the power of an item on a function, which two texts name, its genre and its name. Nothing prevents
    /// a second row of the same right; ask ExistItemAce first.
    /// @param power, unPower  32 bits each; their meaning is the caller's. @return whether the statement ran.
    /// @note Not escaped: funGenre, funName.
    static bool InsertItemAce(CAConnect& conn, int itemID, int itemType, CString funGenre, CString funName, int power,
                              int unPower);
    /// Sets the power of an item's right on a function, in all its rows; the second power stays.
    /// @return whether the statement ran, also when there is no such right.
    /// @note Not escaped: funGenre, funName.
    static bool UpdateItemAce(CAConnect& conn, int itemID, int itemType, CString funGenre, CString funName, int power);
    /// Deletes an item's right on a function, in all its rows.
    /// @return whether the statement ran, also when there was none.
    /// @note Not escaped: funGenre, funName.
    static bool DeleteItemAce(CAConnect& conn, int itemID, int itemType, CString funGenre, CString funName);
    /// Deletes every right of an item on functions; its rights on other items stay.
    /// @return whether the statement ran, also when there was none.
    static bool DeleteItemAce(CAConnect& conn, int itemID, int itemType);
    /// Tests whether an item has a right on a function, whatever the power.
    /// @param exists  false when it has none. @return whether the statement ran.
    /// @note Not escaped: funGenre, funName.
    static bool ExistItemAce(CAConnect& conn, int itemID, int itemType, CString funGenre, CString funName,
                             bool& exists);
    /// Reads the power of an item's right on a function.
    /// @param power  of the first such row; as it was when there is none. @return whether the statement ran.
    /// @note Not escaped: funGenre, funName.
    static bool LoadItemAceInfo(CAConnect& conn, int itemID, int itemType, CString funGenre, CString funName,
                                int& power);
    /// Appends an item's rights on the functions of a genre, unordered. @param powers  32 bits each, without a sign.
    /// @return whether the statement ran.
    /// @note Not escaped: funGenre.
    static bool LoadItemAceInfo(CAConnect& conn, int itemID, int itemType, CString funGenre, CStringArray& funNames,
                                CUIntArray& powers);

    // ---- Item rights with respect to a second item ---------------------------------------------------------------

    /// Adds a right of an item on a second item (the dependent, `dItem`), such as to see a view. Nothing prevents a
    /// second row of the same right; ask ExistBIIAceInfo first. @return whether the statement ran.
    /// @note Not escaped: funGenre, funName.
    static bool InsertBIIAceInfo(CAConnect& conn, int itemID, int itemType, int dItemID, int dItemType,
                                 CString funGenre, CString funName, int power, int unPower);
    /// Sets both powers of an item's right on a second item, in all its rows.
    /// @return whether the statement ran, also when there is no such right.
    /// @note Not escaped: funGenre, funName.
    static bool UpdateBIIAceInfo(CAConnect& conn, int itemID, int itemType, int dItemID, int dItemType,
                                 CString funGenre, CString funName, int power, int unPower);
    /// Deletes an item's right on a second item, in all its rows.
    /// @return whether the statement ran, also when there was none.
    /// @note Not escaped: funGenre, funName.
    static bool DeleteBIIAceInfo(CAConnect& conn, int itemID, int itemType, int dItemID, int dItemType,
                                 CString funGenre, CString funName);
    /// Deletes the right on the second item from every holder. @return whether the statement ran, also when there was
    /// none.
    /// @note Not escaped: funGenre, funName.
    static bool DeleteBIIAceInfo(CAConnect& conn, int dItemID, int dItemType, CString funGenre, CString funName);
    /// Tests whether an item has a right on a second item, whatever the power.
    /// @param exists  false when it has none. @return whether the statement ran.
    /// @note Not escaped: funGenre, funName.
    static bool ExistBIIAceInfo(CAConnect& conn, int itemID, int itemType, int dItemID, int dItemType, CString funGenre,
                                CString funName, bool& exists);
    /// Reads the power of an item's right on a second item. @param power  of the first such row, 0 when there is none.
    /// @return whether the statement ran.
    /// @note Not escaped: funGenre, funName.
    static bool GetBIIAceInfo(CAConnect& conn, int itemID, int itemType, int dItemID, int dItemType, CString funGenre,
                              CString funName, int& power);
    /// Appends the items that hold the right on the second item with a power of exactly 1, unordered. The function's
    /// name comes before its genre here, and nowhere else among item rights. @return whether the statement ran.
    /// @note Not escaped: funName, funGenre.
    static bool LoadBIIAceInfo(CAConnect& conn, int dItemID, int dItemType, CString funName, CString funGenre,
                               CUIntArray& itemIDs, CUIntArray& itemTypes);

    // ---- Effective rights ----------------------------------------------------------------------------------------

    /// Builds the condition that finds the rights rows of a user's roles, one term for each and " OR " between them:
    /// the roles of the application "Tolvan" that are linked to him, and the default role.
    /// @param filter  empty when there is no term, which is so only when the default role could not be read.
    /// @return whether the linked roles were read.
    static bool GetHMRoleQueryParam(CAConnect& conn, int userID, CString& filter);
    /// Tests whether a role of the user (linked and of "Tolvan", or the default one) has bit 1 on a function. Rights of
    /// the user himself and of his groups do not count.
    /// @param allowed  false when no role has it. @return whether the statements ran; false also when no role could be
    ///                 read.
    /// @note Not escaped: funGenre, funName.
    static bool GetAfficheACE(CAConnect& conn, int userID, CString funGenre, CString funName, bool& allowed);
    /// Tests whether a role of the user (linked and of "Tolvan", or the default one) has one of several bits on a
    /// function. Rights of the user himself and of his groups do not count.
    /// @param mask  the bits, of which the lower 32 count. @param has  1 when a role's power shares a bit, else 0.
    /// @return whether the statements ran; false also when no role could be read.
    /// @note Not escaped: funGenre, funName.
    static bool HaveBaseACE(CAConnect& conn, int userID, CString funGenre, CString funName, unsigned long mask,
                            int& has);
    /// Reads all bits that roles of the user (linked and of "Tolvan", or the default one) have on a function. Rights of
    /// the user himself and of his groups do not count.
    /// @param rights  the powers of all roles combined by OR, within 32 bits; 0 when no role has the right.
    /// @return whether the statements ran; false also when no role could be read.
    /// @note Not escaped: funGenre, funName.
    static bool GetHMBaseACE(CAConnect& conn, int userID, CString funGenre, CString funName, unsigned long& rights);
    /// Tests whether a user may take guests. Only the first row that the engine returns of the rights of his roles
    /// (linked and of "Tolvan", or the default one) counts; existing callers rely on it.
    /// @param allowed  whether that row has bit 8; false when there is none.
    /// @return whether the statements ran; false also when no role could be read.
    /// @note Not escaped: funGenre, funName.
    static bool GetACEGuestUser(CAConnect& conn, int userID, CString funGenre, CString funName, bool& allowed);
    /// Reads how large a user's attachments may be, by the rights of his roles (linked and of "Tolvan", or the default
    /// one). The unit is the caller's.
    /// @param limit  -1, unlimited, when no role has the right or the smallest power is -1; else the largest power. It
    ///               is preset to -1: a false result is no denial.
    /// @return whether the statements ran; false also when no role could be read.
    /// @note Not escaped: funGenre, funName.
    static bool GetAttachmentSizeACE(CAConnect& conn, int userID, CString funGenre, CString funName, int& limit);
    /// Reads to how many receivers a user may send at once, by the rights of his roles (linked and of "Tolvan", or the
    /// default one).
    /// @param limit  -1, unlimited, when no role has the right or the smallest power is -1; else the largest power. It
    ///               is preset to -1: a false result is no denial.
    /// @return whether the statements ran; false also when no role could be read.
    /// @note Not escaped: funGenre, funName.
    static bool GetMultiSendCountACE(CAConnect& conn, int userID, CString funGenre, CString funName, int& limit);
    /// Reads at what rate a user may transfer, by the rights of his roles (linked and of "Tolvan", or the default one).
    /// The unit is the caller's.
    /// @param limit  -1, unlimited, when no role has the right or the smallest power is -1; else the largest power. It
    ///               is preset to -1: a false result is no denial.
    /// @return whether the statements ran; false also when no role could be read.
    /// @note Not escaped: funGenre, funName.
    static bool GetRateLimitACE(CAConnect& conn, int userID, CString funGenre, CString funName, int& limit);
    /// Appends the views on which a role of the user (linked and of "Tolvan", or the default one) holds the right with
    /// a power of exactly 1, each once, unordered.
    /// @return whether the statements ran; false also when no role could be read.
    /// @note Not escaped: funGenre, funName.
    static bool LoadHMRoleView(CAConnect& conn, int userID, CString funGenre, CString funName, CUIntArray& viewIDs);

    // ---- Object rights -------------------------------------------------------------------------------------------

    /// Appends the rights of items on a function of an object outside the directory, of every genre, ordered by the
    /// holder's type. CTabBIOAceItem::SaveData adds one.
    /// @param classID, objID  the object's class and id, numbers of the caller's own.
    /// @param powers  32 bits each, without a sign. @return whether the statement ran.
    /// @note Not escaped: funName.
    static bool LoadTabBIOAceInfo(CAConnect& conn, int classID, int objID, CString funName, CUIntArray& ids,
                                  CUIntArray& itemTypes, CUIntArray& itemIDs, CStringArray& itemNames,
                                  CUIntArray& powers);
    /// Finds an item's right on a function of an object. @param id  of the first such right, 0 when there is none.
    /// @return whether the statement ran.
    /// @note Not escaped: funName, funGenre.
    static bool ExistTabBIOAceItem(CAConnect& conn, int classID, int objID, int itemID, int itemType, CString funName,
                                   CString funGenre, int& id);
    /// Tests whether any item has a right on a function of an object, of any genre and power.
    /// @param unused  without effect. @param exists  false when there is none. @return whether the statement ran.
    /// @note Not escaped: funName. Not in a statement: unused.
    static bool ExistTabBIOAce(CAConnect& conn, int classID, int objID, CString funName, CString unused, bool& exists);
    /// Reads a right on an object by its id. The outputs have no presets: they stay as they are when there is no such
    /// right. @return whether the statement ran.
    static bool LoadACEInfo(CAConnect& conn, int id, int& itemType, CString& itemName, int& power);
    /// Sets both powers of a right on an object. @return whether the statement ran, also when there is no such right.
    static bool UpdateTabBIOAceInfo(CAConnect& conn, int id, int power, int unPower);
    /// Deletes a right on an object by its id. @return whether the statement ran, also when there was none.
    static bool DeleteTabBIOAceItem(CAConnect& conn, int id);

    // ---- Settings: numbers ---------------------------------------------------------------------------------------

    /// Reads the setting KelServerFlag of the genre KelServerConfig. @param flag  32 bits; 0 without a row, and for a
    /// text that does not begin with a number. @return whether the statement ran.
    static bool GetKelServerConfigInfo(CAConnect& conn, unsigned long& flag);
    /// Reads the setting maxThreads of the genre KelServerConfig. @param count  0 without a row, and for a text that
    /// does not begin with a number. @return whether the statement ran.
    static bool GetMaxThreadCount(CAConnect& conn, unsigned int& count);
    /// Reads the setting MastTaskThreads of the genre KelServerConfig. @param count  0 without a row, and for a text
    /// that does not begin with a number. @return whether the statement ran.
    static bool GetTaskThreadCount(CAConnect& conn, unsigned int& count);
    /// Reads the setting KelDocServerFlag of the genre KelDocConfig. @param flag  32 bits; 0 without a row, and for a
    /// text that does not begin with a number. @return whether the statement ran.
    static bool GetKelDocServerFlag(CAConnect& conn, unsigned long& flag);

    // ---- Settings: tests -----------------------------------------------------------------------------------------

    /// Tests for a setting of the genre KelServerConfig. @param exists  false when there is none.
    /// @return whether the statement ran.
    /// @note Not escaped: name.
    static bool ExistThreadInfo(CAConnect& conn, CString name, bool& exists);
    /// Tests for a setting of the genre KelDocConfig. @param exists  false when there is none.
    /// @return whether the statement ran.
    /// @note Not escaped: name.
    static bool ExistKelDocConfig(CAConnect& conn, CString name, bool& exists);
    /// Tests for the setting KelDocServerFlag of the genre KelDocConfig. @param exists  false when there is none.
    /// @return whether the statement ran.
    static bool ExistKelDocServerFlag(CAConnect& conn, bool& exists);
    /// Tests for the company's display picture. @param exists  false when there is none.
    /// @return whether the statement ran.
    static bool ExistCorDisplayPic(CAConnect& conn, bool& exists);
    /// Tests for a setting by name and genre. @param exists  false when there is none.
    /// @return whether the statement ran.
    /// @note Not escaped: name, genre.
    static bool ExistTabConfigName(CAConnect& conn, CString name, CString genre, bool& exists);

    // ---- Settings: texts -----------------------------------------------------------------------------------------

    /// Reads a setting of the genre KelDocConfig. @param value  as it was when there is none.
    /// @return whether the statement ran.
    /// @note Not escaped: name.
    static bool GetKelDocConfig(CAConnect& conn, CString name, CString& value);
    /// Reads the company's display picture, the setting CorDisplayPic of the genre KelServerConfig.
    /// @param picture  empty when there is none.
    /// @return whether nothing was raised; true also when the connection is not open.
    static bool GetCorDisplayPic(CAConnect& conn, CString& picture);
    /// Appends all settings of a genre, unordered. @return whether the statement ran.
    /// @note Not escaped: genre.
    static bool LoadTabConfigInfo(CAConnect& conn, CStringArray& names, CStringArray& values, CString genre);

    // ---- Settings: writes ----------------------------------------------------------------------------------------

    /// Adds a setting of the genre KelServerConfig; nothing checks whether it exists.
    /// @param count  written as a signed 32-bit number. @return whether the statement ran.
    /// @note Not escaped: name.
    static bool InsertThreadInfo(CAConnect& conn, CString name, unsigned int count);
    /// Sets a setting of the genre KelServerConfig. @param count  written as a signed 32-bit number.
    /// @return whether the statement ran, also when there is no such setting.
    /// @note Not escaped: name.
    static bool UpdateThreadInfo(CAConnect& conn, CString name, unsigned int count);
    /// Adds a setting of the genre KelDocConfig; nothing checks whether it exists. @return whether the statement ran.
    /// @note Not escaped: name, value.
    static bool InsertKelDocConfig(CAConnect& conn, CString name, CString value);
    /// Sets a setting of the genre KelDocConfig. @return whether the statement ran, also when there is no such setting.
    /// @note Not escaped: name, value.
    static bool UpdateKelDocConfig(CAConnect& conn, CString name, CString value);
    /// Adds the setting KelDocServerFlag of the genre KelDocConfig; nothing checks whether it exists.
    /// @param flag  its lower 32 bits are written as a signed number. @return whether the statement ran.
    static bool InsertKelDocServerFlag(CAConnect& conn, unsigned long flag);
    /// Sets the setting KelDocServerFlag of the genre KelDocConfig.
    /// @param flag  its lower 32 bits are written as a signed number.
    /// @return whether the statement ran, also when there is no such setting.
    static bool UpdateKelDocServerFlag(CAConnect& conn, unsigned long flag);
    /// Adds the company's display picture; nothing checks whether there is one. @return whether the statement ran.
    /// @note Backslashes doubled on kind 6: picture.
    static bool InsertCorDisplayPic(CAConnect& conn, CString picture);
    /// Sets the company's display picture. @return whether the statement ran, also when there is none.
    /// @note Backslashes doubled on kind 6: picture.
    static bool UpdateCorDisplayPic(CAConnect& conn, CString picture);
    /// Sets the picture of every user. @return whether the statement ran.
    /// @note Backslashes doubled on kind 6: picture.
    static bool UpdateUserDisplayPic(CAConnect& conn, CString picture);
    /// Adds a setting; nothing checks whether it exists. @return whether the statement ran.
    /// @note Not escaped: name, value, genre.
    static bool InsertTabConfigValue(CAConnect& conn, CString name, CString value, CString genre);
    /// Sets every setting of this name, whatever its genre. @return whether the statement ran, also when there is none.
    /// @note Not escaped: name, value.
    static bool UpdateTabConfigValue(CAConnect& conn, CString name, CString value);
    /// Deletes the settings of a name and genre. @return whether the statement ran, also when there was none.
    /// @note Not escaped: name, genre.
    static bool DeleteTabConfigValue(CAConnect& conn, CString name, CString genre);

    // ---- Document roots ------------------------------------------------------------------------------------------

    /// Appends all document roots (named storage areas), unordered.
    /// @param created  days: 2013-05-07; empty where the table has none. @return whether the statement ran.
    static bool LoadDocRootInfo(CAConnect& conn, CUIntArray& ids, CStringArray& names, CStringArray& paths,
                                CStringArray& created, CUIntArray& types);
    /// Appends the document roots of a type, unordered.
    /// @param created  with the time of day: 2013-05-07 09:03:00; empty where the table has none.
    /// @param styles  32 bits each. @return whether the statement ran.
    static bool LoadDocRootInfo(CAConnect& conn, int type, CUIntArray& ids, CStringArray& names, CStringArray& paths,
                                CStringArray& created, CUIntArray& styles);
    /// Appends the document roots of types 1 and 2, unordered.
    /// @param created  days: 2013-05-07; empty where the table has none. @return whether the statement ran.
    static bool LoadDocRootInfoEx(CAConnect& conn, CUIntArray& ids, CStringArray& names, CStringArray& paths,
                                  CStringArray& created, CUIntArray& types);
    /// Appends ids, names and types of all document roots, unordered. @return whether the statement ran.
    static bool LoadDocRootInfo(CAConnect& conn, CUIntArray& ids, CStringArray& names, CUIntArray& types);
    /// Appends ids and names of the document roots of a type, unordered. @return whether the statement ran.
    static bool LoadDocRootInfo(CAConnect& conn, CUIntArray& ids, CStringArray& names, int type);
    /// Tests for a document root by name and type. @param exists  false when there is none.
    /// @return whether the statement ran.
    /// @note Not escaped: name.
    static bool ExistDocRootItem(CAConnect& conn, CString name, int type, bool& exists);
    /// Finds a document root by name and type; equal to GetDocRootID. @param id  0 when there is none.
    /// @return whether the statement ran.
    /// @note Not escaped: name.
    static bool GetDRItemIDByName(CAConnect& conn, CString name, int type, int& id);
    /// Finds a document root by name and type; equal to GetDRItemIDByName. @param id  0 when there is none.
    /// @return whether the statement ran.
    /// @note Not escaped: name.
    static bool GetDocRootID(CAConnect& conn, CString name, int type, int& id);
    /// Reads a document root by name and type. @param path  empty, and @param style  0, when there is none. The style
    /// has 32 bits. @return whether the statement ran.
    /// @note Not escaped: name.
    static bool GetDocRootInfo(CAConnect& conn, CString name, int type, CString& path, unsigned long& style);
    /// Tests for a document root of type 1, the company's. @param result  true when there IS one, contrary to the
    /// operation's name: existing callers rely on it. false when there is none. @return whether the statement ran.
    static bool HasNoDefCorpDocRoot(CAConnect& conn, bool& result);
    /// Sets a document root's name, path and style. @return whether the statement ran, also when there is no such root.
    /// @note Not escaped: name. Backslashes doubled on kind 6: path.
    static bool UpdateDocRoot(CAConnect& conn, int id, CString name, CString path, int style);
    /// Deletes a document root's own row; its links, the folders below it and rights on it stay. Equal to DeleteDocRoot
    /// with an id. @return whether the statement ran, also when there was none.
    static bool DeleteDRItem(CAConnect& conn, int id);
    /// Deletes a document root's own row; its links, the folders below it and rights on it stay.
    /// @return whether the statement ran, also when there was none.
    static bool DeleteDocRoot(CAConnect& conn, int id);
    /// Deletes the rows of document roots by name and type; their links, the folders below them and rights on them
    /// stay. @return whether the statement ran, also when there was none.
    /// @note Not escaped: name.
    static bool DeleteDocRoot(CAConnect& conn, CString name, int type);
    /// Deletes the links of an object directly under a document root. @param parentId  the root's id.
    /// @return whether the statement ran, also when there was none.
    static bool DeleteDocRootLink(CAConnect& conn, int parentId, int classId, int objectId);

    // ---- Folders of documents ------------------------------------------------------------------------------------

    /// Reads the highest id of all folders, which another caller's new folder may have.
    /// @param id  0 when there is none. @return whether the statement ran.
    static bool GetMaxIDFromDocVFolder(CAConnect& conn, int& id);
    /// Tests whether a folder of this name is directly under a document root. @param exists  false when there is none.
    /// @return whether the statement ran.
    /// @note Not escaped: name.
    static bool ExistFolderInRootLink(CAConnect& conn, CString name, int rootId, bool& exists);
    /// Tests whether a folder of this name is directly under a folder. @param exists  false when there is none.
    /// @return whether the statement ran.
    /// @note Not escaped: name.
    static bool ExistFolderInVFolderLink(CAConnect& conn, CString name, int parentFolderId, bool& exists);
    /// Appends the folders directly under a document root, unordered. @return whether the statement ran.
    static bool LoadDocRootFolder(CAConnect& conn, int rootId, CStringArray& names, CUIntArray& ids);
    /// Appends the folders directly under a folder, unordered. @return whether the statement ran.
    static bool LoadFolderSubFolder(CAConnect& conn, int parentFolderId, CStringArray& names, CUIntArray& ids);
    /// Reads a folder. @param name  empty, and @param created  empty, when there is no such folder; created is
    /// 2013-05-07 09:03:00. @return whether the statement ran.
    static bool GetFolerInfo(CAConnect& conn, int id, CString& name, CString& created);
    /// Sets a folder's style; its links keep theirs. @param style  its lower 32 bits are written.
    /// @return whether the statement ran, also when there is no such folder.
    static bool UpdateFolderStyle(CAConnect& conn, int id, unsigned long style);
    /// Renames a folder; its links keep the name that they show. @return whether the statement ran, also when there is
    /// no such folder.
    /// @note Not escaped: name.
    static bool UpdateFolderName(CAConnect& conn, int id, CString name);
    /// Deletes a folder's own row; its links stay. @return whether the statement ran, also when there was none.
    static bool DeleteDocVFolder(CAConnect& conn, int id);
    /// Deletes the links of an object directly under a folder. @param classId  105 for a folder.
    /// @return whether the statement ran, also when there was none.
    static bool DeleteDocVFolderLink(CAConnect& conn, int parentFolderId, int classId, int objectId);

    // ---- Backup plans --------------------------------------------------------------------------------------------

    /// Appends all backup plans with their descriptions, unordered. @return whether the statement ran.
    static bool LoadFileBackPlan(CAConnect& conn, CUIntArray& ids, CStringArray& names, CStringArray& descriptions);
    /// Appends ids and names of all backup plans, unordered. @return whether the statement ran.
    static bool LoadFileBackPlan(CAConnect& conn, CUIntArray& ids, CStringArray& names);
    /// Reads a backup plan's settings. @param data  as it was when there is no such plan.
    /// @return whether the statement ran.
    static bool GetFileBackPlanInfo(CAConnect& conn, int id, CString& data);
    /// Finds a backup plan by name. @param id  as it was when there is none. @return whether the statement ran.
    /// @note Not escaped: name.
    static bool GetBackupPlanID(CAConnect& conn, CString name, int& id);
    /// Tests for a backup plan of this name with an id above 0. @param exists  false when there is none, and after a
    /// failure. @return always true; a failure is reported all the same.
    /// @note Not escaped: name.
    static bool ExistBackupPlan(CAConnect& conn, CString name, bool& exists);
    /// Adds a backup plan; nothing checks whether the name is taken. @return whether the statement ran.
    /// @note Not escaped: name, description, data.
    static bool InsertBackupPlanInfo(CAConnect& conn, CString name, CString description, CString data);
    /// Sets a backup plan's name, description and settings. @return whether the statement ran, also when there is no
    /// such plan.
    /// @note Not escaped: name, description, data.
    static bool UpdateBackupPlanInfo(CAConnect& conn, int id, CString name, CString description, CString data);
    /// Deletes a backup plan's own row; its assignments stay. @return whether the statement ran, also when there was
    /// none.
    static bool DeleteBackupPlan(CAConnect& conn, int id);
    /// Deletes an assignment of a backup plan. @param id  the assignment's own, not the plan's.
    /// @return whether the statement ran, also when there was none.
    static bool DeleteBackupRel(CAConnect& conn, int id);
    /// Appends the plans whose ids happen to be those of the item's assignment rows: the statement joins by the wrong
    /// column, and existing callers rely on it. The overload with descriptions gives the plans that are assigned. The
    /// item's id comes before its type here. @return whether the statement ran.
    static bool LoadItemFileBackPlanInfo(CAConnect& conn, int itemId, int itemType, CUIntArray& planIds,
                                         CStringArray& planNames);
    /// Appends the plans that are assigned to an item, unordered. The item's id comes before its type here.
    /// @return whether the statement ran.
    static bool LoadItemFileBackPlanInfo(CAConnect& conn, int itemId, int itemType, CUIntArray& planIds,
                                         CStringArray& planNames, CStringArray& planDescriptions);
    /// Tests whether a plan is assigned to an item. @param exists  false when it is not. @return whether the statement
    /// ran.
    static bool ExistItemFileBackPlanRel(CAConnect& conn, int itemType, int itemId, int planId, bool& exists);
    /// Assigns a plan to an item; nothing checks whether it is assigned already. @return whether the statement ran.
    static bool InsertFileBackPlan(CAConnect& conn, int itemType, int itemId, int planId);
    /// Takes a plan from an item: every such assignment is deleted. @return whether the statement ran, also when there
    /// was none.
    static bool DeleteFileBackPlan(CAConnect& conn, int itemType, int itemId, int planId);
    /// Assigns a plan to a group, to the groups below it at every depth and to the users in them, one row for each
    /// membership. Never returns when a group is below itself: look for cycles below the group first, and prevent
    /// others from closing one until the call has returned, both in one schema::DirectoryTransaction.
    /// @return false after the first statement that failed, with which it stops; what is done stays done.
    static bool InsertGroupFileBackPlan(CAConnect& conn, int groupId, int planId);
    /// Takes a plan from a group, from the groups that are below it now at every depth and from the users in them.
    /// Never returns when a group is below itself: look for cycles below the group first, and prevent others from
    /// closing one until the call has returned, both in one schema::DirectoryTransaction.
    /// @return false after the first statement that failed, with which it stops; what is done stays done.
    static bool DeleteGroupFileBackPlan(CAConnect& conn, int groupId, int planId);

    // ---- Document log --------------------------------------------------------------------------------------------

    /// Adds an entry about an object to the document log. @param type  the kind of event, a word.
    /// @return whether the statement ran.
    /// @note Not escaped: content, type, creatorName.
    static bool InsertDocLog(CAConnect& conn, int classId, int objectId, CString content, CString type, int creatorId,
                             CString creatorName);

    // ---- Messages and login log ----------------------------------------------------------------------------------

    /// Deletes the messages up to a date, and then every attachment and receipt that has no message.
    /// @param date  YYYY-MM-DD or YYYY-MM-DD HH:MM:SS; messages of exactly that moment are deleted too. Any other text
    ///              is an error, reported as the engine's are, and deletes nothing.
    /// @return false after the first statement that failed, with which it stops; what is deleted stays deleted.
    /// @note Checked to be a date: date.
    static bool ClearMsgData(CAConnect& conn, CString date);
    /// Deletes the messages up to a date; attachments and receipts stay.
    /// @param date  YYYY-MM-DD or YYYY-MM-DD HH:MM:SS; messages of exactly that moment are deleted too. Any other text
    ///              is an error, reported as the engine's are, and deletes nothing.
    /// @return whether the statement ran.
    /// @note Checked to be a date: date.
    static bool DeleteMsgData(CAConnect& conn, CString date);
    /// Deletes every attachment whose message does not exist. @return whether the statement ran.
    static bool DeleteAttachNoMsg(CAConnect& conn);
    /// Deletes every receipt whose message does not exist. @return whether the statement ran.
    static bool DeleteRecvNoMsg(CAConnect& conn);
    /// Reads the date of the oldest message. @param text  without effect. @param minDate  set only when that date is
    /// before it, so pass a later one, such as now; its status stays. @return whether the statement ran.
    /// @note Not in a statement: text.
    static bool GetMinDate(CAConnect& conn, CString text, COleDateTime& minDate);
    /// Deletes an entry of the login log. @return whether the statement ran, also when there was none.
    static bool DeleteLoginLogItem(CAConnect& conn, int id);

    // ---- Add-ins -------------------------------------------------------------------------------------------------

    /// Adds an add-in; nothing checks whether the name is taken. Whether it is switched on is left to the table's
    /// default. @param index  its place in lists: the highest comes first. @return whether the statement ran.
    /// @note Not escaped: name, desc, packageName. Quotes doubled, on kind 6 backslashes too: data.
    static bool InsertAddInInfo(CAConnect& conn, CString name, CString data, int addInType, bool isPublic, CString desc,
                                CString packageName, int index);
    /// Finds an add-in by name and type. @param id  0 when there is none. @return whether the statement ran.
    /// @note Not escaped: name.
    static bool ExistAddInInfo(CAConnect& conn, CString name, int addInType, int& id);
    /// Finds an add-in by type, name and package. @param id  0 when there is none. @return whether the statement ran.
    /// @note Not escaped: name, packageName.
    static bool ExistAddInItem(CAConnect& conn, int addInType, CString name, CString packageName, int& id);
    /// Sets data and description of the add-ins of a name and type. @return whether the statement ran, also when there
    /// is none.
    /// @note Not escaped: name, desc. Quotes doubled, on kind 6 backslashes too: data.
    static bool UpdateAddInInfo(CAConnect& conn, CString name, int addInType, CString data, CString desc);
    /// Sets data and description of an add-in by its id. @return whether the statement ran, also when there is none.
    /// @note Quotes doubled, on kind 6 backslashes too: data. Not escaped: desc.
    static bool UpdateAddInInfo(CAConnect& conn, int id, CString data, CString desc);
    /// Reads an add-in's data by name and type. @param data  as it was when there is none.
    /// @return whether the statement ran.
    /// @note Not escaped: name.
    static bool GetAddInInfo(CAConnect& conn, CString name, int addInType, CString& data);
    /// Appends all add-ins, the highest index first. @param disabled, isPublic  0 or 1 each; every flag goes to the
    /// array that bears its name. @return whether the statement ran.
    static bool LoadKelAddIn(CAConnect& conn, CUIntArray& ids, CUIntArray& types, CStringArray& names,
                             CUIntArray& disabled, CUIntArray& isPublic, CStringArray& descs,
                             CStringArray& packageNames);
    /// Switches an add-in on or off. @param disabled  true switches it OFF, contrary to the operation's name: existing
    /// callers rely on it. Only read. @return whether the statement ran, also when there is no such add-in.
    static bool EnableAddInItem(CAConnect& conn, int id, bool& disabled);
    /// Deletes an add-in by its id. @return whether the statement ran, also when there was none.
    static bool DeleteAddInItem(CAConnect& conn, int id);
    /// Deletes every add-in of a package; the package stays. @return whether the statement ran, also when there was
    /// none.
    /// @note Not escaped: packageName.
    static bool DeleteAddIn(CAConnect& conn, CString packageName);
    /// Reads the highest index of all add-ins. @param index  0 when there is none. @return whether the statement ran.
    static bool GetAddInItemMaxIndex(CAConnect& conn, int& index);
    /// Reads an add-in's index. @param index  0 when there is no such add-in. @return whether the statement ran.
    static bool GetAddInItemIndex(CAConnect& conn, int id, int& index);
    /// Sets an add-in's index. @return whether the statement ran, also when there is no such add-in.
    static bool UpdateAddInItemIndex(CAConnect& conn, int id, int index);

    // ---- Packages ------------------------------------------------------------------------------------------------

    /// Appends all packages of add-ins, unordered. @param versions  as texts. @param disabled  0 or 1 each.
    /// @return whether the statement ran.
    static bool LoadAddInPackageInfo(CAConnect& conn, CUIntArray& ids, CStringArray& names, CStringArray& versions,
                                     CStringArray& descs, CUIntArray& disabled);
    /// Finds a package by name. @param id, version  0 when there is none. @return whether the statement ran.
    /// @note Not escaped: name.
    static bool GetPackageInfo(CAConnect& conn, CString name, int& id, int& version);
    /// Sets a package's time of change, version and description.
    /// @param modifyTime  as the engine takes a date between quotes. @return whether the statement ran, also when there
    /// is no such package.
    /// @note Not escaped: modifyTime, desc.
    static bool UpdatePackageInfo(CAConnect& conn, CString modifyTime, int version, CString desc, int id);
    /// Adds a package, switched on. @param modifyTime  as the engine takes a date between quotes.
    /// @param id  the highest of all packages afterwards, whether the engine took this one or not; as it was when there
    ///            is none.
    /// @return whether the highest id was read; a refused package shows in m_strLastError alone.
    /// @note Not escaped: name, modifyTime, desc.
    static bool InsertPackageInfo(CAConnect& conn, CString name, CString modifyTime, int version, CString desc,
                                  int& id);
    /// Deletes a package's own row; its add-ins stay. @return whether the statement ran, also when there was none.
    static bool DeletePackage(CAConnect& conn, int id);

    // ---- Bulletin board ------------------------------------------------------------------------------------------

    /// Appends all notices, the newest first. The subjects come before the creators here.
    /// @param times  2013-05-07 09:03:00, empty where the table has none.
    /// @return whether nothing was raised; true also when the connection is not open.
    static bool LoadBulletinInfo(CAConnect& conn, CStringArray& ids, CStringArray& subjects, CStringArray& creators,
                                 CStringArray& times);
    /// Reads the text of a notice. @param boardID  the notice's id, a text. @param content  as it was when there is no
    /// such notice. @return whether nothing was raised; true also when the connection is not open.
    /// @note Not escaped: boardID.
    static bool GetBulletinContent(CAConnect& conn, CString boardID, CString& content);
    /// Appends the file names of a notice's attachments, unordered.
    /// @return whether nothing was raised; true also when the connection is not open.
    /// @note Not escaped: boardID.
    static bool LoadBulletinAttachments(CAConnect& conn, CString boardID, CStringArray& fileNames);
    /// Appends the replies to a notice, the oldest first.
    /// @param times  2013-05-07 09:03:00, empty where the table has none.
    /// @return whether nothing was raised; true also when the connection is not open.
    /// @note Not escaped: boardID.
    static bool LoadBulletinReplyInfo(CAConnect& conn, CString boardID, CUIntArray& ids, CStringArray& creators,
                                      CStringArray& times, CStringArray& contents);
    /// Appends who has read a notice, the earliest first. @param items  the readers, as the table names them.
    /// @param times  2013-05-07 09:03:00, empty where the table has none.
    /// @return whether nothing was raised; true also when the connection is not open.
    /// @note Not escaped: boardID.
    static bool LoadBulletinVisiterInfo(CAConnect& conn, CString boardID, CUIntArray& ids, CStringArray& items,
                                        CStringArray& itemNames, CStringArray& times, CUIntArray& readFlags);
    /// Deletes a notice's own row; its attachments, replies and readers stay. @return whether the statement ran, also
    /// when there was none.
    /// @note Not escaped: boardID.
    static bool DeleteBulletinItem(CAConnect& conn, CString boardID);
    /// Deletes the attachments of a notice. @return whether the statement ran, also when there was none.
    /// @note Not escaped: boardID.
    static bool DeleteBulletinAttach(CAConnect& conn, CString boardID);
    /// Deletes the replies to a notice. @return whether the statement ran, also when there was none.
    /// @note Not escaped: boardID.
    static bool DeleteBulletinReply(CAConnect& conn, CString boardID);
    /// Deletes the record of who has read a notice. @return whether the statement ran, also when there was none.
    /// @note Not escaped: boardID.
    static bool DeleteBulletinVisiter(CAConnect& conn, CString boardID);

    // ---- Record lists --------------------------------------------------------------------------------------------

    /// Deletes every record of a list, of any record class, and empties it; null entries are skipped.
    static void DetachHumanList(CObList& list);

protected:
    /// Replaces a text by the MD5 of its bytes, 32 lower-case hexadecimal digits.
    static void MD5Encrypt(CString& text);
    /// Replaces a text of the ANSI code page by the MD5 of its UTF-16LE form, 32 lower-case hexadecimal digits.
    static void MD5UnicodeEncrypt(CString& text);
};
