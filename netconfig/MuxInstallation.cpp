#include "MuxInstallation.h"

#include <devguid.h>
#include <setupapi.h>
#include <memory>
#include <new>
#include <string_view>

#include "Failure.h"
#include "MuxComponent.h"
#include "MuxRegistry.h"
#include "NetworkSession.h"
#include "RegistryPaths.h"

#include <strsafe.h>

namespace {

constexpr WCHAR kProtocolInf[] = TEXT("\\muxp.inf");
constexpr WCHAR kMiniportInf[] = TEXT("\\mux_mp.inf");
constexpr DWORD kInstalledPathLimit = 260;  // bytes

// By MuxComponentClass.
const GUID* const kClasses[] = {&GUID_DEVCLASS_NETCLIENT, &GUID_DEVCLASS_NETSERVICE,
                                &GUID_DEVCLASS_NETTRANS, &GUID_DEVCLASS_NET};

struct InfTraits {
    using Handle = HINF;
    static inline const Handle none = INVALID_HANDLE_VALUE;
    static void Close(Handle inf) { SetupCloseInfFile(inf); }
};

// A file of the package's directory, whose name can be replaced by the other's.
class PackagePath {
  public:
    bool Allocate(LPCWSTR directory) {
        m_directory = directory;
        m_capacity = std::basic_string_view<WCHAR>(directory).size() + ARRAYSIZE(kMiniportInf);
        m_path.reset(new (std::nothrow) WCHAR[m_capacity]());
        return static_cast<bool>(m_path);
    }
    LPCWSTR Of(LPCWSTR file) const {
        (void)StringCchPrintfW(m_path.get(), m_capacity, TEXT("%s%s"), m_directory, file);
        return m_path.get();
    }

  private:
    LPCWSTR m_directory = nullptr;
    size_t m_capacity = 0;  // characters
    std::unique_ptr<WCHAR[]> m_path;
};

// The id of the component that an INF file installs: the second field in its models section.
HRESULT ReadComponentId(LPCWSTR infPath, ScopedTaskMemory<WCHAR>& componentId) {
    const Scoped<InfTraits> inf(SetupOpenInfFileW(infPath, nullptr, INF_STYLE_WIN4, nullptr));
    if (!inf) return LastFailure();
    ScopedTaskMemory<WCHAR> models;
    const HRESULT result = GetInfField(inf.Get(), TEXT("Manufacturer"), 1, models);
    return result != S_OK ? result : GetInfField(inf.Get(), models.Get(), 2, componentId);
}

HRESULT OpenInstallSession(NetworkSession& session) {
    ScopedTaskMemory<WCHAR> holder;
    const HRESULT result = session.Open(holder);
    if (result == S_OK) return result;
    if (result == NETCFG_E_NO_WRITE_LOCK && holder)
        return Stop(result, "%S currently holds the lock, try later.\n", holder.Get());
    return Stop(result, "Couldn't the get notify object interface.\n");
}

// muxp.inf in the package's directory.
HRESULT MakeProtocolInfPath(WCHAR (&path)[MAX_PATH]) {
    RegistryKey key;
    WCHAR installed[kInstalledPathLimit / sizeof(WCHAR) + 1];
    LONG error = key.Open(kVendorKey, KEY_QUERY_VALUE);
    if (error == ERROR_SUCCESS)
        error = key.ReadText(kInstalledPath, installed, kInstalledPathLimit);
    if (error != ERROR_SUCCESS) return ToResult(error);
    return StringCchPrintfW(path, ARRAYSIZE(path), TEXT("%sVlan_lbfo%s"), installed, kProtocolInf);
}

// Takes the copy of the INF file out of the store. What counts is the name of the copy; without one
// there is nothing to do.
void RemoveFromStore(LPCWSTR infPath) {
    WCHAR copy[MAX_PATH] = {};
    DWORD size = 0;
    LPWSTR file = nullptr;
    (void)SetupCopyOEMInfW(infPath, nullptr, SPOST_PATH, SP_COPY_REPLACEONLY, copy, ARRAYSIZE(copy),
                           &size, &file);
    if (file && !SetupUninstallOEMInfW(file, SUOI_FORCEDELETE, nullptr))
        PrintDiagnostic("Uninstalled failed . Error0x%x\n", Code(LastFailure()));
}

}  // namespace

HRESULT InstallMuxComponent(LPCWSTR directory, DWORD classIndex) {
    if (!directory) return Stop(E_INVALIDARG, "Missing INF file....\n");
    if (classIndex >= ARRAYSIZE(kClasses)) return E_INVALIDARG;
    PackagePath path;
    if (!path.Allocate(directory))
        return Stop(ToResult(ERROR_NOT_ENOUGH_MEMORY), "Error allocating memory\n");
    const LPCWSTR protocolInf = path.Of(kProtocolInf);
    ScopedTaskMemory<WCHAR> componentId;
    HRESULT result = ReadComponentId(protocolInf, componentId);
    if (FAILED(result))
        return Stop(result, "Error reading the INF file %S. Error=0x%x", protocolInf, Code(result));

    NetworkSession session(kInstallSession);
    result = OpenInstallSession(session);
    if (result != S_OK) return result;
    GUID guid = {};
    result = GetOurGuid(session.Components(), guid);
    if (FAILED(result)) return Stop(result, "GetOurGuid failed hr =0x%x\n", Code(result));
    if (!IsEqualGUID(guid, GUID{}))
        return Stop(S_OK,
                    "Warning we already have a Corvanta vlan installed quiting without doing "
                    "anything\n");
    result = InstallSpecifiedComponent(session.NetCfg(), protocolInf, componentId.Get(),
                                       *kClasses[classIndex]);
    componentId.Reset();
    if (FAILED(result))
        return Stop(result, "InstallSpecifiedComponent failed hr =0x%x\n", Code(result));
    if (!SetupCopyOEMInfW(path.Of(kMiniportInf), nullptr, SPOST_PATH, 0, nullptr, 0, nullptr,
                          nullptr)) {
        result = LastFailure();
        PrintDiagnostic("SetupCopyOEMInfW returned hr = 0x%x\n", Code(result));
    }
    return result;
}

HRESULT UninstallMuxComponent() {
    NetworkSession session(kInstallSession);
    HRESULT result = OpenInstallSession(session);
    if (result != S_OK) return result;
    WCHAR path[MAX_PATH];
    result = MakeProtocolInfPath(path);
    if (FAILED(result)) return result;
    RemoveFromStore(path);
    result = RemoveMuxComponent(session.NetCfg());
    if (FAILED(result)) PrintDiagnostic("Uninstalled failed . Error0x%x\n", Code(result));
    return result;
}

void UninstallMuxIfUnused() {
    RegistryKey devices;
    if (devices.Open(TEXT("SYSTEM\\CurrentControlSet\\Services\\MUXMP\\Enum"), KEY_QUERY_VALUE) !=
        ERROR_SUCCESS)
        return;
    DWORD count = 0;  // kept when it can't be read
    (void)devices.ReadDword(TEXT("Count"), count);
    if (count == 0) (void)UninstallMuxComponent();
}
