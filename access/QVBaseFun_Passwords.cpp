#include "access/Digest.h"
#include "basefun/QVBaseFun.h"
#include "basefun/SqlText.h"
#include "basefun/StatementFrame.h"
#include "platform/CodePage.h"

#include <cstddef>
#include <string>

using frame::Columns;

namespace {

constexpr int kMd5OfBytes = 1;
constexpr int kMd5OfLoginAndPassword = 2;

bool SameText(const CString& a, const CString& b)
{
    const auto characters = [](const CString& text) {
        return reinterpret_cast<const unsigned char*>(text.GetString());
    };
    return _mbscmp(characters(a), characters(b)) == 0;
}

} // namespace

// ---- Passwords ---------------------------------------------------------------------------------------------------

void CQVBaseFun::MD5Encrypt(CString& text) { text = Md5Hex(text.GetString(), text.View().size()); }

void CQVBaseFun::MD5UnicodeEncrypt(CString& text)
{
    const int units = MultiByteToWideChar(CP_ACP, MB_PRECOMPOSED, text, text.GetLength(), nullptr, 0);
    std::u16string wide(static_cast<std::size_t>(units), u'\0');
    MultiByteToWideChar(CP_ACP, MB_PRECOMPOSED, text, text.GetLength(), wide.data(), units);
    std::string littleEndian;
    for (const char16_t unit : wide) {
        littleEndian += static_cast<char>(unit & 0xFF);
        littleEndian += static_cast<char>(unit >> 8);
    }
    text = Md5Hex(littleEndian.data(), littleEndian.size());
}

bool CQVBaseFun::Encrypt(CString& text, CString /*unused*/, int type)
{
    if (type == kMd5OfBytes) {
        MD5Encrypt(text);
    } else if (type == kMd5OfLoginAndPassword) {
        MD5UnicodeEncrypt(text);
    }
    return true;
}

bool CQVBaseFun::CheckUserPassword(CAConnect& conn, CString loginName, CString password, bool& matches)
{
    matches = false;
    CString stored;
    int type = 0;
    const CString sql = FormatSql("SELECT Col_PWord, Col_Entype FROM qv_User WHERE Col_LoginName = '%s'", loginName);
    if (!frame::FindFirst(conn, sql, Columns(stored, type))) {
        return false;
    }
    if (stored.IsEmpty() && password.IsEmpty()) {
        matches = true;
        return true;
    }
    CString encoded = type == kMd5OfLoginAndPassword ? loginName + password : password;
    Encrypt(encoded, "", type);
    matches = SameText(stored, encoded);
    return true;
}

bool CQVBaseFun::UpdateItemPassword(CAConnect& conn, CString loginName, CString encodedPassword, int type)
{
    return frame::Execute(conn,
                          FormatSql("UPDATE qv_User SET Col_PWord = '%s', Col_EnType = %d WHERE Col_LoginName = '%s'",
                                    encodedPassword, type, loginName));
}

bool CQVBaseFun::GetEncryptKey(CAConnect& conn, CString& key)
{
    key = "";
    return frame::ReadFirst(conn, "SELECT Col_Data FROM Tab_Config WHERE Col_Name = 'EncryptKey'", Columns(key));
}

bool CQVBaseFun::SetEncryptKey(CAConnect& conn, CString key)
{
    // The value decides, not the row: an empty one is followed by a second row, and readers take the first.
    CString present;
    GetEncryptKey(conn, present);
    return frame::Execute(
        conn, present.IsEmpty()
                  ? FormatSql("INSERT INTO Tab_Config (Col_Name, Col_Data) VALUES ('EncryptKey', '%s')", key)
                  : FormatSql("UPDATE Tab_Config SET Col_Data = '%s' WHERE Col_Name = 'EncryptKey'", key));
}
