#include "Fixture.h"
#include "LibraryState.h"
#include "MachineFile.h"

namespace {

bool HasHelp() {
    return Library().helpDocument && Library().helpDocument->document;
}

TEST(Attach, BeginsWithACleanRecordEachTime) {
    TestMachine test;
    test.Attach();
    EXPECT_FALSE(Library().vendorKeyMissing);
    RegisterPageWindow(Library().vlanPages, nullptr, &test);
    Library().activeConfigTabCount = 3;
    test.Detach();
    ASSERT_FALSE(platform::MergeMachineFile(test.machine,
                                            "Windows Registry Editor Version 5.00\n\n"
                                            "[-HKEY_LOCAL_MACHINE\\SOFTWARE\\Corvanta]\n"));
    ASSERT_NE(test.Attach(), nullptr);
    EXPECT_TRUE(Library().vendorKeyMissing);
    EXPECT_FALSE(HasHelp());
    EXPECT_EQ(Library().vlanPages.count, 0);
    EXPECT_EQ(FindPageObject(Library().vlanPages, nullptr), nullptr);
    EXPECT_EQ(Library().activeConfigTabCount, 0);
}

TEST(Attach, AHelpFileThatDoesNotLoadLeavesNoDocument) {
    const char* const files[] = {nullptr, "<help><Topic>{\\rtf1 text}</help>"};
    for (const char* help : files) {
        TestMachine test(Sample(), 0, help);
        test.Attach();
        EXPECT_FALSE(HasHelp());
    }
}

TEST(Attach, ComIsUninitialisedOnlyByWhoInitialisedIt) {
    const struct {
        HRESULT result;  // of CoInitialize
        bool before;     // COM was initialised before
        bool help;
        std::size_t uninitialisations;
    } rows[] = {
        {S_OK, false, true, 1},
        {S_FALSE, true, true, 0},
        {RPC_E_CHANGED_MODE, true, true, 0},
        {E_OUTOFMEMORY, false, false, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.result);
        TestMachine test(Sample(), 0, "<help><Topic>{\\rtf1 text}</Topic></help>");
        if (row.before) {
            EXPECT_EQ(CoInitialize(nullptr), S_OK);
        }
        if (FAILED(row.result))
            test.machine.faults.FailCalls("CoInitialize", u"", static_cast<DWORD>(row.result));
        test.Attach();
        EXPECT_EQ(HasHelp(), row.help);
        test.machine.trace.Start();
        test.Detach();
        EXPECT_EQ(test.machine.trace.Count("CoUninitialize"), row.uninitialisations);
        if (row.before) CoUninitialize();
        // An initialisation that was the second one stays for good.
        if (row.result == S_FALSE) CoUninitialize();
    }
}

TEST(Detach, AProcessThatExitsLeavesEverythingToTheSystem) {
    TestMachine test(Sample(), 0, "<help><Topic>{\\rtf1 text}</Topic></help>");
    test.Attach();
    const std::size_t held = test.machine.ledger.Open().size();
    test.machine.trace.Start();
    test.machine.Exit();
    EXPECT_TRUE(test.machine.trace.Records().empty());
    EXPECT_EQ(test.machine.ledger.Open().size(), held);
    // The test's own process goes on.
    test.Detach();
}

}  // namespace
