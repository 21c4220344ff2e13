// Saving replaces a file whole or not at all.

#include <gtest/gtest.h>

#include <sys/resource.h>

#include "Program.h"

namespace {

namespace fs = std::filesystem;

const char kOld[] = "what was there before";

class Save : public testing::Test {
  protected:
    Save() : old(program.Write("saved/old.reg", kOld)) {}

    int Run(const std::string& path, const std::string& script = "tabs\n") {
        result = program.Run(script, {"--save", path});
        return result.code;
    }
    std::string Saved() const { return program.Read("saved/old.reg"); }
    // The names in the folder that is saved to.
    std::vector<std::string> Beside() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(program.Path("saved")))
            names.push_back(entry.path().filename().string());
        return names;
    }

    const Program program;
    const std::string old;
    Program::Result result;
};

TEST_F(Save, KeepsTheModeAndTheLink) {
    const fs::perms mode = fs::perms::owner_read | fs::perms::owner_write | fs::perms::others_read;
    fs::permissions(old, mode);
    fs::create_symlink("saved/old.reg", program.Path("link.reg"));
    fs::create_symlink("saved/new.reg", program.Path("dangling.reg"));
    ASSERT_EQ(Run(program.Path("link.reg")), 0) << result.err;
    ASSERT_EQ(Run(program.Path("dangling.reg")), 0) << result.err;
    EXPECT_EQ(fs::status(old).permissions(), mode);
    EXPECT_TRUE(fs::is_symlink(program.Path("link.reg")));
    EXPECT_TRUE(Saved().starts_with("\xFF\xFE"));
    EXPECT_EQ(Saved(), program.Read("saved/new.reg"));
    EXPECT_EQ(Beside().size(), 2u);
}

TEST_F(Save, LeavesTheOldFileWhenItFails) {
    rlimit limit = {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &limit), 0);
    const rlimit small = {4096, limit.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    EXPECT_EQ(Run(old), 2);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    EXPECT_EQ(result.err, "sheet: " + old + ": can't be written: File too large\n");
    EXPECT_EQ(Saved(), kOld);
    EXPECT_EQ(Beside(), std::vector<std::string>{"old.reg"});
}

TEST_F(Save, WritesNothingAfterARefusal) {
    EXPECT_EQ(Run(old, "open Performance\npress 1086\npress 1090\npress 9999\n"), 2);
    EXPECT_EQ(Saved(), kOld);
}

}  // namespace
