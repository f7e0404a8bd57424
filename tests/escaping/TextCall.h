#pragma once

#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "platform/CString.h"

#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

// Any operation as a call that takes nothing but its texts.

namespace escaping {

/// An operation of CQVBaseFun or of a record class.
struct TextCall {
    std::string name;        // "InsertUser", "CGroupItem::SaveData"
    std::string declaration; // "InsertUser(CAConnect& conn, ...)"; of a record the same as its name
    bool isRecord;
    std::vector<std::string> texts; // the names of the parameters or members that take a text
    /// @param texts  one for each name. Every number is set to `number`; outputs are dropped.
    std::function<void(CAConnect& conn, const std::vector<CString>& texts, int number)> run;
};

/// The names of the CString parameters that are passed by value: "CAConnect& conn, CString name, int id" has name.
std::vector<std::string> TextParameters(std::string_view parameters);

/// Gives an argument its value, the next text if it takes one.
template <class Argument>
void Fill(Argument& argument, bool isOutput, const std::vector<CString>& texts, std::size_t& next, int number)
{
    if (isOutput) {
        return;
    }
    if constexpr (std::is_same_v<Argument, CString>) {
        argument = texts.at(next++);
    } else if constexpr (std::is_arithmetic_v<Argument>) {
        argument = static_cast<Argument>(number);
    }
}

template <class Result, class... Args>
TextCall Operation(std::string name, std::string_view parameters, Result (*operation)(CAConnect&, Args...))
{
    TextCall call{name, name + "(" + std::string(parameters) + ")", false, TextParameters(parameters), {}};
    call.run = [operation](CAConnect& conn, const std::vector<CString>& texts, int number) {
        std::tuple<std::remove_reference_t<Args>...> arguments{};
        std::size_t next = 0;
        std::apply([&](auto&... each) { (Fill(each, std::is_reference_v<Args>, texts, next, number), ...); },
                   arguments);
        std::apply([&](auto&... each) { operation(conn, static_cast<Args>(each)...); }, arguments);
    };
    return call;
}

template <class Record>
using TextMembers = std::vector<std::pair<const char*, CString Record::*>>;

template <class Record, class Result>
TextCall RecordOperation(const std::string& type, const std::string& name, Result (Record::*operation)(CAConnect&),
                         TextMembers<Record> members)
{
    TextCall call{type + "::" + name, type + "::" + name, true, {}, {}};
    for (const auto& member : members) {
        call.texts.emplace_back(member.first);
    }
    call.run = [operation, members](CAConnect& conn, const std::vector<CString>& texts, int) {
        Record record;
        for (std::size_t i = 0; i < members.size(); ++i) {
            record.*members[i].second = texts.at(i);
        }
        (record.*operation)(conn);
    };
    return call;
}

/// What an operation does to a text on one engine kind.
enum class Treatment {
    notUsed, // the text is in no statement
    refused, // the text is no date, and nothing was sent
    asItIs,
    quotes,               // doubled
    backslashes,          // doubled
    quotesAndBackslashes, // both doubled
};

/// What an operation does to a text, by engine kind: 0, 1, 3 and 6, in this order.
using Treatments = std::vector<Treatment>;
inline const std::vector<int> kKinds = {0, 1, 3, 6};

/// Runs an operation on each kind, without rows and with, and looks for its texts in what it sent.
/// @return for each text its treatments. @throws std::runtime_error when a text is sent in two forms.
std::vector<Treatments> Observe(const TextCall& call);

/// All operations with a text, in the order of the headers, and what they do to each.
struct ObservedCall {
    TextCall call;
    std::vector<Treatments> texts;
};
std::vector<ObservedCall> ObserveAll();

/// What a caller does to a text for such an operation, on an open connection.
CString EscapeFor(const Treatments& treatments, const CAConnect& conn, const CString& text);

} // namespace escaping
