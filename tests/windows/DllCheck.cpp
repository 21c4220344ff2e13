// Runs on a Windows, beside the DLL: loads it, looks at its resources, and calls both providers
// with requests that they must refuse. Prints each fault and ends with 1 when there was one.

#include <windows.h>
#include <setupapi.h>
#include <prsht.h>
#include <cstdio>
#include <initializer_list>

namespace {

int g_faults = 0;

void Expect(bool holds, const char* what) {
    if (holds) return;
    ++g_faults;
    std::printf("not so: %s\n", what);
}

BOOL CALLBACK RefusePage(HPROPSHEETPAGE, LPARAM added) {
    ++*reinterpret_cast<int*>(added);
    return FALSE;
}

template <class Function>
Function Procedure(HMODULE module, const char* name) {
    return reinterpret_cast<Function>(reinterpret_cast<void (*)()>(GetProcAddress(module, name)));
}

void CheckResources(HMODULE library) {
    WCHAR text[600];
    for (const UINT id : {110U, 121U, 160U, 178U, 188U, 209U, 216U})
        Expect(LoadStringW(library, id, text, ARRAYSIZE(text)) > 0, "a message text is missing");
    for (const WORD dialog : {WORD{106}, WORD{217}})
        Expect(FindResourceW(library, MAKEINTRESOURCEW(dialog), RT_DIALOG) != nullptr,
               "a Performance dialog is missing");
    Expect(FindResourceW(library, MAKEINTRESOURCEW(109), RT_BITMAP) != nullptr,
           "the bitmap is missing");
    Expect(FindResourceW(library, MAKEINTRESOURCEW(VS_VERSION_INFO), RT_VERSION) != nullptr,
           "the version information is missing");
}

void CheckRefusals(HMODULE library) {
    using Provider = BOOL(WINAPI*)(PSP_PROPSHEETPAGE_REQUEST, LPFNADDPROPSHEETPAGE, LPARAM);
    const auto adapter = Procedure<Provider>(library, "WinTsrTunePropPageProvider");
    const auto bus = Procedure<Provider>(library, "CvtPropPageProvider");
    Expect(adapter != nullptr && bus != nullptr, "a provider is missing");
    if (adapter == nullptr || bus == nullptr) return;

    const HDEVINFO empty = SetupDiCreateDeviceInfoList(nullptr, nullptr);
    SP_DEVINFO_DATA device = {};
    device.cbSize = sizeof(device);
    SP_PROPSHEETPAGE_REQUEST request = {};
    request.cbSize = sizeof(request);
    int added = 0;
    const LPARAM parameter = reinterpret_cast<LPARAM>(&added);

    request.PageRequested = 2;
    request.DeviceInfoSet = empty;
    request.DeviceInfoData = &device;
    Expect(!adapter(&request, RefusePage, parameter), "basic properties are refused");
    request.PageRequested = SPPSR_ENUM_ADV_DEVICE_PROPERTIES;
    Expect(!adapter(&request, RefusePage, parameter), "an unknown device is refused");
    Expect(!bus(&request, RefusePage, parameter), "an unknown bus device is refused");
    request.DeviceInfoData = nullptr;
    Expect(!adapter(&request, RefusePage, parameter), "a request without device is refused");
    Expect(!bus(&request, RefusePage, parameter), "a bus request without device is refused");
    request.DeviceInfoSet = nullptr;
    request.DeviceInfoData = &device;
    Expect(!adapter(&request, RefusePage, parameter), "a request without list is refused");
    Expect(added == 0, "no page is handed over");
    SetupDiDestroyDeviceInfoList(empty);
}

}  // namespace

int main() {
    std::puts("started");
    std::fflush(stdout);
    const HMODULE library = LoadLibraryW(TEXT("WinTsrTune_ipoib.dll"));
    Expect(library != nullptr, "the DLL loads");
    if (library != nullptr) {
        CheckResources(library);
        CheckRefusals(library);
        Expect(FreeLibrary(library) != FALSE, "the DLL unloads");
        Expect(GetModuleHandleW(TEXT("WinTsrTune_ipoib.dll")) == nullptr, "the DLL is gone");
    }
    std::printf("%d faults\n", g_faults);
    return g_faults == 0 ? 0 : 1;
}
