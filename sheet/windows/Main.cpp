// The device manager over the computer that it runs on: opens the sheet of a device for a person,
// or follows a script in that person's place.

#include <windows.h>
#include <commctrl.h>
#include <fcntl.h>
#include <io.h>
#include <shellapi.h>

#include <filesystem>
#include <fstream>
#include <iostream>

#include "../CommandTable.h"
#include "../DeviceManager.h"
#include "../Transcript.h"
#include "Lending.h"
#include "WindowsUser.h"

namespace sheet {

namespace {

constexpr int kExitRefused = 2;

struct Options {
    std::optional<std::string> device;
    std::optional<std::string> script;  // "-" for standard input
    std::optional<std::string> lend;
    std::optional<std::string> started;  // a file to make, so that others know that this runs
};

constexpr struct {
    const char* name;
    std::optional<std::string> Options::*value;
} kOptions[] = {
    {"--device", &Options::device},
    {"--script", &Options::script},
    {"--lend", &Options::lend},
    {"--started", &Options::started},
};

Options ReadArguments() {
    int count = 0;
    WCHAR** const words = CommandLineToArgvW(GetCommandLineW(), &count);
    const std::vector<Text> arguments(words + 1, words + count);
    LocalFree(words);
    Options options;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string name = ToUtf8(arguments[i]);
        std::optional<std::string> Options::*value = nullptr;
        for (const auto& option : kOptions) {
            if (name == option.name) value = option.value;
        }
        if (value == nullptr)
            throw Refusal{
                "usage: sheet [--device INSTANCE-ID] [--script FILE|-] [--lend DLL] "
                "[--started FILE]"};
        if (++i == arguments.size()) throw Refusal{name + " needs a value"};
        options.*value = ToUtf8(arguments[i]);
    }
    return options;
}

int Show(const std::optional<Text>& instanceId) {
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

int Follow(const std::string& path, const std::optional<Text>& instanceId) {
    std::ifstream file;
    const bool fromFile = path != "-";
    if (fromFile) {
        file.open(std::filesystem::path(FromUtf8(path)));
        if (!file) throw Refusal{path + ": can't be read"};
    }
    Script script(fromFile ? static_cast<std::istream&>(file) : std::cin,
                  fromFile ? path : "standard input", Script::Echo::None);
    Session session(script, Execute);
    const User user(session);
    return session.Run(instanceId);
}

int Run(const Options& options) {
    if (options.started) std::ofstream(std::filesystem::path(FromUtf8(*options.started)));
    INITCOMMONCONTROLSEX controls = {sizeof(controls),
                                     ICC_STANDARD_CLASSES | ICC_LISTVIEW_CLASSES | ICC_TAB_CLASSES};
    InitCommonControlsEx(&controls);
    if (options.lend) LendFrom(FromUtf8(*options.lend));
    const auto device = options.device ? std::optional(FromUtf8(*options.device)) : std::nullopt;
    return options.script ? Follow(*options.script, device) : Show(device);
}

}  // namespace

}  // namespace sheet

int main() {
    // Lines of a transcript end alike on every system.
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
    try {
        return sheet::Run(sheet::ReadArguments());
    } catch (const sheet::Refusal& refusal) {
        sheet::PrintRefusal(refusal.reason);
        return sheet::kExitRefused;
    }
}
