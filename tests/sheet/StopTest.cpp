// The process ends at a call of the library, as in a power failure.

#include <gtest/gtest.h>

#include "MachineFile.h"
#include "ProcessEnds.h"
#include "Program.h"
#include "Registry.h"
#include "pages/PortProtocolTest.h"

namespace {

// What an end at each call of a change of both ports leaves behind.
std::vector<ProcessEnds::End> EndsOfChange(const Sample& sample) {
    port_protocol::PortProtocolTest test(sample);
    const ProcessEnds watch(test.machine);
    std::size_t opened = 0;
    test.OnTab([&] {
        opened = watch.All().size();
        test.Press(1074);
        test.Press(1084);
        test.Push(PSBTN_APPLYNOW);
    });
    const auto first = watch.All().begin() + static_cast<std::ptrdiff_t>(opened);
    return {first, watch.All().end()};
}

// A machine file as the machine that it makes writes it.
std::string Normal(const Remains& remains) {
    platform::Machine machine;
    remains.PutInto(machine);
    return platform::FormatRegistry(machine.Get<platform::Registry>().Tree());
}

// A machine whose bus device has a sheet, in which no thread works by itself.
Sample OneSheet() {
    return port_protocol::Bus(port_protocol::kAll, "\"eth,eth\"")
        .With(Sample::BusClassKey(),
              "\"EnumPropPages32\"=\"WinTsrTune_ipoib.dll,CvtPropPageProvider\"");
}

TEST(Stop, LeavesWhatWasThereBeforeTheCall) {
    const Sample sample = OneSheet();
    const auto ends = EndsOfChange(sample);
    std::vector<std::size_t> chosen = {0};
    for (std::size_t i = 1; i < ends.size() && chosen.size() < 3; ++i) {
        if (ends[i].remains != ends[i - 1].remains) chosen.insert(chosen.end(), {i - 1, i});
    }
    ASSERT_EQ(chosen.size(), 3U) << ends.size();
    for (const std::size_t index : chosen) {
        SCOPED_TRACE(ends[index].call);
        const Program program(sample);
        const auto result =
            program.Run("press 1074\npress 1084\napply\n",
                        {"--device", Sample::BusInstanceId(), "--stop-at",
                         std::to_string(index + 1), "--save", program.Path("saved.reg")});
        EXPECT_EQ(result.code, 3);
        EXPECT_EQ(result.err, "");
        const std::string call = ends[index].call;
        const std::string name = "stopped | " + call.substr(0, call.find(' ')) + " | ";
        EXPECT_TRUE(result.Lines().back().starts_with(name)) << result.out;
        EXPECT_EQ(Normal({program.Read("saved.reg"), {}}), Normal(*ends[index].remains));
    }
}

TEST(Stop, NothingElseEndsASession) {
    const struct {
        const char *what, *script, *call;
        int code;
        bool saves;
    } cases[] = {
        {"it doesn't make so many calls", "cancel\n", "1000000", 0, true},
        {"it was refused before", "press 4711\n", "1", 2, false},
        {"there is no such call", "", "0", 2, false},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.what);
        const Program program(OneSheet());
        const auto result =
            program.Run(row.script, {"--device", Sample::BusInstanceId(), "--stop-at", row.call,
                                     "--save", program.Path("saved.reg")});
        EXPECT_EQ(result.code, row.code) << result.err;
        EXPECT_FALSE(Has(result.out, "stopped")) << result.out;
        EXPECT_EQ(!program.Read("saved.reg").empty(), row.saves);
    }
}

}  // namespace
