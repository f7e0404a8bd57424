#include "web/SocketAddress.h"

#include "management/Errors.h"
#include "management/Text.h"

#include <arpa/inet.h>
#include <netinet/in.h>

#include <array>

namespace web {

using management::Error;
using management::ErrorCode;

InternetAddress ReadAddress(const std::string& text, std::uint16_t port)
{
    InternetAddress address;
    auto* four = reinterpret_cast<sockaddr_in*>(&address.storage);
    auto* six = reinterpret_cast<sockaddr_in6*>(&address.storage);
    if (inet_pton(AF_INET, text.c_str(), &four->sin_addr) == 1) {
        four->sin_family = AF_INET;
        four->sin_port = htons(port);
        return address;
    }
    if (inet_pton(AF_INET6, text.c_str(), &six->sin6_addr) == 1) {
        six->sin6_family = AF_INET6;
        six->sin6_port = htons(port);
        address.isSix = true;
        return address;
    }
    throw Error(ErrorCode::invalid,
                management::FillPattern("{} is not an address; write a number, such as 127.0.0.1 or ::1",
                                        management::Quoted(text)));
}

std::string TextOf(const sockaddr* address)
{
    std::array<char, INET6_ADDRSTRLEN> text{};
    if (address->sa_family == AF_INET) {
        inet_ntop(AF_INET, &reinterpret_cast<const sockaddr_in*>(address)->sin_addr, text.data(), text.size());
    } else if (address->sa_family == AF_INET6) {
        const in6_addr& six = reinterpret_cast<const sockaddr_in6*>(address)->sin6_addr;
        // A socket for both kinds has addresses of the older one so.
        constexpr std::size_t four = 12;
        const bool isFour = IN6_IS_ADDR_V4MAPPED(&six) != 0;
        inet_ntop(isFour ? AF_INET : AF_INET6, isFour ? &six.s6_addr[four] : six.s6_addr, text.data(), text.size());
    }
    return text.data();
}

SocketAddress AddressOf(int socket)
{
    sockaddr_storage storage{};
    socklen_t size = sizeof storage;
    auto* address = reinterpret_cast<sockaddr*>(&storage);
    int listens = 0;
    socklen_t intSize = sizeof listens;
    if (getsockname(socket, address, &size) != 0 ||
        getsockopt(socket, SOL_SOCKET, SO_ACCEPTCONN, &listens, &intSize) != 0 || listens == 0 ||
        (storage.ss_family != AF_INET && storage.ss_family != AF_INET6)) {
        throw Error(ErrorCode::invalid, "the socket that was handed over does not listen on an Internet address");
    }
    const bool isSix = storage.ss_family == AF_INET6;
    return {TextOf(address), ntohs(isSix ? reinterpret_cast<const sockaddr_in6*>(&storage)->sin6_port
                                         : reinterpret_cast<const sockaddr_in*>(&storage)->sin_port)};
}

std::string NormalAddress(const std::string& address)
{
    const InternetAddress read = ReadAddress(address, 0);
    return TextOf(reinterpret_cast<const sockaddr*>(&read.storage));
}

bool IsLoopback(const std::string& address)
{
    const InternetAddress read = ReadAddress(address, 0);
    if (read.isSix) {
        return IN6_IS_ADDR_LOOPBACK(&reinterpret_cast<const sockaddr_in6*>(&read.storage)->sin6_addr) != 0;
    }
    constexpr unsigned loopback = 127;
    return ntohl(reinterpret_cast<const sockaddr_in*>(&read.storage)->sin_addr.s_addr) >> 24U == loopback;
}

} // namespace web
