#pragma once

#include <sqlite3.h>

#include <map>
#include <stdexcept>
#include <string>

/// Puts functions of a test in the place of system calls that the SQLite library makes, while it lives.
class SystemCalls {
public:
    using Call = sqlite3_syscall_ptr;

    SystemCalls() = default;
    SystemCalls(const SystemCalls&) = delete;
    SystemCalls& operator=(const SystemCalls&) = delete;
    ~SystemCalls()
    {
        for (const auto& [name, original] : m_originals) {
            sqlite3_vfs* vfs = sqlite3_vfs_find(nullptr);
            vfs->xSetSystemCall(vfs, name.c_str(), original);
        }
        if (m_real != nullptr) {
            sqlite3_vfs_unregister(&m_sleeping);
            sqlite3_vfs_register(m_real, 1);
        }
    }

    /// @return the function that was there. @throws std::invalid_argument when the library makes no such call.
    template <class Function>
    Function Replace(const char* name, Function replacement)
    {
        sqlite3_vfs* vfs = sqlite3_vfs_find(nullptr);
        const Call original = vfs->xGetSystemCall(vfs, name);
        if (original == nullptr) {
            throw std::invalid_argument(name);
        }
        m_originals.emplace(name, original);
        vfs->xSetSystemCall(vfs, name, reinterpret_cast<Call>(replacement));
        return reinterpret_cast<Function>(original);
    }

    /// The same for how the library sleeps. Of connections that are opened from here on. @param sleep  gets
    /// microseconds, and returns them.
    void ReplaceSleep(int (*sleep)(sqlite3_vfs*, int))
    {
        m_real = sqlite3_vfs_find(nullptr);
        m_sleeping = *m_real;
        m_sleeping.zName = "sleeping";
        m_sleeping.xSleep = sleep;
        sqlite3_vfs_register(&m_sleeping, 1);
    }

private:
    std::map<std::string, Call> m_originals;
    sqlite3_vfs* m_real = nullptr;
    sqlite3_vfs m_sleeping{};
};
