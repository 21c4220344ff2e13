#pragma once
// A page provider's request for one device of the machine.

#include <gtest/gtest.h>

#include <string>

#include <setupapi.h>

#include "Call.h"

class DeviceRequest {
  public:
    explicit DeviceRequest(const std::u16string& instanceId) {
        const platform::QuietScope quiet;
        device.cbSize = sizeof(device);
        list = SetupDiCreateDeviceInfoList(nullptr, nullptr);
        EXPECT_TRUE(SetupDiOpenDeviceInfoW(list, instanceId.c_str(), nullptr, 0, &device));
        request.cbSize = sizeof(request);
        request.PageRequested = SPPSR_ENUM_ADV_DEVICE_PROPERTIES;
        request.DeviceInfoSet = list;
        request.DeviceInfoData = &device;
    }
    ~DeviceRequest() {
        const platform::QuietScope quiet;
        SetupDiDestroyDeviceInfoList(list);
    }
    DeviceRequest(const DeviceRequest&) = delete;
    DeviceRequest& operator=(const DeviceRequest&) = delete;

    HDEVINFO list = nullptr;
    SP_DEVINFO_DATA device{};
    SP_PROPSHEETPAGE_REQUEST request{};
};
