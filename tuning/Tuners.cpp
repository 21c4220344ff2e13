#include "Tuners.h"

#include <algorithm>
#include <span>

#include "../resources/resource.h"
#include "AdapterValues.h"
#include "RestoreDefaults.h"

namespace {

constexpr int kMaxUsed = 8;
constexpr int kTunedRssProfile = 4;
constexpr int kTunedReceiveBuffers = 4096;
constexpr WCHAR kSingleCoreLine[] = TEXT("Tuning for single core CPUs is not supported, aborting.");

struct TunedValue {
    LPCWSTR name;
    int number;
    int fromLevel = 0;
};

void Write(LogStream* log, const TuningAdapter& adapter, int level,
           std::span<const TunedValue> values) {
    for (const TunedValue& row : values)
        if (row.fromLevel <= level) SetAdapterKey(log, adapter, row.name, row.number);
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
    if (row->count < 2) {
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
    const BYTE* processors = row->processors + base;
    const TunedValue values[] = {
        {value::kTuningScenario, IDC_SINGLE_PORT},
        {value::kDefaultRecvRingProcessor, processors[0]},
        {value::kTxForwardingProcessor, processors[count - 1]},
        {value::kMaxRssProcessors, count, 1},
        {value::kRssBaseProcNumber, processors[0], 1},
        {value::kRssProfile, kTunedRssProfile, 2},
        {value::kNumRssQueues, count, 2},
        {value::kRssMaxProcNumber, processors[count - 1], 2},
    };
    Write(log, *adapter, level, values);
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

    const BYTE* processors = row->processors;
    const int count = UsableProcessors(row);
    const int transmit = std::max(count - 2, 1);
    const int lastRss = std::max(count - 3, 1);
    const TunedValue values[] = {
        {value::kTuningScenario, IDC_SINGLE_STREAM},
        {value::kDefaultRecvRingProcessor, processors[0]},
        {value::kTxInterruptProcessor, processors[transmit]},
        {value::kTxForwardingProcessor, processors[count - 1]},
        {value::kMaxRssProcessors, lastRss + 1, 1},
        {value::kRssBaseProcNumber, processors[0], 1},
        {value::kRssProfile, kTunedRssProfile, 2},
        {value::kNumRssQueues, lastRss + 1, 2},
        {value::kRssMaxProcNumber, processors[lastRss], 2},
    };
    Write(log, *adapter, level, values);
    return true;
}

bool TuneForwarding(LogStream* log, const TuningAdapter* adapter, const NumaNodeRow* row) {
    const int level = GetOsTuningLevel();
    if (!CheckTuningInput(log, adapter, row)) return false;

    // RSS takes the first processors, transmit work the last two.
    const BYTE* processors = row->processors;
    const int count = UsableProcessors(row);
    const int transmit = count - 2;
    const int lastRss = std::max(count - 3, 0);
    const TunedValue values[] = {
        {value::kReceiveBuffers, kTunedReceiveBuffers},
        {value::kUseRssForUdp, 0},
        {value::kUseRssForRawIp, 0},
        {value::kRxIntModerationProfile, 0},
        {value::kTxIntModerationProfile, 0},
        {value::kMaxNumTxPacketsToIndicateComplete, 8},
        {value::kTuningScenario, IDC_FORWARDING},
        {value::kForceDelayDropTimeoutMode, 1},
        {value::kUseSendFwQueue, 1},
        {value::kDefaultRecvRingProcessor, processors[0]},
        {value::kTxInterruptProcessor, processors[transmit]},
        {value::kTxForwardingProcessor, processors[count - 1]},
        {value::kMaxRssProcessors, lastRss + 1, 1},
        {value::kRssBaseProcNumber, processors[0], 1},
        {value::kRssProfile, kTunedRssProfile, 2},
        {value::kNumRssQueues, lastRss + 1, 2},
        {value::kRssMaxProcNumber, processors[lastRss], 2},
    };
    Write(log, *adapter, level, values);
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
    const TunedValue settings[] = {
        {value::kReceiveBuffers, kTunedReceiveBuffers},
        {value::kUseRssForRawIp, 0},
        {value::kUseRssForUdp, 0},
        {value::kRxIntModerationProfile, 0},
        {value::kTxIntModerationProfile, 0},
        {value::kMaxNumTxPacketsToIndicateComplete, 8},
        {value::kTuningScenario, IDC_FORWARDING},
        {value::kForceDelayDropTimeoutMode, 1},
        {value::kUseSendFwQueue, 1},
    };
    Write(log, *a1, level, settings);
    Write(log, *a2, level, settings);

    const int half = std::min(row1->count / 2, kMaxUsed);
    const int queues = half == 2 ? 1 : half - 2;
    const BYTE* share1 = row1->processors;
    const BYTE* share2 = row1->processors + half;
    const struct {
        const TuningAdapter* adapter;
        TunedValue row;
    } placement[] = {
        {a1, {value::kDefaultRecvRingProcessor, share1[0]}},
        {a1, {value::kTxInterruptProcessor, share1[queues]}},
        {a1, {value::kTxForwardingProcessor, share1[half - 1]}},
        {a2, {value::kDefaultRecvRingProcessor, share2[0]}},
        {a2, {value::kTxInterruptProcessor, share2[queues]}},
        {a2, {value::kTxForwardingProcessor, share2[half - 1]}},
        {a1, {value::kMaxRssProcessors, queues, 1}},
        {a1, {value::kRssBaseProcNumber, share1[0], 1}},
        {a2, {value::kMaxRssProcessors, queues, 1}},
        {a2, {value::kRssBaseProcNumber, share2[0], 1}},
        {a1, {value::kRssProfile, kTunedRssProfile, 2}},
        {a1, {value::kNumRssQueues, queues, 2}},
        {a1, {value::kRssMaxProcNumber, share1[queues - 1], 2}},
        {a2, {value::kRssProfile, kTunedRssProfile, 2}},
        {a2, {value::kNumRssQueues, queues, 2}},
        {a2, {value::kRssMaxProcNumber, share2[queues - 1], 2}},
    };
    for (const auto& step : placement)
        Write(log, *step.adapter, level, {&step.row, 1});
    return true;
}

bool TuneMulticast(LogStream* log, const TuningAdapter* adapter, const NumaNodeRow* row) {
    const int level = GetOsTuningLevel();
    if (!CheckTuningInput(log, adapter, row)) return false;

    const BYTE* processors = row->processors;
    const int count = UsableProcessors(row);
    const TunedValue values[] = {
        {value::kReceiveBuffers, kTunedReceiveBuffers},
        {value::kTuningScenario, IDC_MULTICAST},
        {value::kDefaultRecvRingProcessor, processors[0]},
        {value::kTxForwardingProcessor, processors[count == 2 ? 1 : 2]},
        {value::kMaxRssProcessors, count, 1},
        {value::kRssBaseProcNumber, processors[0], 1},
        {value::kRssProfile, kTunedRssProfile, 2},
        {value::kNumRssQueues, count, 2},
        {value::kRssMaxProcNumber, processors[count - 1], 2},
    };
    Write(log, *adapter, level, values);
    return true;
}
