#pragma once
// A fresh machine with the facts that a test gives it. The calls of the test count, as the
// library's would.

#include <gtest/gtest.h>

#include <string>

#include "Machine.h"
#include "MachineFile.h"
#include "Text.h"

inline void FailOnLeaks(platform::Machine& machine) {
    machine.onLeak = [](const platform::Ledger::Entry& entry) {
        ADD_FAILURE() << "leak: " << entry.kind << " of " << entry.call;
    };
}

struct FactsMachine {
    // body: keys and values of a machine file.
    explicit FactsMachine(const std::string& body = {}, std::uint64_t seed = 0) : machine(seed) {
        FailOnLeaks(machine);
        const auto error = platform::LoadMachineFile(machine, kHead + body);
        if (error) ADD_FAILURE() << "line " << error->line << ": " << error->message;
    }
    void Merge(const std::string& body) {
        EXPECT_FALSE(platform::MergeMachineFile(machine, kHead + body));
    }

    static inline const std::string kHead = "Windows Registry Editor Version 5.00\n\n";
    static inline const std::string kStandIn = "HKEY_LOCAL_MACHINE\\SOFTWARE\\StandIn";

    platform::Machine machine;
};

// A file in UTF-16, with its mark, of one in UTF-8.
inline std::string ToUtf16(std::string_view text, bool isBig) {
    std::u16string wide = u'\uFEFF' + platform::FromUtf8(text);
    for (char16_t& unit : wide)
        if (isBig) unit = static_cast<char16_t>(unit << 8 | unit >> 8);
    return {reinterpret_cast<const char*>(wide.data()), wide.size() * sizeof(char16_t)};
}

// Lines of a machine file: a key below HKEY_LOCAL_MACHINE with its values, one a line.
inline std::string KeyLines(const std::string& path, const std::string& values = {}) {
    return "[HKEY_LOCAL_MACHINE\\" + path + "]\n" + values + "\n";
}

// The same for a key of the stand-in's facts; empty: the one above them.
inline std::string FactLines(const std::string& key, const std::string& values = {}) {
    return KeyLines("SOFTWARE\\StandIn" + (key.empty() ? "" : "\\" + key), values);
}
