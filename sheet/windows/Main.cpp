// The device manager over the computer that it runs on: opens the sheet of a device for a person.

#include <windows.h>
#include <commctrl.h>
#include <shellapi.h>

#include "../DeviceManager.h"
#include "../Transcript.h"

namespace sheet {

namespace {

constexpr int kExitRefused = 2;

std::vector<std::string> Arguments() {
    int count = 0;
    WCHAR** const words = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> arguments;
    for (int i = 1; i < count; ++i)
        arguments.push_back(ToUtf8(words[i]));
    LocalFree(words);
    return arguments;
}

// The value of --device, if it is given.
std::optional<Text> DeviceArgument(const std::vector<std::string>& arguments) {
    std::optional<Text> device;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (arguments[i] == "--script")
            throw Refusal{"scripts run on a machine file only, not on this computer's devices"};
        if (arguments[i] != "--device") throw Refusal{"usage: sheet [--device INSTANCE-ID]"};
        if (++i == arguments.size()) throw Refusal{"--device needs a value"};
        device = FromUtf8(arguments[i]);
    }
    return device;
}

int Run(const std::optional<Text>& instanceId) {
    INITCOMMONCONTROLSEX controls = {sizeof(controls),
                                     ICC_STANDARD_CLASSES | ICC_LISTVIEW_CLASSES | ICC_TAB_CLASSES};
    InitCommonControlsEx(&controls);
    DeviceManager devices;
    const std::optional<Device> device = instanceId ? devices.Find(*instanceId) : devices.First();
    if (!device) {
        throw Refusal{instanceId ? "there is no device " + ToUtf8(*instanceId)
                                 : "there is no network adapter"};
    }
    Sheets sheets;
    sheets.Add(std::make_unique<Sheet>(*device, devices.LoadProvider(device->provider)));
    if (!sheets.Current()->HasTabs())
        Print("the device " + ToUtf8(device->instanceId) + " has no tabs\n");
    MSG message;
    while (sheets.Current() != nullptr && sheets.Current()->HasTabs() &&
           GetMessageW(&message, nullptr, 0, 0) > 0) {
        sheets.Dispatch(message);
        sheets.CloseFinished();
    }
    return 0;
}

}  // namespace

}  // namespace sheet

int main() {
    try {
        return sheet::Run(sheet::DeviceArgument(sheet::Arguments()));
    } catch (const sheet::Refusal& refusal) {
        sheet::PrintRefusal(refusal.reason);
        return sheet::kExitRefused;
    }
}
