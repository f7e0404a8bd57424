#pragma once

#include "management/organisation/Organisation.h"
#include "web/TextSearch.h"

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

class CAConnect;

namespace web {

/// Columns of the list of people.
enum class PeopleColumn : std::uint8_t { login, name, email, mobile, department, title };
inline constexpr std::array<std::string_view, 6> kPeopleColumns = {"login",  "name",       "email",
                                                                   "mobile", "department", "title"};

/// What may be said of people beside their columns, by which lists are narrowed.
enum class Trait : std::uint8_t {
    locked,
    super,
    noGroup,       ///< is in no group and in no view
    plainPassword, ///< has a password that is stored as plain text
    noPassword     ///< has no password, and is not locked
};
inline constexpr std::array<std::string_view, 5> kTraits = {"locked", "super", "no_group", "plain_password",
                                                            "no_password"};
using Traits = std::bitset<kTraits.size()>;

struct Person {
    int id = 0;
    std::array<std::string, kPeopleColumns.size()> texts; ///< by column
    Traits traits;

    [[nodiscard]] bool Is(Trait trait) const { return traits[static_cast<std::size_t>(trait)]; }
    void Set(Trait trait, bool isOn = true) { traits[static_cast<std::size_t>(trait)] = isOn; }
};

/// Which people, in which order.
struct PeopleQuery {
    std::string text; ///< words that must all occur in one of the columns, case not counting; id:17; login:amy
    std::optional<management::ItemKey> place = {}; ///< a group or a view
    bool isDeep = true;                            ///< with the groups below the place
    Traits traits = {};                            ///< all of which are to hold
    const std::vector<int>* among = nullptr;       ///< ids; null: everybody
    PeopleColumn order = PeopleColumn::login;
    bool isDescending = false;
};

/// What names that were looked for mean.
struct FoundNames {
    /// A name that several people have.
    struct Ambiguous {
        std::string name;
        std::vector<int> ids; ///< by login name
    };

    std::vector<int> ids; ///< of those who are meant, by login name, each once
    std::vector<std::string> missing;
    std::vector<Ambiguous> ambiguous;
};

/// A snapshot of all people and of the organisation, read at once when it is made.
class People {
public:
    /// Uses statements of its own alone, none of the module's operations. @throws management::DatabaseError.
    explicit People(CAConnect& conn);

    [[nodiscard]] const management::Organisation& Nodes() const { return m_organisation; }
    [[nodiscard]] std::size_t Count() const { return m_people.size(); }
    [[nodiscard]] std::size_t CountOf(Trait trait) const;
    /// Null when there is none.
    [[nodiscard]] const Person* Find(int id) const;
    /// The ids of the people that a query means. @throws management::Error (invalid) for id: without a number.
    [[nodiscard]] std::vector<int> Select(const PeopleQuery& query);
    /// Who is meant by names, each a login name, id:17, or else the name or e-mail address of one person; case does not
    /// count. Empty names are left out. @throws management::Error (invalid) for id: without a number.
    [[nodiscard]] FoundNames FindNames(const std::vector<std::string>& names) const;
    /// How many people are in a place and below, each counted once.
    [[nodiscard]] std::size_t CountIn(management::ItemKey place);
    /// Reads again people of whom only columns have changed. @return false, where that is not enough: somebody came,
    /// went, or has another login name. @throws management::DatabaseError.
    bool Refresh(CAConnect& conn, const std::vector<int>& ids);

private:
    using Index = std::uint32_t;

    void LoadPeople(CAConnect& conn);
    void SortByLogin();
    void LoadMembers(CAConnect& conn);
    /// Whom a name may mean.
    struct Meant {
        std::vector<Index> byLogin;
        std::vector<Index> byText; ///< the name or e-mail address of a person
    };
    using MeantByName = std::unordered_map<std::string, Meant>;

    void Arrange(std::vector<Index>& people, const PeopleQuery& query);
    /// By the names in capitals.
    [[nodiscard]] MeantByName MeantBy(const std::vector<std::string>& names) const;
    [[nodiscard]] std::vector<Index> PeopleNamed(const std::string& name, const MeantByName& meant) const;
    /// All texts of somebody in capitals.
    [[nodiscard]] std::string_view Folded(Index person) const
    {
        return std::string_view(m_folded).substr(m_begins[person], m_begins[person + 1] - m_begins[person]);
    }
    void ReplaceFolded(Index person, const std::string& folded);
    /// How often a text is in some of the texts, which tells which of several is rarest.
    [[nodiscard]] std::size_t CountInSample(const std::string& word) const;
    /// Whom words mean that must all occur.
    [[nodiscard]] std::vector<Index> WithWords(const std::vector<std::string>& words) const;
    /// The text of a column in capitals.
    [[nodiscard]] std::string_view Folded(Index person, PeopleColumn column) const;
    [[nodiscard]] std::vector<management::ItemKey> WithBelow(management::ItemKey place) const;
    /// A flag for each person.
    [[nodiscard]] std::vector<bool> FlagsOf(const std::vector<int>& ids) const;
    /// A flag for each person: whether they are in a view or group, or, where deep, in a group below it.
    [[nodiscard]] std::vector<bool> MembersOf(management::ItemKey place, bool isDeep) const;
    const std::vector<Index>& RanksBy(PeopleColumn column);

    management::Organisation m_organisation;
    std::vector<Person> m_people; ///< by login name
    std::vector<int> m_ids;       ///< of these: lists are made of ids alone
    std::unordered_map<int, Index> m_byId;
    std::string m_folded;              ///< the texts of all in capitals, one after the other, for fast searches
    std::vector<std::size_t> m_begins; ///< of each in it, and its end
    ByteCounts m_byteCounts{};         ///< of these texts as they were read
    std::map<management::ItemKey, std::vector<Index>> m_members;
    std::map<management::ItemKey, std::size_t> m_counts;
    std::vector<Index> m_countedBy; ///< the last count that has met somebody
    Index m_countNumber = 0;
    std::map<PeopleColumn, std::vector<Index>> m_ranks;
};

/// What texts are sorted by, byte for byte: case does not count, and digits count as numbers, so that amy2 comes before
/// amy10. @param text  in capitals.
std::string SortKey(std::string_view text);

} // namespace web
