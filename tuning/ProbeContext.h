#pragma once
// The access layer's objects that one measurement of a card needs. The sheet's thread.

#include <windows.h>
#include <memory>

#include "AccessLayer.h"

inline constexpr size_t kQueuePairAttributes = 240;  // bytes
inline constexpr size_t kWorkBuffer = 256;           // bytes

struct QueuePairHolder {
    void* handle = nullptr;
};

struct ProbeContext {
    AccessLayer layer;
    Card card{layer};
    void* domain = nullptr;
    void* region = nullptr;
    void* completionQueue = nullptr;
    std::unique_ptr<QueuePairHolder> queuePair;
    std::unique_ptr<BYTE[]> queuePairAttributes;
    std::unique_ptr<BYTE[]> workBuffer;
};

// Releases all that the context holds, and the context; null is allowed. A failing call is printed,
// and the release goes on.
void DestroyProbeContext(ProbeContext* context);
struct ProbeContextDeleter {
    void operator()(ProbeContext* context) const { DestroyProbeContext(context); }
};
using ScopedProbeContext = std::unique_ptr<ProbeContext, ProbeContextDeleter>;

// Opens the card whose GUID has those 16 digits and makes a queue pair on its first port. Null on
// failure.
ScopedProbeContext init_ctx(LPCWSTR caGuidText);
