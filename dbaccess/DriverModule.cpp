#include "dbaccess/DriverModule.h"

#include "dbaccess/OpenSessionSymbol.h"

#include <dlfcn.h>

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace dbaccess {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kModuleExtension = ".so";

/// QV_DRIVER_FOLDER beside the file that this function was loaded from. Empty when the system does not say where that
/// is.
fs::path FindModuleFolder()
{
    Dl_info self{};
    if (dladdr(reinterpret_cast<void*>(&LoadDriverModule), &self) == 0 || self.dli_fname == nullptr) {
        return {};
    }
    std::error_code error;
    const fs::path library = fs::canonical(self.dli_fname, error);
    return error ? fs::path() : library.parent_path() / QV_DRIVER_FOLDER;
}

// Found when the library is loaded: its path may be relative to the working directory that the process had then.
const fs::path kModuleFolder = FindModuleFolder();

// A scheme becomes part of a file's name.
bool IsModuleName(std::string_view text)
{
    return !text.empty() && std::ranges::all_of(text, [](char ch) { return ch >= 'a' && ch <= 'z'; });
}

} // namespace

std::vector<std::string> InstalledDriverModules()
{
    std::vector<std::string> schemes;
    std::error_code error;
    for (fs::directory_iterator entry(kModuleFolder, error), end; !error && entry != end; entry.increment(error)) {
        const fs::path& file = entry->path();
        if (file.extension() == kModuleExtension && IsModuleName(file.stem().native())) {
            schemes.push_back(file.stem());
        }
    }
    std::ranges::sort(schemes);
    return schemes;
}

SessionFactory LoadDriverModule(std::string_view scheme)
{
    if (kModuleFolder.empty() || !IsModuleName(scheme)) {
        return {};
    }
    const fs::path file = kModuleFolder / (std::string(scheme) + std::string(kModuleExtension));
    std::error_code error;
    if (!fs::exists(file, error)) {
        return {};
    }
    void* const module = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    void* const symbol = module == nullptr ? nullptr : dlsym(module, kOpenSessionSymbol);
    if (symbol == nullptr) {
        const char* const reason = dlerror();
        throw CAException(CString(("the database driver " + file.string() +
                                   " cannot be loaded: " + (reason == nullptr ? "no reason was given" : reason))
                                      .c_str()));
    }
    const auto openSession = reinterpret_cast<OpenSessionFunction*>(symbol);
    return [openSession](std::string_view location) {
        return std::unique_ptr<Session>(openSession(location.data(), location.size()));
    };
}

} // namespace dbaccess
