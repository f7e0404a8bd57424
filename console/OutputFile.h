#pragma once

#include <sys/types.h>

#include <filesystem>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

namespace console {

/// Of files that the program makes: what is in them is for the account that runs it.
inline constexpr mode_t kForItsOwner = 0600;

/// A file that a command writes for people, such as the outcomes of an import.
///
/// It is written as TARGET.partial, created for its owner only, and gets its own name once it is whole. A run that is
/// killed or fails leaves what was flushed under the name TARGET.partial. A file that is there under either name is
/// kept as NAME.1, in place of an older one of that name. Nothing but a regular file with the same first line, or an
/// empty one, is ever replaced or renamed: no database, no folder, no device, no symbolic link. Of two programs that
/// write to one target, the second is refused.
///
/// For one thread. All refusals say what to do instead.
class OutputFile {
public:
    /// A file that must not be written, whatever name leads to it.
    struct InUse {
        std::filesystem::path path;
        std::string as; ///< such as "the file to import"
    };

    struct Description {
        std::string target;
        std::string option;        ///< that names another target, such as --result
        std::string firstLine;     ///< what files of this kind begin with, without a line break; tells them from others
        std::vector<InUse> others; ///< by other parts of the command
    };

    /// Makes TARGET.partial and writes the first line. @throws Error (invalid) for a file in use, (conflict) for a file
    /// of another kind or one that is being written, (failed) when it cannot be made.
    explicit OutputFile(Description description);
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    /// Unless it was finished, leaves TARGET.partial, but not when nothing was flushed after the first line.
    ~OutputFile();

    /// Takes what is to be written by the next flush.
    [[nodiscard]] std::ostream& Stream() { return m_pending; }
    /// Hands all of it to the system, where it survives the end of the program. @throws Error (failed).
    void Flush();
    /// Flushes, waits until the disk has it all, and gives the file its own name. Nothing may be written afterwards.
    /// @throws Error as the constructor does; the file then stays under the name of Name.
    void Finish();
    /// Where what was flushed can be read now, for sentences: TARGET.partial, or TARGET when it is finished.
    [[nodiscard]] std::string Name() const;

private:
    void RequireFree(const std::string& path) const;
    void RequireReplaceable(const std::string& path) const;
    void TakeAwayPartial() const;
    void KeepEarlier(const std::string& path) const;
    [[noreturn]] void ThrowBusy(const std::string& path) const;
    [[noreturn]] void ThrowUnwritable(const std::string& reason) const;

    Description m_description;
    std::string m_partial; // kept, since the destructor must not run out of memory
    int m_file = -1;
    std::ostringstream m_pending;
    bool m_hasContent = false; // after the first line
    bool m_finished = false;
};

} // namespace console
