#include "tests/escaping/TextCall.h"

#include "DeclaredCalls.h"
#include "testing/ScriptedDriver.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <optional>
#include <stdexcept>

namespace escaping {

namespace {

// What a text consists of: between the ends that find it again, a quote and a backslash in either order. No letter
// changes when it is upper-cased.
std::string Begin(std::size_t index) { return fmt::format("B{:02}", index); }
std::string End(std::size_t index) { return fmt::format("E{:02}", index); }

std::optional<Treatment> TreatmentOf(std::string_view middle)
{
    static const std::map<std::string_view, Treatment> treatments = {{R"('\')", Treatment::asItIs},
                                                                     {R"(''\'')", Treatment::quotes},
                                                                     {R"('\\')", Treatment::backslashes},
                                                                     {R"(''\\'')", Treatment::quotesAndBackslashes}};
    const auto found = treatments.find(middle);
    return found == treatments.end() ? std::nullopt : std::optional(found->second);
}

// Enough for the reads before an operation's last statement, and an end for those that go down a tree.
constexpr int kRepliesWithARow = 4;

std::vector<std::string> StatementsOf(const TextCall& call, const std::vector<CString>& texts, int kind, bool withRows)
{
    scripted::Database database;
    for (int i = 0; withRows && i < kRepliesWithARow; ++i) {
        database.Answer(scripted::Rows({std::vector<scripted::Value>(12, "1")}));
    }
    CAConnect conn;
    database.Connect(conn, kind);
    call.run(conn, texts, kind);
    std::vector<std::string> sent = database.queries;
    sent.insert(sent.end(), database.executions.begin(), database.executions.end());
    return sent;
}

/// What was done to a text in statements; nothing where none has it. @throws std::runtime_error for different things.
std::optional<Treatment> TreatmentIn(const TextCall& call, const std::vector<std::string>& sent, std::size_t text)
{
    const std::string begin = Begin(text);
    std::optional<Treatment> treatment;
    for (const std::string& sql : sent) {
        for (std::size_t at = sql.find(begin); at != std::string::npos; at = sql.find(begin, at + 1)) {
            const std::size_t from = at + begin.size();
            const auto seen = TreatmentOf(std::string_view(sql).substr(from, sql.find(End(text), from) - from));
            if (!seen || treatment.value_or(*seen) != *seen) {
                throw std::runtime_error(call.declaration + " sends " + call.texts[text] + " so: " + sql);
            }
            treatment = seen;
        }
    }
    return treatment;
}

} // namespace

std::vector<std::string> TextParameters(std::string_view parameters)
{
    constexpr std::string_view type = "CString ";
    std::vector<std::string> names;
    for (std::size_t at = parameters.find(type); at != std::string_view::npos; at = parameters.find(type, at)) {
        at += type.size();
        names.emplace_back(parameters.substr(at, parameters.find(',', at) - at));
    }
    return names;
}

std::vector<Treatments> Observe(const TextCall& call)
{
    std::vector<CString> texts;
    for (std::size_t i = 0; i < call.texts.size(); ++i) {
        texts.emplace_back((Begin(i) + R"('\')" + End(i)).c_str());
    }
    std::vector<Treatments> observed(texts.size());
    const CString olderError = CQVBaseFun::m_strLastError;
    for (const int kind : kKinds) {
        CQVBaseFun::m_strLastError = "";
        std::vector<std::string> sent = StatementsOf(call, texts, kind, false);
        const bool refused = sent.empty() && !CQVBaseFun::m_strLastError.IsEmpty();
        std::ranges::copy(StatementsOf(call, texts, kind, true), std::back_inserter(sent));
        for (std::size_t i = 0; i < texts.size(); ++i) {
            const std::optional<Treatment> treatment = TreatmentIn(call, sent, i);
            observed[i].push_back(treatment.value_or(refused ? Treatment::refused : Treatment::notUsed));
        }
    }
    CQVBaseFun::m_strLastError = olderError;
    return observed;
}

std::vector<ObservedCall> ObserveAll()
{
    std::vector<ObservedCall> all;
    for (TextCall& call : DeclaredCalls()) {
        if (!call.texts.empty()) {
            std::vector<Treatments> texts = Observe(call);
            all.push_back({std::move(call), std::move(texts)});
        }
    }
    return all;
}

CString EscapeFor(const Treatments& treatments, const CAConnect& conn, const CString& text)
{
    const auto kind = std::ranges::find(kKinds, conn.m_nDBType) - kKinds.begin();
    switch (treatments.at(static_cast<std::size_t>(kind))) {
    case Treatment::asItIs:
        return conn.EscapeLiteral(text);
    case Treatment::quotes:
        return conn.EscapeBackslashes(text);
    case Treatment::backslashes:
        return conn.EscapeQuotes(text);
    case Treatment::notUsed:
    case Treatment::refused:
    case Treatment::quotesAndBackslashes:
        return text;
    }
    return text;
}

} // namespace escaping
