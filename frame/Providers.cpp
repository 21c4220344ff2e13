#include "Providers.h"

#include <new>

#include "../resources/resource.h"
#include "AdapterIdentity.h"
#include "PortProtocolPage.h"
#include "PropertyPages.h"

namespace {

// In the order of the tabs. An adder that fails doesn't stop the next.
constexpr bool (*kAdders[])(AdapterTabs&) = {
    AddInformationPage,
    AddPerformancePage,
};

}  // namespace

extern "C" BOOL WINAPI WinTsrTunePropPageProvider(SP_PROPSHEETPAGE_REQUEST* request,
                                                  LPFNADDPROPSHEETPAGE addPage,
                                                  LPARAM addPageParameter) {
    if (!request || request->PageRequested != SPPSR_ENUM_ADV_DEVICE_PROPERTIES ||
        !request->DeviceInfoSet || !request->DeviceInfoData)
        return FALSE;

    AdapterTabs tabs = {{addPage, addPageParameter}, {}, {}, {}};
    tabs.context.reset(new (std::nothrow) AdapterContext);
    if (!tabs.context) return FALSE;
    tabs.flags.reset(new (std::nothrow) AdapterFlags);
    if (!tabs.flags) return FALSE;
    if (!GetDeviceInterfaceDetail(*request, tabs.interfaceDetail, *tabs.context, *tabs.flags))
        return FALSE;
    for (const auto add : kAdders)
        add(tabs);
    return TRUE;
}

extern "C" BOOL WINAPI CvtPropPageProvider(SP_PROPSHEETPAGE_REQUEST* request,
                                           LPFNADDPROPSHEETPAGE addPage, LPARAM addPageParameter) {
    BusDevice bus;
    if (!request || !IdentifyBusDevice(*request, bus)) return FALSE;
    const PageForm form = {IDD_PORT_PROTOCOL, PSP_USECALLBACK | PSP_USEICONID,
                           PortProtocolDialogProc, PortProtocolPageCallback};
    return AddSheetPage(
        {addPage, addPageParameter}, form,
        NewPortProtocolPage(bus.classKeyPath, bus.instanceId, *request->DeviceInfoData));
}
