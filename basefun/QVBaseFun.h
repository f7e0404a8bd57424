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
/// of a list stay parallel. Text arguments enter the statement as they are unless the operation says that it doubles
/// quotes or backslashes: a quote in such a text breaks the statement, and keeping it out is the caller's business.
///
/// One caller at a time: m_strLastError is shared, and a connection serves one call at a time.
class QV_API CQVBaseFun {
public:
    CQVBaseFun();
    CQVBaseFun(const CQVBaseFun& from);
    /// There is nothing to copy.
    CQVBaseFun& operator=(const CQVBaseFun& from);
    virtual ~CQVBaseFun();

    /// The last error that an operation caught, however old; no operation clears it. An error is notified by
    /// SendMessageA(m_hNotifyWnd, m_nNotifyMsg, 0, address of this text), which the window reads during the call.
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
    /// @param dbName  the schema to look in, for kind 6 only; as it is.
    /// @param valid   false, then true when a table was found.
    /// @return false also for any other kind, without touching the connection.
    static bool IsDataBaseValid(CAConnect& conn, int dbType, CString dbName, bool& valid);
    /// Writes nothing: a hook that callers expect to be there.
    static void WriteToLogFileEx(CString text);

    // ---- Users: look-ups -----------------------------------------------------------------------------------------

    /// A user's id by login name. @param loginName  quotes are doubled. @param id  -1 when there is none.
    static bool GetHMIDByLoginName(CAConnect& conn, CString loginName, int& id);
    /// Whether a login name is taken, case not counting. The name is upper-cased, then quotes are doubled. On engine
    /// kind 3 it is compared with upper(Col_LoginName); elsewhere with the column, which ignores case only where the
    /// engine does.
    /// @param exists  true, then false when no row came back.
    static bool ExistLoginName(CAConnect& conn, CString loginName, bool& exists);
    /// A user's id by login name, compared as by ExistLoginName. @param id  0 when there is none.
    static bool ExistLoginNameEx(CAConnect& conn, CString loginName, int& id);
    /// @param loginName  as it is. @param isSuper  false when there is no such user.
    static bool IsSuperUser(CAConnect& conn, CString loginName, bool& isSuper);
    /// @param loginName  as it is. @param locked  false when there is no such user.
    static bool IsUserLocked(CAConnect& conn, CString loginName, bool& locked);
    /// @param loginName  empty when there is no such user.
    static bool GetHMLoginName(CAConnect& conn, int id, CString& loginName);
    /// The login name of the first user of a display name. @param name  quotes are doubled. @param loginName  empty
    /// when there is none.
    static bool GetHMLoginName(CAConnect& conn, CString name, CString& loginName);
    /// A display name by login name. @param loginName  quotes are doubled. @param name  empty when there is none.
    static bool GetHMUserName(CAConnect& conn, CString loginName, CString& name);
    /// @param name  empty when there is no such user.
    static bool GetHMUserName(CAConnect& conn, int id, CString& name);
    /// @param loginName  as it is. @param id  0, and @param name  empty, when there is no such user.
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
    /// Sets a user's department. @param deptInfo  as it is. @param always  false: only when the department id is still
    /// 0.
    static bool UpdateUserDeptInfo(CAConnect& conn, int id, int deptId, CString deptInfo, bool always);
    /// Adds a user. Both texts as they are.
    static bool InsertUser(CAConnect& conn, CString loginName, CString name);
    /// Adds a user with an encoded password. All texts as they are.
    static bool InsertUser(CAConnect& conn, CString loginName, CString name, CString password, int enType);
    /// Updates what a user may change of himself. Quotes are doubled in all ten texts.
    static bool UpdateHumanInfo(CAConnect& conn, int id, CString loginName, CString name, CString deptInfo,
                                CString jobTitle, CString officePhone, CString mobile, CString officeFax, CString eMail,
                                CString userData, CString homePhone, int deptId);

    // ---- Record lists --------------------------------------------------------------------------------------------

    /// Deletes every record of a list and empties it; null entries are skipped. For lists of any record class.
    static void DetachHumanList(CObList& list);
};
