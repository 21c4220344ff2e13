#include "ScenarioRun.h"

#include <cstdarg>
#include <cstring>
#include <utility>
#include <strsafe.h>

#include "CardLookup.h"
#include "ClosestNuma.h"
#include "Discovery.h"
#include "RestoreDefaults.h"
#include "Scenarios.h"

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

// Measures the node of one port; `node` keeps its default when that fails or gives a node that
// can't be used. position: 1 or 2.
void MeasureNode(RunLog& run, TuningAdapter& adapter, int position,
                 const ProcessorsInfo& processors, DWORD& node) {
    if (!GetAdapterConnectionName(adapter)) return;
    DWORD closest = 0;
    if (GetClosestNuma(run.Stream(), adapter, closest) && processors.CanUse(closest)) {
        node = closest;
        run.Line(TEXT("Closest to Adapter #%d NUMA node is %d\n"), position,
                 static_cast<int>(node));
    } else {
        LogFormatted(run.Stream(), TEXT("Failed to get the best Numa, using default (%d)"),
                     static_cast<int>(node));
    }
}

PlacedPorts PlacePorts(RunLog& run, TuningAdapter& a1, TuningAdapter* a2,
                       const ProcessorsInfo& processors) {
    // The ports share a node when there is no other.
    const auto place = [&](const NumaNodeRow* row1, const NumaNodeRow* row2) {
        return PlacedPorts{&a1, a2, row1, row2};
    };
    if (processors.highestNode == 0) return place(processors.Row(0), nullptr);

    DWORD node1 = processors.UsableFrom(0);
    DWORD node2 = processors.UsableFrom(1);
    MeasureNode(run, a1, 1, processors, node1);
    if (a2) MeasureNode(run, *a2, 2, processors, node2);
    if (node1 == node2) {
        node2 = processors.UsableFrom((node1 + 1) % (processors.highestNode + 1));
        if (node1 == node2) return place(processors.Row(node1), nullptr);
        run.Line(TEXT("Use opposite NUMA node(%d) for Adapter #2\n"), static_cast<int>(node2));
    }
    return place(processors.Row(node1), processors.Row(node2));
}

// Restores what the scenario touches and lets its tuner write. False when that refused.
bool RunScenario(LogStream* log, const ScenarioRow& scenario, const PlacedPorts& place) {
    RestoreTuningDefaults(scenario.restore == RestoreLog::Written ? log : nullptr, place.a1,
                          scenario.ports == ScenarioPorts::First ? nullptr : place.a2);
    return !scenario.tune || scenario.tune(log, place);
}

}  // namespace

bool TunePerformance(LogStream& log, TuningAdapter* a1, TuningAdapter* a2,
                     const ProcessorsInfo& processors, int scenario) {
    RunLog run(log);
    const ScenarioRow* row = FindScenario(scenario);
    const LPCWSTR name = row ? row->name : TEXT("");
    run.Line(a1->isEthernet ? TEXT("Start Corvanta Tessaron Ethernet performance tuning for %s.")
                            : TEXT("Start Corvanta Tessaron IPoIB performance tuning for %s."),
             name);
    if (row && row->ports == ScenarioPorts::Both) OrderByAddress(a1, a2);
    const PlacedPorts place = PlacePorts(run, *a1, a2, processors);

    const bool completed = !row || RunScenario(&log, *row, place);
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
