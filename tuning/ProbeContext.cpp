#include "ProbeContext.h"

#include <new>
#include <string_view>

#include "CardLookup.h"
#include "Diagnostics.h"

namespace {

constexpr UINT32 kQueueDepth = 256;
constexpr UINT32 kAccess = 10;
constexpr UINT32 kStateInit = 2;
constexpr size_t kGuidDigits = 16;

void WINAPI OnCompletion(void*, void*) {}

bool Allocate(ProbeContext& context) {
    context.queuePair.reset(new (std::nothrow) QueuePairHolder());
    if (!context.queuePair) {
        PrintError("failed to allocate qp.\n");
        return false;
    }
    context.queuePairAttributes.reset(new (std::nothrow) BYTE[kQueuePairAttributes]());
    if (!context.queuePairAttributes) {
        PrintError("failed to allocate qp_attr.\n");
        return false;
    }
    context.workBuffer.reset(new (std::nothrow) BYTE[kWorkBuffer]());
    if (!context.workBuffer) {
        PrintError("Couldn't allocate work buf.\n");
        return false;
    }
    return true;
}

bool OpenCard(ProbeContext& context, LPCWSTR caGuidText) {
    if (!context.layer.Open() || !context.layer.ReadCardGuids("Couldn't allocate CA GUID array\n"))
        return false;
    if (context.layer.CardGuids().empty()) return false;
    using Text = std::basic_string_view<WCHAR>;
    const Text wanted = Text(caGuidText).substr(0, kGuidDigits);
    for (const net64_t guid : context.layer.CardGuids()) {
        WCHAR text[20];
        FormatGuid(guid, text);
        if (Text(text) == wanted) return context.card.Open(guid) && context.card.Query();
    }
    PrintError("device with guid %ls was not found\n", caGuidText);
    return false;
}

bool MakeRegion(ProbeContext& context) {
    const AccessLayerCalls& calls = context.layer.Calls();
    if (calls.ib_alloc_pd(context.card.Handle(), 0, &context, &context.domain) != kIbSuccess) {
        context.domain = nullptr;
        PrintError("Couldn't allocate PD\n");
        return false;
    }
    ib_mr_create_t request = {};
    request.vaddr = context.workBuffer.get();
    request.length = kWorkBuffer;
    request.access_ctrl = kAccess;
    UINT32 localKey = 0;
    UINT32 remoteKey = 0;
    if (calls.ib_reg_mem(context.domain, &request, &localKey, &remoteKey, &context.region) !=
        kIbSuccess) {
        context.region = nullptr;
        PrintError("Couldn't allocate MR\n");
        return false;
    }
    return true;
}

bool MakeCompletionQueue(ProbeContext& context) {
    ib_cq_create_t request = {};
    request.size = kQueueDepth;
    request.pfn_comp_cb = reinterpret_cast<void*>(&OnCompletion);
    const ib_api_status_t status = context.layer.Calls().ib_create_cq(
        context.card.Handle(), &request, &context, nullptr, &context.completionQueue);
    if (status == kIbSuccess) return true;
    context.completionQueue = nullptr;
    PrintError("Couldn't create CQ\n");
    PrintError("ib_status = %d\n", static_cast<int>(status));
    return false;
}

bool MakeQueuePair(ProbeContext& context) {
    const AccessLayerCalls& calls = context.layer.Calls();
    ib_qp_create_t request = {};
    request.sq_depth = kQueueDepth;
    request.rq_depth = kQueueDepth;
    request.sq_sge = 1;
    request.rq_sge = 1;
    request.h_sq_cq = context.completionQueue;
    request.h_rq_cq = context.completionQueue;
    void*& queuePair = context.queuePair->handle;
    if (calls.ib_create_qp(context.domain, &request, nullptr, nullptr, &queuePair) != kIbSuccess) {
        queuePair = nullptr;
        PrintError("Couldn't create QP\n");
        return false;
    }
    ib_qp_mod_t change = {};
    change.req_state = kStateInit;
    change.primary_port = 1;
    change.pkey_index = 0;
    change.access_ctrl = kAccess;
    if (calls.ib_modify_qp(queuePair, &change) != kIbSuccess ||
        calls.ib_query_qp(queuePair, context.queuePairAttributes.get()) != kIbSuccess) {
        PrintError("Failed to modify QP to INIT\n");
        return false;
    }
    return true;
}

}  // namespace

ScopedProbeContext init_ctx(LPCWSTR caGuidText) {
    ScopedProbeContext context(new (std::nothrow) ProbeContext());
    if (!context || !Allocate(*context) || !OpenCard(*context, caGuidText) ||
        !MakeRegion(*context) || !MakeCompletionQueue(*context) || !MakeQueuePair(*context))
        return nullptr;
    return context;
}

void DestroyProbeContext(ProbeContext* context) {
    if (!context) return;
    const AccessLayerCalls& calls = context->layer.Calls();
    void* queuePair = context->queuePair ? context->queuePair->handle : nullptr;
    if (queuePair && calls.ib_destroy_qp(queuePair, nullptr) != kIbSuccess)
        PrintError("Failed to destroy QP\n");
    if (context->completionQueue &&
        calls.ib_destroy_cq(context->completionQueue, nullptr) != kIbSuccess)
        PrintError("Failed to destroy CQ\n");
    if (context->region && calls.ib_dereg_mr(context->region) != kIbSuccess)
        PrintError("Failed to deregister MR\n");
    if (context->domain && calls.ib_dealloc_pd(context->domain, nullptr) != kIbSuccess)
        PrintError("Failed to deallocate PD\n");
    delete context;  // closes the card, then the layer
}
