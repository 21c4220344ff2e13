// The process ends in the middle of a change of VLANs, as in a power failure. Whatever was
// left then, the tab shows what is true, and the same command again succeeds or is refused, without
// leaving more behind.

#include <iostream>
#include <set>

#include "../../sheet/Network.h"
#include "../ProcessEnds.h"
#include "VlanTest.h"

namespace {

using namespace vlan;

sheet::Network NetworkOf(const TestMachine&) {
    const platform::QuietScope quiet;
    return sheet::ReadNetwork();
}

// The VLANs over the first port as the tab should list them.
std::string TrueRows(const TestMachine& test) {
    std::string rows;
    for (const auto& vlan : NetworkOf(test).vlans)
        if (vlan.lower == Wide(Sample::Guid(1)))
            rows = platform::ToUtf8(vlan.name + u" " + vlan.id + u" " + vlan.priority) + ";" + rows;
    return rows;
}

// The tab's rows without the status.
std::string ShownRows(const VlanTest& test) {
    std::string rows = test.Rows();
    for (const std::string status : {" Up;", " Down;"})
        for (std::size_t at; (at = rows.find(status)) != std::string::npos;)
            rows.replace(at, status.size(), ";");
    return rows;
}

using Command = std::function<void(VlanTest& test)>;

void Add(VlanTest& test) {
    test.user.DoFirst([&] {
        const std::size_t boxes = test.user.Boxes().size();
        VlanTest::Edit(u"new", u"70", 3);
        // It is refused where the VLAN is there already.
        if (test.user.Boxes().size() > boxes) VlanTest::Push(IDC_VLAN_CANCEL);
    });
    test.Press(IDC_VLAN_NEW);
}

void Change(VlanTest& test) {
    test.user.DoFirst([] { VlanTest::Edit(u"changed", u"71", 4); });
    test.Press(IDC_VLAN_MODIFY);
}

// The first row is selected by default.
void Remove(VlanTest& test) {
    if (test.Rows().starts_with("V1 ")) test.Press(IDC_VLAN_REMOVE);
}

// Runs the command and gives what an end at each of its calls leaves.
std::vector<ProcessEnds::End> EndsOf(const Sample& sample, const Command& command, bool applies) {
    VlanTest test(sample);
    test.user.agrees = true;
    const ProcessEnds watch(test.machine);
    std::size_t first = 0;
    test.user.Do([&] {
        first = watch.All().size();
        command(test);
        if (applies) SendMessageW(test.SheetWindow(), PSM_PRESSBUTTON, PSBTN_APPLYNOW, 0);
    });
    EXPECT_TRUE(test.RunSheet());
    return {watch.All().begin() + static_cast<std::ptrdiff_t>(first), watch.All().end()};
}

TEST(VlanEnds, TheTabGoesOnAfterAnyEnd) {
    const struct {
        const char* name;
        int vlans;
        Command command;
        std::string rows;  // in the end
        bool applies;
    } cases[] = {
        {"the first VLAN", 0, Add, "new 70 3;", false},
        {"a further VLAN", 2, Add, "V1 1 1;V2 2 2;new 70 3;", false},
        {"a change", 2, Change, "changed 71 4;V2 2 2;", false},
        {"removal of one of two", 2, Remove, "V2 2 2;", false},
        {"removal of the last", 1, Remove, "", true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        std::set<const Remains*> seen;
        std::size_t most = 0;
        const auto ends = EndsOf(WithVlans(c.vlans), c.command, c.applies);
        for (const auto& end : ends) {
            if (!seen.insert(end.remains.get()).second) continue;
            SCOPED_TRACE("before " + end.call);
            std::size_t left = 0;
            std::string rows;
            // Twice, so that what is left can be seen to grow.
            Remains remains = *end.remains;
            for (const bool isFirst : {true, false}) {
                VlanTest test(Sample().Whole(remains.registry));
                remains.PutFilesInto(test.machine);
                test.user.agrees = true;
                test.user.Do([&] {
                    EXPECT_EQ(ShownRows(test), TrueRows(test));
                    const std::size_t before = NetworkOf(test).remnants.size();
                    EXPECT_TRUE(isFirst || before <= left);
                    left = before;
                    most = std::max(most, left);
                    c.command(test);
                    if (c.applies)
                        SendMessageW(test.SheetWindow(), PSM_PRESSBUTTON, PSBTN_APPLYNOW, 0);
                    EXPECT_LE(NetworkOf(test).remnants.size(), left);
                    EXPECT_EQ(TrueRows(test), c.rows);
                });
                EXPECT_TRUE(test.RunSheet());
                remains = Remains::Of(test.machine);
            }
        }
        std::cout << c.name << ": " << ends.size() << " ends, " << seen.size()
                  << " of them different, at most " << most << " things left behind\n";
    }
}

}  // namespace
