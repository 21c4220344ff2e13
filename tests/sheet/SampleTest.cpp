// The samples as a newcomer plays them.

#include <gtest/gtest.h>

#include <filesystem>
#include <regex>

#include "Program.h"

namespace {

// Each script says in its comment which machine and device it is for, and whether it ends refused.
TEST(Samples, EachScriptRunsOnTheMachineThatItNames) {
    const std::regex command(
        "#     sheet (\\S+)(?: --device \"([^\"]+)\")? --script samples/scripts/(\\S+)");
    const Program program;
    const std::filesystem::path root = SOURCE_DIR;
    for (const auto& entry : std::filesystem::directory_iterator(root / "samples/scripts")) {
        const std::filesystem::path& script = entry.path();
        if (script.extension() != ".txt") continue;
        SCOPED_TRACE(script.filename());
        const std::string text = FileText(script);
        std::smatch words;
        ASSERT_TRUE(std::regex_search(text, words, command));
        EXPECT_EQ(words[3].str(), script.filename().string());
        std::vector<std::string> arguments = {(root / words[1].str()).string(), "--script",
                                              script.string(), "--files", program.Drive()};
        if (words[2].matched) arguments.insert(arguments.end(), {"--device", words[2]});
        const auto result = program.RunWith(arguments);
        const bool refuses = text.find("refused") != std::string::npos;
        EXPECT_EQ(result.code, refuses ? 2 : 0) << result.err;
        EXPECT_EQ(result.err.empty(), !refuses) << result.err;
    }
}

}  // namespace
