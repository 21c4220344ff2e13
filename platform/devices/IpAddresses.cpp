#include "IpAddresses.h"

#ifdef _WIN32
#include <ws2tcpip.h>
#else
#include <arpa/inet.h>
#endif

namespace platform {

std::optional<std::vector<std::uint8_t>> ParseIpAddress(const std::string& text) {
    std::vector<std::uint8_t> bytes(sizeof(in_addr));
    if (inet_pton(AF_INET, text.c_str(), bytes.data()) == 1) return bytes;
    bytes.resize(sizeof(in6_addr));
    const std::string withoutZone = text.substr(0, text.find('%'));
    if (inet_pton(AF_INET6, withoutZone.c_str(), bytes.data()) == 1) return bytes;
    return std::nullopt;
}

}  // namespace platform
