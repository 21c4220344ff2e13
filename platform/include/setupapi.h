#pragma once
// Device installation: lists of devices, their interfaces and their state; INF files and their
// store.

#include <guiddef.h>
#include <minwindef.h>

using HDEVINFO = PVOID;
using HINF = PVOID;
using DI_FUNCTION = UINT;

#define SP_MAX_MACHINENAME_LENGTH (MAX_PATH + 3)

struct SP_DEVINFO_DATA {
    DWORD cbSize;
    GUID ClassGuid;
    DWORD DevInst;
    ULONG_PTR Reserved;
};
using PSP_DEVINFO_DATA = SP_DEVINFO_DATA*;

struct SP_DEVICE_INTERFACE_DATA {
    DWORD cbSize;
    GUID InterfaceClassGuid;
    DWORD Flags;
    ULONG_PTR Reserved;
};
using PSP_DEVICE_INTERFACE_DATA = SP_DEVICE_INTERFACE_DATA*;

struct SP_DEVICE_INTERFACE_DETAIL_DATA_W {
    DWORD cbSize;
    WCHAR DevicePath[1];
};
using PSP_DEVICE_INTERFACE_DETAIL_DATA_W = SP_DEVICE_INTERFACE_DETAIL_DATA_W*;

struct SP_DEVINFO_LIST_DETAIL_DATA_W {
    DWORD cbSize;
    GUID ClassGuid;
    HANDLE RemoteMachineHandle;
    WCHAR RemoteMachineName[SP_MAX_MACHINENAME_LENGTH];
};
using PSP_DEVINFO_LIST_DETAIL_DATA_W = SP_DEVINFO_LIST_DETAIL_DATA_W*;

struct SP_CLASSINSTALL_HEADER {
    DWORD cbSize;
    DI_FUNCTION InstallFunction;
};
using PSP_CLASSINSTALL_HEADER = SP_CLASSINSTALL_HEADER*;

struct SP_PROPCHANGE_PARAMS {
    SP_CLASSINSTALL_HEADER ClassInstallHeader;
    DWORD StateChange;
    DWORD Scope;
    DWORD HwProfile;
};
using PSP_PROPCHANGE_PARAMS = SP_PROPCHANGE_PARAMS*;

struct SP_PROPSHEETPAGE_REQUEST {
    DWORD cbSize;
    DWORD PageRequested;
    HDEVINFO DeviceInfoSet;
    PSP_DEVINFO_DATA DeviceInfoData;
};
using PSP_PROPSHEETPAGE_REQUEST = SP_PROPSHEETPAGE_REQUEST*;

#define SPPSR_SELECT_DEVICE_RESOURCES 1
#define SPPSR_ENUM_BASIC_DEVICE_PROPERTIES 2
#define SPPSR_ENUM_ADV_DEVICE_PROPERTIES 3

#define DIF_PROPERTYCHANGE 0x00000012
#define DICS_ENABLE 0x00000001
#define DICS_DISABLE 0x00000002
#define DICS_FLAG_GLOBAL 0x00000001
#define DICS_FLAG_CONFIGSPECIFIC 0x00000002

#define DIGCF_PRESENT 0x00000002
#define DIGCF_ALLCLASSES 0x00000004
#define DIGCF_DEVICEINTERFACE 0x00000010

#define ERROR_CLASS_MISMATCH 0xE0000201U
#define ERROR_NO_SUCH_DEVINST 0xE000020BU
#define ERROR_NO_CLASSINSTALL_PARAMS 0xE0000215U
#define ERROR_NO_SUCH_DEVICE_INTERFACE 0xE0000225U

HDEVINFO WINAPI SetupDiCreateDeviceInfoList(const GUID* classGuid, HWND parent);
HDEVINFO WINAPI SetupDiCreateDeviceInfoListExW(const GUID* classGuid, HWND parent,
                                               PCWSTR machineName, PVOID reserved);
HDEVINFO WINAPI SetupDiGetClassDevsW(const GUID* classGuid, PCWSTR enumerator, HWND parent,
                                     DWORD flags);
BOOL WINAPI SetupDiDestroyDeviceInfoList(HDEVINFO list);
BOOL WINAPI SetupDiGetDeviceInfoListDetailW(HDEVINFO list, PSP_DEVINFO_LIST_DETAIL_DATA_W detail);

BOOL WINAPI SetupDiOpenDeviceInfoW(HDEVINFO list, PCWSTR instanceId, HWND parent, DWORD flags,
                                   PSP_DEVINFO_DATA device);
BOOL WINAPI SetupDiEnumDeviceInfo(HDEVINFO list, DWORD index, PSP_DEVINFO_DATA device);
BOOL WINAPI SetupDiGetDeviceInstanceIdW(HDEVINFO list, PSP_DEVINFO_DATA device, PWSTR instanceId,
                                        DWORD instanceIdSize, PDWORD requiredSize);

BOOL WINAPI SetupDiCreateDeviceInterfaceW(HDEVINFO list, PSP_DEVINFO_DATA device,
                                          const GUID* interfaceClass, PCWSTR referenceString,
                                          DWORD flags, PSP_DEVICE_INTERFACE_DATA deviceInterface);
BOOL WINAPI SetupDiGetDeviceInterfaceDetailW(HDEVINFO list,
                                             PSP_DEVICE_INTERFACE_DATA deviceInterface,
                                             PSP_DEVICE_INTERFACE_DETAIL_DATA_W detail,
                                             DWORD detailSize, PDWORD requiredSize,
                                             PSP_DEVINFO_DATA device);

BOOL WINAPI SetupDiSetClassInstallParamsW(HDEVINFO list, PSP_DEVINFO_DATA device,
                                          PSP_CLASSINSTALL_HEADER parameters, DWORD size);
BOOL WINAPI SetupDiCallClassInstaller(DI_FUNCTION function, HDEVINFO list, PSP_DEVINFO_DATA device);

// Where a line of an INF file is.
struct INFCONTEXT {
    PVOID Inf;
    PVOID CurrentInf;
    UINT Section;
    UINT Line;
};
using PINFCONTEXT = INFCONTEXT*;

#define INF_STYLE_WIN4 0x00000002
#define SPOST_PATH 1
#define SP_COPY_REPLACEONLY 0x0000002
#define SUOI_FORCEDELETE 0x00000001

#define ERROR_EXPECTED_SECTION_NAME 0xE0000000U
#define ERROR_BAD_SECTION_NAME_LINE 0xE0000001U
#define ERROR_SECTION_NAME_TOO_LONG 0xE0000002U
#define ERROR_WRONG_INF_STYLE 0xE0000100U
#define ERROR_LINE_NOT_FOUND 0xE0000102U
#define ERROR_NOT_AN_INSTALLED_OEM_INF 0xE000023CU

HINF WINAPI SetupOpenInfFileW(PCWSTR fileName, PCWSTR infClass, DWORD style, PUINT errorLine);
void WINAPI SetupCloseInfFile(HINF inf);
BOOL WINAPI SetupFindFirstLineW(HINF inf, PCWSTR section, PCWSTR key, PINFCONTEXT context);
// Field 0 is the line's key. `required` counts characters with the terminator.
BOOL WINAPI SetupGetStringFieldW(PINFCONTEXT context, DWORD field, PWSTR buffer, DWORD capacity,
                                 PDWORD required);
BOOL WINAPI SetupCopyOEMInfW(PCWSTR source, PCWSTR mediaLocation, DWORD mediaType, DWORD copyStyle,
                             PWSTR destination, DWORD capacity, PDWORD required, PWSTR* component);
BOOL WINAPI SetupUninstallOEMInfW(PCWSTR fileName, DWORD flags, PVOID reserved);
