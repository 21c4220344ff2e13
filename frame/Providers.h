#pragma once
// The exported property page providers, called by the device manager on the sheet's thread.

#include <windows.h>
#include <prsht.h>
#include <setupapi.h>

// Adds the tabs of a network adapter. True when the adapter was identified, whatever became of the
// single tabs. Only for requests of the kind SPPSR_ENUM_ADV_DEVICE_PROPERTIES.
extern "C" BOOL WINAPI WinTsrTunePropPageProvider(SP_PROPSHEETPAGE_REQUEST* request,
                                                  LPFNADDPROPSHEETPAGE addPage,
                                                  LPARAM addPageParameter);

// Serves the device that carries the ports of a card. True when its tab was handed over.
extern "C" BOOL WINAPI CvtPropPageProvider(SP_PROPSHEETPAGE_REQUEST* request,
                                           LPFNADDPROPSHEETPAGE addPage, LPARAM addPageParameter);
