#pragma once

#include "management/exchange/LdifReader.h"
#include "management/exchange/LineSource.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <istream>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace management {

struct LdifOptions {
    std::optional<std::string> view; ///< under which units are groups; none: the topmost units are views
    bool groupsAsGroups = false;     ///< groups of names are groups, not roles
};

/// Lines of a directory from a file of entries: people (inetOrgPerson and its kin) as users, organizational units as
/// groups, groups of names as roles or groups. A person is a member of the unit that the distinguished name is in,
/// which is the department too. Reads the file several times, since groups come before their members; holds the units,
/// and the names of people whose distinguished names do not begin with their login names.
class LdifSource final : public LineSource {
public:
    /// Gives a stream of the file that stands at its beginning, and that lives until the next call.
    using Open = std::function<std::istream&()>;

    LdifSource(Open open, LdifOptions options);

    std::optional<ExportedLine> Next() override;
    [[nodiscard]] bool Failed() const override { return m_failed; }
    std::size_t TakeBytes() override { return 0; }
    /// How many entries are of no such kind, and are left out.
    [[nodiscard]] long LeftOut() const { return m_leftOut; }

private:
    enum class Pass : std::uint8_t { units, people, departments, members, groups, groupMembers, done };
    enum class Class : std::uint8_t { other, person, unit, group };

    struct Unit {
        long line = 0;      ///< of its entry, or of the first one in it
        long firstLine = 0; ///< of the first entry that it is named in
        std::string description = {};
    };

    using Names = std::vector<std::string>; ///< from the top on

    static Class ClassOf(const LdifEntry& entry);
    [[nodiscard]] Names UnitsOf(const std::vector<RelativeName>& dn, bool isUnit) const;
    static std::string PathOf(const Names& names);
    static std::string LoginOf(const LdifEntry& entry);

    void NoteUnits(Names names, long line);
    void EndUnits();
    void TakeUnit(const LdifEntry& entry, Class kind, const std::vector<RelativeName>& dn);
    void TakeEntry(const LdifEntry& entry);
    void TakePerson(const LdifEntry& entry, const std::vector<RelativeName>& dn);
    void TakeMembership(const LdifEntry& entry, const std::vector<RelativeName>& dn);
    void TakeGroup(const LdifEntry& entry, const std::vector<RelativeName>& dn);
    void AddRole(const LdifEntry& entry, const std::string& name);
    void TakeMember(const LdifEntry& entry, const std::string& dn, const std::string& holder);
    void AddMember(long line, const std::string& login, const std::string& holderType, const std::string& holder);
    void Add(long line, std::string_view noun, JsonObject object);

    Open m_open;
    LdifOptions m_options;
    Pass m_pass = Pass::units;
    std::optional<LdifReader> m_reader;
    std::deque<ExportedLine> m_pending;
    std::map<Names, Unit> m_units;
    std::unordered_map<std::string, std::string> m_logins; ///< by distinguished names that do not have them
    long m_leftOut = 0;
    bool m_failed = false;
};

} // namespace management
