#pragma once

#include <sys/socket.h>

#include <cstdint>
#include <string>

namespace web {

/// Where a socket listens.
struct SocketAddress {
    std::string address; ///< as a number
    std::uint16_t port = 0;
};
/// @throws management::Error (invalid) for what is not a socket of the Internet that listens.
SocketAddress AddressOf(int socket);

/// An address, as a number, in the one way in which requests have it. @throws management::Error (invalid) for anything
/// else.
std::string NormalAddress(const std::string& address);

/// Whether an address, as a number, is this machine's loopback.
bool IsLoopback(const std::string& address);

/// An Internet address as the system has it.
struct InternetAddress {
    sockaddr_storage storage{};
    bool isSix = false;
};
/// @param text  a number. @throws management::Error (invalid) for anything else.
InternetAddress ReadAddress(const std::string& text, std::uint16_t port);
/// The number of an Internet address, without its port; empty for another kind of address.
std::string TextOf(const sockaddr* address);

} // namespace web
