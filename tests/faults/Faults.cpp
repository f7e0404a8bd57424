#include "Faults.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>
#include <unwind.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <new>

// The allocator below ours.
extern "C" {
#ifdef QV_SANITIZED
void* __interceptor_malloc(std::size_t size);
void* __interceptor_calloc(std::size_t count, std::size_t size);
void* __interceptor_realloc(void* old, std::size_t size);
void* __interceptor_memalign(std::size_t alignment, std::size_t size);
void __interceptor_free(void* memory);
#define QV_ALLOCATOR(name) __interceptor_##name
#else
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* old, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* memory);
#define QV_ALLOCATOR(name) __libc_##name
#endif
}

namespace faults {

namespace {

Plan plan;
Seen* seen = nullptr;
std::atomic<bool> counting = false;
thread_local bool inside = false;

struct Hash {
    std::uint64_t value = 14695981039346656037U;
    int frames = 0;
};

constexpr int kFrames = 12;

_Unwind_Reason_Code AddFrame(_Unwind_Context* context, void* hash)
{
    auto& to = *static_cast<Hash*>(hash);
    to.value = (to.value ^ _Unwind_GetIP(context)) * 1099511628211U;
    return ++to.frames < kFrames ? _URC_NO_REASON : _URC_END_OF_STACK;
}

void RecordStack(std::uint64_t number)
{
    if (number > kMaxStacks) {
        return;
    }
    Hash hash;
    _Unwind_Backtrace(&AddFrame, &hash);
    seen->stacks[number - 1] = hash.value;
}

/// Counts a call. @return whether it is to fail.
bool Strikes(Call call)
{
    if (!counting || inside) {
        return false;
    }
    const std::uint64_t number = ++seen->counts[static_cast<std::size_t>(call)];
    if (plan.recordStacks && call == Call::allocation) {
        inside = true;
        RecordStack(number);
        inside = false;
    }
    if (plan.action == Action::none || call != plan.call || number < plan.at ||
        (number > plan.at && plan.action != Action::failOn)) {
        return false;
    }
    ++seen->struck;
    if (plan.action == Action::raise) {
        std::raise(plan.number);
        return false;
    }
    errno = plan.number;
    return true;
}

bool IsSocket(int file)
{
    struct stat status = {};
    return syscall(SYS_fstat, file, &status) == 0 && S_ISSOCK(status.st_mode);
}

/// The same of a transfer, which fails only where the connection is gone: nothing comes over it from then on. A client
/// library that cannot send waits for what its server may have said before it went.
bool TransferStrikes(Call call, int file)
{
    if (!Strikes(call)) {
        return false;
    }
    syscall(SYS_shutdown, file, SHUT_RDWR);
    errno = plan.number;
    return true;
}

bool WriteStrikes(int file)
{
    return counting && file != STDERR_FILENO &&
           (IsSocket(file) ? TransferStrikes(Call::send, file) : Strikes(Call::write));
}

bool ReadStrikes(int file) { return counting && IsSocket(file) && TransferStrikes(Call::receive, file); }

bool OpenStrikes(const char* path)
{
    const std::size_t length = std::strlen(path);
    if (seen != nullptr && length > 3 && std::strcmp(path + length - 3, ".db") == 0) {
        counting = true;
    }
    return Strikes(Call::open);
}

void* Allocate(std::size_t size) { return Strikes(Call::allocation) ? nullptr : QV_ALLOCATOR(malloc)(size); }

void* AllocateAligned(std::size_t alignment, std::size_t size)
{
    return Strikes(Call::allocation) ? nullptr : QV_ALLOCATOR(memalign)(alignment, size);
}

void* OrThrow(void* memory)
{
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

int Open(int folder, const char* path, int flags, unsigned mode)
{
    return OpenStrikes(path) ? -1 : static_cast<int>(syscall(SYS_openat, folder, path, flags, mode));
}

/// The optional last argument of open.
unsigned ModeIn(int flags, va_list arguments)
{
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized)
    return (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, unsigned) : 0;
}

} // namespace

void Arm(const Plan& newPlan, Seen& to)
{
    plan = newPlan;
    seen = &to;
    counting = plan.start == Start::atOnce;
}

void Disarm()
{
    counting = false;
    seen = nullptr;
}

} // namespace faults

using faults::Call;

// Exported, so that the libraries' calls come here too.
#pragma GCC visibility push(default)

// The library's headers call them otherwise.
// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name)
extern "C" {

void* malloc(std::size_t size) { return faults::Allocate(size); }
void free(void* memory) { QV_ALLOCATOR(free)(memory); }

void* calloc(std::size_t count, std::size_t size)
{
    return faults::Strikes(Call::allocation) ? nullptr : QV_ALLOCATOR(calloc)(count, size);
}

void* realloc(void* old, std::size_t size)
{
    return size != 0 && faults::Strikes(Call::allocation) ? nullptr : QV_ALLOCATOR(realloc)(old, size);
}

void* memalign(std::size_t alignment, std::size_t size) { return faults::AllocateAligned(alignment, size); }
void* aligned_alloc(std::size_t alignment, std::size_t size) { return faults::AllocateAligned(alignment, size); }

int posix_memalign(void** to, std::size_t alignment, std::size_t size)
{
    const int before = errno;
    *to = faults::AllocateAligned(alignment, size);
    errno = before;
    return *to == nullptr ? ENOMEM : 0;
}

ssize_t write(int file, const void* bytes, std::size_t count)
{
    return faults::WriteStrikes(file) ? -1 : syscall(SYS_write, file, bytes, count);
}

ssize_t writev(int file, const iovec* parts, int count)
{
    return faults::WriteStrikes(file) ? -1 : syscall(SYS_writev, file, parts, count);
}

ssize_t pwrite64(int file, const void* bytes, std::size_t count, off64_t at)
{
    return faults::WriteStrikes(file) ? -1 : syscall(SYS_pwrite64, file, bytes, count, at);
}

ssize_t pwrite(int file, const void* bytes, std::size_t count, off_t at) { return pwrite64(file, bytes, count, at); }

int ftruncate64(int file, off64_t length) noexcept
{
    return faults::Strikes(Call::write) ? -1 : static_cast<int>(syscall(SYS_ftruncate, file, length));
}

int ftruncate(int file, off_t length) noexcept { return ftruncate64(file, length); }

int fsync(int file)
{
    return faults::Strikes(Call::sync) ? -1 : faults::seen != nullptr ? 0 : static_cast<int>(syscall(SYS_fsync, file));
}

int fdatasync(int file) { return fsync(file); }

int open(const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const unsigned mode = faults::ModeIn(flags, arguments);
    va_end(arguments);
    return faults::Open(AT_FDCWD, path, flags, mode);
}

int open64(const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const unsigned mode = faults::ModeIn(flags, arguments);
    va_end(arguments);
    return faults::Open(AT_FDCWD, path, flags | O_LARGEFILE, mode);
}

int openat(int folder, const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const unsigned mode = faults::ModeIn(flags, arguments);
    va_end(arguments);
    return faults::Open(folder, path, flags, mode);
}

int connect(int file, const sockaddr* address, socklen_t length)
{
    faults::counting = faults::seen != nullptr;
    return static_cast<int>(syscall(SYS_connect, file, address, length));
}

ssize_t send(int file, const void* bytes, std::size_t count, int flags)
{
    return faults::TransferStrikes(Call::send, file) ? -1 : syscall(SYS_sendto, file, bytes, count, flags, nullptr, 0);
}

ssize_t sendto(int file, const void* bytes, std::size_t count, int flags, const sockaddr* to, socklen_t length)
{
    return faults::TransferStrikes(Call::send, file) ? -1 : syscall(SYS_sendto, file, bytes, count, flags, to, length);
}

ssize_t sendmsg(int file, const msghdr* message, int flags)
{
    return faults::TransferStrikes(Call::send, file) ? -1 : syscall(SYS_sendmsg, file, message, flags);
}

ssize_t recv(int file, void* bytes, std::size_t count, int flags)
{
    return faults::TransferStrikes(Call::receive, file)
               ? -1
               : syscall(SYS_recvfrom, file, bytes, count, flags, nullptr, nullptr);
}

ssize_t recvfrom(int file, void* bytes, std::size_t count, int flags, sockaddr* from, socklen_t* length)
{
    return faults::TransferStrikes(Call::receive, file)
               ? -1
               : syscall(SYS_recvfrom, file, bytes, count, flags, from, length);
}

ssize_t recvmsg(int file, msghdr* message, int flags)
{
    return faults::TransferStrikes(Call::receive, file) ? -1 : syscall(SYS_recvmsg, file, message, flags);
}

ssize_t read(int file, void* bytes, std::size_t count)
{
    return faults::ReadStrikes(file) ? -1 : syscall(SYS_read, file, bytes, count);
}

} // extern "C"
// NOLINTEND(readability-inconsistent-declaration-parameter-name)

void* operator new(std::size_t size) { return faults::OrThrow(faults::Allocate(size)); }
void* operator new[](std::size_t size) { return faults::OrThrow(faults::Allocate(size)); }
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept { return faults::Allocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept { return faults::Allocate(size); }
void* operator new(std::size_t size, std::align_val_t alignment)
{
    return faults::OrThrow(faults::AllocateAligned(static_cast<std::size_t>(alignment), size));
}
void* operator new[](std::size_t size, std::align_val_t alignment)
{
    return faults::OrThrow(faults::AllocateAligned(static_cast<std::size_t>(alignment), size));
}
void operator delete(void* memory) noexcept { free(memory); }
void operator delete[](void* memory) noexcept { free(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { free(memory); }
void operator delete[](void* memory, std::size_t /*size*/) noexcept { free(memory); }
void operator delete(void* memory, const std::nothrow_t& /*tag*/) noexcept { free(memory); }
void operator delete[](void* memory, const std::nothrow_t& /*tag*/) noexcept { free(memory); }
void operator delete(void* memory, std::align_val_t /*alignment*/) noexcept { free(memory); }
void operator delete[](void* memory, std::align_val_t /*alignment*/) noexcept { free(memory); }
void operator delete(void* memory, std::size_t /*size*/, std::align_val_t /*alignment*/) noexcept { free(memory); }
void operator delete[](void* memory, std::size_t /*size*/, std::align_val_t /*alignment*/) noexcept { free(memory); }

#pragma GCC visibility pop
