// The samples as a newcomer plays them.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <regex>

#include "Program.h"

namespace {

const std::filesystem::path kSamples = std::filesystem::path(SOURCE_DIR) / "samples";

std::vector<std::filesystem::path> FilesOf(const std::filesystem::path& folder,
                                           const char* extension) {
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().extension() == extension) files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

// A dual port run with everything agreed to is what tuning is for; on each machine that has two
// ports of a kind it succeeds and finds the node that the sample's comment promises.
TEST(Samples, ADualPortRunFindsTheNearestNode) {
    const std::map<std::string, const char*> kLines = {
        {"two-port-ethernet.reg", "Closest to Adapter #1 NUMA node is 1"},
        {"two-port-ipoib.reg", "Closest to Adapter #1 NUMA node is 0"},
        {"server-release-4.reg", "Closest to Adapter #1 NUMA node is 0"},
        {"three-nodes.reg", "Closest to Adapter #1 NUMA node is 1"},
        {"plain-export.reg", "tuning for DUAL_PORT_STREAM completed successfully."},
        {"unicode-name.reg", "tuning for DUAL_PORT_STREAM completed successfully."},
    };
    const Program program;
    for (const auto& sample : FilesOf(kSamples, ".reg")) {
        SCOPED_TRACE(sample);
        const auto shown =
            program.RunWith({sample.string(), "--script", "-"}, "open Performance\nshow\n");
        EXPECT_TRUE(shown.out.starts_with("┌─ Corvanta Tessaron ")) << shown.err;
        EXPECT_TRUE(Has(shown.out, "(o) [Default] Balanced tuning"));
        const auto line = kLines.find(sample.filename());
        if (line == kLines.end()) continue;
        const auto tuned = program.RunWith({sample.string(), "--script", "-"},
                                           "open Performance\npress 1087\npress 1090\nlog\n");
        EXPECT_TRUE(Has(tuned.out, "box | Tuning succeeded |")) << tuned.err;
        EXPECT_TRUE(Has(tuned.out, line->second)) << tuned.out;
    }
}

// Each script says in its comment which machine and device it is for, and whether it ends refused.
TEST(Samples, EachScriptRunsOnTheMachineThatItNames) {
    const std::regex command(
        "#     sheet (\\S+)(?: --device \"([^\"]+)\")? --script samples/scripts/(\\S+)");
    const Program program;
    for (const auto& script : FilesOf(kSamples / "scripts", ".txt")) {
        SCOPED_TRACE(script.filename());
        const std::string text = FileText(script);
        std::smatch words;
        ASSERT_TRUE(std::regex_search(text, words, command));
        EXPECT_EQ(words[3].str(), script.filename().string());
        std::vector<std::string> arguments = {
            (std::filesystem::path(SOURCE_DIR) / words[1].str()).string(), "--script",
            script.string()};
        if (words[2].matched) arguments.insert(arguments.end(), {"--device", words[2]});
        const auto result = program.RunWith(arguments);
        const bool refuses = text.find("refused") != std::string::npos;
        EXPECT_EQ(result.code, refuses ? 2 : 0) << result.err;
        EXPECT_EQ(result.err.empty(), !refuses) << result.err;
    }
}

}  // namespace
