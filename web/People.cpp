#include "web/People.h"

#include "basefun/ItemTypes.h"
#include "dbaccess/CAConnect.h"
#include "management/Names.h"
#include "management/Query.h"
#include "management/Text.h"
#include "management/check/Check.h"
#include "platform/CodePage.h"
#include "web/TextSearch.h"

#include <fmt/format.h>

#include <algorithm>
#include <numeric>
#include <sstream>
#include <utility>

namespace web {

using namespace management;

namespace {

constexpr char kBetween = '\x1f'; // no search for a text that somebody types runs over it

constexpr const char* kSelect =
    "SELECT Col_ID, Col_LoginName, Col_Name, Col_EMail, Col_Mobile, Col_DeptInfo, Col_o_JobTitle, Col_Disabled, "
    "Col_IsSuper FROM qv_User";

Person ReadPerson(CARecordset& row)
{
    Person person;
    person.id = NumberIn(row, 1);
    for (std::size_t i = 0; i < person.texts.size(); ++i) {
        person.texts[i] = TextIn(row, static_cast<long>(i) + 2);
    }
    const long next = static_cast<long>(person.texts.size()) + 2;
    person.Set(Trait::locked, NumberIn(row, next) != 0);
    person.Set(Trait::super, NumberIn(row, next + 1) != 0);
    return person;
}

std::string FoldedTexts(const Person& person)
{
    std::string folded;
    for (const std::string& text : person.texts) {
        folded += NameKey(text) + kBetween;
    }
    return folded;
}

bool IsDigit(char ch) { return ch >= '0' && ch <= '9'; }

std::string_view TakeNumber(std::string_view& text)
{
    std::size_t end = 0;
    while (end < text.size() && IsDigit(text[end])) {
        ++end;
    }
    std::string_view number = text.substr(0, end);
    text.remove_prefix(end);
    while (number.size() > 1 && number.front() == '0') {
        number.remove_prefix(1);
    }
    return number;
}

constexpr std::string_view kByLogin = "login:";

std::vector<std::string> WordsOf(const std::string& text)
{
    std::vector<std::string> words;
    std::istringstream in(text);
    for (std::string word; in >> word;) {
        words.push_back(NameKey(word));
    }
    return words;
}

} // namespace

bool IsBefore(std::string_view a, std::string_view b)
{
    while (!a.empty() && !b.empty()) {
        if (IsDigit(a.front()) && IsDigit(b.front())) {
            const std::string_view one = TakeNumber(a);
            const std::string_view other = TakeNumber(b);
            if (one != other) {
                return one.size() != other.size() ? one.size() < other.size() : one < other;
            }
        } else if (a.front() != b.front()) {
            return static_cast<unsigned char>(a.front()) < static_cast<unsigned char>(b.front());
        } else {
            a.remove_prefix(1);
            b.remove_prefix(1);
        }
    }
    return a.empty() && !b.empty();
}

People::People(CAConnect& conn) : m_organisation(conn)
{
    LoadPeople(conn);
    LoadMembers(conn);
}

void People::LoadPeople(CAConnect& conn)
{
    std::vector<std::pair<std::string, Person>> read;
    EachRow(conn, kSelect, [&read](CARecordset& row) {
        Person person = ReadPerson(row);
        std::string key = NameKey(person.texts.front());
        read.emplace_back(std::move(key), std::move(person));
    });
    std::ranges::sort(read, [](const auto& a, const auto& b) {
        return a.first != b.first ? IsBefore(a.first, b.first) || (!IsBefore(b.first, a.first) && a.first < b.first)
                                  : a.second.id < b.second.id;
    });
    m_people.reserve(read.size());
    m_begins.reserve(read.size() + 1);
    m_begins.push_back(0);
    for (auto& [key, person] : read) {
        m_byId[person.id] = static_cast<Index>(m_people.size());
        m_folded += FoldedTexts(person);
        m_begins.push_back(m_folded.size());
        m_people.push_back(std::move(person));
    }
    m_folded.shrink_to_fit();
    m_countedBy.resize(m_people.size());
    LoadPasswords(conn, "");
}

void People::LoadPasswords(CAConnect& conn, const std::string& condition)
{
    const auto load = [&](Trait trait, std::string_view test) {
        EachRow(
            conn,
            fmt::format("SELECT Col_ID FROM qv_User WHERE {}{}", test, condition.empty() ? "" : " AND " + condition),
            [&](CARecordset& row) {
                if (const auto person = m_byId.find(NumberIn(row, 1)); person != m_byId.end()) {
                    m_people[person->second].Set(trait);
                }
            });
    };
    load(Trait::plainPassword, check::kHasPlainPassword);
    load(Trait::noPassword, check::kHasNoPassword);
}

bool People::Refresh(CAConnect& conn, const std::vector<int>& ids)
{
    std::size_t found = 0;
    bool isEnough = true;
    const std::string condition = fmt::format("Col_ID IN ({})", fmt::join(ids, ", "));
    EachRow(conn, fmt::format("{} WHERE {}", kSelect, condition), [&](CARecordset& row) {
        Person person = ReadPerson(row);
        const auto known = m_byId.find(person.id);
        ++found;
        isEnough = isEnough && known != m_byId.end() && m_people[known->second].texts.front() == person.texts.front();
        if (isEnough) {
            Person& present = m_people[known->second];
            person.Set(Trait::noGroup, present.Is(Trait::noGroup));
            ReplaceFolded(known->second, FoldedTexts(person));
            present = std::move(person);
        }
    });
    LoadPasswords(conn, condition);
    m_ranks.clear();
    return isEnough && found == ids.size();
}

void People::LoadMembers(CAConnect& conn)
{
    for (Person& person : m_people) {
        person.Set(Trait::noGroup);
    }
    EachRow(conn,
            fmt::format("SELECT DISTINCT Col_QvItemType, Col_QvItemID, Col_DQvItemID FROM qv_Relation WHERE "
                        "Col_QvItemType IN ({}, {}) AND Col_DQvItemType = {} AND Col_RelType = {}",
                        kItemTypeGroup, kItemTypeView, kItemTypeUser, kMembership),
            [this](CARecordset& row) {
                if (const auto person = m_byId.find(NumberIn(row, 3)); person != m_byId.end()) {
                    m_members[{NumberIn(row, 1), NumberIn(row, 2)}].push_back(person->second);
                    m_people[person->second].Set(Trait::noGroup, false);
                }
            });
}

const Person* People::Find(int id) const
{
    const auto found = m_byId.find(id);
    return found == m_byId.end() ? nullptr : &m_people[found->second];
}

std::size_t People::CountOf(Trait trait) const
{
    return static_cast<std::size_t>(
        std::ranges::count_if(m_people, [trait](const Person& person) { return person.Is(trait); }));
}

std::vector<ItemKey> People::WithBelow(ItemKey place) const
{
    std::vector<ItemKey> places = {place};
    if (m_organisation.Find(place) != nullptr) {
        const std::vector<ItemKey> below = m_organisation.Below(place);
        places.insert(places.end(), below.begin(), below.end());
    }
    return places;
}

std::vector<bool> People::MembersOf(ItemKey place, bool isDeep) const
{
    std::vector<bool> isIn(m_people.size());
    for (const ItemKey key : isDeep ? WithBelow(place) : std::vector<ItemKey>{place}) {
        if (const auto members = m_members.find(key); members != m_members.end()) {
            for (const Index person : members->second) {
                isIn[person] = true;
            }
        }
    }
    return isIn;
}

std::vector<bool> People::FlagsOf(const std::vector<int>& ids) const
{
    std::vector<bool> isIn(m_people.size());
    for (const int id : ids) {
        if (const auto person = m_byId.find(id); person != m_byId.end()) {
            isIn[person->second] = true;
        }
    }
    return isIn;
}

std::size_t People::CountIn(ItemKey place)
{
    const auto known = m_counts.find(place);
    if (known != m_counts.end()) {
        return known->second;
    }
    ++m_countNumber;
    std::size_t count = 0;
    for (const ItemKey key : WithBelow(place)) {
        if (const auto members = m_members.find(key); members != m_members.end()) {
            for (const Index person : members->second) {
                count += std::exchange(m_countedBy[person], m_countNumber) == m_countNumber ? 0 : 1;
            }
        }
    }
    return m_counts[place] = count;
}

void People::ReplaceFolded(Index person, const std::string& folded)
{
    const std::size_t before = Folded(person).size();
    m_folded.replace(m_begins[person], before, folded);
    if (folded.size() != before) {
        for (std::size_t next = std::size_t{person} + 1; next < m_begins.size(); ++next) {
            m_begins[next] += folded.size() - before;
        }
    }
}

std::vector<People::Index> People::WithWords(const std::vector<std::string>& words) const
{
    std::vector<Index> found;
    if (words.empty()) {
        found.resize(m_people.size());
        std::iota(found.begin(), found.end(), Index{0});
        return found;
    }
    // The longest one is met least often.
    const std::string& rare = *std::ranges::max_element(words, {}, &std::string::size);
    for (std::size_t at = FindPart(m_folded, rare, 0); at != std::string::npos;) {
        const auto next = std::ranges::upper_bound(m_begins, at);
        const auto person = static_cast<Index>(next - m_begins.begin() - 1);
        const std::string_view texts = Folded(person);
        if (std::ranges::all_of(words,
                                [texts](const std::string& word) { return texts.find(word) != std::string::npos; })) {
            found.push_back(person);
        }
        at = FindPart(m_folded, rare, *next);
    }
    return found;
}

const std::vector<People::Index>& People::RanksBy(PeopleColumn column)
{
    std::vector<Index>& ranks = m_ranks[column];
    if (ranks.size() == m_people.size()) {
        return ranks;
    }
    std::vector<std::string> keys;
    keys.reserve(m_people.size());
    for (const Person& person : m_people) {
        keys.push_back(NameKey(person.texts[static_cast<std::size_t>(column)]));
    }
    std::vector<Index> order(m_people.size());
    std::iota(order.begin(), order.end(), Index{0});
    // Equal ones stay by login name.
    std::ranges::stable_sort(order, [&keys](Index a, Index b) { return IsBefore(keys[a], keys[b]); });
    ranks.resize(order.size());
    for (std::size_t i = 0; i < order.size(); ++i) {
        ranks[order[i]] = static_cast<Index>(i);
    }
    return ranks;
}

void People::Arrange(std::vector<Index>& people, const PeopleQuery& query)
{
    if (query.order != PeopleColumn::login) {
        const std::vector<Index>& ranks = RanksBy(query.order);
        std::ranges::sort(people, {}, [&ranks](Index person) { return ranks[person]; });
    }
    if (query.isDescending) {
        std::ranges::reverse(people);
    }
}

std::vector<int> People::Select(const PeopleQuery& query)
{
    const std::vector<std::string> words = WordsOf(query.text);
    const std::vector<bool> isIn = query.place ? MembersOf(*query.place, query.isDeep) : std::vector<bool>();
    const std::string login = query.text.starts_with(kByLogin) ? NameKey(query.text.substr(kByLogin.size())) : "";
    const std::optional<int> id = IdIn(query.text, "a user");
    const std::vector<bool> isAmong = query.among != nullptr ? FlagsOf(*query.among) : std::vector<bool>();
    const auto fits = [&](Index person) {
        return (isIn.empty() || isIn[person]) && (isAmong.empty() || isAmong[person]) &&
               (m_people[person].traits & query.traits) == query.traits;
    };
    std::vector<Index> found;
    if (id) {
        const auto person = m_byId.find(*id);
        found = person == m_byId.end() ? std::vector<Index>() : std::vector<Index>{person->second};
    } else {
        found = WithWords(login.empty() ? words : std::vector<std::string>());
    }
    std::erase_if(found, [&](Index person) {
        return !fits(person) || (!login.empty() && Folded(person, PeopleColumn::login) != login);
    });
    Arrange(found, query);
    std::vector<int> ids;
    ids.reserve(found.size());
    std::ranges::transform(found, std::back_inserter(ids), [this](Index person) { return m_people[person].id; });
    return ids;
}

std::string_view People::Folded(Index person, PeopleColumn column) const
{
    std::string_view texts = Folded(person);
    for (auto before = static_cast<std::size_t>(column); before > 0; --before) {
        texts.remove_prefix(texts.find(kBetween) + 1);
    }
    return texts.substr(0, texts.find(kBetween));
}

People::MeantByName People::MeantBy(const std::vector<std::string>& names) const
{
    MeantByName meant;
    for (const std::string& name : names) {
        meant.try_emplace(NameKey(name));
    }
    // The names are few, the people may be many: one look at each of them finds all.
    std::string key;
    const auto note = [&](Index person, PeopleColumn column, std::vector<Index> Meant::* list) {
        key = Folded(person, column);
        const auto found = meant.find(key);
        if (found != meant.end() && ((found->second.*list).empty() || (found->second.*list).back() != person)) {
            (found->second.*list).push_back(person);
        }
    };
    for (Index person = 0; person < m_people.size(); ++person) {
        note(person, PeopleColumn::login, &Meant::byLogin);
        note(person, PeopleColumn::name, &Meant::byText);
        note(person, PeopleColumn::email, &Meant::byText);
    }
    return meant;
}

std::vector<People::Index> People::PeopleNamed(const std::string& name, const MeantByName& meant) const
{
    if (const std::optional<int> id = IdIn(name, "a user")) {
        const auto person = m_byId.find(*id);
        return person == m_byId.end() ? std::vector<Index>() : std::vector<Index>{person->second};
    }
    const Meant& all = meant.at(NameKey(name));
    return all.byLogin.empty() ? all.byText : all.byLogin;
}

FoundNames People::FindNames(const std::vector<std::string>& names) const
{
    const MeantByName meant = MeantBy(names);
    FoundNames found;
    std::vector<bool> isFound(m_people.size());
    for (const std::string& name : names) {
        if (name.empty()) {
            continue;
        }
        const std::vector<Index> people = PeopleNamed(name, meant);
        if (people.empty()) {
            found.missing.push_back(name);
        } else if (people.size() == 1) {
            isFound[people.front()] = true;
        } else {
            std::vector<int>& ids = found.ambiguous.emplace_back(FoundNames::Ambiguous{name, {}}).ids;
            std::ranges::transform(people, std::back_inserter(ids),
                                   [this](Index person) { return m_people[person].id; });
        }
    }
    for (Index person = 0; person < m_people.size(); ++person) {
        if (isFound[person]) {
            found.ids.push_back(m_people[person].id);
        }
    }
    return found;
}

} // namespace web
