#include "Fixture.h"
#include "LibraryState.h"
#include "MachineFile.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID reserved);

namespace {

constexpr char kHelp[] = "<help><Topic>{\\rtf1 text}</Topic></help>";

bool HasHelp() {
    return Library().helpDocument && Library().helpDocument->document;
}

TEST(Attach, NotesTheGenerationOfTheSystem) {
    const struct {
        const char* version;
        bool vistaOrLater;
    } rows[] = {{"5.2", false}, {"6.0", true}, {"6.3", true}, {"10.0", true}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.version);
        TestMachine test(Sample().Version(row.version));
        ASSERT_NE(test.Attach(), nullptr);
        EXPECT_EQ(Library().isVistaOrLater, row.vistaOrLater);
    }
}

TEST(Attach, NotesAMissingVendorKey) {
    TestMachine test;
    test.Attach();
    EXPECT_FALSE(Library().vendorKeyMissing);
    test.Detach();
    ASSERT_FALSE(platform::MergeMachineFile(test.machine,
                                            "Windows Registry Editor Version 5.00\n\n"
                                            "[-HKEY_LOCAL_MACHINE\\SOFTWARE\\Corvanta]\n"));
    ASSERT_NE(test.Attach(), nullptr);
    EXPECT_TRUE(Library().vendorKeyMissing);
    EXPECT_FALSE(HasHelp());
}

TEST(Attach, BeginsWithACleanRecordEachTime) {
    TestMachine test;
    test.Attach();
    RegisterPageWindow(Library().vlanPages, nullptr, &test);
    Library().activeConfigTabCount = 3;
    test.Detach();
    test.Attach();
    EXPECT_EQ(Library().vlanPages.count, 0);
    EXPECT_EQ(FindPageObject(Library().vlanPages, nullptr), nullptr);
    EXPECT_EQ(Library().activeConfigTabCount, 0);
}

TEST(Attach, EveryCallStoresTheModule) {
    TestMachine test;
    const HMODULE module = test.Attach();
    EXPECT_EQ(Library().moduleHandle, module);
    const auto other = reinterpret_cast<HINSTANCE>(&test);
    EXPECT_TRUE(DllMain(other, DLL_THREAD_ATTACH, nullptr));
    EXPECT_EQ(Library().moduleHandle, other);
    EXPECT_TRUE(DllMain(module, DLL_THREAD_DETACH, nullptr));
    EXPECT_EQ(Library().moduleHandle, module);
}

TEST(Attach, ComIsUninitialisedOnlyByWhoInitialisedIt) {
    const struct {
        HRESULT result;  // of CoInitialize
        bool help;
        std::size_t uninitialisations;
    } rows[] = {
        {S_OK, true, 1},
        {S_FALSE, true, 0},
        {RPC_E_CHANGED_MODE, true, 0},
        {E_OUTOFMEMORY, false, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.result);
        TestMachine test(Sample(), 0, kHelp);
        // S_FALSE says that COM was there before, RPC_E_CHANGED_MODE that it was there otherwise.
        const bool before = row.result == S_FALSE || row.result == RPC_E_CHANGED_MODE;
        if (before) {
            EXPECT_EQ(CoInitialize(nullptr), S_OK);
        }
        if (FAILED(row.result))
            test.machine.faults.FailCalls("CoInitialize", u"", static_cast<DWORD>(row.result));
        test.Attach();
        EXPECT_EQ(HasHelp(), row.help);
        test.machine.trace.Start();
        test.Detach();
        EXPECT_EQ(test.machine.trace.Count("CoUninitialize"), row.uninitialisations);
        if (before) CoUninitialize();
        // An initialisation that was the second one stays for good.
        if (row.result == S_FALSE) CoUninitialize();
    }
}

TEST(Attach, GoesOnWithoutWhatItCannotGet) {
    const struct {
        const char* call;
        const char16_t* argument;
        bool help;
        bool richEdit;
    } rows[] = {
        {"operator new", u"", false, true},
        {"CoCreateInstance", u"", false, true},
        {"RegOpenKeyExW", u"SOFTWARE\\Corvanta\\", false, true},
        {"RegQueryValueExW", u"InstalledPath", false, true},
        {"SysAllocString", u"", false, true},
        {"IXMLDOMDocument::load", u"", false, true},
        {"LoadLibraryW", u"Riched20.dll", true, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.call);
        TestMachine test(Sample(), 0, kHelp);
        test.machine.faults.FailCalls(row.call, row.argument, ERROR_ACCESS_DENIED);
        ASSERT_NE(test.Attach(), nullptr);
        EXPECT_TRUE(test.machine.faults.Fired());
        EXPECT_EQ(HasHelp(), row.help);
        EXPECT_EQ(static_cast<bool>(Library().richEditLibrary), row.richEdit);
    }
}

TEST(Attach, AnyFailedCallLeavesNothingBehind) {
    for (std::uint64_t n = 1;; ++n) {
        ASSERT_LT(n, 200u) << "never ran clean";
        SCOPED_TRACE(n);
        TestMachine test(Sample(), 0, kHelp);
        test.machine.faults.Mark();
        test.machine.faults.FailNth(n, true);
        ASSERT_NE(test.Attach(), nullptr);
        test.Detach();
        if (!test.machine.faults.Fired()) break;
        test.machine.faults.Disarm();
        test.Attach();
        EXPECT_TRUE(HasHelp());
    }
}

}  // namespace
