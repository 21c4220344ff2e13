#pragma once
// The network configuration engine: components, their bindings, and the write lock. The methods of
// each interface are in published order.

#include <unknwn.h>
#include <winerror.h>

#define NETCFG_E_ALREADY_INITIALIZED static_cast<HRESULT>(0x8004A020)
#define NETCFG_E_NOT_INITIALIZED static_cast<HRESULT>(0x8004A021)
#define NETCFG_E_IN_USE static_cast<HRESULT>(0x8004A022)
#define NETCFG_E_NO_WRITE_LOCK static_cast<HRESULT>(0x8004A024)
#define NETCFG_E_NEED_REBOOT static_cast<HRESULT>(0x8004A025)
#define NETCFG_E_ADAPTER_NOT_FOUND static_cast<HRESULT>(0x8004A027)
#define NETCFG_S_REBOOT static_cast<HRESULT>(0x0004A020)

struct IEnumNetCfgBindingInterface;
struct IEnumNetCfgBindingPath;
struct IEnumNetCfgComponent;
struct INetCfg;
struct INetCfgBindingInterface;
struct INetCfgBindingPath;
struct INetCfgClass;
struct INetCfgClassSetup;
struct INetCfgClassSetup2;
struct INetCfgComponent;
struct INetCfgComponentBindings;
struct INetCfgLock;
struct INetCfgSysPrep;

extern const CLSID CLSID_CNetCfg;
extern const IID IID_IEnumNetCfgBindingInterface;
extern const IID IID_IEnumNetCfgBindingPath;
extern const IID IID_IEnumNetCfgComponent;
extern const IID IID_INetCfg;
extern const IID IID_INetCfgBindingInterface;
extern const IID IID_INetCfgBindingPath;
extern const IID IID_INetCfgClass;
extern const IID IID_INetCfgClassSetup;
extern const IID IID_INetCfgClassSetup2;
extern const IID IID_INetCfgComponent;
extern const IID IID_INetCfgComponentBindings;
extern const IID IID_INetCfgLock;
extern const IID IID_INetCfgSysPrep;

struct IEnumNetCfgBindingInterface : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE Next(ULONG count, INetCfgBindingInterface** items,
                                           ULONG* fetched) = 0;
    virtual HRESULT STDMETHODCALLTYPE Skip(ULONG count) = 0;
    virtual HRESULT STDMETHODCALLTYPE Reset() = 0;
    virtual HRESULT STDMETHODCALLTYPE Clone(IEnumNetCfgBindingInterface** copy) = 0;

  protected:
    ~IEnumNetCfgBindingInterface() = default;
};

struct IEnumNetCfgBindingPath : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE Next(ULONG count, INetCfgBindingPath** items,
                                           ULONG* fetched) = 0;
    virtual HRESULT STDMETHODCALLTYPE Skip(ULONG count) = 0;
    virtual HRESULT STDMETHODCALLTYPE Reset() = 0;
    virtual HRESULT STDMETHODCALLTYPE Clone(IEnumNetCfgBindingPath** copy) = 0;

  protected:
    ~IEnumNetCfgBindingPath() = default;
};

struct IEnumNetCfgComponent : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE Next(ULONG count, INetCfgComponent** items,
                                           ULONG* fetched) = 0;
    virtual HRESULT STDMETHODCALLTYPE Skip(ULONG count) = 0;
    virtual HRESULT STDMETHODCALLTYPE Reset() = 0;
    virtual HRESULT STDMETHODCALLTYPE Clone(IEnumNetCfgComponent** copy) = 0;

  protected:
    ~IEnumNetCfgComponent() = default;
};

struct INetCfg : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE Initialize(PVOID reserved) = 0;
    virtual HRESULT STDMETHODCALLTYPE Uninitialize() = 0;
    virtual HRESULT STDMETHODCALLTYPE Apply() = 0;
    virtual HRESULT STDMETHODCALLTYPE Cancel() = 0;
    virtual HRESULT STDMETHODCALLTYPE EnumComponents(const GUID* classGuid,
                                                     IEnumNetCfgComponent** components) = 0;
    virtual HRESULT STDMETHODCALLTYPE FindComponent(LPCWSTR componentId,
                                                    INetCfgComponent** component) = 0;
    virtual HRESULT STDMETHODCALLTYPE QueryNetCfgClass(const GUID* classGuid, REFIID interfaceId,
                                                       void** object) = 0;

  protected:
    ~INetCfg() = default;
};

struct INetCfgLock : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE AcquireWriteLock(DWORD timeout, LPCWSTR client,
                                                       LPWSTR* holder) = 0;
    virtual HRESULT STDMETHODCALLTYPE ReleaseWriteLock() = 0;
    virtual HRESULT STDMETHODCALLTYPE IsWriteLocked(LPWSTR* holder) = 0;

  protected:
    ~INetCfgLock() = default;
};

struct INetCfgBindingInterface : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetName(LPWSTR* name) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetUpperComponent(INetCfgComponent** component) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetLowerComponent(INetCfgComponent** component) = 0;

  protected:
    ~INetCfgBindingInterface() = default;
};

struct INetCfgBindingPath : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE IsSamePathAs(INetCfgBindingPath* path) = 0;
    virtual HRESULT STDMETHODCALLTYPE IsSubPathOf(INetCfgBindingPath* path) = 0;
    virtual HRESULT STDMETHODCALLTYPE IsEnabled() = 0;
    virtual HRESULT STDMETHODCALLTYPE Enable(BOOL enable) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetPathToken(LPWSTR* token) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetOwner(INetCfgComponent** owner) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetDepth(ULONG* count) = 0;
    virtual HRESULT STDMETHODCALLTYPE
    EnumBindingInterfaces(IEnumNetCfgBindingInterface** interfaces) = 0;

  protected:
    ~INetCfgBindingPath() = default;
};

struct INetCfgClass : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE FindComponent(LPCWSTR componentId,
                                                    INetCfgComponent** component) = 0;
    virtual HRESULT STDMETHODCALLTYPE EnumComponents(IEnumNetCfgComponent** components) = 0;

  protected:
    ~INetCfgClass() = default;
};

enum OBO_TOKEN_TYPE {
    OBO_USER = 1,
    OBO_COMPONENT = 2,
    OBO_SOFTWARE = 3,
};

// On whose behalf a component is installed.
struct OBO_TOKEN {
    OBO_TOKEN_TYPE Type;
    INetCfgComponent* pncc;
    LPCWSTR pszwManufacturer;
    LPCWSTR pszwProduct;
    LPCWSTR pszwDisplayName;
    BOOL fRegistered;
};

struct INetCfgClassSetup : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE SelectAndInstall(HWND parent, OBO_TOKEN* token,
                                                       INetCfgComponent** component) = 0;
    virtual HRESULT STDMETHODCALLTYPE Install(LPCWSTR componentId, OBO_TOKEN* token, DWORD flags,
                                              DWORD fromBuild, LPCWSTR answerFile,
                                              LPCWSTR answerSections,
                                              INetCfgComponent** component) = 0;
    virtual HRESULT STDMETHODCALLTYPE DeInstall(INetCfgComponent* component, OBO_TOKEN* token,
                                                LPWSTR* references) = 0;

  protected:
    ~INetCfgClassSetup() = default;
};

struct INetCfgClassSetup2 : INetCfgClassSetup {
    virtual HRESULT STDMETHODCALLTYPE UpdateNonEnumeratedComponent(INetCfgComponent* component,
                                                                   DWORD flags,
                                                                   DWORD fromBuild) = 0;

  protected:
    ~INetCfgClassSetup2() = default;
};

struct INetCfgComponent : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetDisplayName(LPWSTR* name) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetDisplayName(LPCWSTR name) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetHelpText(LPWSTR* text) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetId(LPWSTR* id) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetCharacteristics(DWORD* characteristics) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetInstanceGuid(GUID* guid) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetPnpDevNodeId(LPWSTR* nodeId) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetClassGuid(GUID* guid) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetBindName(LPWSTR* name) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetDeviceStatus(ULONG* status) = 0;
    virtual HRESULT STDMETHODCALLTYPE OpenParamKey(HKEY* key) = 0;
    virtual HRESULT STDMETHODCALLTYPE RaisePropertyUi(HWND parent, DWORD flags,
                                                      IUnknown* context) = 0;

  protected:
    ~INetCfgComponent() = default;
};

// Flags of EnumBindingPaths.
enum ENUM_BINDING_PATHS_FLAGS {
    EBP_ABOVE = 0x1,
    EBP_BELOW = 0x2,
};

struct INetCfgComponentBindings : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE BindTo(INetCfgComponent* component) = 0;
    virtual HRESULT STDMETHODCALLTYPE UnbindFrom(INetCfgComponent* component) = 0;
    virtual HRESULT STDMETHODCALLTYPE SupportsBindingInterface(DWORD flags, LPCWSTR name) = 0;
    virtual HRESULT STDMETHODCALLTYPE IsBoundTo(INetCfgComponent* component) = 0;
    virtual HRESULT STDMETHODCALLTYPE IsBindableTo(INetCfgComponent* component) = 0;
    virtual HRESULT STDMETHODCALLTYPE EnumBindingPaths(DWORD flags,
                                                       IEnumNetCfgBindingPath** paths) = 0;
    virtual HRESULT STDMETHODCALLTYPE MoveBefore(INetCfgBindingPath* moved,
                                                 INetCfgBindingPath* place) = 0;
    virtual HRESULT STDMETHODCALLTYPE MoveAfter(INetCfgBindingPath* moved,
                                                INetCfgBindingPath* place) = 0;

  protected:
    ~INetCfgComponentBindings() = default;
};

struct INetCfgSysPrep : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE HrSetupSetFirstDword(LPCWSTR section, LPCWSTR key,
                                                           DWORD value) = 0;
    virtual HRESULT STDMETHODCALLTYPE HrSetupSetFirstString(LPCWSTR section, LPCWSTR key,
                                                            LPCWSTR value) = 0;
    virtual HRESULT STDMETHODCALLTYPE HrSetupSetFirstStringAsBool(LPCWSTR section, LPCWSTR key,
                                                                  BOOL value) = 0;
    virtual HRESULT STDMETHODCALLTYPE HrSetupSetFirstMultiSzField(LPCWSTR section, LPCWSTR key,
                                                                  LPCWSTR value) = 0;

  protected:
    ~INetCfgSysPrep() = default;
};
