#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class CAConnect;

namespace management {

class Secret;

/// One row of the server's settings; what is NULL there is empty here.
struct Setting {
    std::string genre;
    std::string name;
    std::string value;

    bool operator==(const Setting&) const = default;
};

/// The settings of a directory. Any text goes in and comes out as it is, whatever the engine.
///
/// Nothing here begins a transaction; what changes something is to be called in one. All functions @throw
/// DatabaseError, and Error for a text with a NUL byte.
class Settings {
public:
    /// @param conn  open, and stays so while this is used.
    explicit Settings(CAConnect& conn) : m_conn(conn) {}

    // ---- Any setting ------------------------------------------------------------------------------------------------

    /// All settings, by genre and name.
    std::vector<Setting> All();
    /// Those of a genre, by name.
    std::vector<Setting> OfGenre(std::string_view genre);
    /// Those of a name that the engine takes for this one, by genre.
    std::vector<Setting> Named(std::string_view name);

    void Insert(std::string_view name, std::string_view value, std::string_view genre);
    /// Sets every setting of the name, whatever its genre.
    void UpdateAll(std::string_view name, std::string_view value);
    /// Deletes every setting of the name and the genre, NULL counting as an empty genre.
    void Delete(std::string_view name, std::string_view genre);

    // ---- The server's own -------------------------------------------------------------------------------------------

    /// How many threads there may be; 0 where that is not set.
    std::uint32_t MaxThreads();
    /// How many threads are for tasks; 0 where that is not set.
    std::uint32_t TaskThreads();
    /// The flag of the server; 0 where it has none.
    std::uint32_t ServerFlag();
    /// The flag of the document server; 0 where it has none.
    std::uint32_t DocServerFlag();
    void SetMaxThreads(std::uint32_t count);
    void SetTaskThreads(std::uint32_t count);
    void SetDocServerFlag(std::uint32_t flag);

    /// The display picture of the company; empty where there is none.
    std::string Picture();
    void SetPicture(std::string_view picture);
    /// Gives every user this picture.
    void SetUsersPicture(std::string_view picture);

    // ---- The encryption key -----------------------------------------------------------------------------------------

    /// Whether a setting of this name holds the key, which is not to be shown with the others.
    static bool IsKey(std::string_view name);
    /// Empty where there is none.
    Secret EncryptionKey();
    /// @throws Error (conflict) when there are several rows of it, (failed) when it does not come back as given.
    void SetEncryptionKey(const Secret& key);

private:
    void SetThreads(const char* name, std::uint32_t count);

    CAConnect& m_conn;
};

} // namespace management
