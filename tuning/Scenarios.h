#pragma once
// The tuning scenarios: their numbers and their names in the log. A port's stored TuningScenario is
// the control id of the scenario's radio button.

#include <windows.h>

enum Scenario : int {
    SINGLE_PORT_STREAM = 0,
    SINGLE_STREAM = 1,
    DUAL_PORT_STREAM = 2,
    FORWARDING_STREAM = 3,
    MCAST_STREAM = 4,
    RESTORE_DEFAULTS = 6,
};

// The name for the log; empty for a number without one.
constexpr LPCWSTR ScenarioName(int scenario) {
    switch (scenario) {
        case SINGLE_PORT_STREAM:
            return TEXT("SINGLE_PORT_STREAM");
        case SINGLE_STREAM:
            return TEXT("SINGLE_STREAM");
        case DUAL_PORT_STREAM:
            return TEXT("DUAL_PORT_STREAM");
        case FORWARDING_STREAM:
            return TEXT("FORWARDING_STREAM");
        case MCAST_STREAM:
            return TEXT("MCAST_STREAM");
        case RESTORE_DEFAULTS:
            return TEXT("RESTORE_DEFAULTS");
        default:
            return TEXT("");
    }
}
