#pragma once
// The tuning scenarios, a row each: what names one, which ports it takes, and its tuner. The
// sheet's thread.

#include <windows.h>
#include <span>

#include "AdapterContext.h"
#include "Processors.h"
#include "TuningLog.h"

enum Scenario : int {
    SINGLE_PORT_STREAM = 0,
    SINGLE_STREAM = 1,
    DUAL_PORT_STREAM = 2,
    FORWARDING_STREAM = 3,
    MCAST_STREAM = 4,
    RESTORE_DEFAULTS = 6,
};

// Which ports a scenario restores and tunes.
enum class ScenarioPorts {
    First,        // the one whose tab is open
    FirstOrBoth,  // the other one too when there is one
    Both,         // refused with one; the port with the lower address comes first
};

// Whether the lines of the restore that precedes the tuner go to the log.
enum class RestoreLog { Written, Silent };

// The ports and rows of one run. a2 and row2 may be null: no second port, and no node of its own.
struct PlacedPorts {
    const TuningAdapter* a1 = nullptr;
    const TuningAdapter* a2 = nullptr;
    const NumaNodeRow* row1 = nullptr;
    const NumaNodeRow* row2 = nullptr;
};

struct ScenarioRow {
    Scenario number;
    int control;     // its radio button
    LPCWSTR stored;  // the text of TuningScenario, which is the control's id; null: not stored
    LPCWSTR name;    // for the log
    ScenarioPorts ports;
    RestoreLog restore;
    // False when it refused. Null: nothing but the restore.
    bool (*tune)(LogStream* log, const PlacedPorts& place);
};

// The rows that have a tuner, in the order in which the page looks for a checked button.
std::span<const ScenarioRow> TunedScenarios();
// The row of a number, or null when no scenario has it.
const ScenarioRow* FindScenario(int number);
