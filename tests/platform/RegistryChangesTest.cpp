// What makes one registry of another: both ways, to the byte.

#include <gtest/gtest.h>

#include <regex>
#include <string>

#include "../hostile/MachineFileCheck.h"
#include "Machine.h"
#include "MachineFile.h"
#include "Registry.h"
#include "RegistryChanges.h"
#include "Text.h"

namespace {

using namespace platform;

const std::string kHeader = "Windows Registry Editor Version 5.00\n";
constexpr std::u16string_view kLeftOut = u"HKEY_LOCAL_MACHINE\\SOFTWARE\\Left\\Out";

// A file's text; < stands for the root, ~ for the remark on values that are set again.
std::string File(const std::string& body) {
    const std::string text = std::regex_replace(body, std::regex("<"), "HKEY_LOCAL_MACHINE\\");
    return kHeader +
           std::regex_replace(text, std::regex("~"),
                              "; Set again below, so that the values stand in their order.\n");
}

TEST(RegistryChanges, WhatIsWrittenForEachKindOfChange) {
    const struct {
        const char* what;
        const char* edit;  // merged into the registry below
        const char* changes;
        const char* undo;
    } kCases[] = {
        {"nothing", "[<A]\n\"one\"=\"1\"\n", "", ""},
        {"a type alone, where it stands", "[<A]\n\"two\"=hex:02,00,00,00\n",
         "\n[<A]\n\"two\"=hex:02,00,00,00\n", "\n[<A]\n\"two\"=dword:00000002\n"},
        {"a new default value", "[<A]\n@=\"x\"\n", "\n[<A]\n@=\"x\"\n", "\n[<A]\n@=-\n"},
        {"one in front of others is deleted", "[<A]\n\"two\"=-\n", "\n[<A]\n\"two\"=-\n",
         "\n[<A]\n~\"three\"=-\n\"two\"=dword:00000002\n\"three\"=\"3\"\n"},
        {"a key's name in another case", "[-<B]\n[<b\\deep]\n", "\n[-<B]\n\n[<b]\n\n[<b\\deep]\n",
         "\n[-<b]\n\n[<B]\n\n[<B\\deep]\n\n[<B\\deep\\er]\n\"x\"=hex(7):00,00\n"},
        {"keys in order, whatever the order of the edits", "[<C]\n[<A\\z]\n[<a\\Y]\n",
         "\n[<A\\Y]\n\n[<A\\z]\n\n[<C]\n", "\n[-<A\\Y]\n\n[-<A\\z]\n\n[-<C]\n"},
        {"the control set goes, the link stays", "[-<SYSTEM\\CurrentControlSet]\n",
         "\n[-<SYSTEM\\ControlSet002]\n", "\n[<SYSTEM\\ControlSet002]\n\"c\"=\"\"\n"},
        {"what is left out", "[<Software\\Left\\Out\\deep]\n\"n\"=dword:1\n", "", ""},
    };
    const std::string base = File(
        "[<A]\n\"one\"=\"1\"\n\"two\"=dword:2\n\"three\"=\"3\"\n"
        "[<B\\deep\\er]\n\"x\"=hex(7):00,00\n[<SOFTWARE\\Left\\Out]\n"
        "[<SYSTEM\\Select]\n\"Current\"=dword:2\n[<SYSTEM\\ControlSet002]\n\"c\"=\"\"\n");
    for (const auto& changed : kCases) {
        SCOPED_TRACE(changed.what);
        EXPECT_EQ(WrongWithReading(base, File(changed.edit)), "");
        Machine machine;
        ASSERT_FALSE(LoadMachineFile(machine, base));
        const RegistryTree before = machine.Get<Registry>().Snapshot();
        ASSERT_FALSE(MergeMachineFile(machine, File(changed.edit)));
        const RegistryTree& after = machine.Get<Registry>().Tree();
        EXPECT_EQ(FormatChanges(before, after, kLeftOut), File(changed.changes));
        EXPECT_EQ(FormatChanges(after, before, kLeftOut), File(changed.undo));
    }
}

// A path through a link leads elsewhere, so that a key of the link's name needs the link gone.
TEST(RegistryChanges, AKeyInThePlaceOfTheLink) {
    const std::string base =
        File("[<SYSTEM\\Select]\n\"Current\"=dword:1\n[<SYSTEM\\ControlSet001]\n");
    const std::string edit = File("[-<SYSTEM]\n[<SYSTEM\\CurrentControlSet]\n\"own\"=\"\"\n");
    EXPECT_EQ(WrongWithReading(base, edit), "");
}

TEST(RegistryChanges, ANameThatCannotBePrintedIsNotMangled) {
    for (const char16_t* name : {u"half\xDC00", u"two\nlines", u"\x9B\x31m"}) {
        RegistryTree tree;
        tree.Create(tree.Root(RegistryRoot::Users), name);
        EXPECT_FALSE(FormatChanges(RegistryTree(), tree, {}));
        EXPECT_TRUE(FormatChanges(tree, tree, {})) << "unchanged, it isn't mentioned";
    }
}

}  // namespace
