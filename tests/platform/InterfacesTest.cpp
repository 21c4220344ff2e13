// The tables of network interfaces and of IP adapters, as the facts give them.

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
    return FactLines("Interfaces\\" + guid, values);
}

// The adapters behind the loopback: name, friendly name, status and families of the addresses.
std::vector<std::string> Adapters() {
    ULONG size = 0;
    EXPECT_EQ(GetAdaptersAddresses(AF_INET, 0, nullptr, nullptr, &size),
              ULONG{ERROR_BUFFER_OVERFLOW});
    std::vector<ULONGLONG> block(size / sizeof(ULONGLONG), 5);
    auto* entry = reinterpret_cast<IP_ADAPTER_ADDRESSES*>(block.data());
    ULONG less = size - 1;
    EXPECT_EQ(GetAdaptersAddresses(AF_INET, 0, nullptr, entry, &less),
              ULONG{ERROR_BUFFER_OVERFLOW});
    EXPECT_EQ(less, size);
    EXPECT_EQ(block, std::vector<ULONGLONG>(block.size(), 5)) << "a short buffer is left alone";
    EXPECT_EQ(GetAdaptersAddresses(AF_INET, 0, nullptr, entry, &size), ULONG{NO_ERROR});
    std::vector<std::string> entries;
    while ((entry = entry->Next) != nullptr) {
        entries.push_back(std::string(entry->AdapterName) + " " +
                          platform::ToUtf8(entry->FriendlyName) + " " +
                          std::to_string(entry->OperStatus));
        for (auto* address = entry->FirstUnicastAddress; address; address = address->Next)
            entries.back() += " " + std::to_string(address->Address.lpSockaddr->sa_family);
    }
    return entries;
}

TEST(Interfaces, StandInTheTableAsTheirFactsSay) {
    const std::string guid = kGuid;
    const std::string connection = KeyLines(
        "SYSTEM\\CurrentControlSet\\Control\\Network\\"
        "{4D36E972-E325-11CE-BFC1-08002BE10318}\\" +
            guid + "\\Connection",
        "\"Name\"=\"Local Area\"");
    const struct {
        const char* why;
        std::string facts;
        std::vector<std::string> adapters;
    } cases[] = {
        {"no adapter", "", {}},
        {"addresses in their order, whatever family is asked for",
         Interface("\"Alias\"=\"LAN\"\n\"Up\"=dword:0\n"
                   "\"Addresses\"=\"fe80::1%3; 192.168.7.10\"") +
             connection,
         {guid + " LAN 2 " + std::to_string(AF_INET6) + " " + std::to_string(AF_INET)}},
        {"the name of the connection, up", Interface("") + connection, {guid + " Local Area 1"}},
        {"in the order of their keys, spelled as these",
         Interface("\"Alias\"=\"b\"", "{B0000000-0000-0000-0000-000000000000}") +
             Interface("\"Alias\"=\"a\"", "{a0000000-0000-0000-0000-000000000000}"),
         {"{a0000000-0000-0000-0000-000000000000} a 1",
          "{B0000000-0000-0000-0000-000000000000} b 1"}},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.why);
        const FactsMachine machine(row.facts);
        EXPECT_EQ(Adapters(), row.adapters);
    }
}

}  // namespace
