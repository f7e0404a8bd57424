#include "web/ImportTexts.h"

#include "management/CsvWriter.h"
#include "web/CommandAnswer.h"

#include <fmt/format.h>

#include <algorithm>
#include <sstream>

namespace web {

using namespace management;

namespace {

constexpr std::size_t kLongestFile = std::size_t{32} << 20U;
constexpr std::size_t kMostTexts = 4;
constexpr std::size_t kSample = 3;

/// Where the rows begin: after the header's line.
std::size_t EndOfHeader(const std::string& text) { return std::min(text.find('\n'), text.size()); }

/// The text with other names for its columns, in their order; what has none is left out. Its lines stay where they are.
std::string WithColumns(const std::string& text, char delimiter, const JsonValue& body)
{
    const JsonValue* columns = body.Find("columns");
    if (columns == nullptr || columns->type != JsonValue::Type::array) {
        throw Error(ErrorCode::invalid, "columns is required, and is an array of names, or null for what is left out");
    }
    std::vector<std::string> names;
    for (const JsonValue& column : columns->items) {
        const bool isLeftOut = column.type == JsonValue::Type::null;
        names.push_back(isLeftOut ? fmt::format("- {}", names.size() + 1) : column.text);
    }
    std::istringstream first(text.substr(0, EndOfHeader(text)));
    const std::optional<CsvRecord> header = CsvReader(first, delimiter).Next();
    if (!header || header->fields.size() != names.size()) {
        throw Error(ErrorCode::invalid, FillPattern("the text has {} columns, and {} are named",
                                                    header ? header->fields.size() : 0, names.size()));
    }
    std::ostringstream out;
    WriteCsvRow(names, out, delimiter);
    return std::move(out).str() + text.substr(std::min(EndOfHeader(text) + 1, text.size()));
}

/// @throws Error (invalid).
std::optional<SynchronisationOptions> SynchronisationIn(const JsonValue& body)
{
    if (!MemberFlag(body, "sync")) {
        return std::nullopt;
    }
    SynchronisationOptions options{.scope = MemberText(body, "scope"),
                                   .allowPrivileges = MemberFlag(body, "allow_privileges")};
    if (options.scope.empty()) {
        throw Error(ErrorCode::invalid, "sync takes a scope, the view or group whose people the text has");
    }
    if (const std::string action = MemberText(body, "leavers"); !action.empty()) {
        ReadLeaverAction(action, options);
    }
    if (const std::string most = MemberText(body, "max_leavers"); !most.empty()) {
        options.limit = RemovalLimit("max_leavers", most);
    }
    return options;
}

} // namespace

char DelimiterIn(const JsonValue& body)
{
    const std::string text = MemberText(body, "delimiter");
    if (text.size() != 1 || text == "\"" || text == "\n" || text == "\r") {
        throw Error(ErrorCode::invalid, "delimiter is the one character between values");
    }
    return text.front();
}

std::size_t ImportTexts::AddText(const std::string& session, const std::string& part, bool isFirst)
{
    const std::lock_guard lock(m_mutex);
    auto own = std::ranges::find(m_texts, session, &std::pair<std::string, std::string>::first);
    if (own == m_texts.end()) {
        if (!isFirst) {
            throw Error(ErrorCode::invalid, "the beginning of this text is no longer kept; send it again");
        }
        if (m_texts.size() == kMostTexts) {
            m_texts.erase(m_texts.begin());
        }
        own = m_texts.insert(m_texts.end(), {session, ""});
    }
    if (isFirst) {
        own->second.clear();
    }
    if (own->second.size() + part.size() > kLongestFile) {
        m_texts.erase(own);
        throw Error(ErrorCode::invalid, "a text has at most 32 MiB; longer files are for qvadmin user import");
    }
    own->second += part;
    return own->second.size();
}

std::string ImportTexts::TextOf(const std::string& session) const
{
    const std::lock_guard lock(m_mutex);
    const auto own = std::ranges::find(m_texts, session, &std::pair<std::string, std::string>::first);
    if (own == m_texts.end()) {
        throw Error(ErrorCode::invalid, "no text was sent to import; send it first");
    }
    return own->second;
}

void ImportTexts::WriteLook(JsonWriter& json, const std::string& session, char delimiter) const
{
    std::istringstream in(TextOf(session));
    CsvReader reader(in, delimiter);
    const std::optional<CsvRecord> header = reader.Next();
    if (!header || !header->problem.IsEmpty() || header->line != 1) {
        throw Error(ErrorCode::invalid, "the first line does not hold the names of the columns");
    }
    WriteTexts(json, "columns", header->fields);
    json.WriteName("sample");
    json.BeginArray();
    std::int64_t rows = 0;
    while (const std::optional<CsvRecord> record = reader.Next()) {
        if (static_cast<std::size_t>(rows++) < kSample) {
            json.BeginArray();
            for (const std::string& field : record->fields) {
                json.Write(TextValue(field));
            }
            json.End();
        }
    }
    json.End();
    json.WriteMember("rows", rows);
    std::vector<std::string> known;
    std::ranges::transform(ImportColumns(), std::back_inserter(known),
                           [](std::string_view name) { return std::string(name); });
    WriteTexts(json, "known", known);
}

std::shared_ptr<Import> ImportTexts::ImportOf(const std::string& session, const std::string& login,
                                              const JsonValue& body) const
{
    Import::Order order;
    order.login = login;
    order.delimiter = DelimiterIn(body);
    order.dryRun = MemberFlag(body, "dry_run");
    order.reason = MemberText(body, "reason");
    order.options.update = MemberFlag(body, "update");
    order.options.allowPrivileges = MemberFlag(body, "allow_privileges");
    if (const std::string view = MemberText(body, "departments"); !view.empty()) {
        order.options.departments = view;
    }
    order.options.makeView = MemberFlag(body, "make_view");
    order.options.makeGroups = !MemberFlag(body, "no_new_groups");
    order.synchronisation = SynchronisationIn(body);
    order.agreed = MemberText(body, "agreed");
    order.options.update = order.options.update || order.synchronisation;
    order.options.columns.ignoreUnknown = true;
    order.options.columns.dateFormat = MemberText(body, "date_format");
    order.options.columns.clearEmpty = MemberFlag(body, "clear_empty");
    order.text = WithColumns(TextOf(session), order.delimiter, body);
    order.rows =
        std::max(0L, static_cast<long>(std::ranges::count(order.text, '\n')) - (order.text.ends_with('\n') ? 1 : 0));
    return std::make_shared<Import>(std::move(order));
}

} // namespace web
