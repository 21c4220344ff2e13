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

// The loopback, which is always there, then the adapters in the order of their keys; a key that is
// no GUID stands for none. Nothing when a hardware address can't be read.
std::optional<std::vector<NetworkInterface>> ReadInterfaces();

}  // namespace platform
