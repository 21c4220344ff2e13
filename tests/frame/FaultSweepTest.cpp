// Process attach and the providers, with each of their system calls failing in its turn.

#include "FaultSweep.h"

#include "LibraryState.h"

namespace {

TEST(FaultSweep, ProcessAttach) {
    FaultSweep sweep;
    sweep.name = "process attach";
    sweep.help = "<help><Topic>{\\rtf1 text}</Topic></help>";
    sweep.operation = [](TestMachine& test, const FaultSweep::Sweep& swept) {
        swept([&](auto& notes) {
            ASSERT_NE(test.Attach(), nullptr);
            const LibraryState& library = Library();
            const HelpDocument* help = library.helpDocument.get();
            notes["Vista"] = library.isVistaOrLater ? "yes" : "no";
            notes["vendor key"] = library.vendorKeyMissing ? "no" : "yes";
            notes["help"] = help && help->document ? "yes" : "no";
            notes["rich edit"] = library.richEditLibrary ? "yes" : "no";
            test.Detach();
        });
    };
    const Outcome noHelp = Noted("help", "no");
    sweep.table = {
        {{"GetVersionExW"}, {Noted("Vista", "no")}},
        {{"RegOpenKeyExW"}, {Noted("vendor key", "no")}, "SOFTWARE\\Corvanta"},
        {{"LoadLibraryW"}, {Noted("rich edit", "no")}},
        {{"operator new", "CoInitialize", "CoCreateInstance", "IXMLDOMDocument::load",
          "SysAllocString"},
         {noHelp}},
        {{"RegOpenKeyExW"}, {noHelp}, "SOFTWARE\\Corvanta\\"},
        {{"RegQueryValueExW"}, {noHelp}, "InstalledPath"},
        {{"IXMLDOMDocument::put_async", "IXMLDOMDocument::put_validateOnParse",
          "IXMLDOMDocument::put_resolveExternals", "IXMLDOMDocument::put_preserveWhiteSpace",
          "RegCloseKey", "SysFreeString", "CoUninitialize", "FreeLibrary"},
         {AsClean}},
    };
    sweep.Run();
}

const std::string kNoMemory = Box("Error",
                                  "Failed to execute the command. This may occur due to "
                                  "insufficient memory.\r\nError message:Not enough "
                                  "storage is available to process this command.\r\n",
                                  0x2010);

const char kAdapters[] = "SYSTEM\\CurrentControlSet\\Services\\MUXP\\Parameters\\Adapters";
const std::vector<const char*> kClosing = {"RegCloseKey", "LocalFree",
                                           "SetupDiDestroyDeviceInfoList"};

// The identification failed.
void NoTab(Facts& due, const Facts&, const Fault&) {
    due.notes = {{"result", "false"}, {"pages", "0"}};
}

// A page less; with a lasting fault also those behind it.
void PageLess(Facts& due, const Facts&, const Fault& fault) {
    const int pages = std::stoi(due.notes["pages"]);
    due.notes["pages"] = std::to_string(fault.lasting ? fault.ofName - 1 : pages - 1);
}

// A page's object can't be allocated.
void PageLessTold(Facts& due, const Facts&, const Fault&) {
    due.notes["pages"] = std::to_string(std::stoi(due.notes["pages"]) - 1);
    due.boxes = {kNoMemory};
}

FaultSweep ProviderSweep(const char* name,
                         const std::function<TestMachine::ProviderResult(TestMachine&)>& call) {
    FaultSweep sweep;
    sweep.name = name;
    sweep.operation = [=](TestMachine& test, const FaultSweep::Sweep& swept) {
        test.Attach();
        swept([&](auto& notes) {
            const TestMachine::ProviderResult provided = call(test);
            notes["result"] = provided.result ? "true" : "false";
            notes["pages"] = std::to_string(provided.pages.size());
            const platform::QuietScope quiet;
            for (const HPROPSHEETPAGE page : provided.pages)
                DestroyPropertySheetPage(page);
        });
    };
    return sweep;
}

TEST(FaultSweep, AdapterProvider) {
    FaultSweep sweep =
        ProviderSweep("adapter provider", [](TestMachine& test) { return test.CallProvider(); });
    const std::string entry = std::string(kAdapters) + "\\" + Sample::Guid(1);
    sweep.sample.With(entry, "\"TeamDeviceName\"=\"Team\"");
    sweep.table = {
        {{"SetupDiGetDeviceInstanceIdW", "SetupDiGetClassDevsW", "SetupDiCreateDeviceInterfaceW",
          "SetupDiGetDeviceInterfaceDetailW", "LocalAlloc"},
         {NoTab}},
        {{"operator new"}, {NoTab}, "", 1},
        {{"operator new"}, {NoTab}, "", 2},
        {{"operator new"}, {PageLessTold}},
        // An adapter that can't be looked up among the team members is none, unless it is there.
        {{"RegOpenKeyExW"}, {AsClean}, kAdapters},
        {{"RegQueryValueExW"}, {AsClean}, "TeamDeviceName"},
        {{"RegOpenKeyExW", "RegQueryValueExW"}, {NoTab}},
        {{"CreatePropertySheetPageW"}, {PageLess}},
        {kClosing, {AsClean}},
    };
    sweep.Run();
}

TEST(FaultSweep, BusProvider) {
    FaultSweep sweep =
        ProviderSweep("bus provider", [](TestMachine& test) { return test.CallBusProvider(); });
    sweep.table = {
        {{"SetupDiGetDeviceInstanceIdW", "RegOpenKeyExW", "RegQueryValueExW",
          "CreatePropertySheetPageW"},
         {NoTab}},
        {{"operator new"}, {[](Facts& due, const Facts&, const Fault&) {
             due = {{kNoMemory}, {}, {}, {{"result", "false"}, {"pages", "0"}}};
         }}},
        {kClosing, {AsClean}},
    };
    sweep.Run();
}

}  // namespace
