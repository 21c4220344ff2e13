#include "IbAccessLayer.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "Call.h"
#include "CardFacts.h"
#include "Carrier.h"

using namespace platform;
using namespace platform::access_layer;

namespace {

constexpr const char* kObjectKind = "access layer object";

struct Object {
    virtual ~Object() = default;
    virtual void* Handle() { return this; }
    std::vector<Object*> standsOn;
    unsigned users = 0;  // objects that stand on this one
};

struct Layer : Object {};

struct Card : Object {
    Net64 guid = 0;
};

struct Domain : Object {
    Card* card = nullptr;
};

struct Region : Object {};

struct CompletionQueue : Object {
    Card* card = nullptr;
};

// What callers know of the object behind a queue pair's handle, and of the way from there to the
// card's doorbell page.
struct DoorbellMapping {
    void* reserved;
    void* page;
};
struct QueuePairBody {
    BYTE reserved[0x104];
    UINT32 doorbell;
    BYTE reserved2[0x18];
    DoorbellMapping** mapping;
};
static_assert(offsetof(QueuePairBody, doorbell) == 0x104 &&
              offsetof(QueuePairBody, mapping) == 0x120 && offsetof(DoorbellMapping, page) == 8);

struct QueuePair : Object {
    static constexpr std::size_t kSendRegister = 0x14 / sizeof(UINT32);

    QueuePair(Card* owner, UINT32 number) : card(owner) {
        body.doorbell = number << 8;
        body.mapping = &mappingAddress;
        Register() = Idle();
    }
    void* Handle() override { return &body; }
    volatile UINT32& Register() { return page[kSendRegister]; }
    UINT32 Idle() const { return ~body.doorbell; }

    Card* card;
    UINT32 state = kReset;
    volatile UINT32 page[1024] = {};
    DoorbellMapping mapping = {nullptr, const_cast<UINT32*>(page)};
    DoorbellMapping* mappingAddress = &mapping;
    QueuePairBody body = {};
};

struct AccessLayer : Part {
    std::map<const void*, std::unique_ptr<Object>> open;  // by handle
    UINT32 next = 1;                                      // number of a queue pair, key of a region

    template <class T>
    T* Find(const void* handle) {
        const auto found = open.find(handle);
        return found == open.end() ? nullptr : dynamic_cast<T*>(found->second.get());
    }
};

AccessLayer& Of(const Call& call) {
    return call.machine.Get<AccessLayer>();
}

unsigned Publish(const Call& call, std::unique_ptr<Object> object, std::vector<Object*> standsOn,
                 void** handle) {
    for (Object* const base : standsOn)
        ++base->users;
    object->standsOn = std::move(standsOn);
    *handle = object->Handle();
    call.machine.ledger.Enter(kObjectKind, *handle, call.Name());
    Of(call).open.emplace(*handle, std::move(object));
    return kSuccess;
}

template <class T>
unsigned Release(const Call& call, void* handle) {
    T* const object = Of(call).Find<T>(handle);
    if (!object) return kInvalidHandle;
    if (object->users != 0) return kBusy;
    for (Object* const base : object->standsOn)
        --base->users;
    call.machine.ledger.Strike(kObjectKind, handle);
    Of(call).open.erase(handle);
    return call.Failed() ? call.Error() : unsigned{kSuccess};
}

}  // namespace

void platform::LookAtDoorbells() {
    const QuietScope quiet;
    for (const auto& [handle, object] : Machine::Current().Get<AccessLayer>().open) {
        auto* const pair = dynamic_cast<QueuePair*>(object.get());
        if (!pair || pair->Register() == pair->Idle()) continue;
        pair->Register() = pair->Idle();
        ChargeClock(MeasurementTicks(pair->card->guid));
    }
}

unsigned WINAPI ib_open_al(void** al) {
    Call call("ib_open_al", nullptr, kError);
    if (call.Failed()) return call.Error();
    if (!al) return kInvalidParameter;
    return Publish(call, std::make_unique<Layer>(), {}, al);
}

unsigned WINAPI ib_get_ca_guids(void* al, Net64* guids, SIZE_T* count) {
    Call call("ib_get_ca_guids", nullptr, kError);
    if (call.Failed()) return call.Error();
    if (!Of(call).Find<Layer>(al)) return kInvalidHandle;
    if (!count) return kInvalidParameter;
    const std::vector<Net64> cards = CardGuids();
    const SIZE_T capacity = guids ? *count : 0;
    *count = cards.size();
    if (!guids || capacity < cards.size()) return kInsufficientMemory;
    std::copy(cards.begin(), cards.end(), guids);
    return kSuccess;
}

unsigned WINAPI ib_open_ca(void* al, Net64 guid, void*, void*, void** ca) {
    Call call("ib_open_ca", nullptr, kError);
    if (call.Failed()) return call.Error();
    Layer* const layer = Of(call).Find<Layer>(al);
    if (!layer) return kInvalidHandle;
    if (!ca) return kInvalidParameter;
    const std::vector<Net64> cards = CardGuids();
    if (std::find(cards.begin(), cards.end(), guid) == cards.end()) return kNotFound;
    auto card = std::make_unique<Card>();
    card->guid = guid;
    return Publish(call, std::move(card), {layer}, ca);
}

unsigned WINAPI ib_query_ca(void* ca, CardAttributes* attributes, UINT32* size) {
    Call call("ib_query_ca", nullptr, kError);
    if (call.Failed()) return call.Error();
    const Card* const card = Of(call).Find<Card>(ca);
    if (!card) return kInvalidHandle;
    if (!size) return kInvalidParameter;
    const auto ports = CardPorts(card->guid);
    if (!ports) return kError;
    const auto needed =
        static_cast<UINT32>(sizeof(CardAttributes) + ports->size() * sizeof(PortAttributes));
    const UINT32 capacity = attributes ? *size : 0;
    *size = needed;
    if (capacity < needed) return kInsufficientMemory;
    auto* const array = reinterpret_cast<PortAttributes*>(attributes + 1);
    *attributes = {card->guid, static_cast<UINT8>(ports->size()), {}, array};
    for (std::size_t i = 0; i < ports->size(); ++i)
        array[i] = {(*ports)[i], static_cast<UINT8>(i + 1), {}};
    return kSuccess;
}

unsigned WINAPI ib_alloc_pd(void* ca, UINT32, const void*, void** pd) {
    Call call("ib_alloc_pd", nullptr, kError);
    if (call.Failed()) return call.Error();
    Card* const card = Of(call).Find<Card>(ca);
    if (!card) return kInvalidHandle;
    if (!pd) return kInvalidParameter;
    auto domain = std::make_unique<Domain>();
    domain->card = card;
    return Publish(call, std::move(domain), {card}, pd);
}

unsigned WINAPI ib_reg_mem(void* pd, const RegionRequest* request, UINT32* localKey,
                           UINT32* remoteKey, void** region) {
    Call call("ib_reg_mem", nullptr, kError);
    if (call.Failed()) return call.Error();
    Domain* const domain = Of(call).Find<Domain>(pd);
    if (!domain) return kInvalidHandle;
    if (!request || !request->address || request->length == 0 || !localKey || !remoteKey || !region)
        return kInvalidParameter;
    *localKey = *remoteKey = Of(call).next++;
    return Publish(call, std::make_unique<Region>(), {domain}, region);
}

unsigned WINAPI ib_create_cq(void* ca, const CompletionQueueRequest* request, const void*, void*,
                             void** cq) {
    Call call("ib_create_cq", nullptr, kError);
    if (call.Failed()) return call.Error();
    Card* const card = Of(call).Find<Card>(ca);
    if (!card) return kInvalidHandle;
    if (!request || request->size == 0 || !cq) return kInvalidParameter;
    auto queue = std::make_unique<CompletionQueue>();
    queue->card = card;
    return Publish(call, std::move(queue), {card}, cq);
}

unsigned WINAPI ib_create_qp(void* pd, const QueuePairRequest* request, const void*, void*,
                             void** qp) {
    Call call("ib_create_qp", nullptr, kError);
    if (call.Failed()) return call.Error();
    Domain* const domain = Of(call).Find<Domain>(pd);
    if (!domain) return kInvalidHandle;
    if (!request || request->sendDepth == 0 || request->receiveDepth == 0 || !qp)
        return kInvalidParameter;
    auto* const send = Of(call).Find<CompletionQueue>(request->sendQueue);
    auto* const receive = Of(call).Find<CompletionQueue>(request->receiveQueue);
    if (!send || !receive) return kInvalidHandle;
    if (send->card != domain->card || receive->card != domain->card) return kInvalidParameter;
    return Publish(call, std::make_unique<QueuePair>(domain->card, Of(call).next++),
                   {domain, send, receive}, qp);
}

unsigned WINAPI ib_modify_qp(void* qp, const QueuePairChange* request) {
    Call call("ib_modify_qp", nullptr, kError);
    if (call.Failed()) return call.Error();
    QueuePair* const pair = Of(call).Find<QueuePair>(qp);
    if (!pair) return kInvalidHandle;
    const auto ports = CardPorts(pair->card->guid);
    if (!ports) return kError;
    if (!request || request->state != kInit || request->port == 0 ||
        request->port > ports->size() || request->partitionKeyIndex != 0)
        return kInvalidParameter;
    pair->state = request->state;
    return kSuccess;
}

unsigned WINAPI ib_query_qp(void* qp, void* attributes) {
    Call call("ib_query_qp", nullptr, kError);
    if (call.Failed()) return call.Error();
    const QueuePair* const pair = Of(call).Find<QueuePair>(qp);
    if (!pair) return kInvalidHandle;
    if (!attributes) return kInvalidParameter;
    std::memset(attributes, 0, kQueuePairAttributesSize);
    std::memcpy(attributes, &pair->state, sizeof pair->state);
    return kSuccess;
}

unsigned WINAPI ib_destroy_qp(void* qp, void*) {
    Call call("ib_destroy_qp", nullptr, kError);
    return Release<QueuePair>(call, qp);
}

unsigned WINAPI ib_destroy_cq(void* cq, void*) {
    Call call("ib_destroy_cq", nullptr, kError);
    return Release<CompletionQueue>(call, cq);
}

unsigned WINAPI ib_dereg_mr(void* region) {
    Call call("ib_dereg_mr", nullptr, kError);
    return Release<Region>(call, region);
}

unsigned WINAPI ib_dealloc_pd(void* pd, void*) {
    Call call("ib_dealloc_pd", nullptr, kError);
    return Release<Domain>(call, pd);
}

unsigned WINAPI ib_close_ca(void* ca, void*) {
    Call call("ib_close_ca", nullptr, kError);
    return Release<Card>(call, ca);
}

unsigned WINAPI ib_close_al(void* al) {
    Call call("ib_close_al", nullptr, kError);
    return Release<Layer>(call, al);
}
