// Process attach and the providers, with each of their system calls failing in its turn.

#include "FaultSweep.h"
#include "SheetPages.h"

namespace {

// What the load of the library has set up shows later, on the Port Protocol tab.
TEST(FaultSweep, ProcessAttach) {
    FaultSweep sweep;
    sweep.name = "process attach";
    sweep.help = "<help><PortType>{\\rtf1 wire}</PortType></help>";
    sweep.sample.With(std::string(Sample::BusClassKey()) + "\\Parameters",
                      "\"PortType\"=\"eth,eth\"");
    sweep.operation = [](TestMachine& test, const FaultSweep::Sweep& swept) {
        swept([&](Values& notes) {
            ASSERT_NE(test.Attach(), nullptr);
            test.machine.faults.Disarm();
            test.machine.trace.Stop();
            const platform::QuietScope quiet;
            const bool canShow = GetModuleHandleW(u"Riched20.dll") != nullptr;
            notes["rich edit"] = canShow ? "loaded" : "missing";
            const auto look = [&] {
                const HWND help = GetDlgItem(test.Page(), 1078);
                WCHAR text[10] = {};
                GetWindowTextW(help, text, ARRAYSIZE(text));
                notes["help"] = platform::ToUtf8(text);
                notes["help box"] = IsWindowVisible(help) ? "shown" : "hidden";
            };
            if (canShow) test.user.Do(look);
            if (canShow) test.RunBusSheet();
            test.Detach();
        });
    };
    sweep.described = {
        {{"GetVersionExW", "RegCloseKey", "SysFreeString", "CoUninitialize", "FreeLibrary",
          "IXMLDOMDocument::put_async", "IXMLDOMDocument::put_validateOnParse",
          "IXMLDOMDocument::put_resolveExternals", "IXMLDOMDocument::put_preserveWhiteSpace"},
         {}},
        {{"RegOpenKeyExW"},
         {.shown = {{"help", ""}, {"help box", "hidden"}}},
         "SOFTWARE\\Corvanta"},
        {{"LoadLibraryW"}, {.shown = {{"rich edit", "missing"}, {"help", "-"}, {"help box", "-"}}}},
        {{"operator new", "CoInitialize", "CoCreateInstance", "IXMLDOMDocument::load",
          "SysAllocString", "RegOpenKeyExW", "RegQueryValueExW"},
         {.shown = {{"help", ""}}}},
    };
    sweep.Execute();
}

const std::string kNoMemory = Box("Error",
                                  "Failed to execute the command. This may occur due to "
                                  "insufficient memory.\r\nError message:Not enough "
                                  "storage is available to process this command.\r\n",
                                  0x2010);

// Notes the result and each page's title. A page that isn't added was absent before.
FaultSweep ProviderSweep(const char* name,
                         const std::function<TestMachine::ProviderResult(TestMachine&)>& call) {
    FaultSweep sweep;
    sweep.name = name;
    sweep.operation = [=](TestMachine& test, const FaultSweep::Sweep& swept) {
        test.Attach();
        swept([&](Values& notes) {
            const TestMachine::ProviderResult provided = call(test);
            notes["result"] = provided.result ? "true" : "false";
            const platform::QuietScope quiet;
            auto& pages = test.machine.Get<platform::SheetPages>();
            for (const HPROPSHEETPAGE page : provided.pages) {
                notes[platform::ToUtf8(pages.Find(page)->Title())] = "added";
                DestroyPropertySheetPage(page);
            }
        });
    };
    return sweep;
}

TEST(FaultSweep, AdapterProvider) {
    FaultSweep sweep =
        ProviderSweep("adapter provider", [](TestMachine& test) { return test.CallProvider(); });
    const std::string adapters = "SYSTEM\\CurrentControlSet\\Services\\MUXP\\Parameters\\Adapters";
    sweep.sample.With(adapters + "\\" + Sample::Guid(1), "\"TeamDeviceName\"=\"Team\"");
    const Seen noTab = {.shown = {{"result", "false"}, {"Information", "-"}, {"Performance", "-"}}};
    sweep.described = {
        {{"SetupDiGetDeviceInstanceIdW", "SetupDiGetClassDevsW", "SetupDiCreateDeviceInterfaceW",
          "SetupDiGetDeviceInterfaceDetailW", "LocalAlloc"},
         noTab},
        {{"operator new"},
         {.boxes = Lines{kNoMemory, kNoMemory},
          .shown = {{"Information", "-"}, {"Performance", "-"}}},
         "",
         1,
         true},
        {{"operator new"}, {.boxes = Lines{kNoMemory}, .shown = {{"Information", "-"}}}, "", 1},
        {{"operator new"}, {.boxes = Lines{kNoMemory}, .shown = {{"Performance", "-"}}}},
        // An adapter that can't be looked up among the team members is none, unless it is there.
        {{"RegOpenKeyExW"}, {}, adapters},
        {{"RegQueryValueExW"}, {}, "TeamDeviceName"},
        // What the VLAN tab asks of the machine.
        {{"RegOpenKeyExW"}, {}, "SOFTWARE\\Corvanta"},
        {{"RegQueryValueExW"}, {}, "InstalledPath"},
        {{"RegOpenKeyExW", "RegQueryValueExW"}, noTab},
        {{"CreatePropertySheetPageW"}, {.shown = {{"Information", "-"}}}, "", 1, false},
        {{"CreatePropertySheetPageW"}, {.kept = {"Information", "Performance"}}},
    };
    sweep.Execute();
}

TEST(FaultSweep, BusProvider) {
    FaultSweep sweep =
        ProviderSweep("bus provider", [](TestMachine& test) { return test.CallBusProvider(); });
    const Seen noTab = {.shown = {{"result", "false"}, {"Port Protocol", "-"}}};
    Seen noMemory = noTab;
    noMemory.boxes = {kNoMemory};
    sweep.described = {
        {{"SetupDiGetDeviceInstanceIdW", "RegOpenKeyExW", "RegQueryValueExW",
          "CreatePropertySheetPageW"},
         noTab},
        {{"operator new"}, noMemory},
    };
    sweep.Execute();
}

}  // namespace
