#include "web/Reader.h"

#include "basefun/ItemTypes.h"
#include "dbaccess/CAConnect.h"
#include "management/Command.h"
#include "management/Items.h"
#include "management/JsonWriter.h"
#include "management/Query.h"
#include "management/Text.h"
#include "web/CommandAnswer.h"
#include "web/JsonResponse.h"
#include "web/Problem.h"
#include "web/Tokens.h"

#include <fmt/chrono.h>
#include <fmt/format.h>
#include <malloc.h>

#include <algorithm>
#include <ctime>
#include <span>

namespace web {

using namespace management;

namespace {

constexpr std::chrono::seconds kOld{30};
constexpr std::chrono::seconds kLookedAtLately{60};
/// Of a large directory the snapshot lasts longer, so that reading takes a small part of the time.
constexpr int kPartsOfTime = 10;
constexpr Range kOffsets{0, std::numeric_limits<int>::max()};
constexpr Range kLimits{1, 500};
constexpr std::int64_t kUsualLimit = 200;
constexpr std::size_t kMostFound = 50;

std::size_t NumberIn(const Request& request, std::string_view name, Range range, std::int64_t otherwise)
{
    const std::string text = request.Parameter(name);
    return static_cast<std::size_t>(text.empty() ? otherwise : binding::ReadNumber(name, text, range, range));
}

void RequireKnown(const Request& request, std::initializer_list<std::string_view> known,
                  std::span<const std::string_view> alsoKnown = {})
{
    for (const auto& [name, value] : request.query) {
        if (std::ranges::find(known, name) == known.end() && std::ranges::find(alsoKnown, name) == alsoKnown.end()) {
            throw Error(ErrorCode::invalid, FillPattern("there is no parameter {}", Quoted(name)));
        }
    }
}

bool FlagIn(const Request& request, std::string_view name, bool otherwise)
{
    const std::string text = request.Parameter(name);
    if (!text.empty() && text != "0" && text != "1") {
        throw Error(ErrorCode::invalid, FillPattern("{} is neither 0 nor 1", name));
    }
    return text.empty() ? otherwise : text == "1";
}

/// "group:12" or "view:4".
std::string KeyText(ItemKey key) { return fmt::format("{}:{}", TypeName(key.type), key.id); }

ItemKey ReadKey(const std::string& text)
{
    for (const int type : {kItemTypeGroup, kItemTypeView}) {
        const std::string prefix = TypeName(type) + ":";
        if (text.starts_with(prefix)) {
            return {type,
                    static_cast<int>(binding::ReadNumber("number", text.substr(prefix.size()), {}, binding::kInt))};
        }
    }
    throw Error(ErrorCode::invalid, FillPattern("{} is not a place; write group:NUMBER or view:NUMBER", Quoted(text)));
}

const Node& RequireNode(const Organisation& organisation, ItemKey key)
{
    const Node* node = organisation.Find(key);
    if (node == nullptr) {
        throw Error(ErrorCode::notFound, FillPattern("there is no {}", KeyText(key)));
    }
    return *node;
}

void WritePerson(JsonWriter& json, const Person* person, int id)
{
    json.BeginObject();
    json.WriteMember("id", std::int64_t{id});
    if (person == nullptr) {
        json.WriteMember("gone", true);
    } else {
        for (std::size_t i = 0; i < kPeopleColumns.size(); ++i) {
            json.WriteMember(kPeopleColumns[i], TextValue(person->texts[i]));
        }
        json.WriteMember("locked", person->Is(Trait::locked));
    }
    json.End();
}

/// A line of the tree.
void WriteNode(JsonWriter& json, People& people, const Node& node)
{
    json.BeginObject();
    json.WriteMember("key", TextValue(KeyText(node.key)));
    json.WriteMember("name", TextValue(node.name));
    json.WriteMember("people", static_cast<std::int64_t>(people.CountIn(node.key)));
    json.WriteMember("children", static_cast<std::int64_t>(node.children.size()));
    json.WriteMember("places", static_cast<std::int64_t>(node.parents.size()));
    json.End();
}

/// The way to a place from the top, as it is named by its path.
void WriteTrail(JsonWriter& json, const Organisation& organisation, const Node& node)
{
    std::vector<const Node*> trail;
    for (const Node* step = &node; trail.size() < organisation.Nodes().size();) {
        trail.push_back(step);
        if (!step->parent) {
            break;
        }
        step = &organisation.Nodes()[*step->parent];
    }
    json.WriteName("trail");
    json.BeginArray();
    std::ranges::reverse(trail);
    for (const Node* step : trail) {
        json.BeginObject();
        json.WriteMember("key", TextValue(KeyText(step->key)));
        json.WriteMember("name", TextValue(step->name));
        json.End();
    }
    json.End();
}

bool HangsNowhere(const Node& node) { return node.key.type == kItemTypeGroup && !node.isReachable && !node.parent; }

/// What is shown under a place; at the top the views.
std::vector<const Node*> ChildrenOf(const Organisation& organisation, const std::string& parent)
{
    std::vector<const Node*> children;
    if (parent.empty() || parent == "nowhere") {
        for (const Node& node : organisation.Nodes()) {
            const bool isTop = node.key.type == kItemTypeView && node.viewType == kSystemView;
            if (parent.empty() ? isTop : HangsNowhere(node)) {
                children.push_back(&node);
            }
        }
        return children;
    }
    for (const std::size_t child : RequireNode(organisation, ReadKey(parent)).children) {
        children.push_back(&organisation.Nodes()[child]);
    }
    return children;
}

PeopleQuery ReadQuery(const Request& request)
{
    PeopleQuery query;
    query.text = request.Parameter("q");
    if (const std::string place = request.Parameter("in"); !place.empty()) {
        query.place = ReadKey(place);
    }
    query.isDeep = FlagIn(request, "deep", true);
    for (std::size_t i = 0; i < kTraits.size(); ++i) {
        query.traits[i] = FlagIn(request, kTraits[i], false);
    }
    std::string order = request.Parameter("sort");
    if (order.starts_with('-')) {
        query.isDescending = true;
        order.erase(0, 1);
    }
    if (!order.empty()) {
        const auto* const column = std::ranges::find(kPeopleColumns, order);
        if (column == kPeopleColumns.end()) {
            throw Error(ErrorCode::invalid, FillPattern("people are not sorted by {}", Quoted(order)));
        }
        query.order = static_cast<PeopleColumn>(column - kPeopleColumns.begin());
    }
    return query;
}

} // namespace

CAConnect& Reader::Connection()
{
    if (!m_conn || !m_conn->IsOpen()) {
        m_conn = m_open();
        m_version.reset(); // counts of another connection say nothing
    }
    return *m_conn;
}

std::optional<int> Reader::Version()
{
    const bool isCounted =
        WithDatabaseErrors(Connection(), [this] { return Connection().GetEngineName().View().starts_with("SQLite"); });
    return isCounted ? std::optional(Number(Connection(), "PRAGMA data_version")) : std::nullopt;
}

bool Reader::MayHaveChanged()
{
    const std::optional<int> version = Version();
    return !version || version != m_version;
}

void Reader::NoteRead()
{
    m_read = m_clock();
    m_asOf = fmt::format("{:%Y-%m-%dT%H:%M:%SZ}", fmt::gmtime(std::time(nullptr)));
}

void Reader::Load()
{
    // Changes made while it reads are not surely in it.
    const std::uint64_t changes = m_changes;
    const auto begin = m_clock();
    m_version = Version();
    m_people.emplace(Connection());
    // What it was read by is much, and is given back to the system.
    ::malloc_trim(0);
    m_seen = changes;
    NoteRead();
    m_readingTime = m_read - begin;
}

void Reader::NoteUsers(const std::vector<int>& ids) noexcept
{
    if (!m_people || m_seen != m_changes) {
        return;
    }
    try {
        if (!m_people->Refresh(Connection(), ids)) {
            NoteChange();
        }
    } catch (const std::exception&) {
        NoteChange();
    }
}

People& Reader::Fresh()
{
    m_asked = m_clock();
    const bool isOld = m_people && m_asked - m_read > std::max<std::chrono::steady_clock::duration>(
                                                          kLookedAtLately, kPartsOfTime * m_readingTime);
    if (!m_people || m_seen != m_changes || (isOld && MayHaveChanged())) {
        Load();
    } else if (isOld) {
        NoteRead();
    }
    return *m_people;
}

void Reader::Refresh() noexcept
{
    const auto now = m_clock();
    const bool isOld =
        now - m_read >= std::max<std::chrono::steady_clock::duration>(kOld, kPartsOfTime * m_readingTime);
    if (!m_people || now - m_asked > kLookedAtLately || (!isOld && m_seen == m_changes)) {
        return;
    }
    try {
        if (m_seen != m_changes || MayHaveChanged()) {
            Load();
        } else {
            NoteRead();
        }
    } catch (const std::exception&) {
        // The next request tries again, and gets the reason.
        m_people.reset();
    }
}

Response Reader::Users(const Request& request, const std::string& session)
{
    RequireKnown(request, {"q", "in", "deep", "sort", "among", "result", "offset", "limit"}, kTraits);
    const std::size_t offset = NumberIn(request, "offset", kOffsets, 0);
    const std::size_t limit = NumberIn(request, "limit", kLimits, kUsualLimit);
    std::string name = request.Parameter("result");
    People& people = name.empty() || !m_people ? Fresh() : *m_people;
    m_asked = m_clock();
    const Results::Ids among =
        request.Parameter("among").empty() ? nullptr : m_results.Find(request.Parameter("among"), session);
    if (name.empty() && (among || request.Parameter("among").empty())) {
        PeopleQuery query = ReadQuery(request);
        if (query.place) {
            RequireNode(people.Nodes(), *query.place);
        }
        query.among = among.get();
        name = m_results.Keep(session, people.Select(query));
    }
    const Results::Ids found = m_results.Find(name, session);
    if (!found) {
        return ResponseOf({410, "result_gone", kResultGone});
    }
    const std::vector<int>& ids = *found;
    return JsonResponse([&](JsonWriter& json) {
        json.WriteMember("result", TextValue(name));
        json.WriteMember("total", static_cast<std::int64_t>(ids.size()));
        json.WriteMember("offset", static_cast<std::int64_t>(offset));
        json.WriteMember("as_of", TextValue(m_asOf));
        if (const std::string place = request.Parameter("in"); !place.empty()) {
            const Node& node = RequireNode(people.Nodes(), ReadKey(place));
            json.WriteMember("path", TextValue(people.Nodes().PathOf(node.key)));
            WriteTrail(json, people.Nodes(), node);
        }
        json.WriteName("rows");
        json.BeginArray();
        for (std::size_t i = offset; i < std::min(offset + limit, ids.size()); ++i) {
            WritePerson(json, people.Find(ids[i]), ids[i]);
        }
        json.End();
    });
}

Response Reader::FindNames(const std::vector<std::string>& names, const std::string& session)
{
    People& people = Fresh();
    FoundNames found = people.FindNames(names);
    const std::size_t total = found.ids.size();
    const std::string result = m_results.Keep(session, std::move(found.ids));
    return JsonResponse([&](JsonWriter& json) {
        json.WriteMember("result", TextValue(result));
        json.WriteMember("total", static_cast<std::int64_t>(total));
        WriteTexts(json, "missing", found.missing);
        json.WriteName("ambiguous");
        json.BeginArray();
        for (const FoundNames::Ambiguous& name : found.ambiguous) {
            json.BeginObject();
            json.WriteMember("name", TextValue(name.name));
            json.WriteName("people");
            json.BeginArray();
            for (std::size_t i = 0; i < std::min(kMostFound, name.ids.size()); ++i) {
                WritePerson(json, people.Find(name.ids[i]), name.ids[i]);
            }
            json.End();
            json.End();
        }
        json.End();
    });
}

Response Reader::Tree(const Request& request)
{
    RequireKnown(request, {"parent", "offset", "limit"});
    const std::size_t offset = NumberIn(request, "offset", kOffsets, 0);
    const std::size_t limit = NumberIn(request, "limit", kLimits, kUsualLimit);
    People& people = Fresh();
    const Organisation& organisation = people.Nodes();
    const std::string parent = request.Parameter("parent");
    const std::vector<const Node*> children = ChildrenOf(organisation, parent);
    return JsonResponse([&](JsonWriter& json) {
        json.WriteMember("total", static_cast<std::int64_t>(children.size()));
        json.WriteMember("offset", static_cast<std::int64_t>(offset));
        if (parent.empty()) {
            json.WriteMember("nowhere",
                             static_cast<std::int64_t>(std::ranges::count_if(organisation.Nodes(), HangsNowhere)));
        }
        json.WriteName("rows");
        json.BeginArray();
        for (std::size_t i = offset; i < std::min(offset + limit, children.size()); ++i) {
            WriteNode(json, people, *children[i]);
        }
        json.End();
    });
}

Response Reader::FindInTree(const Request& request)
{
    RequireKnown(request, {"q"});
    const std::string part = NameKey(request.Parameter("q"));
    const Organisation& organisation = Fresh().Nodes();
    std::vector<const Node*> found;
    for (const Node& node : organisation.Nodes()) {
        if (node.nameKey.find(part) != std::string::npos) {
            found.push_back(&node);
        }
    }
    return JsonResponse([&](JsonWriter& json) {
        json.WriteMember("total", static_cast<std::int64_t>(found.size()));
        json.WriteName("rows");
        json.BeginArray();
        for (std::size_t i = 0; i < std::min(kMostFound, found.size()); ++i) {
            json.BeginObject();
            json.WriteMember("key", TextValue(KeyText(found[i]->key)));
            json.WriteMember("name", TextValue(found[i]->name));
            json.WriteMember("path", TextValue(organisation.PathOf(found[i]->key)));
            WriteTrail(json, organisation, *found[i]);
            json.End();
        }
        json.End();
    });
}

Response Reader::Overview()
{
    People& people = Fresh();
    const Organisation& organisation = people.Nodes();
    const auto countOf = [&organisation](int type) {
        return static_cast<std::int64_t>(
            std::ranges::count_if(organisation.Nodes(), [type](const Node& node) { return node.key.type == type; }));
    };
    const CString engine = WithDatabaseErrors(Connection(), [&] { return Connection().GetEngineName(); });
    return JsonResponse([&](JsonWriter& json) {
        json.WriteMember("engine", TextValue(std::string(engine.View())));
        json.WriteMember("users", static_cast<std::int64_t>(people.Count()));
        for (std::size_t i = 0; i < kTraits.size(); ++i) {
            json.WriteMember(kTraits[i], static_cast<std::int64_t>(people.CountOf(static_cast<Trait>(i))));
        }
        json.WriteMember("nowhere",
                         static_cast<std::int64_t>(std::ranges::count_if(organisation.Nodes(), HangsNowhere)));
        json.WriteMember("groups", countOf(kItemTypeGroup));
        json.WriteMember("views", countOf(kItemTypeView));
        json.WriteMember("as_of", TextValue(m_asOf));
    });
}

} // namespace web
