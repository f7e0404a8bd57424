#pragma once

namespace management {

/// What a run of the program may say about the database when it ends without knowing more.
class Changes {
public:
    static void Reset() noexcept { s_mayBeMade = false; }
    /// To be called before anything is committed.
    static void NoteCommit() noexcept { s_mayBeMade = true; }
    /// Whether anything may have been committed since Reset.
    [[nodiscard]] static bool MayBeMade() noexcept { return s_mayBeMade; }

private:
    inline static bool s_mayBeMade = false;
};

} // namespace management
