#pragma once
// The platform calls of an operation, counted by kind.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <span>
#include <string_view>
#include <vector>

#include "Call.h"

// A kind of calls, with the beginnings of their names.
struct CallKind {
    const char* name;
    std::vector<std::string_view> beginnings;
};

// Counts each call as the first kind that it fits, and all as "calls"; divided by `items`, so many
// of which the operation works on. The last of the kinds takes every call.
inline void CountCalls(const platform::Trace& trace, std::span<const CallKind> kinds,
                       benchmark::State& state, int items = 1) {
    for (const CallKind& kind : kinds)
        state.counters[kind.name] = 0;
    for (const auto& call : trace.Records()) {
        const auto kind = std::ranges::find_if(kinds, [&](const CallKind& candidate) {
            return std::ranges::any_of(candidate.beginnings, [&](std::string_view beginning) {
                return std::string_view(call.name).starts_with(beginning);
            });
        });
        state.counters[kind->name].value += 1.0 / items;
    }
    state.counters["calls"] = static_cast<double>(trace.Records().size()) / items;
}
