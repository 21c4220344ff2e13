// What is left open is missed.

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

DWORD WINAPI WaitForGood(LPVOID event) {
    return WaitForSingleObject(event, INFINITE);
}

TEST(LedgerTest, WhatIsLeftOpenIsMissedUnderItsCallAlsoWithoutAHandle) {
    std::vector<std::string> missed;
    {
        platform::Machine machine;
        machine.onLeak = [&](const auto& entry) { missed.push_back(entry.call); };
        BSTR const texts[] = {SysAllocString(u"x"), SysAllocStringLen(nullptr, 4)};
        const HLOCAL local = LocalAlloc(LPTR, 16);
        const LPVOID task = CoTaskMemAlloc(16);
        PMIB_IF_TABLE2 table = nullptr;
        GetIfTable2(&table);
        EXPECT_EQ(machine.ledger.Open().size(), 5U);
        for (const BSTR text : texts)
            SysFreeString(text);
        LocalFree(local);
        CoTaskMemFree(task);
        FreeMibTable(table);
        EXPECT_TRUE(machine.ledger.Open().empty());

        HKEY key = nullptr;
        RegCreateKeyExW(HKEY_USERS, u"K", 0, nullptr, 0, KEY_READ, nullptr, &key, nullptr);
        RegOpenKeyExW(HKEY_USERS, u"K", 0, KEY_READ, &key);
        CreateFileW(u"C:\\f", GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS, 0, nullptr);
        SetupDiCreateDeviceInfoList(nullptr, nullptr);
        const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
        CloseHandle(CreateThread(nullptr, 0, &WaitForGood, event, 0, nullptr));
        CloseHandle(CreateThread(nullptr, 0, &WaitForGood, nullptr, 0, nullptr));  // ends at once
        Sleep(10);
        CloseHandle(CreateMutexW(nullptr, TRUE, nullptr));
    }
    EXPECT_EQ(missed, (std::vector<std::string>{"RegCreateKeyExW", "RegOpenKeyExW", "CreateFileW",
                                                "SetupDiCreateDeviceInfoList", "CreateEventW",
                                                "CreateThread", "a wait"}));
}

}  // namespace
