#pragma once
// The network interfaces as the facts give them.

#include <optional>
#include <string>
#include <vector>

#include <windows.h>

namespace platform {

struct NetworkInterface {
    GUID guid{};
    std::basic_string<WCHAR> name;         // its GUID as the facts spell it
    std::basic_string<WCHAR> alias;        // connection name
    std::basic_string<WCHAR> description;  // of its driver
    std::vector<BYTE> permanentAddress;    // at most 32 bytes
    std::vector<BYTE> currentAddress;
    bool isLoopback = false;
    bool isUp = false;
    bool isHidden = false;                                   // as a disabled adapter is
    std::vector<std::basic_string<WCHAR>> unicastAddresses;  // as text, in order
};

// The loopback, which is always there, then the adapters in the order of their keys, then the
// installed virtual miniports without a key. A key that is no GUID counts as absent. Nothing when a
// hardware address can't be read.
std::optional<std::vector<NetworkInterface>> ReadInterfaces();

// A text of the network connection of the adapter with that GUID.
std::optional<std::basic_string<WCHAR>> ConnectionText(const std::basic_string<WCHAR>& guid,
                                                       const WCHAR* value);

}  // namespace platform
