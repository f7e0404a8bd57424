#pragma once

#include "management/Command.h"
#include "web/JsonReader.h"
#include "web/Results.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace web {

/// Whether a command of the table can be run over HTTP: one that shows a stored secret or needs a file
/// cannot.
bool HasRoute(const management::Command& command);
/// Whether a parameter can be given over HTTP: one that names a file cannot.
bool IsOffered(const management::ParamInfo& param);
/// The command of a path such as "user/password/set"; null where none of that path can be run.
const management::Command* FindCommand(std::string_view path);
/// "user password set".
std::string PathText(const management::Command& command);

/// How many people a command takes from a list at most, at once and as a job.
inline constexpr std::size_t kMostFromResult = 10000;
inline constexpr std::size_t kMostFromResultAsJob = 1000000;
/// The lists of people that a session has asked for.
struct SessionResults {
    Results& results;
    std::string session;
    std::size_t most = kMostFromResult;
};

/// What a request gives a command: values of its parameters, checked against what they may be.
class WebArguments final : public management::ArgumentSource {
public:
    /// @param given  an object of values by the parameters' names, or null: texts, whole numbers, Booleans for flags,
    /// arrays for parameters that take several, null for what is not given. @throws management::Error (invalid).
    /// In place of an array of users may stand {"result": …, "except": [17, …]}, a list that was asked for but for
    /// these.
    /// @param results  where the lists of a session are.
    WebArguments(const management::Command& command, const JsonValue* given, const SessionResults& results);
    /// The arguments of a part of a run: those of the whole, with some of its users, or users and groups.
    WebArguments(const management::Command& command, const WebArguments& whole, std::vector<std::string> some);

    [[nodiscard]] std::vector<std::string> ValuesOf(std::string_view name) const override;
    /// The users, or users and groups, of a command that takes several, each once; none for any other command.
    [[nodiscard]] std::vector<std::string> Many() const;
    /// The value of a secret parameter; null where it was not given.
    [[nodiscard]] const management::Secret* FindSecret(std::string_view name) const;
    /// The command as it may be typed in a shell, without secrets.
    [[nodiscard]] const std::string& Text() const { return m_text; }

private:
    void Take(const std::string& name, management::Kind kind, bool isList, const JsonValue& value);
    void TakeResult(const std::string& name, management::Kind kind, const JsonValue& value,
                    const SessionResults& results);

    std::string m_many; ///< the name of the parameter that takes several users, or users and groups; empty: none
    std::map<std::string, std::vector<std::string>, std::less<>> m_values;
    std::map<std::string, management::Secret, std::less<>> m_secrets;
    std::string m_text;
};

/// What the caller saw before it asks for a change: the change is made only if that is still so.
struct Condition {
    const management::Command* command; ///< that shows it
    WebArguments arguments;
    std::string version; ///< that its answer had
};

/// A request to run a command.
struct CommandRequest {
    /// @param body  the request's. @throws management::Error (invalid).
    /// @param results  outlives this.
    CommandRequest(const management::Command& wanted, const std::string& body, const SessionResults& results);

    /// Whether it is to be done as a job: what runs long by the table, and what was asked for so.
    [[nodiscard]] bool IsJob() const { return isAskedAsJob || command.duration == management::Duration::longRunning; }

    const management::Command& command;
    bool isAskedAsJob = false;
    bool dryRun = false;
    std::string reason;
    std::string confirmed; ///< digest of the plan that somebody has agreed to; empty: none
    std::optional<WebArguments> arguments;
    std::optional<Condition> condition;
};

} // namespace web
