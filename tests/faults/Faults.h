#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

/// Makes calls of the C library fail that this program and its libraries make: it defines them in place of the
/// library's (Faults.cpp). Off until Arm is called.
namespace faults {

enum class Call : std::uint8_t {
    allocation, ///< malloc and its kin, operator new
    write,      ///< write, pwrite, writev to anything but standard error and sockets; ftruncate
    sync,       ///< fsync, fdatasync
    open,       ///< open, openat
    send,       ///< send, sendto, sendmsg, write and writev to a socket
    receive,    ///< recv, recvfrom, recvmsg, read from a socket
};
inline constexpr std::size_t kCalls = 6;

/// From where on calls are counted.
enum class Start : std::uint8_t {
    atOnce,
    atDatabase, ///< from the first opening of a file whose name ends with ".db", or the first connection
};

/// What happens at the chosen call.
enum class Action : std::uint8_t {
    none,   ///< counting only
    fail,   ///< it fails
    failOn, ///< it fails, and all later ones of its kind
    raise,  ///< the signal `number` is sent to this process, then the call is carried out
};

struct Plan {
    Start start = Start::atOnce;
    Action action = Action::none;
    Call call = Call::allocation;
    std::uint64_t at = 0; ///< the first call is 1
    int number = 0;       ///< errno of a call that fails, or the signal
    bool recordStacks = false;
};

inline constexpr std::size_t kMaxStacks = std::size_t{1} << 19;

/// What was seen; lies in memory that a process shares with its parent.
struct Seen {
    std::array<std::uint64_t, kCalls> counts;
    std::uint64_t struck; ///< how many calls were made to fail, or to raise
    /// With recordStacks: of each allocation, a number for the calls that led to it.
    std::array<std::uint64_t, kMaxStacks> stacks;
};

/// Begins. Files are not synchronized with the disk any more, which nothing here depends on.
/// @param to  zeroed; used until Disarm.
void Arm(const Plan& newPlan, Seen& to);
void Disarm();

} // namespace faults
