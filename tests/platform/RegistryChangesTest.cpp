// What makes one registry of another: both ways, to the byte.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Machine.h"
#include "MachineFile.h"
#include "Registry.h"
#include "RegistryChanges.h"
#include "Text.h"

namespace {

using platform::FormatChanges;
using platform::Machine;
using platform::Registry;
using platform::RegistryRoot;
using platform::RegistryTree;

const std::string kHeader = "Windows Registry Editor Version 5.00\n";
constexpr char kOneControlSet[] =
    "[<SYSTEM\\Select]\n\"Current\"=dword:1\n[<SYSTEM\\ControlSet001]\n";
constexpr std::u16string_view kLeftOut = u"HKEY_LOCAL_MACHINE\\SOFTWARE\\Left\\Out";

void Merge(Machine& machine, const std::string& text) {
    const auto error = platform::MergeMachineFile(machine, text);
    ASSERT_FALSE(error) << error->line << ": " << error->message << "\n" << text;
}

// The saved file as if the key that is left out had never been there.
std::string Saved(Machine& machine) {
    Registry& registry = machine.Get<Registry>();
    RegistryTree all = registry.Snapshot();
    if (const auto key = registry.Tree().Find(RegistryRoot::LocalMachine, u"SOFTWARE\\Left\\Out"))
        registry.Tree().Delete(key);
    std::string saved = platform::SaveMachineFile(machine);
    registry.Replace(std::move(all));
    return saved;
}

std::string Changes(const RegistryTree& from, const RegistryTree& to) {
    const auto text = FormatChanges(from, to, kLeftOut);
    EXPECT_TRUE(text);
    return text.value_or("");
}

// The machine has become what it is from what it was: changes lead there and undo leads back.
void ExpectBothWays(Machine& machine, const RegistryTree& before) {
    const RegistryTree after = machine.Get<Registry>().Snapshot();
    const std::string changes = Changes(before, after);
    const std::string undo = Changes(after, before);
    const std::string savedAfter = Saved(machine);
    machine.Get<Registry>().Replace(RegistryTree(before));
    const std::string savedBefore = Saved(machine);
    Merge(machine, changes);
    EXPECT_EQ(Saved(machine), savedAfter) << changes;
    machine.Get<Registry>().Replace(RegistryTree(after));
    Merge(machine, undo);
    EXPECT_EQ(Saved(machine), savedBefore) << undo;
}

// A file's text; < stands for the root, ~ for the remark on values that are set again.
std::string File(const std::string& body) {
    std::string text = kHeader;
    for (const char character : body) {
        if (character == '<')
            text += "HKEY_LOCAL_MACHINE\\";
        else if (character == '~')
            text += "; Set again below, so that the values stand in their order.\n";
        else
            text += character;
    }
    return text;
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
        {"a value's name in another case", "[<A]\n\"three\"=-\n\"Three\"=\"3\"\n",
         "\n[<A]\n~\"three\"=-\n\"Three\"=\"3\"\n", "\n[<A]\n~\"Three\"=-\n\"three\"=\"3\"\n"},
        {"a key's name in another case", "[-<B]\n[<b\\deep]\n", "\n[-<B]\n\n[<b]\n\n[<b\\deep]\n",
         "\n[-<b]\n\n[<B]\n\n[<B\\deep]\n\n[<B\\deep\\er]\n\"x\"=hex(7):00,00\n"},
        {"keys in order, whatever the order of the edits", "[<C]\n[<A\\z]\n[<a\\Y]\n",
         "\n[<A\\Y]\n\n[<A\\z]\n\n[<C]\n", "\n[-<A\\Y]\n\n[-<A\\z]\n\n[-<C]\n"},
        {"through the link, told of the control set",
         "[<SYSTEM\\CurrentControlSet\\Services]\n\"s\"=\"\"\n",
         "\n[<SYSTEM\\ControlSet002\\Services]\n\"s\"=\"\"\n",
         "\n[-<SYSTEM\\ControlSet002\\Services]\n"},
        {"the control set goes, the link stays", "[-<SYSTEM\\CurrentControlSet]\n",
         "\n[-<SYSTEM\\ControlSet002]\n", "\n[<SYSTEM\\ControlSet002]\n\"c\"=\"\"\n"},
        {"what is left out", "[<Software\\Left\\Out\\deep]\n\"n\"=dword:1\n", "", ""},
        {"what is left out goes with its parent", "[-<SOFTWARE\\Left]\n", "\n[-<SOFTWARE\\Left]\n",
         "\n[<SOFTWARE\\Left]\n"},
    };
    const std::string base = File(
        "[<A]\n\"one\"=\"1\"\n\"two\"=dword:2\n\"three\"=\"3\"\n"
        "[<B\\deep\\er]\n\"x\"=hex(7):00,00\n[<SOFTWARE\\Left\\Out]\n"
        "[<SYSTEM\\Select]\n\"Current\"=dword:2\n[<SYSTEM\\ControlSet002]\n\"c\"=\"\"\n");
    for (const auto& changed : kCases) {
        SCOPED_TRACE(changed.what);
        Machine machine;
        ASSERT_FALSE(platform::LoadMachineFile(machine, base));
        const RegistryTree before = machine.Get<Registry>().Snapshot();
        Merge(machine, File(changed.edit));
        const RegistryTree& after = machine.Get<Registry>().Tree();
        EXPECT_EQ(Changes(before, after), File(changed.changes));
        EXPECT_EQ(Changes(after, before), File(changed.undo));
        ExpectBothWays(machine, before);
    }
}

// A path through a link leads elsewhere, so that a key of the link's name needs the link gone.
TEST(RegistryChanges, AKeyInThePlaceOfTheLink) {
    Machine machine;
    ASSERT_FALSE(platform::LoadMachineFile(machine, File(kOneControlSet)));
    const RegistryTree before = machine.Get<Registry>().Snapshot();
    Merge(machine, File("[-<SYSTEM]\n[<SYSTEM\\CurrentControlSet]\n\"own\"=\"\"\n"));
    ExpectBothWays(machine, before);
}

TEST(RegistryChanges, ANameThatNoFileCanHoldIsNotMangled) {
    const struct {
        const char16_t* key;
        const char16_t* value;
        bool canBeWritten;
    } kCases[] = {
        {u"K", u"two\r\nlines", true},   {u"K", u"half\xD800", false},
        {u"half\xDC00", u"v", false},    {u"two\nlines", u"v", false},
        {u"a [b]; -c", u"\"\\\"", true},
    };
    for (const auto& named : kCases) {
        RegistryTree from;
        RegistryTree to;
        const auto key = to.Create(to.Root(RegistryRoot::Users), named.key);
        to.SetValue(*key, named.value, REG_SZ, {});
        EXPECT_EQ(FormatChanges(from, to, {}).has_value(), named.canBeWritten);
        EXPECT_TRUE(FormatChanges(to, to, {})) << "unchanged, it isn't mentioned";
    }
}

}  // namespace
