#pragma once

#include "management/Call.h"
#include "management/Level.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

// Commands as data: what a command is called, takes and gives, and how it is run. A front end walks over the rows; it
// knows no command by name.

namespace management {

enum class Effect : std::uint8_t { read, create, change, remove };
enum class Duration : std::uint8_t { instant, longRunning }; ///< longRunning: shows progress; in a server a job
enum class Risk : std::uint8_t { normal, stepUp };           ///< stepUp: a server asks for the caller's password again

/// What a value means: how it is completed, picked in a form, described to programs.
enum class Kind : std::uint8_t {
    text,
    number,
    flag,
    date,
    choice,
    power,
    secret,
    file,
    user,
    group,
    view,
    holder,
    item,
    role,
    title,
    plan,
    documentRoot,
    folder,
    addIn,
    package,
    rows, ///< of a record's part
};

struct Range {
    std::int64_t least;
    std::int64_t most;
};
/// Of the ids that engines give.
inline constexpr Range kIds{1, std::numeric_limits<int>::max()};
/// Of options that limit how many rows come.
inline constexpr Range kLimit{1, std::numeric_limits<int>::max()};

// What the parameters of several nouns are for.
inline constexpr std::string_view kDescriptionHelp = "what it is for";
inline constexpr std::string_view kSortIndexHelp = "position; lower comes first";

/// Words to choose from; empty ones count for none.
struct OneOf {
    std::array<std::string_view, 6> words;
};
struct NamedText {
    std::string_view name;
    std::string_view help;
    bool isFlag;
};
/// Gives the options of a parameter that is a set of them, such as the columns of a table.
using ListNamedTexts = std::vector<NamedText> (*)();
/// Gives the words to choose from, where the table of commands has them.
using ListWords = std::vector<std::string_view> (*)();
using Check = std::variant<std::monostate, Range, OneOf, ListNamedTexts, ListWords>;

/// The words that a check lets one choose from; none where it is of another kind.
std::vector<std::string_view> WordsOf(const Check& check);

/// Texts by the name of their option, as given; a flag's is "1" or "0".
using NamedTexts = std::map<std::string, std::string, std::less<>>;
/// Values that need not be given.
using OptionalTexts = std::optional<std::vector<std::string>>;

/// The member of a command's input that a parameter fills. What the member is says whether the parameter is needed: a
/// std::string, a number or a std::vector of positional values is, an optional or a flag is not.
template <class In>
using Target = std::variant<std::string In::*, std::optional<std::string> In::*, int In::*, std::optional<int> In::*,
                            std::optional<std::uint32_t> In::*, bool In::*, std::optional<bool> In::*,
                            std::vector<std::string> In::*, OptionalTexts In::*, NamedTexts In::*>;

/// One parameter. A name in capitals is a positional one; another is an option, whose words have _ between them here
/// and - on a command line. An optional<bool> is an option that has a --no- form too. A secret fills a bool: whether it
/// was given; its value comes from FrontEnd::ObtainSecret.
template <class In>
struct Param {
    using Input = In;

    std::string_view name;
    Target<In> target;
    Kind kind;
    std::string_view help;
    Check check = {};
    std::string_view excludes = {}; ///< the name of a parameter that cannot be given beside this one
};

/// A parameter as front ends see it.
struct ParamInfo {
    std::string_view name;
    Kind kind = Kind::text;
    std::string_view help;
    Check check;
    std::string_view excludes;
    bool isPositional = false;
    bool isRequired = false;
    bool isList = false;
    bool isNegatable = false;
    bool isSet = false; ///< stands for the options that its check lists
};

std::vector<ParamInfo> ListOf(std::span<const ParamInfo> params);

/// A column of a table, or a member of a record.
struct Column {
    std::string_view name;
    Kind kind = Kind::text;
};

/// Where the values of parameters come from.
class ArgumentSource {
public:
    virtual ~ArgumentSource() = default;

    /// What was given for a parameter, in its order; empty: it was not given. A flag's is "1" or "0".
    [[nodiscard]] virtual std::vector<std::string> ValuesOf(std::string_view name) const = 0;
};

/// Up to six command lines; unused places at the end are empty.
using Examples = std::array<std::string_view, 6>;
/// Those that there are. They outlive what is returned.
constexpr std::span<const std::string_view> GivenOf(const Examples& examples)
{
    return {examples.begin(), std::ranges::find(examples, std::string_view())};
}

/// What a command takes, and how it is run: one of those below, such as Read or Write, which look after both.
struct Handler {
    std::vector<ParamInfo> (*params)() = [] { return std::vector<ParamInfo>(); };
    Result (*run)(Call& call, const ArgumentSource& source) = nullptr;
    /// Of a command that writes, whether it only reads with these arguments; null: it never does. @throws Error
    /// (invalid).
    bool (*isQuestion)(const ArgumentSource& source) = nullptr;
};

/// A row of the table. One without `handler.run` heads the rows that have its two words and a third, and has neither
/// parameters nor columns.
struct Command {
    std::array<std::string_view, 3> path; ///< two or three words
    std::string_view summary;
    Examples examples = {};
    Sentence (*notes)() = nullptr; ///< more for its help
    Effect effect = Effect::read;
    bool asks = false; ///< shows what it will do and asks first
    Duration duration = Duration::instant;
    Risk risk = Risk::normal;
    std::optional<Level> level = {}; ///< that may run it in the web console, where LeastLevel is not to say
    std::string_view route = {};     ///< of a server, such as "/users/{USER}/rename"; empty: none
    /// Of what it gives; none: nothing, one value, a verdict, or a table that FrontEnd::TakeColumns is told of.
    std::span<const Column> columns = {};
    bool isTree = false;     ///< its rows come by FrontEnd::TakeTreeRow
    bool areRecords = false; ///< its rows have too many columns for a table that people read
    Handler handler = {};
};

/// The least level that may run a command in the web console: what is there may be read by everybody who is let in;
/// what changes something, asks for a password again or tries a secret is for those of the level full.
Level LeastLevel(const Command& command);
/// The least level that may run a command with these arguments, with which one that writes may only be asked.
/// @throws Error (invalid).
Level LeastLevel(const Command& command, const ArgumentSource& source);
/// Whether a command only reads with these arguments. @throws Error (invalid).
bool IsReading(const Command& command, const ArgumentSource& source);

/// All commands, noun by noun, in the order in which help lists them.
const std::vector<Command>& Commands();

// ---- Binding --------------------------------------------------------------------------------------------------------

namespace binding {

inline constexpr Range kInt{std::numeric_limits<int>::min(), std::numeric_limits<int>::max()};
inline constexpr Range kUnsigned{0, std::numeric_limits<std::uint32_t>::max()};

/// @throws Error (invalid), always.
[[noreturn]] void ThrowMissing(std::string_view name);
/// @param widest  the range where the check has none. @throws Error (invalid) for anything but a whole number of the
/// range.
std::int64_t ReadNumber(std::string_view name, const std::string& text, const Check& check, Range widest);
/// @return whether a name is a positional parameter's.
constexpr bool IsPositional(std::string_view name) { return name.front() >= 'A' && name.front() <= 'Z'; }

/// Fills the member of a parameter, which has one of the types of Target. @throws Error (invalid).
template <class Member>
void ReadMember(const ParamInfo& param, const ArgumentSource& source, Member& member);

template <class In>
constexpr ParamInfo InfoOf(const Param<In>& param)
{
    ParamInfo info{param.name, param.kind, param.help, param.check, param.excludes};
    const bool isVector = std::holds_alternative<std::vector<std::string> In::*>(param.target);
    info.isPositional = IsPositional(param.name);
    info.isList = isVector || std::holds_alternative<OptionalTexts In::*>(param.target);
    info.isRequired = std::holds_alternative<std::string In::*>(param.target) ||
                      std::holds_alternative<int In::*>(param.target) || (isVector && info.isPositional);
    info.isNegatable = std::holds_alternative<std::optional<bool> In::*>(param.target);
    info.isSet = std::holds_alternative<NamedTexts In::*>(param.target);
    return info;
}

// Found while compiling. Visiting the targets would make functions for each type of member, for each input.
template <auto& Params>
inline constexpr auto kInfos = [] {
    std::array<ParamInfo, std::size(Params)> infos{};
    std::ranges::transform(Params, infos.begin(), [](const auto& param) { return InfoOf(param); });
    return infos;
}();
template <auto& Params, std::size_t Index>
inline constexpr auto kMember = std::get<Params[Index].target.index()>(Params[Index].target);

template <auto& Params, class In, std::size_t... Index>
void ReadMembers(const ArgumentSource& source, In& in, std::index_sequence<Index...> /*indexes*/)
{
    (ReadMember(kInfos<Params>[Index], source, in.*kMember<Params, Index>), ...);
}

/// The input struct of a table of parameters, filled and, where it has a `void Check() const`, checked by it: what can
/// be told without the directory. @throws Error (invalid).
template <auto& Params>
auto ReadInput(const ArgumentSource& source)
{
    typename std::remove_cvref_t<decltype(Params[0])>::Input in;
    ReadMembers<Params>(source, in, std::make_index_sequence<std::size(Params)>());
    if constexpr (requires { in.Check(); }) {
        in.Check();
    }
    return in;
}

} // namespace binding

/// Of a command that takes nothing, for handlers that ask for a table of parameters.
struct NoInput {};
inline constexpr std::array<Param<NoInput>, 0> kNoParams = {};

/// Two tables of parameters as one.
template <class In, std::size_t A, std::size_t B>
constexpr std::array<Param<In>, A + B> Joined(const std::array<Param<In>, A>& first,
                                              const std::array<Param<In>, B>& second)
{
    std::array<Param<In>, A + B> all{};
    std::ranges::copy(first, all.begin());
    std::ranges::copy(second, all.begin() + A);
    return all;
}

/// For Handler::params: of the tables of parameters of a command, which has one or none.
template <auto&... Params>
std::vector<ParamInfo> InfosOf()
{
    std::vector<ParamInfo> infos;
    ((infos = ListOf(binding::kInfos<Params>)), ...);
    return infos;
}

// ---- Handlers -------------------------------------------------------------------------------------------------------

namespace binding {

/// A handler that hands the input of a command to `Result Run(Call&, const In&)`, or to `Result Run(Call&)` where it
/// takes none. Run is a lambda without captures.
template <auto&... Params, class Run>
consteval Handler HandlerOf(Run /*run*/)
{
    return {&InfosOf<Params...>, [](Call& call, [[maybe_unused]] const ArgumentSource& source) -> Result {
                return Run()(call, ReadInput<Params>(source)...);
            }};
}

} // namespace binding

/// Runs a body `Result Body(Call&)` or, with a table of parameters, `Result Body(Call&, const In&)` that only reads.
template <auto Body, auto&... Params>
constexpr Handler Read()
{
    return binding::HandlerOf<Params...>([](Call& call, const auto&... in) { return Body(call, in...); });
}

/// Runs a body that only reads where all of its reads see one moment: for answers of several statements, which could
/// contradict each other when somebody writes between them. In a transaction of the caller's they see what that sees.
template <auto Body, class... In>
Result RunInSnapshot(Call& call, const In&... in)
{
    const auto body = [&] { return Body(call, in...); };
    return call.Options().joinsTransaction ? body() : AtOneMoment(call.Connection(), body);
}
template <auto Body, auto&... Params>
constexpr Handler ReadSnapshot()
{
    return binding::HandlerOf<Params...>(
        [](Call& call, const auto&... in) { return RunInSnapshot<Body>(call, in...); });
}

/// Runs a body `Result Body(Call&, const In&)` inside one Change.
template <auto Body, class In>
Result RunInChange(Call& call, const In& in)
{
    Change change(call);
    Result result = Body(call, in);
    change.Finish();
    return result;
}
template <auto Body, auto& Params>
constexpr Handler Write()
{
    return binding::HandlerOf<Params>([](Call& call, const auto& in) { return RunInChange<Body>(call, in); });
}

/// The result of a command that may write and was only asked.
inline Result AsRead(Result result)
{
    result.isChanged = false;
    result.isRead = true;
    return result;
}

/// Runs `Result Show(Call&, const In&)`, which only reads, when the member of the input has no value or is a flag that
/// is off, and otherwise `Result Body(Call&, const In&)` inside one Change.
template <auto Member, auto Show, auto Body, auto& Params>
constexpr Handler ReadOrWrite()
{
    Handler handler = binding::HandlerOf<Params>([](Call& call, const auto& in) {
        return static_cast<bool>(in.*Member) ? RunInChange<Body>(call, in) : AsRead(Show(call, in));
    });
    handler.isQuestion = [](const ArgumentSource& source) {
        return !static_cast<bool>(binding::ReadInput<Params>(source).*Member);
    };
    return handler;
}

/// Works a plan out once more, inside the Change that carries it out. @throws Error (conflict) when it differs from
/// what was shown.
template <auto PlanOf, class In, class Planned>
Planned PlanAgain(Call& call, const In& in, const Planned& shown)
{
    Planned present = PlanOf(call, in);
    if (!(shown == present)) {
        ThrowChanged(shown.nothingDone);
    }
    return present;
}

/// Runs `Planned PlanOf(Call&, const In&)`, shows the plan and asks, works it out once more inside a Change, refuses
/// when it differs from what was shown, and runs `Result Body(Call&, const In&, const Planned&)` inside the same
/// Change. Planned is a Plan or derived from it, and comparable.
template <auto PlanOf, auto Body, class In>
Result RunPlanned(Call& call, const In& in)
{
    const auto shown = PlanOf(call, in);
    call.Confirm(shown);
    Change change(call);
    const auto present = PlanAgain<PlanOf>(call, in, shown);
    Result result = Body(call, in, present);
    change.Finish();
    return result;
}
template <auto PlanOf, auto Body, auto& Params>
constexpr Handler WritePlanned()
{
    return binding::HandlerOf<Params>([](Call& call, const auto& in) { return RunPlanned<PlanOf, Body>(call, in); });
}

/// Runs `Planned PlanOf(Call&, const In&)`, shows the plan and asks, calls `Obtained SecretOf(Call&, const In&, const
/// Planned&)` once and before the Change, so that nobody waits for what somebody types, works the plan out once more
/// inside the Change, refuses when it differs, and runs `Result Body(Call&, const In&, const Planned&, const
/// Obtained&)` inside the same Change.
template <auto PlanOf, auto SecretOf, auto Body, auto& Params>
constexpr Handler WriteWithSecret()
{
    return binding::HandlerOf<Params>([](Call& call, const auto& in) {
        const auto shown = PlanOf(call, in);
        call.Confirm(shown);
        const auto secret = SecretOf(call, in, shown);
        Change change(call);
        const auto present = PlanAgain<PlanOf>(call, in, shown);
        Result result = Body(call, in, present, secret);
        change.Finish();
        return result;
    });
}

/// Runs `Planned PlanOf(Call&, const In&)`, shows the plan and asks, and runs `Result Body(Call&, const In&, const
/// Planned&)`, which makes its Changes itself, one after the other, and compares in the first of them: for what is too
/// much for one transaction. The outcomes are delivered after the last one.
template <auto PlanOf, auto Body, auto& Params>
constexpr Handler WriteInSteps()
{
    return binding::HandlerOf<Params>([](Call& call, const auto& in) {
        const auto shown = PlanOf(call, in);
        call.Confirm(shown);
        Result result = Body(call, in, shown);
        call.DeliverOutcomes();
        return result;
    });
}

/// Runs `Result Show(Call&, const In&)` in a snapshot where `bool IsQuestion(const In&)` says that nothing is to be
/// changed, and otherwise `Result Otherwise(Call&, const In&)`, such as RunInChange or RunPlanned of a body.
template <auto IsQuestion, auto Show, auto Otherwise, auto& Params>
constexpr Handler ReadOr()
{
    Handler handler = binding::HandlerOf<Params>([](Call& call, const auto& in) {
        return IsQuestion(in) ? AsRead(RunInSnapshot<Show>(call, in)) : Otherwise(call, in);
    });
    handler.isQuestion = [](const ArgumentSource& source) { return IsQuestion(binding::ReadInput<Params>(source)); };
    return handler;
}

} // namespace management
