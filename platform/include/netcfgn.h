#pragma once
// What a component's notify object implements, and what it is given. The methods of each interface
// are in published order.

#include <netcfgx.h>

struct INetCfgComponentControl;
struct INetCfgComponentNotifyBinding;
struct INetCfgComponentNotifyGlobal;
struct INetCfgComponentPropertyUi;
struct INetCfgComponentSetup;
struct INetCfgComponentSysPrep;
struct INetCfgComponentUpperEdge;
struct INetCfgPnpReconfigCallback;
struct INetLanConnectionUiInfo;
struct INetRasConnectionIpUiInfo;

extern const IID IID_INetCfgComponentControl;
extern const IID IID_INetCfgComponentNotifyBinding;
extern const IID IID_INetCfgComponentNotifyGlobal;
extern const IID IID_INetCfgComponentPropertyUi;
extern const IID IID_INetCfgComponentSetup;
extern const IID IID_INetCfgComponentSysPrep;
extern const IID IID_INetCfgComponentUpperEdge;
extern const IID IID_INetCfgPnpReconfigCallback;
extern const IID IID_INetLanConnectionUiInfo;
extern const IID IID_INetRasConnectionIpUiInfo;

enum NCPNP_RECONFIG_LAYER {
    NCRL_NDIS = 1,
    NCRL_TDI = 2,
};

struct INetCfgPnpReconfigCallback : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE SendPnpReconfig(NCPNP_RECONFIG_LAYER layer, LPCWSTR upper,
                                                      LPCWSTR lower, PVOID data, DWORD size) = 0;

  protected:
    ~INetCfgPnpReconfigCallback() = default;
};

struct INetCfgComponentControl : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE Initialize(INetCfgComponent* component, INetCfg* netCfg,
                                                 BOOL installing) = 0;
    virtual HRESULT STDMETHODCALLTYPE ApplyRegistryChanges() = 0;
    virtual HRESULT STDMETHODCALLTYPE ApplyPnpChanges(INetCfgPnpReconfigCallback* callback) = 0;
    virtual HRESULT STDMETHODCALLTYPE CancelChanges() = 0;

  protected:
    ~INetCfgComponentControl() = default;
};

enum NETWORK_INSTALL_TIME {
    NSF_PRIMARYINSTALL = 0x1,
    NSF_POSTSYSINSTALL = 0x2,
};

enum NETWORK_UPGRADE_TYPE {
    NSF_WIN16_UPGRADE = 0x10,
    NSF_WIN95_UPGRADE = 0x20,
    NSF_WINNT_WKS_UPGRADE = 0x40,
    NSF_WINNT_SVR_UPGRADE = 0x80,
    NSF_WINNT_SBS_UPGRADE = 0x100,
    NSF_COMPONENT_UPDATE = 0x200,
};

struct INetCfgComponentSetup : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE Install(DWORD setupFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE Upgrade(DWORD setupFlags, DWORD fromBuild) = 0;
    virtual HRESULT STDMETHODCALLTYPE ReadAnswerFile(LPCWSTR answerFile,
                                                     LPCWSTR answerSections) = 0;
    virtual HRESULT STDMETHODCALLTYPE Removing() = 0;

  protected:
    ~INetCfgComponentSetup() = default;
};

enum DEFAULT_PAGES {
    DPP_ADVANCED = 1,
};

struct INetCfgComponentPropertyUi : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE QueryPropertyUi(IUnknown* reserved) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetContext(IUnknown* context) = 0;
    virtual HRESULT STDMETHODCALLTYPE MergePropPages(DWORD* defaultPages, BYTE** pages, UINT* count,
                                                     HWND parent, LPCWSTR* startPage) = 0;
    virtual HRESULT STDMETHODCALLTYPE ValidateProperties(HWND sheet) = 0;
    virtual HRESULT STDMETHODCALLTYPE ApplyProperties() = 0;
    virtual HRESULT STDMETHODCALLTYPE CancelProperties() = 0;

  protected:
    ~INetCfgComponentPropertyUi() = default;
};

// What happened, and to what.
enum BIND_FLAGS1 {
    NCN_ADD = 0x1,
    NCN_REMOVE = 0x2,
    NCN_UPDATE = 0x4,
    NCN_ENABLE = 0x10,
    NCN_DISABLE = 0x20,
    NCN_BINDING_PATH = 0x100,
    NCN_PROPERTYCHANGE = 0x200,
    NCN_NET = 0x10000,
    NCN_NETTRANS = 0x20000,
    NCN_NETCLIENT = 0x40000,
    NCN_NETSERVICE = 0x80000,
};

struct INetCfgComponentNotifyBinding : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE QueryBindingPath(DWORD change, INetCfgBindingPath* path) = 0;
    virtual HRESULT STDMETHODCALLTYPE NotifyBindingPath(DWORD change, INetCfgBindingPath* path) = 0;

  protected:
    ~INetCfgComponentNotifyBinding() = default;
};

struct INetCfgComponentNotifyGlobal : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetSupportedNotifications(DWORD* notifications) = 0;
    virtual HRESULT STDMETHODCALLTYPE SysQueryBindingPath(DWORD change,
                                                          INetCfgBindingPath* path) = 0;
    virtual HRESULT STDMETHODCALLTYPE SysNotifyBindingPath(DWORD change,
                                                           INetCfgBindingPath* path) = 0;
    virtual HRESULT STDMETHODCALLTYPE SysNotifyComponent(DWORD change,
                                                         INetCfgComponent* component) = 0;

  protected:
    ~INetCfgComponentNotifyGlobal() = default;
};

struct INetCfgComponentUpperEdge : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetInterfaceIdsForAdapter(INetCfgComponent* adapter,
                                                                DWORD* count, GUID** ids) = 0;
    virtual HRESULT STDMETHODCALLTYPE AddInterfacesToAdapter(INetCfgComponent* adapter,
                                                             DWORD count) = 0;
    virtual HRESULT STDMETHODCALLTYPE RemoveInterfacesFromAdapter(INetCfgComponent* adapter,
                                                                  DWORD count, const GUID* ids) = 0;

  protected:
    ~INetCfgComponentUpperEdge() = default;
};

// The context of a property page: the connection.
struct INetLanConnectionUiInfo : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetDeviceGuid(GUID* guid) = 0;

  protected:
    ~INetLanConnectionUiInfo() = default;
};

enum RASCON_UIINFO_FLAGS {
    RCUIF_VPN = 0x1,
    RCUIF_DEMAND_DIAL = 0x2,
    RCUIF_NOT_ADMIN = 0x4,
    RCUIF_USE_IPv4_STATICADDRESS = 0x8,
    RCUIF_USE_IPv4_NAME_SERVERS = 0x10,
    RCUIF_USE_IPv4_REMOTE_GATEWAY = 0x20,
    RCUIF_USE_IPv4_EXPLICIT_METRIC = 0x40,
    RCUIF_USE_HEADER_COMPRESSION = 0x80,
    RCUIF_USE_DISABLE_REGISTER_DNS = 0x100,
    RCUIF_USE_PRIVATE_DNS_SUFFIX = 0x200,
    RCUIF_ENABLE_NBT = 0x400,
    RCUIF_USE_IPv6_STATICADDRESS = 0x800,
    RCUIF_USE_IPv6_NAME_SERVERS = 0x1000,
    RCUIF_USE_IPv6_REMOTE_GATEWAY = 0x2000,
    RCUIF_USE_IPv6_EXPLICIT_METRIC = 0x4000,
    RCUIF_DISABLE_CLASS_BASED_ROUTE = 0x8000,
};

struct RASCON_IPUI {
    GUID guidConnection;
    BOOL fIPv6Cfg;
    DWORD dwFlags;
    WCHAR pszwIpAddr[16];
    WCHAR pszwDnsAddr[16];
    WCHAR pszwDns2Addr[16];
    WCHAR pszwWinsAddr[16];
    WCHAR pszwWins2Addr[16];
    WCHAR pszwDnsSuffix[256];
    WCHAR pszwIpv6Addr[65];
    DWORD dwIpv6PrefixLength;
    WCHAR pszwIpv6DnsAddr[65];
    WCHAR pszwIpv6Dns2Addr[65];
    DWORD dwIPv4InfMetric;
    DWORD dwIPv6InfMetric;
};

struct INetRasConnectionIpUiInfo : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetUiInfo(RASCON_IPUI* info) = 0;

  protected:
    ~INetRasConnectionIpUiInfo() = default;
};

struct INetCfgComponentSysPrep : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE SaveAdapterParameters(INetCfgSysPrep* sysPrep,
                                                            LPCWSTR answerSections,
                                                            GUID* adapter) = 0;
    virtual HRESULT STDMETHODCALLTYPE RestoreAdapterParameters(LPCWSTR answerFile,
                                                               LPCWSTR answerSection,
                                                               GUID* adapter) = 0;

  protected:
    ~INetCfgComponentSysPrep() = default;
};
