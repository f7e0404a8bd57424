#pragma once

#include "platform/Api.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

class CAConnect;

/// The tables of a directory, per engine, and their versions.
namespace schema {

/// What a database holds.
enum class State {
    empty,   ///< no tables at all
    foreign, ///< tables, but not a directory's
    older,   ///< a directory of an earlier version, or one whose making was cut short: Upgrade brings it up
    current, ///< ready for use
    newer,   ///< made by a later version of the program
};

/// What Inspect has found.
struct Status {
    State state; ///< what the database holds
    int version; ///< version of the tables; 0 when there are none of ours
    int newest;  ///< version that this program makes
};

/// One step from version n-1 to version n: statements, each complete.
struct Step {
    std::string title;                   ///< what the step does, for people
    std::vector<std::string> statements; ///< one statement each, without a semicolon at the end
    /// Gives the statements that follow those, by what the database holds and the server knows; none when nothing is
    /// left to do. Every later Upgrade asks again, as servers learn. @throws CAException that says what is in the way.
    std::function<std::vector<std::string>(CAConnect& conn)> furtherStatements = {};
};

/// What a directory would work better without.
struct Shortcoming {
    std::string text;      ///< a sentence without its end
    bool isCuredByUpgrade; ///< whether Upgrade removes it
};

/// Called before each step, also for one that finds more to do in a directory that is current.
using Progress = std::function<void(int version, const std::string& title)>;

/// Looks at the database behind an open connection. Changes nothing. @throws CAException.
QV_API Status Inspect(CAConnect& conn);

/// Looks whether the settings of the server and the database allow a directory, as Upgrade does first.
/// @throws CAException that says what to change.
QV_API void RequireSuitable(CAConnect& conn);

/// Looks for what keeps a directory from working as well as it could, which Upgrade does not refuse.
/// @throws CAException.
QV_API std::optional<Shortcoming> FindShortcoming(CAConnect& conn);

/// Makes or upgrades the tables, step by step. Each step and its new version number are applied together or not at all,
/// or, where the engine cannot, so that a step may be begun again; a run that is killed is carried on by the next one;
/// of two runs at once one does the work and both succeed.
/// @throws CAException when the engine refuses, when its settings rule a directory out, when the database holds foreign
/// tables and when its version is newer.
QV_API void Upgrade(CAConnect& conn, const Progress& progress = {});

/// Makes or upgrades the tables by steps of the caller's own, for tests. @throws CAException.
QV_API void Upgrade(CAConnect& conn, const std::vector<Step>& steps, const Progress& progress);

/// The id that the engine gave to the row which this connection has inserted last, whatever others insert meanwhile.
/// To be asked right after a statement that inserts one row into a table whose ids the engine gives. @throws
/// CAException.
QV_API int LastInsertedId(CAConnect& conn);

/// A table of a directory, with the columns that are written.
struct TableColumns {
    std::string name;                 ///< as statements of this program spell it
    std::vector<std::string> columns; ///< in their order, without those that an engine computes or adds
};

/// All tables of a directory, alike on every engine. May be called on any thread.
QV_API const std::vector<TableColumns>& Tables();

/// Runs a statement that writes the ids of a table's rows itself, where the engine would give them.
/// @param table  its name. @throws CAException.
QV_API void ExecuteWithIds(CAConnect& conn, const std::string& table, const std::string& sql);

/// Has the engine look rows up by indexes for the rest of the open transaction, also in tables of which it knows too
/// little to see that this is the shorter way, as in new ones. For transactions that ask for some hundred rows at a
/// time by their keys. Does nothing on engines that do so anyway. @throws CAException.
QV_API void PreferIndexes(CAConnect& conn);

/// Brings indexes up to date whose order depends on rules that may change with the system's libraries (upper()).
/// Called when a directory is opened; does nothing when they are up to date. @throws CAException.
QV_API void RefreshIndexes(CAConnect& conn);

} // namespace schema
