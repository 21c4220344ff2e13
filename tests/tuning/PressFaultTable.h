#pragma once
// What becomes of a press of Run Tuning when one of its system calls fails.

#include <string>
#include <vector>

#include "FaultSweep.h"

struct Press {
    int control;  // of the chosen button
    int ports;
    Sample::Kind kind;
    bool tcpChanges;   // general tuning asks for consent, and the press ends with a reboot
    bool twoNodes;     // the port's node is measured, and is the default one
    Facts clean{};     // of the press without a fault
    Facts restored{};  // of a press with the default chosen instead
};

std::vector<FailureRow> PressFaultTable(const Press& press);
