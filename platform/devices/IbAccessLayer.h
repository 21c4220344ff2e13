#pragma once
// The InfiniBand access layer, as a module of the machine. It serves the cards of the facts.
//
// Each call gives a status. Objects are told by their handles, which are checked; an object that
// others stand on isn't released (kBusy). A laid-over failure of a release is only reported: the
// object is gone.

#include <windows.h>

#include "CardFacts.h"

namespace platform {

namespace access_layer {

enum Status : unsigned {
    kSuccess = 0,
    kError = 1,
    kInsufficientMemory = 2,  // also: the buffer doesn't hold the answer
    kInvalidParameter = 3,
    kNotFound = 4,
    kInvalidHandle = 5,
    kBusy = 6,
};

// States of a queue pair.
enum QueuePairState : UINT32 { kReset = 1, kInit = 2 };

struct PortAttributes {
    Net64 guid;
    UINT8 number;  // from 1
    UINT8 reserved[7];
};

// The array of ports follows in the same buffer.
struct CardAttributes {
    Net64 guid;
    UINT8 portCount;
    UINT8 reserved[7];
    PortAttributes* ports;
};

struct RegionRequest {
    void* address;
    UINT64 length;  // bytes
    UINT32 access;
    UINT32 reserved;
};

struct CompletionQueueRequest {
    UINT32 size;
    UINT32 reserved;
    void* completion;
    void* waitObject;
};

struct QueuePairRequest {
    UINT32 type;
    UINT32 sendDepth;
    UINT32 receiveDepth;
    UINT32 sendElements;
    UINT32 receiveElements;
    UINT32 signalAll;
    void* sendQueue;
    void* receiveQueue;
};

struct QueuePairChange {
    UINT32 state;
    UINT32 access;
    UINT8 port;
    UINT8 reserved;
    UINT16 partitionKeyIndex;
    UINT32 reserved2;
};

inline constexpr std::size_t kQueuePairAttributesSize = 240;

static_assert(sizeof(PortAttributes) == 16 && sizeof(CardAttributes) == 24 &&
              sizeof(RegionRequest) == 24 && sizeof(CompletionQueueRequest) == 24 &&
              sizeof(QueuePairRequest) == 40 && sizeof(QueuePairChange) == 16);

}  // namespace access_layer

// Looks at the register of each open queue pair. One that was written costs the clock what a
// measurement costs from the processor that the thread is pinned to. Called by whoever is about to
// read the clock.
void LookAtDoorbells();

}  // namespace platform

extern "C" {
unsigned WINAPI ib_open_al(void** al);
unsigned WINAPI ib_get_ca_guids(void* al, platform::Net64* guids, SIZE_T* count);
unsigned WINAPI ib_open_ca(void* al, platform::Net64 guid, void* eventCallback, void* context,
                           void** ca);
unsigned WINAPI ib_query_ca(void* ca, platform::access_layer::CardAttributes* attributes,
                            UINT32* size);
unsigned WINAPI ib_alloc_pd(void* ca, UINT32 type, const void* context, void** pd);
unsigned WINAPI ib_reg_mem(void* pd, const platform::access_layer::RegionRequest* request,
                           UINT32* localKey, UINT32* remoteKey, void** region);
unsigned WINAPI ib_create_cq(void* ca,
                             const platform::access_layer::CompletionQueueRequest* request,
                             const void* context, void* eventCallback, void** cq);
unsigned WINAPI ib_create_qp(void* pd, const platform::access_layer::QueuePairRequest* request,
                             const void* context, void* eventCallback, void** qp);
unsigned WINAPI ib_modify_qp(void* qp, const platform::access_layer::QueuePairChange* request);
// attributes: kQueuePairAttributesSize bytes; the first 32 bits give the state.
unsigned WINAPI ib_query_qp(void* qp, void* attributes);
unsigned WINAPI ib_destroy_qp(void* qp, void* callback);
unsigned WINAPI ib_destroy_cq(void* cq, void* callback);
unsigned WINAPI ib_dereg_mr(void* region);
unsigned WINAPI ib_dealloc_pd(void* pd, void* callback);
unsigned WINAPI ib_close_ca(void* ca, void* callback);
unsigned WINAPI ib_close_al(void* al);
}
