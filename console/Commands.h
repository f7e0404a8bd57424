#pragma once

#include "console/Arguments.h"
#include "console/ExitCode.h"
#include "console/Session.h"
#include "console/Terminal.h"
#include "management/Sentence.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace console {

using namespace management;

struct Noun {
    std::string_view name;
    std::string_view summary;
    Examples examples;
};

std::span<const Noun> Nouns();

/// What is to be said when memory runs out. Allocates nothing.
std::string_view OutOfMemorySentence(const Terminal& terminal) noexcept;

/// What command lines that run one after the other share.
struct SharedSession {
    Arguments arguments = {}; ///< that hold for a line which says nothing else
    CallOptions options = {}; ///< likewise
    bool joinsTransaction = false;
    bool isShell = false;                ///< lines are typed, so that one of them may be a batch
    std::optional<Session> session = {}; ///< once a line has needed it

    /// The directory of `arguments`. @throws Error.
    CAConnect& Open();
};

/// Runs a command line and says what goes wrong with it. @return what it ends with.
Exit RunLine(const std::vector<std::string>& words, Terminal& terminal, SharedSession& shared);

/// Says what has gone wrong, in the language of the reader. @return the code.
Exit Reported(Exit code, const Sentence& sentence, Terminal& terminal);

/// Runs the program. @return what it is to end with. @throws std::bad_alloc when there is no memory to run anything.
int RunProgram(int count, const char* const* words, Terminal& terminal);

} // namespace console
