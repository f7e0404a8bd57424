#pragma once

#include "management/Sentence.h"
#include "management/Value.h"
#include "management/passwords/Passwords.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace management {

/// What became of one thing that a command was about.
struct Outcome {
    std::string_view type;    ///< "user", "group", ...
    int id = 0;               ///< 0 where it has none
    std::string name;         ///< as sentences show it
    std::string_view outcome; ///< one word for programs: "locked", "unchanged", ...
    Sentence sentence;        ///< for people, without a full stop and a line's end
};

/// What a command is going to do, for the user to agree to. Two plans are equal when they do the same.
struct Plan {
    std::vector<Sentence> lines; ///< what goes, each in one line
    Sentence question;           ///< such as "Delete amy (id 17)?"; empty: there is nothing to ask
    std::size_t removed = 0;     ///< how many things go, with all that goes along
    /// Said when the answer is no.
    Sentence nothingDone = Translatable("nothing was deleted");

    bool operator==(const Plan&) const = default;
};

/// A secret to be asked for.
struct SecretQuestion {
    std::string_view name;   ///< of the parameter that may give it instead
    Sentence prompt;         ///< such as "New password of amy (id 17)"
    bool isRepeated = false; ///< asked twice, and refused when the answers differ
    const char* advice = ""; ///< the options to use instead where nobody can be asked
};

/// A secret that was generated for a user.
struct UserSecret {
    std::string login;
    Secret secret;
};

/// Who has called a command: a terminal, a server, a test. Every function may @throw Error.
class FrontEnd {
public:
    FrontEnd() = default;
    FrontEnd(const FrontEnd&) = delete;
    FrontEnd& operator=(const FrontEnd&) = delete;
    virtual ~FrontEnd() = default;

    /// Takes the names of the columns of a table, before its first row, where the command's row does not list them.
    virtual void TakeColumns(std::vector<std::string> names) = 0;
    /// Takes a row of the command's table: a value for each of its columns, in their order.
    /// @return false when no more are wanted.
    virtual bool TakeRow(const std::vector<Value>& row) = 0;
    /// Takes a row of a command whose rows are a tree; as it is here, like any other. @param line  what draws the row
    /// in a tree for people, without a line's end. @return false when no more are wanted.
    virtual bool TakeTreeRow(const std::vector<Value>& row, const std::string& /*line*/) { return TakeRow(row); }
    /// Takes what became of a thing, once that is committed.
    virtual void TakeOutcome(const Outcome& outcome) = 0;
    /// Shows a plan and asks its question, if it has one. @throws Error (confirmationRequired) unless somebody agrees.
    virtual void Confirm(const Plan& plan) = 0;
    /// Whether somebody is there who can be asked.
    [[nodiscard]] virtual bool CanAsk() const = 0;
    /// Says something that is needed to answer the next question.
    virtual void Explain(const Sentence& sentence) = 0;
    /// Whether a secret parameter has a value, whatever its source.
    [[nodiscard]] virtual bool IsGiven(std::string_view secret) const = 0;
    /// The value of a secret parameter; asked for where none was given. @throws Error (invalid, failed).
    virtual Secret ObtainSecret(const SecretQuestion& question) = 0;
    /// Hands over a generated secret before it is stored, so that none is stored that nobody has seen.
    /// @throws Error (failed) when it cannot be handed over.
    virtual void ShowSecret(const Secret& secret) = 0;
    /// Whether secrets of several users can be handed over without a file.
    [[nodiscard]] virtual bool CanShowSecrets() const { return false; }
    /// Hands over generated secrets of several users before they are stored, in a new file that only its owner can
    /// open. @param file  empty: hands them over without one, where CanShowSecrets. @throws Error (conflict) for a file
    /// that is there already, (invalid) where there are no files, (failed).
    virtual void StoreSecrets(const std::string& file, const std::vector<UserSecret>& secrets) = 0;
    /// The text of a file that a parameter names. @throws Error (failed) unless it is UTF-8 without NUL bytes.
    virtual std::string ReadText(const std::string& name) = 0;
    /// Reports the progress of a long run, which can be stopped from the first call on. @param total  how many there
    /// are, where that is known.
    virtual void ShowProgress(long done, std::optional<long> total) = 0;
    /// Whether the run is to end before its next row.
    [[nodiscard]] virtual bool IsStopRequested() const noexcept = 0;
    /// Called before something is committed: what fails from now on may have changed the directory.
    virtual void NoteCommit() noexcept {}
};

} // namespace management
