#include "Scenarios.h"

#include <algorithm>
#include <iterator>

#include "../resources/resource.h"
#include "Tuners.h"

namespace {

bool SinglePort(LogStream* log, const PlacedPorts& place) {
    return TuneSinglePort(log, place.a1, place.row1, UsableProcessors(place.row1), 0);
}

bool DualPort(LogStream* log, const PlacedPorts& place) {
    return TuneDualPort(log, place.a1, place.a2, place.row1, place.row2);
}

bool Forwarding(LogStream* log, const PlacedPorts& place) {
    return place.a2 ? TuneForwardingDualPort(log, place.a1, place.a2, place.row1, place.row2)
                    : TuneForwarding(log, place.a1, place.row1);
}

bool Multicast(LogStream* log, const PlacedPorts& place) {
    return TuneMulticast(log, place.a1, place.row1);
}

bool SingleStream(LogStream* log, const PlacedPorts& place) {
    return TuneSingleStream(log, place.a1, place.row1);
}

// The defaults, which no tuner writes, come last.
constexpr ScenarioRow kScenarios[] = {
    // clang-format off
    {SINGLE_PORT_STREAM, IDC_SINGLE_PORT,   TEXT("1086"), TEXT("SINGLE_PORT_STREAM"), ScenarioPorts::First,       RestoreLog::Written, SinglePort},
    {DUAL_PORT_STREAM,   IDC_DUAL_PORT,     TEXT("1087"), TEXT("DUAL_PORT_STREAM"),   ScenarioPorts::Both,        RestoreLog::Written, DualPort},
    {FORWARDING_STREAM,  IDC_FORWARDING,    TEXT("1088"), TEXT("FORWARDING_STREAM"),  ScenarioPorts::FirstOrBoth, RestoreLog::Written, Forwarding},
    {MCAST_STREAM,       IDC_MULTICAST,     TEXT("1096"), TEXT("MCAST_STREAM"),       ScenarioPorts::First,       RestoreLog::Silent,  Multicast},
    {SINGLE_STREAM,      IDC_SINGLE_STREAM, TEXT("1098"), TEXT("SINGLE_STREAM"),      ScenarioPorts::First,       RestoreLog::Written, SingleStream},
    {RESTORE_DEFAULTS,   IDC_BALANCED,      nullptr,      TEXT("RESTORE_DEFAULTS"),   ScenarioPorts::FirstOrBoth, RestoreLog::Written, nullptr},
    // clang-format on
};

}  // namespace

std::span<const ScenarioRow> TunedScenarios() {
    return std::span(kScenarios).first(ARRAYSIZE(kScenarios) - 1);
}

const ScenarioRow* FindScenario(int number) {
    const auto* row = std::find_if(std::begin(kScenarios), std::end(kScenarios),
                                   [=](const ScenarioRow& each) { return each.number == number; });
    return row == std::end(kScenarios) ? nullptr : row;
}
