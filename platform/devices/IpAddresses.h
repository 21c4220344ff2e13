#pragma once
// IP addresses as text. Apart from the sockets of the stand-in, whose names are the host's as well.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace platform {

// Four bytes of an IPv4 address or sixteen of an IPv6 address, which may name its zone behind a
// '%'. Nothing when the text is neither.
std::optional<std::vector<std::uint8_t>> ParseIpAddress(const std::string& text);

}  // namespace platform
