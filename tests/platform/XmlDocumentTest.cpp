// Documents of hostile size and depth.

#include <gtest/gtest.h>

#include <string>

#include <windows.h>

#include "XmlTree.h"

namespace {

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
    std::string open, close;
    for (int level = 0; level < 100'000; ++level) {
        open += "<d>";
        close += "</d>";
    }
    EXPECT_TRUE(Reads(open + std::string(3'000'000, 'x') + close));
}

}  // namespace
