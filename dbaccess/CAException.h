#pragma once

#include "platform/Api.h"
#include "platform/CString.h"

/// What an engine refused, or what a caller asked of the library that it cannot do. Thrown and caught by value.
class QV_API CAException {
public:
    /// @param message  the engine's own message, one or several lines.
    /// @param code     the engine's name and own code, such as "SQLite 1"; empty when the library itself refuses.
    explicit CAException(CString message, CString code = {});
    /// A copy.
    CAException(const CAException&);
    /// Takes over the texts; the other exception is left without.
    CAException(CAException&&) noexcept;
    /// Replaces the texts by copies.
    CAException& operator=(const CAException&) = default;
    /// Takes over the texts; the other exception is left without.
    CAException& operator=(CAException&&) noexcept = default;
    virtual ~CAException();

    /// The message: the engine's own, or a sentence of the library's.
    [[nodiscard]] const CString& GetErrorText() const noexcept { return m_message; }
    /// The engine's name and own code, such as "SQLite 1"; empty when the library itself refused.
    [[nodiscard]] const CString& GetErrorCode() const noexcept { return m_code; }

    /// One line for people: "FILE(LINE): MESSAGE [CODE]: STATEMENT". Line breaks and tabs become single blanks.
    [[nodiscard]] CString GetErrorEx(const char* file, int line, const char* sql) const;

private:
    CString m_message;
    CString m_code;
};
