#include "ScenarioRun.h"

#include <cstdarg>
#include <cstring>
#include <utility>
#include <strsafe.h>

#include "CardLookup.h"
#include "ClosestNuma.h"
#include "Discovery.h"
#include "RestoreDefaults.h"
#include "Tuners.h"

namespace {

// The log of one run, which remembers the last line that it made itself.
class RunLog {
  public:
    explicit RunLog(LogStream& stream) : m_stream(stream) {}

    LogStream* Stream() { return &m_stream; }
    void Line(LPCWSTR format, ...) {
        va_list arguments;
        va_start(arguments, format);
        (void)StringCchVPrintfW(m_last, ARRAYSIZE(m_last), format, arguments);
        va_end(arguments);
        LogLine(&m_stream, m_last);
    }
    void RepeatLast() { LogLine(&m_stream, m_last); }
    // Parts this run from the next.
    void End() { m_stream.Write(TEXT("\n\n")); }

  private:
    LogStream& m_stream;
    WCHAR m_last[kLogTextCapacity] = {};
};

struct Placement {
    const NumaNodeRow* row1 = nullptr;
    const NumaNodeRow* row2 = nullptr;  // null: the ports share a node
};

bool ReadPermanentAddress(const TuningAdapter& adapter, AdapterIfInfo& info) {
    (void)StringCchCopyW(info.alias, ARRAYSIZE(info.alias), adapter.connectionName);
    return GetMacFromIF(info) == 0;
}

// Makes the port with the lower address the first. Whatever isn't known leaves the order alone.
void OrderByAddress(TuningAdapter*& a1, TuningAdapter*& a2) {
    if (!GetAdapterConnectionName(*a1)) return;
    if (!a2 || !a2->present || !GetAdapterConnectionName(*a2)) return;
    AdapterIfInfo info1;
    AdapterIfInfo info2;
    if (!ReadPermanentAddress(*a1, info1) || !ReadPermanentAddress(*a2, info2)) return;
    if (std::memcmp(info1.mac, info2.mac, sizeof(info1.mac)) > 0) std::swap(a1, a2);
}

// Measures the node of one port; `node` keeps its default when that fails. position: 1 or 2.
void MeasureNode(RunLog& run, TuningAdapter& adapter, int position, DWORD& node) {
    if (!GetAdapterConnectionName(adapter)) return;
    DWORD closest = 0;
    if (GetClosestNuma(run.Stream(), adapter, closest)) {
        node = closest;
        run.Line(TEXT("Closest to Adapter #%d NUMA node is %d\n"), position,
                 static_cast<int>(node));
    } else {
        LogFormatted(run.Stream(), TEXT("Failed to get the best Numa, using default (%d)"),
                     static_cast<int>(node));
    }
}

Placement PlacePorts(RunLog& run, TuningAdapter& a1, TuningAdapter* a2,
                     const ProcessorsInfo& processors) {
    DWORD node1 = 0;
    if (processors.highestNode == 0) return {processors.Row(node1), nullptr};

    DWORD node2 = 1;
    MeasureNode(run, a1, 1, node1);
    if (a2) MeasureNode(run, *a2, 2, node2);
    if (node1 == node2) {
        node2 = (node1 + 1) % (processors.highestNode + 1);
        run.Line(TEXT("Use opposite NUMA node(%d) for Adapter #2\n"), static_cast<int>(node2));
    }
    return {processors.Row(node1), processors.Row(node2)};
}

bool RunScenario(LogStream* log, const TuningAdapter* a1, const TuningAdapter* a2,
                 const Placement& place, int scenario) {
    switch (scenario) {
        case SINGLE_PORT_STREAM:
            RestoreTuningDefaults(log, a1, nullptr);
            return TuneSinglePort(log, a1, place.row1, UsableProcessors(place.row1), 0);
        case SINGLE_STREAM:
            RestoreTuningDefaults(log, a1, nullptr);
            return TuneSingleStream(log, a1, place.row1);
        case DUAL_PORT_STREAM:
            RestoreTuningDefaults(log, a1, a2);
            return TuneDualPort(log, a1, a2, place.row1, place.row2);
        case FORWARDING_STREAM:
            RestoreTuningDefaults(log, a1, a2);
            return a2 ? TuneForwardingDualPort(log, a1, a2, place.row1, place.row2)
                      : TuneForwarding(log, a1, place.row1);
        case MCAST_STREAM:
            RestoreTuningDefaults(nullptr, a1, nullptr);
            return TuneMulticast(log, a1, place.row1);
        case RESTORE_DEFAULTS:
            RestoreTuningDefaults(log, a1, a2);
            return true;
        default:
            return true;
    }
}

}  // namespace

bool TunePerformance(LogStream& log, TuningAdapter* a1, TuningAdapter* a2,
                     const ProcessorsInfo& processors, int scenario) {
    RunLog run(log);
    const LPCWSTR name = ScenarioName(scenario);
    run.Line(a1->isEthernet ? TEXT("Start Corvanta Tessaron Ethernet performance tuning for %s.")
                            : TEXT("Start Corvanta Tessaron IPoIB performance tuning for %s."),
             name);
    if (scenario == DUAL_PORT_STREAM) OrderByAddress(a1, a2);
    const Placement place = PlacePorts(run, *a1, a2, processors);

    const bool completed = RunScenario(&log, a1, a2, place, scenario);
    if (completed) {
        run.Line(a1->isEthernet ? TEXT("Corvanta Tessaron Ethernet performance tuning for %s "
                                       "completed successfully.")
                                : TEXT("Corvanta Tessaron IPoIB performance tuning for %s "
                                       "completed successfully."),
                 name);
    } else {
        run.RepeatLast();
    }
    run.End();
    return completed;
}
