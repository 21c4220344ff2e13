#include "Diagnostics.h"

#include "Drive.h"
#include "Fixture.h"

namespace {

TEST(Diagnostics, EachStreamGetsItsLines) {
    TestMachine test;
    const auto& streams = test.machine.Get<platform::Streams>();
    PrintDiagnostic("%S and %ls: %d\n", TEXT("wide"), TEXT("long"), 7);
    PrintError("%s %x\n", "narrow", 0xABu);
    EXPECT_EQ(streams.output, "wide and long: 7\n");
    EXPECT_EQ(streams.error, "narrow ab\n");

    PrintError("%s\n", std::string(5000, 'x').c_str());
    EXPECT_EQ(streams.error, "narrow ab\n" + std::string(1023, 'x')) << "a long line is cut";

    test.machine.faults.FailCalls("GetStdHandle", u"", ERROR_INVALID_HANDLE);
    PrintDiagnostic("lost\n");
    EXPECT_EQ(streams.output, "wide and long: 7\n");
}

}  // namespace
