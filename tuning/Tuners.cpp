#include "Tuners.h"

#include <algorithm>
#include <initializer_list>

#include "../resources/resource.h"
#include "AdapterValues.h"
#include "RestoreDefaults.h"

namespace {

constexpr int kMaxUsed = 8;
constexpr int kTunedRssProfile = 4;
constexpr int kTunedReceiveBuffers = 4096;
constexpr WCHAR kSingleCoreLine[] = TEXT("Tuning for single core CPUs is not supported, aborting.");

// The order of the two settings of RSS is the caller's.
void WriteForwardingSettings(LogStream* log, const TuningAdapter& adapter, LPCWSTR firstRss,
                             LPCWSTR secondRss) {
    const struct {
        LPCWSTR name;
        int number;
    } settings[] = {
        {value::kReceiveBuffers, kTunedReceiveBuffers},
        {firstRss, 0},
        {secondRss, 0},
        {value::kRxIntModerationProfile, 0},
        {value::kTxIntModerationProfile, 0},
        {value::kMaxNumTxPacketsToIndicateComplete, 8},
        {value::kTuningScenario, IDC_FORWARDING},
        {value::kForceDelayDropTimeoutMode, 1},
        {value::kUseSendFwQueue, 1},
    };
    for (const auto& row : settings)
        SetAdapterKey(log, adapter, row.name, row.number);
}

constexpr int kNoInterrupt = -1;
constexpr int kNoLevel = -1;

// Which processors of its share do a port's work: the first one receives, RSS goes from there to
// lastRss.
struct Placement {
    const TuningAdapter* adapter;
    const BYTE* processors;
    int interrupt;  // index for transmit interrupts, or kNoInterrupt to leave them
    int forwarding;
    int lastRss;
};

// Level by level, so that the ports take turns.
void Place(LogStream* log, int level, std::initializer_list<Placement> ports) {
    for (int current = 0; current <= level; ++current) {
        for (const Placement& port : ports) {
            const BYTE* processors = port.processors;
            const struct {
                LPCWSTR name;
                int number;
                int fromLevel;
            } rows[] = {
                {value::kDefaultRecvRingProcessor, processors[0], 0},
                {value::kTxInterruptProcessor, processors[std::max(port.interrupt, 0)],
                 port.interrupt == kNoInterrupt ? kNoLevel : 0},
                {value::kTxForwardingProcessor, processors[port.forwarding], 0},
                {value::kMaxRssProcessors, port.lastRss + 1, 1},
                {value::kRssBaseProcNumber, processors[0], 1},
                {value::kRssProfile, kTunedRssProfile, 2},
                {value::kNumRssQueues, port.lastRss + 1, 2},
                {value::kRssMaxProcNumber, processors[port.lastRss], 2},
            };
            for (const auto& row : rows) {
                if (row.fromLevel == current)
                    SetAdapterKey(log, *port.adapter, row.name, row.number);
            }
        }
    }
}

}  // namespace

int UsableProcessors(const NumaNodeRow* row) {
    return row ? std::min<int>(row->count, kMaxUsed) : 0;
}

bool CheckTuningInput(LogStream* log, const TuningAdapter* adapter, const NumaNodeRow* row) {
    if (!row) {
        LogLine(log, TEXT("Failed to retrieve Numa's information, Invalid input."));
        return false;
    }
    if (!adapter) {
        LogLine(log, TEXT("Failed to retrieve Adapter's information, Invalid input."));
        return false;
    }
    if (row->count < kFewestProcessors) {
        LogLine(log, kSingleCoreLine);
        return false;
    }
    return true;
}

bool TuneSinglePort(LogStream* log, const TuningAdapter* adapter, const NumaNodeRow* row, int count,
                    int base) {
    const int level = GetOsTuningLevel();
    if (!CheckTuningInput(log, adapter, row)) return false;
    if (count < 2) {
        LogLine(log, kSingleCoreLine);
        RestoreTuningDefaults(log, adapter, nullptr);
        return false;
    }
    SetAdapterKey(log, *adapter, value::kTuningScenario, IDC_SINGLE_PORT);
    Place(log, level, {{adapter, row->processors + base, kNoInterrupt, count - 1, count - 1}});
    return true;
}

bool TuneDualPort(LogStream* log, const TuningAdapter* a1, const TuningAdapter* a2,
                  const NumaNodeRow* row1, const NumaNodeRow* row2) {
    if (!CheckTuningInput(log, a1, row1) || !CheckTuningInput(log, a2, row1)) return false;

    bool tuned = false;
    if (row2) {
        tuned = TuneSinglePort(log, a1, row1, UsableProcessors(row1), 0) &&
                TuneSinglePort(log, a2, row2, UsableProcessors(row2), 0);
    } else {
        const int half = std::min(row1->count / 2, kMaxUsed);
        tuned = TuneSinglePort(log, a1, row1, half, 0) && TuneSinglePort(log, a2, row1, half, half);
    }
    SetAdapterKey(log, *a1, value::kTuningScenario, IDC_DUAL_PORT);
    SetAdapterKey(log, *a2, value::kTuningScenario, IDC_DUAL_PORT);
    return tuned;
}

bool TuneSingleStream(LogStream* log, const TuningAdapter* adapter, const NumaNodeRow* row) {
    const int level = GetOsTuningLevel();
    if (!CheckTuningInput(log, adapter, row)) return false;
    if (adapter->isEthernet) SetAdapterKey(log, *adapter, value::kSingleStream, 1);

    SetAdapterKey(log, *adapter, value::kTuningScenario, IDC_SINGLE_STREAM);

    const int count = UsableProcessors(row);
    const int transmit = std::max(count - 2, 1);
    const int lastRss = std::max(count - 3, 1);
    Place(log, level, {{adapter, row->processors, transmit, count - 1, lastRss}});
    return true;
}

bool TuneForwarding(LogStream* log, const TuningAdapter* adapter, const NumaNodeRow* row) {
    const int level = GetOsTuningLevel();
    if (!CheckTuningInput(log, adapter, row)) return false;

    WriteForwardingSettings(log, *adapter, value::kUseRssForUdp, value::kUseRssForRawIp);

    // RSS takes the first processors, transmit work the last two.
    const int count = UsableProcessors(row);
    const int lastRss = std::max(count - 3, 0);
    Place(log, level, {{adapter, row->processors, count - 2, count - 1, lastRss}});
    return true;
}

bool TuneForwardingDualPort(LogStream* log, const TuningAdapter* a1, const TuningAdapter* a2,
                            const NumaNodeRow* row1, const NumaNodeRow* row2) {
    const int level = GetOsTuningLevel();
    if (!CheckTuningInput(log, a1, row1) || !CheckTuningInput(log, a2, row1)) return false;

    if (row1->count < 4 || (row1->count < 6 && row2)) {
        if (TuneForwarding(log, a1, row1) && TuneForwarding(log, a2, row2 ? row2 : row1))
            return true;
        LogLine(log, TEXT("Tuning not supported, aborting."));
        RestoreTuningDefaults(log, a1, a2);
        return false;
    }

    // Other than for one port, raw IP comes before UDP.
    for (const TuningAdapter* adapter : {a1, a2})
        WriteForwardingSettings(log, *adapter, value::kUseRssForRawIp, value::kUseRssForUdp);

    const int half = std::min(row1->count / 2, kMaxUsed);
    const int queues = half == 2 ? 1 : half - 2;
    Place(log, level,
          {{a1, row1->processors, queues, half - 1, queues - 1},
           {a2, row1->processors + half, queues, half - 1, queues - 1}});
    return true;
}

bool TuneMulticast(LogStream* log, const TuningAdapter* adapter, const NumaNodeRow* row) {
    const int level = GetOsTuningLevel();
    if (!CheckTuningInput(log, adapter, row)) return false;

    SetAdapterKey(log, *adapter, value::kReceiveBuffers, kTunedReceiveBuffers);
    SetAdapterKey(log, *adapter, value::kTuningScenario, IDC_MULTICAST);

    const int count = UsableProcessors(row);
    const int forwarding = count == 2 ? 1 : 2;
    Place(log, level, {{adapter, row->processors, kNoInterrupt, forwarding, count - 1}});
    return true;
}
