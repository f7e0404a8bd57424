#pragma once

#include "management/JsonWriter.h"
#include "web/CommandRequest.h"
#include "web/JobControl.h"
#include "web/Problem.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

class CAConnect;

namespace web {

/// Rows of a table that one answer holds at most.
inline constexpr std::size_t kMostRows = 10000;
/// More things than these are removed only by who has just given the password again.
inline constexpr std::size_t kMostWithoutPassword = 10;

/// Who asks for a command.
struct Caller {
    std::string login;
    bool hasConfirmed = false; ///< has given the password within the last minutes
    management::Level level = management::Level::full;
};

/// What a command has written, as far as lists of people and places show it.
struct Written {
    bool isAnything = false; ///< whether rows were written at all
    int before = 0;          ///< the latest entry of the record before it, and after it
    int entry = 0;
    bool isMore = false;         ///< whether more is to be read again than the users below
    std::vector<int> users = {}; ///< of whom only columns have changed
};

/// Runs a command and says what became of it. To be called on one thread at a time.
/// @return 200 with the result, or a problem.
Response RunCommand(CAConnect& conn, const CommandRequest& request, const Caller& caller, Written& written);

/// Runs a command as a job, and says what became of it: what runs long by the table of commands tells how far it is,
/// and can be stopped; any other command on many people is carried out in parts, each in a transaction. A part that
/// asks does so only once, for all of them. Where a part that does not ask cannot be carried out, its people are tried
/// one after the other.
Response RunCommandAsJob(CAConnect& conn, const CommandRequest& request, const Caller& caller, JobControl& control);

/// The latest entry of the record; 0: none. @throws management::Error.
int LatestEntry(CAConnect& conn);

// Parts of answers. A value that stands for a word comes out as the word.

void WriteTexts(management::JsonWriter& json, std::string_view name, const std::vector<std::string>& texts);
void WriteSentences(management::JsonWriter& json, std::string_view name,
                    std::span<const management::Sentence> sentences);
void WriteRecord(management::JsonWriter& json, const management::Record& record);
void WritePlan(management::JsonWriter& json, const management::Plan& plan, const std::string& digest);

} // namespace web
