#pragma once

#include "platform/CObject.h"
#include "platform/CString.h"

#include <cstdint>

/// What a CFile throws, by pointer, as the framework does; the catcher gives it back with Delete().
class QV_API CFileException : public CObject {
public:
    /// What failed, by kind.
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

    /// Takes over cause, errno and file name. @param fileName  null is the empty name.
    explicit CFileException(int cause = none, int osError = 0, const char* fileName = nullptr);
    ~CFileException() override;
    /// Deletes this exception, which must have been made by new.
    void Delete() { delete this; }

    /// "PATH: what the system said".
    [[nodiscard]] CString GetErrorMessage() const;

    /// A value of Cause.
    int m_cause;
    /// The system's errno.
    int m_lOsError;
    /// The file, as it was named to CFile::Open.
    CString m_strFileName;
};

/// An open file. Not copyable; the destructor closes it.
class QV_API CFile {
public:
    /// How a file is opened: one mode, at most one sharing flag, and modeCreate to make a file that does not exist and
    /// to empty one that does, unless modeNoTruncate is set too.
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

    /// No open file.
    CFile() = default;
    CFile(const CFile&) = delete;
    CFile& operator=(const CFile&) = delete;
    /// Closes the file; a failure is not reported. Call Close to learn of it.
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
    /// Closes the file; nothing happens when none is open.
    /// @throws CFileException* when the system reports that what was written is lost; the file is closed all the same.
    void Close();

private:
    [[noreturn]] void Throw(int osError) const;

    int m_file = -1;
    CString m_path;
};
