// What makes one registry of another: both ways, to the byte.

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "Machine.h"
#include "MachineFile.h"
#include "Registry.h"
#include "RegistryChanges.h"
#include "Seeds.h"
#include "Text.h"

namespace {

using platform::FormatChanges;
using platform::Machine;
using platform::Registry;
using platform::RegistryKey;
using platform::RegistryRoot;
using platform::RegistryTree;

const std::string kHeader = "Windows Registry Editor Version 5.00\n";
constexpr std::u16string_view kLeftOut = u"HKEY_LOCAL_MACHINE\\SOFTWARE\\Left\\Out";

void Merge(Machine& machine, const std::string& text) {
    const auto error = platform::MergeMachineFile(machine, text);
    ASSERT_FALSE(error) << error->line << ": " << error->message << "\n" << text;
}

// The saved file as if the key that is left out had never been there.
std::string Saved(Machine& machine) {
    RegistryTree all = machine.Get<Registry>().Snapshot();
    if (const auto key = all.Find(RegistryRoot::LocalMachine, u"SOFTWARE\\Left\\Out"))
        machine.Get<Registry>().Tree().Delete(machine.Get<Registry>().Tree().Find(
            RegistryRoot::LocalMachine, u"SOFTWARE\\Left\\Out"));
    std::string saved = platform::SaveMachineFile(machine);
    machine.Get<Registry>().Replace(std::move(all));
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

std::string Below(const char* body) {
    std::string text = kHeader + body;
    for (std::size_t at; (at = text.find("HKLM")) != std::string::npos;)
        text.replace(at, 4, "HKEY_LOCAL_MACHINE");
    return text;
}

TEST(RegistryChanges, WhatIsWrittenForEachKindOfChange) {
    const struct {
        const char* what;
        const char* edit;  // merged into the registry below
        const char* changes;
        const char* undo;
    } kCases[] = {
        {"nothing", "[HKLM\\A]\n\"one\"=\"1\"\n", "", ""},
        {"a value's data, where it stands", "[HKLM\\A]\n\"one\"=\"I\"\n",
         "\n[HKLM\\A]\n\"one\"=\"I\"\n", "\n[HKLM\\A]\n\"one\"=\"1\"\n"},
        {"its type alone", "[HKLM\\A]\n\"two\"=hex:02,00,00,00\n",
         "\n[HKLM\\A]\n\"two\"=hex:02,00,00,00\n", "\n[HKLM\\A]\n\"two\"=dword:00000002\n"},
        {"a new value, also a default one", "[HKLM\\A]\n@=\"x\"\n", "\n[HKLM\\A]\n@=\"x\"\n",
         "\n[HKLM\\A]\n@=-\n"},
        {"the last value is deleted", "[HKLM\\A]\n\"three\"=-\n", "\n[HKLM\\A]\n\"three\"=-\n",
         "\n[HKLM\\A]\n\"three\"=\"3\"\n"},
        {"one in front of others is deleted", "[HKLM\\A]\n\"two\"=-\n", "\n[HKLM\\A]\n\"two\"=-\n",
         "\n[HKLM\\A]\n; Set again below, so that the values stand in their order.\n\"three\"=-\n"
         "\"two\"=dword:00000002\n\"three\"=\"3\"\n"},
        {"deleted and set again, it stands last", "[HKLM\\A]\n\"two\"=-\n\"two\"=dword:2\n",
         "\n[HKLM\\A]\n; Set again below, so that the values stand in their order.\n\"two\"=-\n"
         "\"two\"=dword:00000002\n",
         "\n[HKLM\\A]\n; Set again below, so that the values stand in their order.\n\"three\"=-\n"
         "\"three\"=\"3\"\n"},
        {"a value's name in another case", "[HKLM\\A]\n\"three\"=-\n\"Three\"=\"3\"\n",
         "\n[HKLM\\A]\n; Set again below, so that the values stand in their order.\n\"three\"=-\n"
         "\"Three\"=\"3\"\n",
         "\n[HKLM\\A]\n; Set again below, so that the values stand in their order.\n\"Three\"=-\n"
         "\"three\"=\"3\"\n"},
        {"new keys, also empty ones", "[HKLM\\B\\new\\empty]\n",
         "\n[HKLM\\B\\new]\n\n[HKLM\\B\\new\\empty]\n", "\n[-HKLM\\B\\new]\n"},
        {"a key with subkeys is deleted", "[-HKLM\\B]\n", "\n[-HKLM\\B]\n",
         "\n[HKLM\\B]\n\n[HKLM\\B\\deep]\n\n[HKLM\\B\\deep\\er]\n\"x\"=hex(7):00,00\n"},
        {"a key's name in another case", "[-HKLM\\B]\n[HKLM\\b\\deep]\n",
         "\n[-HKLM\\B]\n\n[HKLM\\b]\n\n[HKLM\\b\\deep]\n",
         "\n[-HKLM\\b]\n\n[HKLM\\B]\n\n[HKLM\\B\\deep]\n\n[HKLM\\B\\deep\\er]\n"
         "\"x\"=hex(7):00,00\n"},
        {"keys in order, whatever the order of the edits",
         "[HKLM\\C]\n[HKEY_CURRENT_USER]\n\"u\"=\"\"\n[HKLM\\A\\z]\n[HKLM\\a\\Y]\n",
         "\n[HKEY_CURRENT_USER]\n\"u\"=\"\"\n\n[HKLM\\A\\Y]\n\n[HKLM\\A\\z]\n\n[HKLM\\C]\n",
         "\n[HKEY_CURRENT_USER]\n\"u\"=-\n\n[-HKLM\\A\\Y]\n\n[-HKLM\\A\\z]\n\n[-HKLM\\C]\n"},
        {"through the link, told of the control set",
         "[HKLM\\SYSTEM\\CurrentControlSet\\Services]\n\"s\"=\"\"\n",
         "\n[HKLM\\SYSTEM\\ControlSet002\\Services]\n\"s\"=\"\"\n",
         "\n[-HKLM\\SYSTEM\\ControlSet002\\Services]\n"},
        {"the control set goes, the link stays", "[-HKLM\\SYSTEM\\CurrentControlSet]\n",
         "\n[-HKLM\\SYSTEM\\ControlSet002]\n", "\n[HKLM\\SYSTEM\\ControlSet002]\n\"c\"=\"\"\n"},
        {"what is left out", "[HKLM\\Software\\Left\\Out\\deep]\n\"n\"=dword:1\n", "", ""},
        {"what is left out goes with its parent", "[-HKLM\\SOFTWARE\\Left]\n",
         "\n[-HKLM\\SOFTWARE\\Left]\n", "\n[HKLM\\SOFTWARE\\Left]\n"},
    };
    const std::string base = Below(
        "[HKLM\\A]\n\"one\"=\"1\"\n\"two\"=dword:2\n\"three\"=\"3\"\n"
        "[HKLM\\B\\deep\\er]\n\"x\"=hex(7):00,00\n"
        "[HKLM\\SOFTWARE\\Left\\Out]\n"
        "[HKLM\\SYSTEM\\Select]\n\"Current\"=dword:2\n"
        "[HKLM\\SYSTEM\\ControlSet002]\n\"c\"=\"\"\n");
    for (const auto& changed : kCases) {
        SCOPED_TRACE(changed.what);
        Machine machine;
        ASSERT_FALSE(platform::LoadMachineFile(machine, base));
        const RegistryTree before = machine.Get<Registry>().Snapshot();
        Merge(machine, Below(changed.edit));
        const RegistryTree& after = machine.Get<Registry>().Tree();
        EXPECT_EQ(Changes(before, after), Below(changed.changes));
        EXPECT_EQ(Changes(after, before), Below(changed.undo));
        ExpectBothWays(machine, before);
    }
}

// A path through a link leads elsewhere, so that a key of the link's name needs the link gone.
TEST(RegistryChanges, AKeyInThePlaceOfTheLink) {
    Machine machine;
    ASSERT_FALSE(
        platform::LoadMachineFile(machine, Below("[HKLM\\SYSTEM\\Select]\n\"Current\"=dword:1\n"
                                                 "[HKLM\\SYSTEM\\ControlSet001]\n\"c\"=\"\"\n")));
    const RegistryTree before = machine.Get<Registry>().Snapshot();
    Merge(machine, Below("[-HKLM\\SYSTEM]\n[HKLM\\SYSTEM\\ControlSet001]\n"
                         "[HKLM\\SYSTEM\\CurrentControlSet]\n\"own\"=\"\"\n"));
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

// Edits as they come from anywhere, with names that collide but for their case.
class RandomEdits {
  public:
    RandomEdits(RegistryTree& tree, std::uint64_t seed) : m_tree(tree), m_random(seed) {}

    void Do(int count) {
        for (; count > 0; --count)
            DoOne();
    }

  private:
    std::size_t Below(std::size_t limit) { return m_random() % limit; }
    template <std::size_t N>
    const char16_t* OneOf(const char16_t* const (&names)[N]) {
        return names[Below(N)];
    }
    std::u16string Path() {
        static constexpr const char16_t* kTops[] = {u"SOFTWARE", u"Software",
                                                    u"SYSTEM\\CurrentControlSet",
                                                    u"SYSTEM\\ControlSet001", u"SOFTWARE\\Left"};
        static constexpr const char16_t* kParts[] = {u"Out", u"a",     u"A",  u"b]",   u"-c;",
                                                     u"é",   u"É\"=@", u"d ", u"[e\r", u"Left"};
        std::u16string path = OneOf(kTops);
        for (std::size_t depth = Below(4); depth > 0; --depth)
            path.append(u"\\").append(OneOf(kParts));
        return path;
    }
    void DoOne() {
        static constexpr const char16_t* kNames[] = {
            u"", u"a", u"A", u"b", u"B", u"c\\\"", u"two\r\nlines", u"é", u"É", u"=-", u";x"};
        const auto root = Below(8) == 0 ? RegistryRoot::CurrentUser : RegistryRoot::LocalMachine;
        const std::u16string path = Path();
        const auto key = m_tree.Find(root, path);
        const std::u16string name = OneOf(kNames);
        switch (Below(10)) {
            case 0:
                if (key && !key->IsRoot()) m_tree.Delete(key);
                return;
            case 1:
                m_tree.Create(m_tree.Root(root), path);
                return;
            case 2:
            case 3:
                if (key) m_tree.DeleteValue(*key, name);
                return;
            case 4:  // deleted and set again to the same
                if (const auto* value = key ? key->FindValue(name) : nullptr) {
                    const platform::RegistryValue kept = *value;
                    m_tree.DeleteValue(*key, name);
                    m_tree.SetValue(*key, name, kept.Type(), kept.Data());
                }
                return;
            default:
                break;
        }
        static constexpr DWORD kTypes[] = {REG_NONE, REG_SZ, REG_BINARY, REG_DWORD, REG_MULTI_SZ};
        static constexpr BYTE kData[] = {0x41, 0, 0x22, 0, 0x0A, 0, 0, 0, 0, 0xD8, 0, 0};
        const std::size_t at = Below(6) * 2;
        m_tree.SetValue(*m_tree.Create(m_tree.Root(root), path), name, kTypes[Below(5)],
                        std::span(kData).subspan(at, Below(sizeof kData - at + 1)));
    }

    RegistryTree& m_tree;
    std::mt19937_64 m_random;
};

TEST(RegistryChanges, LeadBothWaysBetweenAnyTwoRegistries) {
    for (const std::uint64_t seed : Seeds(200)) {
        SCOPED_TRACE("TEST_SEED=" + std::to_string(seed));
        Machine machine;
        ASSERT_FALSE(
            platform::LoadMachineFile(machine, Below("[HKLM\\SYSTEM\\Select]\n\"Current\"=dword:1\n"
                                                     "[HKLM\\SYSTEM\\ControlSet001]\n")));
        RandomEdits edits(machine.Get<Registry>().Tree(), seed);
        edits.Do(80);
        const RegistryTree before = machine.Get<Registry>().Snapshot();
        edits.Do(seed % 2 ? 10 : 80);
        ExpectBothWays(machine, before);
        if (HasFailure()) return;
    }
}

}  // namespace
