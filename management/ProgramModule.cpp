#include "management/ProgramModule.h"

#include "management/Errors.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include <filesystem>
#include <system_error>

namespace management {

namespace fs = std::filesystem;

void* LoadFromModule(const std::string& module, const char* symbol)
{
    std::error_code error;
    const fs::path program = fs::read_symlink("/proc/self/exe", error);
    if (error) {
        throw Error(ErrorCode::failed, fmt::format("the program's own file is not to be found: {}", error.message()));
    }
    const fs::path file = (program.parent_path() / QV_MODULE_FOLDER / (module + ".so")).lexically_normal();
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
