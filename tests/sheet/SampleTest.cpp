// The samples as a newcomer plays them.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <sstream>

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
        EXPECT_NE(shown.out.find("(o) [Default] Balanced tuning"), std::string::npos);
        const auto line = kLines.find(sample.filename());
        if (line == kLines.end()) continue;
        const auto tuned = program.RunWith({sample.string(), "--script", "-"},
                                           "open Performance\npress 1087\npress 1090\nlog\n");
        EXPECT_NE(tuned.out.find("box | Tuning succeeded |"), std::string::npos) << tuned.err;
        EXPECT_NE(tuned.out.find(line->second), std::string::npos) << tuned.out;
    }
}

// Each script says in its comment which machine it is for.
TEST(Samples, EachScriptRunsOnTheMachineThatItNames) {
    const Program program;
    const auto scripts = FilesOf(kSamples / "scripts", ".txt");
    EXPECT_GE(scripts.size(), 7U);
    for (const auto& script : scripts) {
        SCOPED_TRACE(script.filename());
        std::istringstream text(FileText(script));
        std::string line;
        while (std::getline(text, line) && line.find("sheet samples/") == std::string::npos) {
        }
        const auto begin = line.find("samples/");
        ASSERT_NE(begin, std::string::npos);
        const std::string machine = line.substr(begin, line.find(' ', begin) - begin);
        EXPECT_NE(line.find("--script samples/scripts/" + script.filename().string()),
                  std::string::npos);
        const auto result = program.RunWith(
            {(std::filesystem::path(SOURCE_DIR) / machine).string(), "--script", script.string()});
        const bool refuses = script.stem() == "refusal";
        EXPECT_EQ(result.code, refuses ? 2 : 0) << result.err;
        EXPECT_EQ(result.err.empty(), !refuses) << result.err;
    }
}

}  // namespace
