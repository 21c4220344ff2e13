#include "ClosestNuma.h"

#include <algorithm>
#include <shlwapi.h>
#include <strsafe.h>

#include "CardLookup.h"
#include "Diagnostics.h"
#include "ProbeContext.h"
#include "Processors.h"

namespace {

constexpr ULONG kDefaultGuidMask = 0xE7;
constexpr DWORD kGuidMaskLimit = 260;  // bytes
constexpr int kDoorbellStores = 0x1FFFFF;
constexpr DWORD kProbeLimit = 5000;  // ms

// Where the access layer's queue pair object keeps the doorbell, in bytes.
constexpr size_t kDoorbellValueOffset = 0x104;
constexpr size_t kCardObjectOffset = 0x120;  // pointer to a pointer to the card's mapping
constexpr size_t kDoorbellPageOffset = 8;    // in that mapping: address of the page
constexpr size_t kSendDoorbellOffset = 0x14;

struct Doorbell {
    const volatile ULONG* value;
    BYTE* const volatile* page;
};

Doorbell LocateDoorbell(const ProbeContext& context) {
    BYTE* queuePair = static_cast<BYTE*>(context.queuePair->handle);
    BYTE** holder = *reinterpret_cast<BYTE***>(queuePair + kCardObjectOffset);
    return {reinterpret_cast<const volatile ULONG*>(queuePair + kDoorbellValueOffset),
            reinterpret_cast<BYTE* const volatile*>(*holder + kDoorbellPageOffset)};
}

// Milliseconds that the stores take from the current processor. The loop is the measurement: it
// reads the value and the address and stores, each time anew.
DWORD MeasureStores(const Doorbell& doorbell) {
    const volatile ULONG* const value = doorbell.value;
    BYTE* const volatile* const page = doorbell.page;
    const DWORD start = GetTickCount();
    for (int i = 0; i < kDoorbellStores; ++i)
        *reinterpret_cast<volatile ULONG*>(*page + kSendDoorbellOffset) = *value;
    return GetTickCount() - start;
}

bool PinThread(const PROCESSOR_NUMBER& processor) {
    GROUP_AFFINITY affinity = {};
    affinity.Group = processor.Group;
    if (processor.Number < 8 * sizeof(affinity.Mask))
        affinity.Mask = KAFFINITY{1} << processor.Number;
    return SetThreadGroupAffinity(GetCurrentThread(), &affinity, nullptr) != FALSE;
}

// Moves the thread to that processor, once its node has been asked for.
bool MoveTo(const ProcessorCounts& counts, DWORD flat) {
    PROCESSOR_NUMBER processor;
    USHORT node = 0;
    if (!SplitProcessorNumber(counts, flat, processor) ||
        !GetNumaProcessorNodeEx(&processor, &node)) {
        PrintDiagnostic("GetNumaProcessorNode(CurrProcessor %d) failed gle = %d\n",
                        static_cast<int>(flat), static_cast<int>(GetLastError()));
        return false;
    }
    if (!PinThread(processor)) {
        PrintDiagnostic("SetThreadAffinityMask failed  for processor %d gle = %d\n",
                        static_cast<int>(flat), static_cast<int>(GetLastError()));
        return false;
    }
    return true;
}

ULONG ReadGuidMask(LogStream* log, const TuningAdapter& adapter) {
    constexpr LPCWSTR name = TEXT("GuidMask");
    WCHAR text[kPathCapacity];
    if (adapter.key.ReadText(name, text, kGuidMaskLimit) != ERROR_SUCCESS) return kDefaultGuidMask;
    LogFormatted(log, TEXT("Getting adapter %d key %s value: %s"), adapter.number, name, text);
    int mask = 0;
    return StrToIntExW(text, STIF_DEFAULT, &mask) ? static_cast<ULONG>(mask) : 0;
}

// Follows the adapter to its card's GUID text, which stays empty when no card has the port.
bool FindCard(AdapterIfInfo& info) {
    static const struct {
        int (*step)(AdapterIfInfo&);
        const char* failure;
    } kSteps[] = {
        {GetMacFromIF, "GetMacFromIF Failed\n"},
        {GetPortGuidFromMac, "GetPortGuidFromMac Failed\n"},
        {GetCaGuidFromPortGuid, "GetCaGuidFromPortGuid Failed\n"},
    };
    for (const auto& lookup : kSteps) {
        if (lookup.step(info) == 0) continue;
        PrintDiagnostic("%s", lookup.failure);
        PrintDiagnostic("GetGuidFromIF(AdapterIF %S) Failed\n", info.alias);
        return false;
    }
    return true;
}

}  // namespace

bool GetClosestNuma(LogStream* log, const TuningAdapter& adapter, DWORD& node) {
    AdapterIfInfo info;
    (void)StringCchCopyW(info.alias, ARRAYSIZE(info.alias), adapter.connectionName);
    if (!adapter.isEthernet) info.guidMask = ReadGuidMask(log, adapter);
    if (!FindCard(info)) return false;
    if (FindFastestNuma(info.caGuidText, node) != 0) {
        PrintDiagnostic("FindFastestNuma Failed\n");
        return false;
    }
    return true;
}

int FindFastestNuma(LPCWSTR caGuidText, DWORD& node) {
    const ScopedProbeContext context = init_ctx(caGuidText);
    if (!context) {
        PrintDiagnostic("init_ctx failed\n");
        return 1;
    }
    const Doorbell doorbell = LocateDoorbell(*context);
    const ProcessorCounts counts = ReadProcessorCounts();
    ULONG highest = 0;
    if (!GetNumaHighestNodeNumber(&highest)) {
        PrintDiagnostic("GetNumaHighestNodeNumber failed gle = %d\n",
                        static_cast<int>(GetLastError()));
        return 1;
    }
    if (highest >= counts.all) {
        PrintDiagnostic("FindFastestNuma: fewer processors than nodes\n");
        return 1;
    }

    // The flat numbers are taken to be dealt to the nodes in equal runs; one processor of each run
    // is measured. What the table of processors can't hold can't be chosen either.
    const DWORD slice = counts.all / (highest + 1);
    DWORD end = std::min(counts.all, kTableProcessors);
    if (highest >= kTableNodes) end = std::min(end, slice * kTableNodes);
    const DWORD start = GetTickCount();
    DWORD best = ~DWORD{0};
    for (DWORD flat = 0; flat < end; flat += slice) {
        if (!MoveTo(counts, flat)) return 1;
        const DWORD elapsed = MeasureStores(doorbell);
        if (elapsed < best) {
            best = elapsed;
            node = flat / slice;
        }
        if (GetTickCount() - start > kProbeLimit) break;
    }
    return 0;
}
