#include "WindowsVersion.h"

#include "Fixture.h"

namespace {

TEST(WindowsVersion, EachVersionHasItsRelease) {
    const struct {
        const char* version;
        int release;
        bool serverOfRelease4OrLater;
    } rows[] = {
        {"5.1", 0, false}, {"5.2", 1, false}, {"6.0", 2, false}, {"6.1", 3, false},
        {"6.2", 4, true},  {"6.3", 5, true},  {"10.0", 6, true}, {"4.2", 0, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.version);
        for (const bool server : {false, true}) {
            Sample sample = Sample().Version(row.version);
            if (server) sample.Server();
            TestMachine test(sample);
            EXPECT_EQ(GetWindowsRelease(), row.release);
            EXPECT_EQ(IsVistaOrLater(), row.release >= 2);
            EXPECT_EQ(GetProductType(), server ? VER_NT_SERVER : VER_NT_WORKSTATION);
            EXPECT_EQ(IsServerOfRelease4OrLater(), server && row.serverOfRelease4OrLater);
        }
    }
}

}  // namespace
