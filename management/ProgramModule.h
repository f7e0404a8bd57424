#pragma once

#include <filesystem>
#include <string>
#include <system_error>

namespace management {

/// A file that belongs to this program, wherever both are installed or built.
/// @param relative  its path as seen from the folder of the program's file.
/// @param error  set when the program's own file cannot be found; the result is empty then.
std::filesystem::path FileOfProgram(const std::filesystem::path& relative, std::error_code& error);

/// A function of a module of this program: a shared library in the folder that the build gives it, seen from the
/// program's file, and nowhere else. It is loaded when it is first asked for, and kept.
/// @throws Error (failed) when there is none, or it cannot be loaded or lacks the function.
void* LoadFromModule(const std::string& module, const char* symbol);

} // namespace management
