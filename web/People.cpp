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

/// @param condition  SQL, which people; empty: all.
std::string SelectPeople(const std::string& condition)
{
    return fmt::format(
        "SELECT Col_ID, Col_LoginName, Col_Name, Col_EMail, Col_Mobile, Col_DeptInfo, Col_o_JobTitle, Col_Disabled, "
        "Col_IsSuper, CASE WHEN {} THEN 1 ELSE 0 END, CASE WHEN {} THEN 1 ELSE 0 END FROM qv_User{}",
        check::kHasPlainPassword, check::kHasNoPassword, condition.empty() ? "" : " WHERE " + condition);
}

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
    person.Set(Trait::plainPassword, NumberIn(row, next + 2) != 0);
    person.Set(Trait::noPassword, NumberIn(row, next + 3) != 0);
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

/// The first number that is greater than another one, which is looked for nearby first. @param numbers  from some that
/// is not greater on, sorted; the last one is greater.
template <class Iterator>
Iterator FirstAfter(Iterator numbers, Iterator end, std::size_t number)
{
    std::ptrdiff_t step = 1;
    while (step < end - numbers && numbers[step] <= number) {
        numbers += step;
        step *= 2;
    }
    return std::upper_bound(numbers, numbers + std::min(step + 1, end - numbers), number);
}

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

std::string SortKey(std::string_view text)
{
    constexpr std::size_t most = 255;
    std::string key;
    key.reserve(text.size() + 2);
    while (!text.empty()) {
        if (!IsDigit(text.front())) {
            key += text.front();
            text.remove_prefix(1);
            continue;
        }
        // Of two numbers the one of more digits is greater.
        const std::string_view number = TakeNumber(text);
        key += '0';
        key.append(number.size() / most, static_cast<char>(most));
        key += static_cast<char>(number.size() % most);
        key += number;
    }
    return key;
}

People::People(CAConnect& conn) : m_organisation(conn, UserCounts::leftOut)
{
    LoadPeople(conn);
    LoadMembers(conn);
}

void People::LoadPeople(CAConnect& conn)
{
    EachRow(conn, SelectPeople(""), [this](CARecordset& row) { m_people.push_back(ReadPerson(row)); });
    SortByLogin();
    m_begins.reserve(m_people.size() + 1);
    m_begins.push_back(0);
    m_ids.reserve(m_people.size());
    m_byId.reserve(m_people.size());
    for (const Person& person : m_people) {
        m_byId[person.id] = static_cast<Index>(m_ids.size());
        m_ids.push_back(person.id);
        m_folded += FoldedTexts(person);
        m_begins.push_back(m_folded.size());
    }
    m_people.shrink_to_fit();
    m_folded.shrink_to_fit();
    m_byteCounts = CountBytes(m_folded);
    m_countedBy.resize(m_people.size());
}

void People::SortByLogin()
{
    struct Place {
        std::string key;
        std::string login; ///< in capitals: the keys of 7 and 007 are the same
        int id;
        Index from; ///< where the person is

        auto operator<=>(const Place&) const = default;
    };
    std::vector<Place> places;
    places.reserve(m_people.size());
    for (const Person& person : m_people) {
        std::string login = NameKey(person.texts.front());
        std::string key = SortKey(login);
        places.push_back({std::move(key), std::move(login), person.id, static_cast<Index>(places.size())});
    }
    std::ranges::sort(places);
    std::vector<Person> sorted;
    sorted.reserve(m_people.size());
    for (const Place& place : places) {
        sorted.push_back(std::move(m_people[place.from]));
    }
    m_people = std::move(sorted);
}

bool People::Refresh(CAConnect& conn, const std::vector<int>& ids)
{
    std::size_t found = 0;
    bool isEnough = true;
    const std::string condition = fmt::format("Col_ID IN ({})", fmt::join(ids, ", "));
    EachRow(conn, SelectPeople(condition), [&](CARecordset& row) {
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
    m_ranks.clear();
    return isEnough && found == ids.size();
}

void People::LoadMembers(CAConnect& conn)
{
    for (Person& person : m_people) {
        person.Set(Trait::noGroup);
    }
    EachRow(conn,
            fmt::format("SELECT Col_QvItemType, Col_QvItemID, Col_DQvItemID FROM qv_Relation WHERE Col_QvItemType IN "
                        "({}, {}) AND Col_DQvItemType = {} AND Col_RelType = {}",
                        kItemTypeGroup, kItemTypeView, kItemTypeUser, kMembership),
            [this](CARecordset& row) {
                if (const auto person = m_byId.find(NumberIn(row, 3)); person != m_byId.end()) {
                    m_members[{NumberIn(row, 1), NumberIn(row, 2)}].push_back(person->second);
                    m_people[person->second].Set(Trait::noGroup, false);
                }
            });
    // The same link may be there twice.
    for (auto& [place, members] : m_members) {
        std::ranges::sort(members);
        members.erase(std::ranges::unique(members).begin(), members.end());
        members.shrink_to_fit();
    }
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
    const auto rare = std::ranges::min_element(words, {}, [this](const std::string& word) {
        return std::pair(CountInSample(word), -static_cast<std::ptrdiff_t>(word.size()));
    });
    const PartFinder finder(*rare, m_byteCounts);
    const auto hasOthers = [&](std::string_view texts) {
        return std::ranges::all_of(words, [&](const std::string& word) {
            return &word == &*rare || texts.find(word) != std::string_view::npos;
        });
    };
    auto next = m_begins.begin();
    for (std::size_t at = finder.Find(m_folded, 0); at != std::string::npos; at = finder.Find(m_folded, *next)) {
        next = FirstAfter(next, m_begins.end(), at);
        const auto person = static_cast<Index>(next - m_begins.begin() - 1);
        if (hasOthers(Folded(person))) {
            found.push_back(person);
        }
    }
    return found;
}

std::size_t People::CountInSample(const std::string& word) const
{
    constexpr std::size_t slices = 8;
    constexpr std::size_t length = 4096;
    const PartFinder finder(word, m_byteCounts);
    std::size_t count = 0;
    for (std::size_t i = 0; i < slices; ++i) {
        const std::string_view slice = std::string_view(m_folded).substr(m_folded.size() / slices * i, length);
        for (std::size_t at = finder.Find(slice, 0); at != std::string_view::npos; at = finder.Find(slice, at + 1)) {
            ++count;
        }
    }
    return count;
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
        keys.push_back(SortKey(NameKey(person.texts[static_cast<std::size_t>(column)])));
    }
    std::vector<Index> order(m_people.size());
    std::iota(order.begin(), order.end(), Index{0});
    // Equal ones stay by login name.
    std::ranges::stable_sort(order, {}, [&keys](Index person) -> const std::string& { return keys[person]; });
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
               (query.traits.none() || (m_people[person].traits & query.traits) == query.traits);
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
    std::ranges::transform(found, std::back_inserter(ids), [this](Index person) { return m_ids[person]; });
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
