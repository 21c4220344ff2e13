// The restore puts every value back, by level, kind of port and role.

#include "RestoreDefaults.h"

#include "TuningTest.h"

namespace {

constexpr char kBefore[] = "77";

void ExpectDefaults(const TestMachine& test, int port, const std::vector<DefaultValue>& defaults) {
    for (const DefaultValue& row : defaults) {
        const char* expected = !row.applies ? kBefore : row.text ? row.text : "-";
        EXPECT_EQ(platform::ToUtf8(test.PortText(port, Wide(row.name))), expected)
            << "port " << port << ", " << row.name;
    }
}

TEST(RestoreDefaults, PutsEveryValueBackAndTellsIt) {
    for (const int level : {0, 1, 2}) {
        for (const bool ethernet1 : {true, false}) {
            for (const bool ethernet2 : {true, false}) {
                SCOPED_TRACE(testing::Message() << level << ethernet1 << ethernet2);
                const auto defaults1 = Defaults(true, ethernet1, level);
                const auto defaults2 = Defaults(false, ethernet2, level);
                Sample sample = Sample().Version(kVersionOfLevel[level]);
                for (const DefaultValue& row : defaults1)
                    for (const int port : {1, 2})
                        sample.PortValue(port,
                                         "\"" + std::string(row.name) + "\"=\"" + kBefore + "\"");
                TestMachine test(sample);
                const OpenPort first(1, ethernet1);
                const OpenPort second(2, ethernet2);
                RestoreTuningDefaults(nullptr, &first, &second);
                EXPECT_EQ(test.LogBytes(), "");
                ExpectDefaults(test, 1, defaults1);
                ExpectDefaults(test, 2, defaults2);
                // Deleting what is gone by now is told all the same.
                EXPECT_EQ(
                    Logged(test,
                           [&](LogStream* log) { RestoreTuningDefaults(log, &first, &second); }),
                    Joined({kRestore, RestoreLines(1, true, ethernet1, level),
                            RestoreLines(2, false, ethernet2, level)}));
                ExpectDefaults(test, 1, defaults1);
                ExpectDefaults(test, 2, defaults2);
            }
        }
    }
}

}  // namespace
