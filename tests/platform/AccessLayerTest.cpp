// The access layer as a probe uses it.

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include <windows.h>

#include "AccessLayerImage.h"
#include "FactsMachine.h"
#include "IbAccessLayer.h"

using namespace platform;
using namespace platform::access_layer;

namespace {

constexpr char kCardGuid[] = "0002c90300112230";

std::string Card(const std::string& values, const std::string& guid = kCardGuid) {
    return "[" + FactsMachine::kStandIn + "\\Cards\\" + guid + "]\n" + values + "\n";
}

std::string Processors(const std::string& groups, const std::string& nodes) {
    return "[" + FactsMachine::kStandIn + "\\Processors]\n\"Groups\"=\"" + groups +
           "\"\n\"Nodes\"=\"" + nodes + "\"\n";
}

std::vector<BYTE> Bytes(Net64 guid) {
    std::vector<BYTE> bytes(sizeof guid);
    std::memcpy(bytes.data(), &guid, sizeof guid);
    return bytes;
}

std::vector<Net64> Guids(void* layer) {
    SIZE_T count = 0;
    EXPECT_EQ(ib_get_ca_guids(layer, nullptr, &count), kInsufficientMemory);
    std::vector<Net64> guids(count);
    if (guids.empty()) return guids;
    EXPECT_EQ(ib_get_ca_guids(layer, guids.data(), &count), kSuccess);
    EXPECT_EQ(count, guids.size());
    return guids;
}

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
        EXPECT_EQ(ib_open_al(&layer), kSuccess);
        EXPECT_EQ(ib_open_ca(layer, Guids(layer).at(0), nullptr, nullptr, &card), kSuccess);
        EXPECT_EQ(ib_alloc_pd(card, 0, this, &domain), kSuccess);
        EXPECT_EQ(ib_reg_mem(domain, &memory, &keys[0], &keys[1], &region), kSuccess);
        EXPECT_EQ(ib_create_cq(card, &completions, this, nullptr, &queue), kSuccess);
        const QueuePairRequest request = {0, 256, 256, 1, 1, 0, queue, queue};
        EXPECT_EQ(ib_create_qp(domain, &request, nullptr, nullptr, &pair), kSuccess);
    }
    void Release() {
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

TEST(AccessLayer, WalksAProbesLife) {
    FactsMachine machine(Card("\"Ports\"=\"0002c90300112231;0002C90300112232\""));
    Probe probe;

    UINT32 size = 0;
    EXPECT_EQ(ib_query_ca(probe.card, nullptr, &size), kInsufficientMemory);
    ASSERT_EQ(size, sizeof(CardAttributes) + 2 * sizeof(PortAttributes));
    std::vector<UINT64> buffer(size / sizeof(UINT64));
    auto* const attributes = reinterpret_cast<CardAttributes*>(buffer.data());
    --size;
    EXPECT_EQ(ib_query_ca(probe.card, attributes, &size), kInsufficientMemory);
    ASSERT_EQ(ib_query_ca(probe.card, attributes, &size), kSuccess);
    EXPECT_EQ(Bytes(attributes->guid),
              (std::vector<BYTE>{0x00, 0x02, 0xC9, 0x03, 0x00, 0x11, 0x22, 0x30}));
    ASSERT_EQ(attributes->portCount, 2);
    EXPECT_EQ(attributes->ports[1].number, 2);
    EXPECT_EQ(Bytes(attributes->ports[1].guid),
              (std::vector<BYTE>{0x00, 0x02, 0xC9, 0x03, 0x00, 0x11, 0x22, 0x32}));

    const struct {
        const char* why;
        QueuePairChange change;
        unsigned status;
    } kChanges[] = {
        {"a port that isn't there", {kInit, 10, 3, 0, 0, 0}, kInvalidParameter},
        {"no port", {kInit, 10, 0, 0, 0, 0}, kInvalidParameter},
        {"a state out of turn", {3, 10, 1, 0, 0, 0}, kInvalidParameter},
        {"to INIT", {kInit, 10, 1, 0, 0, 0}, kSuccess},
    };
    for (const auto& test : kChanges)
        EXPECT_EQ(ib_modify_qp(probe.pair, &test.change), test.status) << test.why;
    std::vector<BYTE> pairAttributes(kQueuePairAttributesSize, 0xFF);
    EXPECT_EQ(ib_query_qp(probe.pair, pairAttributes.data()), kSuccess);
    EXPECT_EQ(pairAttributes[0], kInit);
    EXPECT_EQ(pairAttributes.back(), 0);

    EXPECT_NE(probe.Register(), probe.Doorbell());
    probe.Release();
}

TEST(AccessLayer, ChargesTheClockForEachMeasurement) {
    const struct {
        const char* why;
        std::string ticks;  // a line of the card's key
        std::string nodes;
        GROUP_AFFINITY affinity;  // mask 0: the thread isn't pinned
        DWORD expected;
    } kCases[] = {
        {"near node", "\"DoorbellTicks\"=\"90,40\"", "0,0,1,1", {1, 1, {}}, 40},
        {"far node", "\"DoorbellTicks\"=\"90,40\"", "0,0,1,1", {2, 0, {}}, 90},
        {"lowest of several processors", "\"DoorbellTicks\"=\"90,40\"", "0,1,1,1", {3, 0, {}}, 90},
        {"not pinned", "\"DoorbellTicks\"=\"90,40\"", "1,0,0,0", {0, 0, {}}, 40},
        {"a node beyond the list", "\"DoorbellTicks\"=\"90\"", "0,0,7,7", {1, 1, {}}, 10},
        {"no list", "", "0,0,1,1", {1, 1, {}}, 10},
        {"no number", "\"DoorbellTicks\"=\"90,fast\"", "0,0,1,1", {1, 1, {}}, 10},
        {"a negative number", "\"DoorbellTicks\"=\"90,-4\"", "0,0,1,1", {1, 1, {}}, 10},
        {"no time at all", "\"DoorbellTicks\"=\"90,0\"", "0,0,1,1", {1, 1, {}}, 0},
        {"a processor of unknown node", "\"DoorbellTicks\"=\"90,40\"", "0,0,-,1", {1, 1, {}}, 10},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.why);
        FactsMachine machine(Processors("2,2", test.nodes) + Card(test.ticks));
        Probe probe;
        ASSERT_TRUE(test.affinity.Mask == 0 ||
                    SetThreadGroupAffinity(GetCurrentThread(), &test.affinity, nullptr));
        EXPECT_EQ(probe.Measure(), test.expected);
        EXPECT_NE(probe.Register(), probe.Doorbell()) << "ready for the next measurement";
        EXPECT_EQ(probe.Measure(), test.expected);
        const DWORD idle = GetTickCount();
        EXPECT_EQ(GetTickCount(), idle) << "no store, no time";
        probe.Release();
    }
}

TEST(AccessLayer, ListsTheCardsOfTheFacts) {
    FactsMachine machine;
    void* layer = nullptr;
    ASSERT_EQ(ib_open_al(&layer), kSuccess);
    EXPECT_EQ(Guids(layer).size(), 0u);
    machine.Merge(Card("", "ffffffffffffffff") + Card("", "0000000000000001") +
                  Card("", "000000000000001") + Card("", "000000000000000x"));
    const std::vector<Net64> guids = Guids(layer);
    ASSERT_EQ(guids.size(), 2u);
    EXPECT_EQ(Bytes(guids[0]), (std::vector<BYTE>{0, 0, 0, 0, 0, 0, 0, 1}));

    std::vector<Net64> one(1);
    SIZE_T count = 1;
    EXPECT_EQ(ib_get_ca_guids(layer, one.data(), &count), kInsufficientMemory);
    EXPECT_EQ(count, 2u);
    void* card = nullptr;
    EXPECT_EQ(ib_open_ca(layer, 42, nullptr, nullptr, &card), kNotFound);
    EXPECT_EQ(ib_close_al(layer), kSuccess);
}

TEST(AccessLayer, PortsThatAreNoGuidsFailTheQuery) {
    std::string many = "0000000000000001";
    for (int i = 0; i < 255; ++i)
        many += ";0000000000000001";
    for (const std::string& ports : {std::string("12"), std::string("000000000000000g"),
                                     std::string("0000000000000001;;0000000000000002"), many}) {
        SCOPED_TRACE(ports);
        FactsMachine machine(Card("\"Ports\"=\"" + ports + "\""));
        Probe probe;
        UINT32 size = 0;
        EXPECT_EQ(ib_query_ca(probe.card, nullptr, &size), kError);
        probe.Release();
    }
}

TEST(AccessLayer, RefusesWrongHandlesAndWrongOrder) {
    FactsMachine machine(Card(""));
    Probe probe;
    EXPECT_EQ(ib_close_al(probe.layer), kBusy);
    EXPECT_EQ(ib_close_ca(probe.card, nullptr), kBusy);
    EXPECT_EQ(ib_destroy_cq(probe.queue, nullptr), kBusy);
    EXPECT_EQ(ib_dealloc_pd(probe.domain, nullptr), kBusy);
    EXPECT_EQ(ib_dealloc_pd(probe.card, nullptr), kInvalidHandle);
    EXPECT_EQ(ib_query_qp(nullptr, probe.work), kInvalidHandle);
    void* const gone = probe.pair;
    probe.Release();
    EXPECT_EQ(ib_destroy_qp(gone, nullptr), kInvalidHandle);
}

TEST(AccessLayer, AFaultedReleaseStillReleases) {
    FactsMachine machine(Card(""));
    Probe probe;
    machine.machine.faults.FailCalls("ib_destroy_qp", u"", 7);
    EXPECT_EQ(ib_destroy_qp(probe.pair, nullptr), 7u);
    machine.machine.faults.Disarm();
    EXPECT_EQ(ib_destroy_cq(probe.queue, nullptr), kSuccess);
    EXPECT_EQ(ib_dereg_mr(probe.region), kSuccess);
    EXPECT_EQ(ib_dealloc_pd(probe.domain, nullptr), kSuccess);
    EXPECT_EQ(ib_close_ca(probe.card, nullptr), kSuccess);
    EXPECT_EQ(ib_close_al(probe.layer), kSuccess);
}

TEST(AccessLayer, IsAModuleWithAllItsFunctions) {
    const ModuleImage image = AccessLayerImage();
    EXPECT_EQ(image.name, u"ibal.dll");
    FactsMachine machine(Card(""));
    void* layer = nullptr;
    using Open = unsigned(WINAPI*)(void**);
    using Close = unsigned(WINAPI*)(void*);
    const auto find = [&image](const char* name) {
        return reinterpret_cast<void (*)()>(image.exports.at(name));
    };
    EXPECT_EQ(reinterpret_cast<Open>(find("ib_open_al"))(&layer), kSuccess);
    EXPECT_EQ(reinterpret_cast<Close>(find("ib_close_al"))(layer), kSuccess);
}

}  // namespace
