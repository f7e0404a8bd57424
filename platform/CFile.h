#pragma once

#include "platform/CObject.h"
#include "platform/CString.h"

#include <cstdint>

/// What a CFile throws, by pointer, as the framework does; the catcher gives it back with Delete().
class QV_API CFileException : public CObject {
public:
    enum Cause {
        none,
        genericException,
        fileNotFound,
        badPath,
        tooManyOpenFiles,
        accessDenied,
        invalidFile,
        removeCurrentDir,
        directoryFull,
        badSeek,
        hardIO,
        sharingViolation,
        lockViolation,
        diskFull,
        endOfFile
    };

    explicit CFileException(int cause = none, int osError = 0, const char* fileName = nullptr);
    ~CFileException() override;
    void Delete() { delete this; }

    /// "PATH: what the system said".
    [[nodiscard]] CString GetErrorMessage() const;

    int m_cause;
    /// The system's errno.
    int m_lOsError;
    CString m_strFileName;
};

/// An open file. Not copyable; the destructor closes it.
class QV_API CFile {
public:
    enum OpenFlags : unsigned {
        modeRead = 0x0000,
        modeWrite = 0x0001,
        modeReadWrite = 0x0002,
        shareExclusive = 0x0010,
        shareDenyWrite = 0x0020,
        shareDenyRead = 0x0030,
        shareDenyNone = 0x0040,
        modeCreate = 0x1000,
        modeNoTruncate = 0x2000,
    };

    CFile() = default;
    CFile(const CFile&) = delete;
    CFile& operator=(const CFile&) = delete;
    ~CFile();

    /// Opens a file. Denying is an advisory lock among the CFile objects that deny something themselves; a file is
    /// emptied only once its lock is held. An object that has a file open refuses to open another.
    /// @param error  when not null: filled on failure.
    /// @return false when it could not be opened; nothing is thrown.
    bool Open(const char* path, unsigned flags, CFileException* error = nullptr);
    /// Moves to the end. @return its offset in bytes. @throws CFileException*, also when no file is open.
    std::uint64_t SeekToEnd();
    /// Writes all bytes. @throws CFileException*.
    void Write(const void* bytes, unsigned count);
    /// Reads up to this many bytes. @return how many; 0 at the end. @throws CFileException*.
    unsigned Read(void* bytes, unsigned count);
    /// @throws CFileException* when the system reports that what was written is lost.
    void Close();

private:
    [[noreturn]] void Throw(int osError) const;

    int m_file = -1;
    CString m_path;
};
