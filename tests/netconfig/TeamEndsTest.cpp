// The process ends in the middle of a change of a team. The same change again is made or refused,
// and leaves no more behind than the end did.

#include <algorithm>
#include <iostream>
#include <set>

#include "../../sheet/Network.h"
#include "../ProcessEnds.h"
#include "NetConfigTest.h"

namespace {

using Network = sheet::Network;

Network NetworkNow() {
    const platform::QuietScope quiet;
    return sheet::ReadNetwork();
}

bool IsMember(const Network& network, const std::u16string& adapter) {
    return std::ranges::any_of(network.members, [&](const Network::Member& member) {
        return member.adapter == adapter && member.team == kFirst;
    });
}

// What a machine holds after these operations.
Remains After(void (*operations)(LayerMachine&)) {
    LayerMachine test;
    operations(test);
    return Remains::Of(test.machine);
}

TEST(TeamEnds, TheSameAgainLeavesNoMoreBehind) {
    const struct {
        const char* name;
        void (*before)(LayerMachine&);
        HRESULT (*operation)(LayerMachine&);
        bool (*isDone)(const Network&);
    } cases[] = {
        {"a new team", [](LayerMachine&) {},
         [](LayerMachine& test) { return test.NewTeam(u"team"); },
         [](const Network& network) { return network.teams.size() == 1; }},
        {"a primary joins", [](LayerMachine& test) { EXPECT_EQ(test.NewTeam(u"team"), S_OK); },
         [](LayerMachine& test) { return test.Member(true, kFirst, kA, true, true); },
         [](const Network& network) {
             return IsMember(network, kA) && network.teams[0].primary == kA;
         }},
        {"the primary leaves",
         [](LayerMachine& test) {
             EXPECT_EQ(test.NewTeam(u"team"), S_OK);
             EXPECT_EQ(test.Member(true, kFirst, kA, true, true), S_OK);
             EXPECT_EQ(test.Member(true, kFirst, kB), S_OK);
         },
         [](LayerMachine& test) { return test.Member(false, kFirst, kA); },
         [](const Network& network) {
             return !IsMember(network, kA) && network.teams[0].primary.empty();
         }},
        {"a team with two VLANs goes",
         [](LayerMachine& test) {
             EXPECT_EQ(test.NewTeam(u"team"), S_OK);
             EXPECT_EQ(test.AddVlan(kFirst, u"1", u"one"), S_OK);
             EXPECT_EQ(test.AddVlan(kFirst, u"2", u"two"), S_OK);
         },
         [](LayerMachine&) { return DeleteTeam(kFirst.c_str(), eL2_PROTOCOL_ETHERNET); },
         [](const Network& network) { return network.teams.empty() && network.vlans.empty(); }},
        {"all VLANs of an adapter go",
         [](LayerMachine& test) {
             EXPECT_EQ(test.AddVlan(kA, u"1", u"one"), S_OK);
             EXPECT_EQ(test.AddVlan(kA, u"2", u"two"), S_OK);
         },
         [](LayerMachine&) { return RemoveAllVlans(kA.c_str(), eL2_PROTOCOL_ETHERNET); },
         [](const Network& network) { return network.vlans.empty(); }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        std::vector<ProcessEnds::End> ends;
        {
            LayerMachine test(Sample().Whole(After(c.before).registry));
            const ProcessEnds watch(test.machine);
            EXPECT_EQ(c.operation(test), S_OK);
            EXPECT_TRUE(c.isDone(NetworkNow()));
            ends = watch.All();
        }
        std::set<const Remains*> seen;
        std::size_t most = 0;
        std::size_t refused = 0;
        for (const auto& end : ends) {
            if (!seen.insert(end.remains.get()).second) continue;
            SCOPED_TRACE("before " + end.call);
            Remains remains = *end.remains;
            for (int again = 0; again < 2; ++again) {
                LayerMachine test(Sample().Whole(remains.registry));
                const std::size_t left = NetworkNow().remnants.size();
                most = std::max(most, left);
                const HRESULT result = c.operation(test);
                refused += again == 0 && FAILED(result);
                EXPECT_TRUE(FAILED(result) || c.isDone(NetworkNow()));
                EXPECT_FALSE(FAILED(result) && test.Printed().empty() && result != R(0x80070057));
                EXPECT_LE(NetworkNow().remnants.size(), left);
                EXPECT_TRUE(test.LockIsFree());
                remains = Remains::Of(test.machine);
            }
        }
        std::cout << c.name << ": " << ends.size() << " ends, " << seen.size()
                  << " of them different, " << refused << " times refused afterwards, at most "
                  << most << " things left behind\n";
    }
}

}  // namespace
