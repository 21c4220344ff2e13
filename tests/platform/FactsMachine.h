#pragma once
// A fresh machine with the facts that a test gives it. The calls of the test count, as the
// library's would.

#include <gtest/gtest.h>

#include <string>

#include "Call.h"
#include "Machine.h"
#include "MachineFile.h"

inline void FailOnLeaks(platform::Machine& machine) {
    machine.onLeak = [](const platform::Ledger::Entry& entry) {
        ADD_FAILURE() << "leak: " << entry.kind << " of " << entry.call;
    };
}

// The error of a call that failed; 0 of one that gave TRUE or a handle.
template <class Result>
long ErrorOf(Result result) {
    return result ? 0L : long{platform::Call::GetLast()};
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

// Lines of a machine file: a key below HKEY_LOCAL_MACHINE with its values, one a line.
inline std::string KeyLines(const std::string& path, const std::string& values = {}) {
    return "[HKEY_LOCAL_MACHINE\\" + path + "]\n" + values + "\n";
}

// The same for a key of the stand-in's facts; empty: the one above them.
inline std::string FactLines(const std::string& key, const std::string& values = {}) {
    return KeyLines("SOFTWARE\\StandIn" + (key.empty() ? "" : "\\" + key), values);
}
