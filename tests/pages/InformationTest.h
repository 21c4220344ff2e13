#pragma once
// What the tests of the Information tab share: an adapter whose driver answers everything, and the
// rows that follow from it.

#include <string>
#include <utility>
#include <vector>

#include <commctrl.h>

#include "Call.h"
#include "Fixture.h"
#include "InformationRows.h"
#include "MachineFile.h"

constexpr int kInformationList = 1030;
constexpr int kSaveToFile = 1065;

using Texts = std::vector<std::u16string>;

inline std::string MiniportKey(const std::string& guid = Sample::Guid(1)) {
    return "SOFTWARE\\StandIn\\Miniports\\" + guid;
}

inline std::string InterfaceKey(const std::string& guid = Sample::Guid(1)) {
    return "SOFTWARE\\StandIn\\Interfaces\\" + guid;
}

inline std::string Answer(const std::string& oid, const std::string& hex) {
    return "\"" + oid + "\"=hex:" + hex;
}

inline void MergeFile(TestMachine& test, const std::string& file) {
    const platform::QuietScope quiet;
    EXPECT_FALSE(platform::MergeMachineFile(test.machine, file));
}

// Lines below their keys.
inline void Merge(TestMachine& test,
                  const std::vector<std::pair<std::string, std::string>>& lines) {
    std::string file = "Windows Registry Editor Version 5.00\n";
    for (const auto& [key, line] : lines)
        file += "\n[HKEY_LOCAL_MACHINE\\" + key + "]\n" + line + "\n";
    MergeFile(test, file);
}

// The adapter has become another model, 8192.
inline void ChangeDeviceId(TestMachine& test) {
    Merge(test, {{MiniportKey(), Answer("0xFFA0C924", "00,20")}});
}

// Forty gigabits on the first port, all facts known.
inline Sample FullSample() {
    const std::string key = MiniportKey();
    return Sample()
        .PortValue(1, "\"DriverVersion\"=\"4.2.9.1\"")
        .With(InterfaceKey(), "\"Addresses\"=\"192.168.7.10;fe80::1\"")
        .With(key, Answer("0xFFA0C911", "03"))
        .With(key, Answer("0xFFA0C912", "02"))
        .With(key, Answer("0xFFA0C913", "08"))
        .With(key, Answer("0xFFA0C915", "98,3a,09,00,02,00,00,00"))
        .With(key, Answer("0xFFA0C916", "43,56,33,35,34,41,2d,46,43,00,ff"))
        .With(key, Answer("0xFFA0C919", "ab"))
        .With(key, Answer("0xFFA0C923", "1a"))
        .With(key, Answer("0xFFA0C924", "03,10"))
        .With(key, Answer("0xFFA0C925", "45,74,68,20,31,00"))
        .With(key, Answer("0xFFA0C933", "30,78,37,66,66,66,00"))
        .With(key, Answer("0x00010208",
                          "80,01,10,00,01,00,00,00,00,90,2f,50,09,00,00,00,"
                          "00,90,2f,50,09,00,00,00,00,00,00,00,00,00,00,00"))
        .With(key, Answer("0x01010101", "00,02,c9,11,22,33"))
        .With(key, Answer("0x01010102", "02,02,c9,aa,bb,cc"));
}

inline Texts FullValues() {
    return {u"4.2.9.1",
            u"2.9.15000",
            u"1a",
            u"PCI-E 5.0 Gbps x8",
            u"40.0 Gbps/Full Duplex",
            u"CV354A-FC",
            u"4099",
            u"AB",
            u"02-02-C9-AA-BB-CC",
            u"00-02-C9-11-22-33",
            u"Connected",
            u"Local Area Connection 3",
            u"192.168.7.10",
            u"Eth 1",
            u"0x7fff"};
}

// The cells of a column of a page's list.
inline Texts ListColumn(HWND page, int column) {
    const HWND list = GetDlgItem(page, kInformationList);
    Texts cells;
    const LRESULT count = SendMessageW(list, LVM_GETITEMCOUNT, 0, 0);
    for (LRESULT i = 0; i < count; ++i) {
        WCHAR text[300] = {};
        LVITEMW item = {};
        item.iSubItem = column;
        item.pszText = text;
        item.cchTextMax = ARRAYSIZE(text);
        SendMessageW(list, LVM_GETITEMTEXTW, static_cast<WPARAM>(i),
                     reinterpret_cast<LPARAM>(&item));
        cells.emplace_back(text);
    }
    return cells;
}

inline Texts ListValues(const TestMachine& test) {
    return ListColumn(test.Page(), 1);
}

// The active tab is left for the next one, or entered again.
inline void Leave(TestMachine& test) {
    SendMessageW(test.SheetWindow(), PSM_SETCURSEL, 1, 0);
}
inline void Return(TestMachine& test) {
    SendMessageW(test.SheetWindow(), PSM_SETCURSEL, 0, 0);
}

// Whether a thread polls.
inline bool Polls(const TestMachine& test) {
    for (const auto& entry : test.machine.ledger.Open()) {
        if (std::string_view(entry.kind) == "running thread") return true;
    }
    return false;
}
