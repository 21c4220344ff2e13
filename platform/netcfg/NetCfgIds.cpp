// The ids of the network configuration engine and of its notify objects, and the device classes of
// network components. Where there is a real Windows they come with its SDK.

#include <devguid.h>
#include <netcfgn.h>
#include <netcfgx.h>

#include "Com.h"
#include "NetCfgObjects.h"

namespace platform {
namespace {

// {C0E8AE90-306E-11D1-AACF-00805FC1270E} and the ids next to it
constexpr GUID EngineId(DWORD first) {
    return {first, 0x306E, 0x11D1, {0xAA, 0xCF, 0x00, 0x80, 0x5F, 0xC1, 0x27, 0x0E}};
}

// {932238DF-BEA1-11D0-9298-00C04FC99DCF} and the ids next to it
constexpr GUID NotifyId(DWORD first) {
    return {first, 0xBEA1, 0x11D0, {0x92, 0x98, 0x00, 0xC0, 0x4F, 0xC9, 0x9D, 0xCF}};
}

// {4D36E972-E325-11CE-BFC1-08002BE10318} and the ids next to it
constexpr GUID ClassId(DWORD first) {
    return {first, 0xE325, 0x11CE, {0xBF, 0xC1, 0x08, 0x00, 0x2B, 0xE1, 0x03, 0x18}};
}

}  // namespace
}  // namespace platform

extern const IID IID_IEnumNetCfgBindingInterface = platform::EngineId(0xC0E8AE90);
extern const IID IID_IEnumNetCfgBindingPath = platform::EngineId(0xC0E8AE91);
extern const IID IID_IEnumNetCfgComponent = platform::EngineId(0xC0E8AE92);
extern const IID IID_INetCfg = platform::EngineId(0xC0E8AE93);
extern const IID IID_INetCfgBindingInterface = platform::EngineId(0xC0E8AE94);
extern const IID IID_INetCfgBindingPath = platform::EngineId(0xC0E8AE96);
extern const IID IID_INetCfgClass = platform::EngineId(0xC0E8AE97);
extern const IID IID_INetCfgSysPrep = platform::EngineId(0xC0E8AE98);
extern const IID IID_INetCfgComponent = platform::EngineId(0xC0E8AE99);
extern const IID IID_INetCfgComponentSysPrep = platform::EngineId(0xC0E8AE9A);
extern const IID IID_INetCfgClassSetup = platform::EngineId(0xC0E8AE9D);
extern const IID IID_INetCfgComponentBindings = platform::EngineId(0xC0E8AE9E);
extern const IID IID_INetCfgLock = platform::EngineId(0xC0E8AE9F);
extern const IID IID_INetCfgClassSetup2 = platform::EngineId(0xC0E8AEA0);

extern const IID IID_INetCfgComponentControl = platform::NotifyId(0x932238DF);
extern const IID IID_INetCfgComponentPropertyUi = platform::NotifyId(0x932238E0);
extern const IID IID_INetCfgComponentNotifyBinding = platform::NotifyId(0x932238E1);
extern const IID IID_INetCfgComponentNotifyGlobal = platform::NotifyId(0x932238E2);
extern const IID IID_INetCfgComponentSetup = platform::NotifyId(0x932238E3);
extern const IID IID_INetCfgComponentUpperEdge = platform::NotifyId(0x932238E4);
// {8D84BD35-E227-11D2-B700-00A0C98A6A85}
extern const IID IID_INetCfgPnpReconfigCallback = {
    0x8D84BD35, 0xE227, 0x11D2, {0xB7, 0x00, 0x00, 0xA0, 0xC9, 0x8A, 0x6A, 0x85}};
// {C08956A6-1CD3-11D1-B1C5-00805FC1270E}
extern const IID IID_INetLanConnectionUiInfo = {
    0xC08956A6, 0x1CD3, 0x11D1, {0xB1, 0xC5, 0x00, 0x80, 0x5F, 0xC1, 0x27, 0x0E}};
// {FAEDCF58-31FE-11D1-AAD2-00805FC1270E}
extern const IID IID_INetRasConnectionIpUiInfo = {
    0xFAEDCF58, 0x31FE, 0x11D1, {0xAA, 0xD2, 0x00, 0x80, 0x5F, 0xC1, 0x27, 0x0E}};

extern const GUID GUID_DEVCLASS_NET = platform::ClassId(0x4D36E972);
extern const GUID GUID_DEVCLASS_NETCLIENT = platform::ClassId(0x4D36E973);
extern const GUID GUID_DEVCLASS_NETSERVICE = platform::ClassId(0x4D36E974);
extern const GUID GUID_DEVCLASS_NETTRANS = platform::ClassId(0x4D36E975);

// {5B035261-40F9-11D1-AAEC-00805FC1270E}
extern const CLSID CLSID_CNetCfg = {
    0x5B035261, 0x40F9, 0x11D1, {0xAA, 0xEC, 0x00, 0x80, 0x5F, 0xC1, 0x27, 0x0E}};

namespace platform {
namespace {

const ComClass netCfgClass(CLSID_CNetCfg, CreateNetCfg);

}  // namespace
}  // namespace platform
