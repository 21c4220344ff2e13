#include "MuxComponent.h"

#include <string_view>

#include "DeviceIds.h"
#include "Failure.h"

#include <strsafe.h>

namespace {

using Text = std::basic_string_view<WCHAR>;

constexpr HRESULT kCancelled = static_cast<HRESULT>(0x800704C7);

// Prints a text that a component gives, unless it fails to.
template <class Get>
void PrintText(const char* format, INetCfgComponent& component, Get get) {
    ScopedTaskMemory<WCHAR> text;
    if (SUCCEEDED((component.*get)(text.Receive())) && text) PrintDiagnostic(format, text.Get());
}

// Prints the component's name, GUID and id. True when it is the MUX component.
bool IsMuxComponent(INetCfgComponent& component, GUID& guid) {
    PrintText("Display Name = %S\n", component, &INetCfgComponent::GetDisplayName);
    if (SUCCEEDED(component.GetInstanceGuid(&guid))) {
        const BYTE* const rest = guid.Data4;
        PrintDiagnostic("Guid = %08X-%04X-%04X-%02X%02X%02X%02X%02X%02X%02X%02X\n", guid.Data1,
                        guid.Data2, guid.Data3, rest[0], rest[1], rest[2], rest[3], rest[4],
                        rest[5], rest[6], rest[7]);
    }
    ScopedTaskMemory<WCHAR> id;
    if (FAILED(component.GetId(id.Receive())) || !id) return false;
    PrintDiagnostic("ID = %S\n", id.Get());
    return Text(id.Get()) == kMuxProtocolId;
}

// The path of a file up to its last backslash.
void CopyDirectory(LPCWSTR path, WCHAR (&directory)[MAX_PATH]) {
    const size_t length = Text(path).rfind(TEXT('\\')) + 1;  // 0 when there is none
    (void)StringCchCopyNW(directory, ARRAYSIZE(directory), path, length);
}

HRESULT InstallFromInf(INetCfg& netCfg, LPCWSTR infPath, LPCWSTR componentId, REFGUID classGuid) {
    WCHAR directory[MAX_PATH];
    CopyDirectory(infPath, directory);
    if (!SetupCopyOEMInfW(infPath, directory, SPOST_PATH, 0, nullptr, 0, nullptr, nullptr))
        return LastFailure();
    ScopedReference<INetCfgClassSetup> setup;
    HRESULT result = netCfg.QueryNetCfgClass(&classGuid, IID_INetCfgClassSetup,
                                             reinterpret_cast<void**>(setup.Receive()));
    if (result != S_OK) return result;
    OBO_TOKEN token = {};
    token.Type = OBO_USER;
    ScopedReference<INetCfgComponent> component;
    result = setup->Install(componentId, &token, 0, 0, nullptr, nullptr, component.Receive());
    if (FAILED(result)) return result;
    component.Reset();
    return netCfg.Apply();
}

}  // namespace

HRESULT GetOurGuid(const NetworkComponents& netCfg, GUID& guid,
                   ScopedReference<INetCfgComponent>* component) {
    ScopedReference<INetCfgClass> netClass;
    ScopedReference<IEnumNetCfgComponent> components;
    HRESULT result = netCfg.QueryClass(netClass);
    if (SUCCEEDED(result)) result = netClass->EnumComponents(components.Receive());
    if (FAILED(result))
        return Stop(result, "Failed to get network component enumerator reference. Error=0x%x\n",
                    Code(result));
    (void)components->Reset();
    ScopedReference<INetCfgComponent> each;
    ULONG fetched = 0;
    while (components->Next(1, each.Receive(), &fetched) == S_OK && each) {
        GUID found = {};
        if (IsMuxComponent(*each.Get(), found)) {
            guid = found;
            if (component) *component = each;
            return S_OK;
        }
        PrintText("PNP ID = %S\n", *each.Get(), &INetCfgComponent::GetPnpDevNodeId);
        PrintText("Bind Name= %S\n", *each.Get(), &INetCfgComponent::GetBindName);
    }
    return S_OK;
}

HRESULT InstallSpecifiedComponent(INetCfg& netCfg, LPCWSTR infPath, LPCWSTR componentId,
                                  REFGUID classGuid) {
    ScopedReference<INetCfgComponent> present;
    HRESULT result = netCfg.FindComponent(componentId, present.Receive());
    if (FAILED(result)) {
        PrintDiagnostic(
            "Failed to retrieves the network component that matches the specified component "
            "identifier %S. Error=0x%x\n",
            componentId, Code(result));
    } else if (present) {
        return Stop(S_OK, "Component %S is already installed. nothing to do....\n", componentId);
    }
    result = InstallFromInf(netCfg, infPath, componentId, classGuid);
    if (result == S_OK || result == NETCFG_S_REBOOT) return netCfg.Apply();
    if (result == kCancelled) return result;
    return Stop(result, "Couldn't install the network component. Error=0x%x\n", Code(result));
}

HRESULT RemoveMuxComponent(INetCfg& netCfg) {
    ScopedReference<INetCfgComponent> component;
    HRESULT result = netCfg.FindComponent(TEXT("CVTA_MUXP"), component.Receive());
    if (FAILED(result) || !component) return result;
    GUID classGuid = {};
    result = component->GetClassGuid(&classGuid);
    if (FAILED(result)) return result;
    ScopedReference<INetCfgClass> componentClass;
    result = netCfg.QueryNetCfgClass(&classGuid, IID_INetCfgClass,
                                     reinterpret_cast<void**>(componentClass.Receive()));
    if (FAILED(result)) return result;
    ScopedReference<INetCfgClassSetup> setup;
    result = componentClass.Query(IID_INetCfgClassSetup, setup);
    if (FAILED(result)) return result;
    OBO_TOKEN token = {};
    token.Type = OBO_USER;
    result = setup->DeInstall(component.Get(), &token, nullptr);
    return FAILED(result) ? result : netCfg.Apply();
}

HRESULT GetInfField(HINF inf, LPCWSTR section, DWORD field, ScopedTaskMemory<WCHAR>& text) {
    INFCONTEXT line = {};
    DWORD length = 0;
    if (!SetupFindFirstLineW(inf, section, nullptr, &line) ||
        !SetupGetStringFieldW(&line, field, nullptr, 0, &length))
        return LastFailure();
    ScopedTaskMemory<WCHAR> read(static_cast<LPWSTR>(CoTaskMemAlloc(length * sizeof(WCHAR))));
    if (!read) return E_OUTOFMEMORY;
    if (!SetupGetStringFieldW(&line, field, read.Get(), length, nullptr)) return LastFailure();
    text = std::move(read);
    return S_OK;
}
