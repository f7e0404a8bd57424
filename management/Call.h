#pragma once

#include "management/DatabaseError.h"
#include "management/FrontEnd.h"
#include "management/audit/Recorder.h"
#include "management/users/Directory.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace management {

/// What every command that writes takes beside its own parameters.
struct CallOptions {
    bool yes = false;    ///< no question is asked
    bool dryRun = false; ///< everything is done, and then undone
    std::string reason;  ///< why, as given by who changes something

    // What the record says of a change beside its rows.
    std::string who;      ///< the login name of who changes something
    std::string frontEnd; ///< by which program
    std::string command;  ///< as it may be typed again, without secrets

    /// Whether the caller has a transaction of the directory open, in which the command works, and which decides
    /// whether the change lasts.
    bool joinsTransaction = false;
};

/// What people read in place of a record: what was found out, the rows that it rests on, and what else is to be known.
struct Finding {
    Sentence sentence; ///< like the notes without a line's end
    Table rows;
    std::vector<Sentence> notes;
};

/// What a command gives, beside the rows and outcomes that the front end has been handed. At most one of value, record
/// and verdict is set.
struct Result {
    std::optional<Value> value;
    Record record;
    std::vector<Part> parts;        ///< of the record
    std::optional<Finding> finding; ///< says in sentences and rows what the record says
    std::optional<bool> verdict;
    std::optional<Error> error; ///< what the command fails with although there is something to show
    bool isChanged = true;      ///< of a command that writes: whether there was anything to change
    bool hasFindings = false;   ///< of a check: whether something was found
    bool isRead = false;        ///< of a command that writes what it is given: it was given nothing, and only reads
};

Result ResultOf(Value value);
Result ResultOf(Record record, std::vector<Part> parts = {});
Result ResultOf(bool) = delete;
Result Verdict(bool verdict);
Result Unchanged();
/// @param noun  whose set was given no option, such as "group". @throws Error (invalid), always.
[[noreturn]] void ThrowNothingToSet(std::string_view noun);

/// One run of one command: what its body works with. Lives on one thread.
class Call {
public:
    /// Gives the connection of a directory of this program's version, which outlives the call.
    using Open = std::function<CAConnect&()>;

    /// @param open  is called once, when the directory is first needed: a command that cannot be carried out anyway
    /// opens none. What it throws comes out there. @param frontEnd  outlives this.
    Call(Open open, FrontEnd& frontEnd, CallOptions options)
        : m_open(std::move(open)), m_frontEnd(frontEnd), m_options(std::move(options))
    {
    }

    [[nodiscard]] CAConnect& Connection() const { return Directory().Connection(); }
    [[nodiscard]] management::Directory& Directory() const;
    [[nodiscard]] FrontEnd& Front() const { return m_frontEnd; }
    [[nodiscard]] const CallOptions& Options() const { return m_options; }

    /// Hands a row to the front end. @return false when no more are wanted.
    template <class... Values>
    bool Row(Values&&... values) const
    {
        return m_frontEnd.TakeRow(MakeRow(std::forward<Values>(values)...));
    }
    /// Hands a row of a tree to the front end. @return false when no more are wanted. @param line  see
    /// FrontEnd::TakeTreeRow.
    template <class... Values>
    bool TreeRow(const std::string& line, Values&&... values) const
    {
        return m_frontEnd.TakeTreeRow(MakeRow(std::forward<Values>(values)...), line);
    }
    /// A text that may be given in a file in its place. @throws Error as FrontEnd::ReadText does.
    [[nodiscard]] std::optional<std::string> TextOrFile(const std::optional<std::string>& text,
                                                        const std::optional<std::string>& file) const
    {
        return file ? std::optional(m_frontEnd.ReadText(*file)) : text;
    }
    /// Reports the progress of a run that changes nothing. Does nothing inside a Change, which others wait for.
    /// @throws Error (failed) when the front end asks to stop.
    void ShowProgress(long done, long total) const;
    /// Keeps an outcome until the change that it is about is committed.
    void Report(Outcome outcome) { m_outcomes.push_back(std::move(outcome)); }
    /// Shows a plan and asks, unless the options say not to.
    void Confirm(const Plan& plan);
    /// Shows a generated secret before it is stored; not in a dry run.
    void ShowSecret(const Secret& secret) const;
    /// Hands over generated secrets of several users before they are stored (FrontEnd::StoreSecrets); not in a dry run.
    void StoreSecrets(const std::string& file, const std::vector<UserSecret>& secrets) const;
    /// Hands the outcomes over that were kept.
    void DeliverOutcomes();
    /// Drops the outcomes that were kept, since the change that they are about was undone.
    void DropOutcomes() { m_outcomes.clear(); }
    /// Says which entries of the record the change undoes, with blanks between their ids.
    void SetUndoes(std::string ids) { m_undoes = std::move(ids); }
    /// Has the change recorded even where no row of the directory changes.
    void SetRecordedAnyway() { m_isRecordedAnyway = true; }
    /// The first entry of this call in the record; 0: none yet.
    [[nodiscard]] int Entry() const { return m_entry; }
    /// Writes what the recorder has seen into the record, as a part of this call. @throws DatabaseError.
    void Record(audit::Recorder& recorder);

private:
    friend class Change;

    Open m_open;
    mutable std::optional<management::Directory> m_directory;
    FrontEnd& m_frontEnd;
    CallOptions m_options;
    std::vector<Outcome> m_outcomes;
    std::string m_undoes;
    bool m_isRecordedAnyway = false;
    bool m_isInChange = false;
    int m_entry = 0; ///< the first one of this call in the record
};

/// The transaction of a command that writes. What is written to the directory in it is recorded. It holds the
/// directory's lock from its beginning to its end, so that what is read inside still holds when it is written. Unless
/// it is finished, it is rolled back.
class Change {
public:
    /// @throws DatabaseError.
    explicit Change(Call& call);
    Change(const Change&) = delete;
    Change& operator=(const Change&) = delete;
    ~Change() { m_call.m_isInChange = false; }

    /// Records the change and commits it, or, in a dry run, rolls it back; then delivers the outcomes. @throws
    /// DatabaseError.
    void Finish();

private:
    Call& m_call;
    std::optional<Transaction> m_transaction;  ///< none in one of the caller's
    std::optional<audit::Recorder> m_recorder; ///< none in a dry run
};

/// @throws Error (conflict) always: what was shown is not what would be done now.
[[noreturn]] void ThrowChanged(const Sentence& nothingDone);

} // namespace management
