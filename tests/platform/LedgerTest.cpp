// What is made is entered in the ledger, struck when it is released, and missed when it isn't.

#include <functional>
#include <string>
#include <vector>

#include <winsock2.h>
#include <windows.h>
#include <iphlpapi.h>
#include <objbase.h>
#include <oleauto.h>
#include <setupapi.h>

#include "FactsMachine.h"

namespace {

TEST(LedgerTest, EntersWhatIsMadeUnderItsCallUntilItIsReleased) {
    const auto freeText = [](void* text) { SysFreeString(static_cast<BSTR>(text)); };
    const struct {
        const char* call;
        std::function<void*()> make;
        std::function<void(void*)> release;
    } cases[] = {
        {"SysAllocString", [] { return SysAllocString(u"x"); }, freeText},
        {"SysAllocStringLen", [] { return SysAllocStringLen(nullptr, 4); }, freeText},
        {"LocalAlloc", [] { return LocalAlloc(LPTR, 16); }, &LocalFree},
        {"CoTaskMemAlloc", [] { return CoTaskMemAlloc(16); }, &CoTaskMemFree},
        {"CreateEventW", [] { return CreateEventW(nullptr, TRUE, FALSE, nullptr); }, &CloseHandle},
        {"CreateFileW",
         [] { return CreateFileW(u"C:\\f", GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS, 0, nullptr); },
         &CloseHandle},
        {"SetupDiCreateDeviceInfoList",
         [] { return SetupDiCreateDeviceInfoList(nullptr, nullptr); },
         &SetupDiDestroyDeviceInfoList},
        {"GetIfTable2",
         [] {
             PMIB_IF_TABLE2 table = nullptr;
             GetIfTable2(&table);
             return table;
         },
         &FreeMibTable},
        {"RegOpenKeyExW",
         [] {
             HKEY key = nullptr;
             RegOpenKeyExW(HKEY_LOCAL_MACHINE, u"K", 0, KEY_READ, &key);
             return key;
         },
         [](void* key) { RegCloseKey(static_cast<HKEY>(key)); }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.call);
        FactsMachine facts(KeyLines("K"));
        const platform::Ledger& ledger = facts.machine.ledger;
        facts.machine.faults.FailNth(1, false);
        const void* failed = c.make();
        EXPECT_TRUE(failed == nullptr || failed == INVALID_HANDLE_VALUE);
        EXPECT_TRUE(ledger.Open().empty());
        void* const made = c.make();
        ASSERT_EQ(ledger.Open().size(), 1U);
        EXPECT_STREQ(ledger.Open()[0].call, c.call);
        c.release(made);
        EXPECT_TRUE(ledger.Open().empty());
    }
}

DWORD WINAPI WaitForGood(LPVOID event) {
    return WaitForSingleObject(event, INFINITE);
}

TEST(LedgerTest, WhatIsLeftOpenIsMissedAlsoWithoutAHandle) {
    std::vector<std::string> missed;
    {
        platform::Machine machine;
        machine.onLeak = [&](const auto& entry) { missed.push_back(entry.kind); };
        HKEY key = nullptr;
        RegCreateKeyExW(HKEY_USERS, u"K", 0, nullptr, 0, KEY_READ, nullptr, &key, nullptr);
        const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
        CloseHandle(CreateThread(nullptr, 0, &WaitForGood, event, 0, nullptr));
        CloseHandle(CreateThread(nullptr, 0, &WaitForGood, nullptr, 0, nullptr));  // ends at once
        Sleep(10);
        CloseHandle(event);
        CloseHandle(CreateMutexW(nullptr, TRUE, nullptr));
    }
    EXPECT_EQ(missed,
              (std::vector<std::string>{"registry key", "running thread", "mutex ownership"}));
}

}  // namespace
