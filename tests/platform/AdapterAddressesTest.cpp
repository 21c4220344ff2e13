// The table of IP adapters.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <winsock2.h>
#include <ws2tcpip.h>
#include <windows.h>
#include <iphlpapi.h>

#include "FactsMachine.h"
#include "Text.h"

namespace {

constexpr char kGuid[] = "{11111111-2222-3333-4444-555555555555}";

std::string Interface(const std::string& values, const std::string& guid = kGuid) {
    return "[" + FactsMachine::kStandIn + "\\Interfaces\\" + guid + "]\n" + values + "\n";
}

// The entries as text: name, friendly name, status and addresses.
std::vector<std::string> Entries() {
    ULONG size = 0;
    EXPECT_EQ(GetAdaptersAddresses(AF_INET, 0, nullptr, nullptr, &size),
              ULONG{ERROR_BUFFER_OVERFLOW});
    std::vector<ULONGLONG> block(size / sizeof(ULONGLONG));
    EXPECT_EQ(block.size() * sizeof(ULONGLONG), size);
    auto* entry = reinterpret_cast<IP_ADAPTER_ADDRESSES*>(block.data());
    EXPECT_EQ(GetAdaptersAddresses(AF_INET, 0, nullptr, entry, &size), ULONG{NO_ERROR});
    std::vector<std::string> entries;
    for (; entry != nullptr; entry = entry->Next) {
        std::string text = std::string(entry->AdapterName) + " " +
                           platform::ToUtf8(entry->FriendlyName) + " " +
                           std::to_string(entry->OperStatus);
        for (auto* address = entry->FirstUnicastAddress; address; address = address->Next) {
            const sockaddr* socket = address->Address.lpSockaddr;
            text += " " + std::to_string(socket->sa_family) + "/" +
                    std::to_string(address->Address.iSockaddrLength) + ":";
            const auto* bytes = reinterpret_cast<const BYTE*>(socket);
            const bool isIpv4 = socket->sa_family == AF_INET;
            for (int i = isIpv4 ? 4 : 8; i < (isIpv4 ? 8 : 24); ++i)
                text += "0123456789abcdef"[bytes[i] >> 4],
                    text += "0123456789abcdef"[bytes[i] & 15];
        }
        entries.push_back(text);
    }
    return entries;
}

TEST(AdapterAddresses, ListTheInterfacesThatAreNotHidden) {
    const std::string loopback =
        "{00000000-0000-0000-0000-000000000000} Loopback Pseudo-Interface 1 1 "
        "23/28:00000000000000000000000000000001 2/16:7f000001";
    const struct {
        std::string facts;
        std::vector<std::string> entries;
        const char* reason;
    } cases[] = {
        {"", {loopback}, "no adapter"},
        {Interface("\"Alias\"=\"LAN\"\n\"Addresses\"=\"fe80::1%3; 192.168.7.10\""),
         {loopback,
          std::string(kGuid) + " LAN 1 23/28:fe800000000000000000000000000001 2/16:c0a8070a"},
         "addresses in their order, whatever family is asked for"},
        {Interface("\"Alias\"=\"LAN\"\n\"Up\"=dword:0"),
         {loopback, std::string(kGuid) + " LAN 2"},
         "down, without address"},
        {Interface("\"Hidden\"=dword:1"), {loopback}, "hidden"},
        {Interface("\"Alias\"=\"x\"", "{abcdef00-0000-0000-0000-000000000000}"),
         {loopback, "{abcdef00-0000-0000-0000-000000000000} x 1"},
         "a name is spelled as its key"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        FactsMachine machine(c.facts);
        EXPECT_EQ(Entries(), c.entries);
    }
}

TEST(AdapterAddresses, ABufferThatIsShortIsLeftAloneAndToldItsSize) {
    FactsMachine machine(Interface("\"Alias\"=\"LAN\""));
    ULONG needed = 0;
    GetAdaptersAddresses(AF_UNSPEC, 0, nullptr, nullptr, &needed);
    std::vector<ULONGLONG> block(needed / sizeof(ULONGLONG), 5);
    ULONG size = needed - 1;
    auto* const table = reinterpret_cast<IP_ADAPTER_ADDRESSES*>(block.data());
    EXPECT_EQ(GetAdaptersAddresses(AF_UNSPEC, 0, nullptr, table, &size),
              ULONG{ERROR_BUFFER_OVERFLOW});
    EXPECT_EQ(size, needed);
    EXPECT_EQ(block, std::vector<ULONGLONG>(block.size(), 5));
    machine.machine.faults.FailCalls("GetAdaptersAddresses", u"", ERROR_BUFFER_OVERFLOW, 1, 1);
    EXPECT_EQ(GetAdaptersAddresses(AF_UNSPEC, 0, nullptr, table, &size),
              ULONG{ERROR_BUFFER_OVERFLOW});
    EXPECT_EQ(size, needed) << "a laid-over overflow tells the size as well";
}

TEST(AdapterAddresses, AnAddressThatCannotBeReadFailsTheQuery) {
    for (const char* address : {"192.168.7", "192.168.7.256", "fe80::x", "lan", "1.2.3.4;;"}) {
        SCOPED_TRACE(address);
        FactsMachine machine(Interface(std::string("\"Addresses\"=\"") + address + "\""));
        ULONG size = 0;
        EXPECT_EQ(GetAdaptersAddresses(AF_INET, 0, nullptr, nullptr, &size),
                  ULONG{ERROR_INVALID_DATA});
    }
}

}  // namespace
