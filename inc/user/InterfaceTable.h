#pragma once
// The system's table of IP adapters, read as a whole: which adapters have an interface, and whether
// it has a link. Any thread, one at a time for each object.

#include <windows.h>
#include <memory>

#include "AutoClasses.h"
#include "TextIndex.h"
#include "UserFailure.h"

// What the table says of one adapter.
struct InterfaceFacts {
    bool isUp = false;
    LPCWSTR friendlyName = nullptr;  // the connection's name; borrowed from the table, may be null
    bool hasIpv4Address = false;
    BYTE ipv4Address[4] = {};  // its first address, if that is one of IPv4
};

// The address family asked for, as winsock2.h numbers them. It decides which addresses are listed.
enum class AddressFamily : ULONG { Any = 0, Ipv4 = 2 };

class InterfaceTable {
  public:
    // Reads the table anew. On failure it is empty, and the result says what the user is due to
    // hear.
    UserFailure Read(AddressFamily family);
    // The adapter of that NetCfgInstanceId, compared exactly. False when it isn't listed.
    bool Find(LPCWSTR netCfgInstanceId, InterfaceFacts& facts) const;

  private:
    // The name of an interface as the registry has it. A longer one is no adapter's.
    struct Interface {
        WCHAR name[40] = {};
        const void* entry = nullptr;
    };
    UserFailure ReadEntries(AddressFamily family);
    UserFailure IndexNames();

    ScopedLocal<void> m_entries;  // IP_ADAPTER_ADDRESSES
    std::unique_ptr<Interface[]> m_interfaces;
    TextIndex m_index;  // of their names
};
