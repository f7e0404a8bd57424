#pragma once

#include <string>

namespace management {

/// A function of a module of this program: a shared library in the folder that the build gives it, seen from the
/// program's file, and nowhere else. It is loaded when it is first asked for, and kept.
/// @throws Error (failed) when there is none, or it cannot be loaded or lacks the function.
void* LoadFromModule(const std::string& module, const char* symbol);

} // namespace management
