#include "Diagnostics.h"

#include "Drive.h"
#include "Fixture.h"

namespace {

TEST(Diagnostics, EachStreamGetsItsLines) {
    TestMachine test;
    PrintDiagnostic("%S and %ls: %d\n", TEXT("wide"), TEXT("long"), 7);
    PrintError("%s %x\n", "narrow", 0xABu);
    const auto& streams = test.machine.Get<platform::Streams>();
    EXPECT_EQ(streams.output, "wide and long: 7\n");
    EXPECT_EQ(streams.error, "narrow ab\n");
}

TEST(Diagnostics, ALongLineIsCut) {
    TestMachine test;
    PrintDiagnostic("%s\n", std::string(5000, 'x').c_str());
    EXPECT_EQ(test.machine.Get<platform::Streams>().output, std::string(1023, 'x'));
}

TEST(Diagnostics, WithoutAStreamNothingHappens) {
    TestMachine test;
    test.machine.faults.FailCalls("GetStdHandle", u"", ERROR_INVALID_HANDLE);
    PrintDiagnostic("lost\n");
    EXPECT_EQ(test.machine.Get<platform::Streams>().output, "");
}

}  // namespace
