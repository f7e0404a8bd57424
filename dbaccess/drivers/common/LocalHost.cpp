#include "dbaccess/drivers/common/LocalHost.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <strings.h>

#include <string>

namespace dbaccess {

bool IsLocalHost(std::string_view host)
{
    const std::string text(host);
    in_addr four{};
    in6_addr six{};
    constexpr in_addr_t kLoopbackNetwork = 127;
    return ::strcasecmp(text.c_str(), "localhost") == 0 ||
           (::inet_pton(AF_INET, text.c_str(), &four) == 1 && ntohl(four.s_addr) >> 24U == kLoopbackNetwork) ||
           (::inet_pton(AF_INET6, text.c_str(), &six) == 1 && IN6_IS_ADDR_LOOPBACK(&six));
}

} // namespace dbaccess
