#include "management/ProgramModule.h"

#include "management/Errors.h"

#include <dlfcn.h>
#include <fmt/format.h>

namespace management {

namespace fs = std::filesystem;

fs::path FileOfProgram(const fs::path& relative, std::error_code& error)
{
    const fs::path program = fs::read_symlink("/proc/self/exe", error);
    return error ? fs::path() : (program.parent_path() / relative).lexically_normal();
}

void* LoadFromModule(const std::string& module, const char* symbol)
{
    std::error_code error;
    const fs::path file = FileOfProgram(fs::path(QV_MODULE_FOLDER) / (module + ".so"), error);
    if (error) {
        throw Error(ErrorCode::failed, fmt::format("the program's own file is not to be found: {}", error.message()));
    }
    void* const loaded = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    void* const found = loaded == nullptr ? nullptr : dlsym(loaded, symbol);
    if (found == nullptr) {
        const char* const reason = dlerror();
        throw Error(ErrorCode::failed, fmt::format("a part of this program cannot be loaded: {}",
                                                   reason == nullptr ? file.string() : std::string(reason)));
    }
    return found;
}

} // namespace management
