#include "Providers.h"

#include "../resources/resource.h"
#include "DeviceIdentity.h"
#include "PortProtocolPage.h"
#include "PropertyPages.h"

namespace {

// In the order of the tabs. An adder that fails doesn't stop the next.
constexpr bool (*kAdders[])(AdapterTabs&) = {
    AddInformationPage,
    AddPerformancePage,
    AddVlanPage,
};

}  // namespace

extern "C" BOOL WINAPI WinTsrTunePropPageProvider(SP_PROPSHEETPAGE_REQUEST* request,
                                                  LPFNADDPROPSHEETPAGE addPage,
                                                  LPARAM addPageParameter) {
    if (!request || request->PageRequested != SPPSR_ENUM_ADV_DEVICE_PROPERTIES ||
        !request->DeviceInfoSet || !request->DeviceInfoData)
        return FALSE;

    AdapterTabs tabs = {{addPage, addPageParameter}, {}, {}, {}};
    if (!GetDeviceInterfaceDetail(*request, tabs.interfaceDetail, tabs.identity, tabs.flags))
        return FALSE;
    for (const auto add : kAdders)
        add(tabs);
    return TRUE;
}

extern "C" BOOL WINAPI CvtPropPageProvider(SP_PROPSHEETPAGE_REQUEST* request,
                                           LPFNADDPROPSHEETPAGE addPage, LPARAM addPageParameter) {
    BusDevice bus;
    if (!request || !IdentifyBusDevice(*request, bus)) return FALSE;
    return AddSheetPage(
        {addPage, addPageParameter},
        {IDD_PORT_PROTOCOL, PSP_USECALLBACK | PSP_USEICONID, kPortProtocolProcedures},
        NewPortProtocolPage(bus.classKeyPath, bus.instanceId, *request->DeviceInfoData));
}
