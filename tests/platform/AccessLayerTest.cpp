// The access layer as a probe uses it.

#include <string>

#include <windows.h>

#include "FactsMachine.h"
#include "IbAccessLayer.h"

using namespace platform;
using namespace platform::access_layer;

namespace {

// All that a probe holds of the first card.
struct Probe {
    void* layer = nullptr;
    void* card = nullptr;
    void* domain = nullptr;
    void* region = nullptr;
    void* queue = nullptr;
    void* pair = nullptr;
    BYTE work[256] = {};

    Probe() {
        UINT32 keys[2] = {};
        const RegionRequest memory = {work, sizeof work, 10, 0};
        const CompletionQueueRequest completions = {256, 0, nullptr, nullptr};
        SIZE_T count = 1;
        Net64 guid = 0;
        EXPECT_EQ(ib_open_al(&layer), kSuccess);
        EXPECT_EQ(ib_get_ca_guids(layer, &guid, &count), kSuccess);
        EXPECT_EQ(ib_open_ca(layer, guid, nullptr, nullptr, &card), kSuccess);
        EXPECT_EQ(ib_alloc_pd(card, 0, this, &domain), kSuccess);
        EXPECT_EQ(ib_reg_mem(domain, &memory, &keys[0], &keys[1], &region), kSuccess);
        EXPECT_EQ(ib_create_cq(card, &completions, this, nullptr, &queue), kSuccess);
        const QueuePairRequest request = {0, 256, 256, 1, 1, 0, queue, queue};
        EXPECT_EQ(ib_create_qp(domain, &request, nullptr, nullptr, &pair), kSuccess);
    }
    ~Probe() {
        EXPECT_EQ(ib_close_ca(card, nullptr), kBusy);
        EXPECT_EQ(ib_destroy_qp(pair, nullptr), kSuccess);
        EXPECT_EQ(ib_destroy_cq(queue, nullptr), kSuccess);
        EXPECT_EQ(ib_dereg_mr(region), kSuccess);
        EXPECT_EQ(ib_dealloc_pd(domain, nullptr), kSuccess);
        EXPECT_EQ(ib_close_ca(card, nullptr), kSuccess);
        EXPECT_EQ(ib_close_al(layer), kSuccess);
    }

    // The way to the register that callers of the layer go.
    const BYTE* Body() const { return static_cast<const BYTE*>(pair); }
    UINT32 Doorbell() const { return *reinterpret_cast<const UINT32*>(Body() + 0x104); }
    volatile UINT32& Register() const {
        BYTE** const* const p = reinterpret_cast<BYTE** const*>(Body() + 0x120);
        BYTE* const page = *reinterpret_cast<BYTE**>(**p + 8);
        return *reinterpret_cast<volatile UINT32*>(page + 0x14);
    }
    // Milliseconds that the clock says a measurement takes.
    DWORD Measure() const {
        const DWORD start = GetTickCount();
        for (int i = 0; i < 1000; ++i)
            Register() = Doorbell();
        return GetTickCount() - start;
    }
};

TEST(AccessLayer, ChargesTheClockForEachMeasurement) {
    const struct {
        const char* why;
        std::string ticks, nodes;
        GROUP_AFFINITY affinity;  // mask 0: the thread isn't pinned
        DWORD expected;
    } kCases[] = {
        {"near node", "90,40", "0,0,1,1", {1, 1, {}}, 40},
        {"far node", "90,40", "0,0,1,1", {2, 0, {}}, 90},
        {"not pinned", "90,40", "1,0,0,0", {0, 0, {}}, 40},
        {"a node beyond the list", "90", "0,0,7,7", {1, 1, {}}, 10},
        {"a processor of unknown node", "90,40", "0,0,-,1", {1, 1, {}}, 10},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.why);
        FactsMachine machine(
            FactLines("Processors", "\"Groups\"=\"2,2\"\n\"Nodes\"=\"" + test.nodes + "\"") +
            FactLines("Cards\\0002c90300112230", "\"DoorbellTicks\"=\"" + test.ticks + "\""));
        const Probe probe;
        ASSERT_TRUE(test.affinity.Mask == 0 ||
                    SetThreadGroupAffinity(GetCurrentThread(), &test.affinity, nullptr));
        EXPECT_EQ(probe.Measure(), test.expected);
        EXPECT_EQ(probe.Measure(), test.expected) << "ready for the next measurement";
        const DWORD idle = GetTickCount();
        EXPECT_EQ(GetTickCount(), idle) << "no store, no time";
    }
}

}  // namespace
