#pragma once

#include <unistd.h>

#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

/// In how many seconds the system asks the peer of an idle TCP connection over IPv4 whether it is still there.
/// @param port  the connection's own. @throws std::runtime_error when the system is not going to ask, or there is no
/// such connection.
inline long KeepaliveSeconds(const std::string& port)
{
    constexpr const char* kEstablished = "01";
    constexpr const char* kKeepalive = "02";
    std::ifstream connections("/proc/net/tcp");
    for (std::string line; std::getline(connections, line);) {
        std::istringstream words(line);
        std::string number;
        std::string local;
        std::string remote;
        std::string state;
        std::string queues;
        std::string timer;
        words >> number >> local >> remote >> state >> queues >> timer;
        const std::size_t colon = local.find(':') + 1;
        if (state == kEstablished && timer.starts_with(kKeepalive) &&
            std::stol(local.substr(colon), nullptr, 16) == std::stol(port)) {
            return std::stol(timer.substr(timer.find(':') + 1), nullptr, 16) / ::sysconf(_SC_CLK_TCK);
        }
    }
    throw std::runtime_error("nobody asks the peer of port " + port);
}
