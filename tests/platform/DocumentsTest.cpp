// Documents of hostile size and depth.

#include <gtest/gtest.h>

#include <string>

#include <windows.h>

#include "Rtf.h"
#include "XmlTree.h"

namespace {

constexpr std::size_t kDepth = 100'000;

std::string Repeated(const std::string& piece) {
    std::string text;
    for (std::size_t level = 0; level < kDepth; ++level)
        text += piece;
    return text;
}

bool Reads(const std::string& text) {
    platform::XmlReader reader(false);
    return reader.Feed(text) && reader.Finish();
}

TEST(XmlTree, EntitiesThatExplodeAreRefused) {
    std::string bomb = "<!DOCTYPE a [<!ENTITY e0 'xxxxxxxxxxxxxxxxxxxx'>";
    for (int level = 1; level < 12; ++level) {
        bomb += "<!ENTITY e" + std::to_string(level) + " '";
        for (int time = 0; time < 10; ++time)
            bomb += "&e" + std::to_string(level - 1) + ";";
        bomb += "'>";
    }
    EXPECT_FALSE(Reads(bomb + "]><a>&e11;</a>"));
}

TEST(XmlTree, DepthIsNoTrouble) {
    EXPECT_TRUE(Reads(Repeated("<d>") + std::string(3'000'000, 'x') + Repeated("</d>")));
}

TEST(Rtf, DepthIsNoTrouble) {
    const std::string rtf = "{\\rtf1 a" + Repeated("{") + "b" + Repeated("}") + "c}";
    EXPECT_EQ(platform::RtfToPlainText(rtf), u"abc");
}

}  // namespace
