#pragma once

#include <functional>

namespace bench {

/// Runs a task in a process of its own, forked from this one, which should be small then.
/// @throws std::runtime_error when the task failed.
void InChild(const std::function<void()>& task);

/// By how many KiB a task lets the peak of resident memory grow, measured in a process of its own.
/// @param prepare  runs there first and is not counted; what it returns is the task.
long PeakGrowth(const std::function<std::function<void()>()>& prepare);

} // namespace bench
