#pragma once

#include "ChildProcess.h"

#include <string>
#include <vector>

/// Runs a command as the program would, with this process's memory, in the folder and the environment of the options,
/// which this process has back afterwards. Takes their input; no other option may be set.
ChildResult RunInProcess(const std::vector<std::string>& arguments, const ChildOptions& options);
