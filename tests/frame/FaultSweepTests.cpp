// Process attach and the providers, with each of their system calls failing in its turn.

#include "FaultSweep.h"

#include "LibraryState.h"

namespace {

// An outcome that differs from the clean run in one note.
Outcome Noted(const std::string& note, const std::string& text) {
    return [=](Facts& due, const Facts&, const Fault&) { due.notes[note] = text; };
}

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
    const std::vector<Outcome> noHelp = {Noted("help", "no")};
    sweep.table = {
        {{"GetVersionExW"}, "", 0, {Noted("Vista", "no")}},
        {{"RegOpenKeyExW"}, "SOFTWARE\\Corvanta", 0, {Noted("vendor key", "no")}},
        {{"LoadLibraryW"}, "Riched20.dll", 0, {Noted("rich edit", "no")}},
        {{"operator new", "CoInitialize", "CoCreateInstance", "IXMLDOMDocument::load",
          "SysAllocString"},
         "",
         0,
         noHelp},
        {{"RegOpenKeyExW"}, "SOFTWARE\\Corvanta\\", 0, noHelp},
        {{"RegQueryValueExW"}, "InstalledPath", 0, noHelp},
        {{"IXMLDOMDocument::put_async", "IXMLDOMDocument::put_validateOnParse",
          "IXMLDOMDocument::put_resolveExternals", "IXMLDOMDocument::put_preserveWhiteSpace",
          "RegCloseKey", "SysFreeString", "CoUninitialize", "FreeLibrary"},
         ""},
    };
    sweep.Run();
}

const std::string kNoMemory = Box("Error",
                                  "Failed to execute the command. This may occur due to "
                                  "insufficient memory.\r\nError message:Not enough "
                                  "storage is available to process this command.\r\n",
                                  0x2010);

const char kEnum[] = "SYSTEM\\CurrentControlSet\\Enum";
const char kClass[] = "SYSTEM\\CurrentControlSet\\Control\\Class";
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
    const std::string driver = Sample::ClassKey(1).substr(sizeof kClass);
    sweep.table = {
        {{"SetupDiGetDeviceInstanceIdW", "SetupDiGetClassDevsW", "SetupDiCreateDeviceInterfaceW",
          "SetupDiGetDeviceInterfaceDetailW", "LocalAlloc"},
         "",
         0,
         {NoTab}},
        {{"operator new"}, "", 1, {NoTab}},
        {{"operator new"}, "", 2, {NoTab}},
        {{"RegOpenKeyExW"}, kEnum, 0, {NoTab}},
        {{"RegOpenKeyExW"}, kClass, 0, {NoTab}},
        {{"RegOpenKeyExW"}, sweep.sample.InstanceId(1), 0, {NoTab}},
        {{"RegOpenKeyExW"}, driver, 0, {NoTab}},
        {{"RegQueryValueExW"}, "Service", 0, {NoTab}},
        {{"RegQueryValueExW"}, "Driver", 0, {NoTab}},
        {{"RegQueryValueExW"}, "NetCfgInstanceId", 0, {NoTab}},
        // An adapter that can't be looked up among the members is none, unless it is there.
        {{"RegOpenKeyExW"}, kAdapters},
        {{"RegOpenKeyExW"}, Sample::Guid(1), 0, {NoTab}},
        {{"RegQueryValueExW"}, "TeamDeviceName"},
        {{"operator new"}, "", 0, {PageLessTold}},
        {{"CreatePropertySheetPageW"}, "", 0, {PageLess}},
        {kClosing, ""},
    };
    sweep.Run();
}

TEST(FaultSweep, BusProvider) {
    FaultSweep sweep =
        ProviderSweep("bus provider", [](TestMachine& test) { return test.CallBusProvider(); });
    const auto refused = [](Facts& due, const Facts& found, const Fault& fault) {
        NoTab(due, found, fault);
        if (fault.call == "operator new") due.boxes = {kNoMemory};
    };
    sweep.table = {
        {{"SetupDiGetDeviceInstanceIdW", "RegOpenKeyExW", "RegQueryValueExW",
          "CreatePropertySheetPageW", "operator new"},
         "",
         0,
         {refused}},
        {kClosing, ""},
    };
    sweep.Run();
}

}  // namespace
