#include "DeviceManager.h"

#include <commctrl.h>

#include <algorithm>

#include "RegistryAccess.h"
#include "Seam.h"
#include "Transcript.h"

namespace sheet {

namespace {

const Text kEnum = TEXT("SYSTEM\\CurrentControlSet\\Enum");
const Text kClass = TEXT("SYSTEM\\CurrentControlSet\\Control\\Class\\");
const Text kNetworkAdapters = TEXT("{4d36e972-e325-11ce-bfc1-08002be10318}");
// The Apply button's id in every property sheet.
constexpr int kApplyButton = 0x3021;
const Text kDefaultProvider = TEXT("WinTsrTune_ipoib.dll,WinTsrTunePropPageProvider");

// A description may be "@file,%name%;text", of which a person reads the text.
Text Readable(const Text& description) {
    if (!description.starts_with(TEXT('@'))) return description;
    const auto semicolon = description.rfind(TEXT(';'));
    return semicolon == Text::npos ? description : description.substr(semicolon + 1);
}

Text Joined(const Text& path, const Text& name) {
    Text joined = path;
    joined += TEXT('\\');
    joined += name;
    return joined;
}

// A device of the Enum branch with what its keys say.
struct Entry {
    Text instanceId;
    Text name;
    bool isNetworkAdapter;
    std::optional<Text> provider;
};

std::optional<Entry> ReadEntry(const Text& instanceId) {
    const Key device(Joined(kEnum, instanceId));
    if (device.Status() != ERROR_SUCCESS) return std::nullopt;
    Entry entry{instanceId, instanceId, false, std::nullopt};
    const Text classGuid = device.ReadText(TEXT("ClassGUID")).value_or(Text());
    entry.isNetworkAdapter = EqualNoCase(classGuid, kNetworkAdapters);
    const std::optional<Text> driver = device.ReadText(TEXT("Driver"));
    if (driver) {
        const Key classKey(kClass + *driver);
        if (classKey.Status() == ERROR_SUCCESS) {
            entry.provider = classKey.ReadText(TEXT("EnumPropPages32"));
            entry.name = classKey.ReadText(TEXT("DriverDesc")).value_or(entry.name);
        }
    }
    entry.name = Readable(device.ReadText(TEXT("DeviceDesc")).value_or(entry.name));
    entry.name = Readable(device.ReadText(TEXT("FriendlyName")).value_or(entry.name));
    return entry;
}

Device DeviceOf(const Entry& entry) {
    return {entry.instanceId, entry.name, entry.provider.value_or(kDefaultProvider)};
}

std::vector<Text> SubkeysOf(const Text& path) {
    const Key key(path);
    return key.Status() == ERROR_SUCCESS ? key.Subkeys() : std::vector<Text>();
}

// Calls visit for each device, in the order of the Enum branch, until it gives true.
template <class Visit>
void WalkDevices(const Visit& visit) {
    for (const Text& bus : SubkeysOf(kEnum)) {
        const Text busPath = Joined(kEnum, bus);
        for (const Text& kind : SubkeysOf(busPath)) {
            for (const Text& instance : SubkeysOf(Joined(busPath, kind))) {
                const auto entry = ReadEntry(Joined(Joined(bus, kind), instance));
                if (entry && visit(*entry)) return;
            }
        }
    }
}

Text Trimmed(const Text& text) {
    const auto first = text.find_first_not_of(TEXT(' '));
    if (first == Text::npos) return Text();
    return text.substr(first, text.find_last_not_of(TEXT(' ')) - first + 1);
}

BOOL CALLBACK AddPage(HPROPSHEETPAGE page, LPARAM pages) {
    reinterpret_cast<std::vector<HPROPSHEETPAGE>*>(pages)->push_back(page);
    return TRUE;
}

}  // namespace

// The list that holds the device of a request.
class DeviceList {
  public:
    explicit DeviceList(const Text& instanceId)
        : m_list(SetupDiCreateDeviceInfoList(nullptr, nullptr)) {
        m_device.cbSize = sizeof(m_device);
        m_open = m_list != INVALID_HANDLE_VALUE &&
                 SetupDiOpenDeviceInfoW(m_list, instanceId.c_str(), nullptr, 0, &m_device);
    }
    ~DeviceList() {
        if (m_list != INVALID_HANDLE_VALUE) SetupDiDestroyDeviceInfoList(m_list);
    }
    DeviceList(const DeviceList&) = delete;
    DeviceList& operator=(const DeviceList&) = delete;

    bool IsOpen() const { return m_open; }
    SP_PROPSHEETPAGE_REQUEST Request() {
        SP_PROPSHEETPAGE_REQUEST request = {};
        request.cbSize = sizeof(request);
        request.PageRequested = SPPSR_ENUM_ADV_DEVICE_PROPERTIES;
        request.DeviceInfoSet = m_list;
        request.DeviceInfoData = &m_device;
        return request;
    }

  private:
    HDEVINFO m_list;
    SP_DEVINFO_DATA m_device = {};
    bool m_open;
};

namespace {

// What a provider adds for the device of the list.
std::vector<HPROPSHEETPAGE> MakePages(DeviceList& list, Provider provider) {
    std::vector<HPROPSHEETPAGE> pages;
    if (provider == nullptr || !list.IsOpen()) return pages;
    const LibraryCall call;
    SP_PROPSHEETPAGE_REQUEST request = list.Request();
    provider(&request, AddPage, reinterpret_cast<LPARAM>(&pages));
    return pages;
}

}  // namespace

DeviceManager::~DeviceManager() {
    for (const HMODULE library : m_libraries)
        FreeLibrary(library);
}

Provider DeviceManager::LoadProvider(const Text& provider) {
    const auto comma = provider.find(TEXT(','));
    if (comma == Text::npos) return nullptr;
    const HMODULE library = LoadLibraryW(Trimmed(provider.substr(0, comma)).c_str());
    if (library == nullptr) return nullptr;
    m_libraries.push_back(library);
    LibraryLoaded(library);
    const std::string function = ToUtf8(Trimmed(provider.substr(comma + 1)));
    return reinterpret_cast<Provider>(
        reinterpret_cast<void (*)()>(GetProcAddress(library, function.c_str())));
}

std::optional<Device> DeviceManager::Find(const Text& instanceId) const {
    std::optional<Device> found;
    // Walked, since what a user types may also be the path of a key that is no device.
    WalkDevices([&](const Entry& entry) {
        if (EqualNoCase(entry.instanceId, instanceId)) found = DeviceOf(entry);
        return found.has_value();
    });
    return found;
}

std::optional<Device> DeviceManager::First() {
    std::optional<Device> withProvider;
    std::optional<Device> adapter;
    WalkDevices([&](const Entry& entry) {
        if (entry.provider && LoadProvider(*entry.provider)) withProvider = DeviceOf(entry);
        if (entry.isNetworkAdapter && !adapter) adapter = DeviceOf(entry);
        return withProvider.has_value();
    });
    return withProvider ? withProvider : adapter;
}

std::vector<Device> DeviceManager::All() const {
    std::vector<Device> devices;
    std::vector<Device> others;
    WalkDevices([&](const Entry& entry) {
        const bool isLikely = entry.isNetworkAdapter || entry.provider;
        (isLikely ? devices : others).push_back(DeviceOf(entry));
        return false;
    });
    devices.insert(devices.end(), others.begin(), others.end());
    return devices;
}

std::vector<Device> DeviceManager::WithTabs() {
    std::vector<Device> devices = All();
    std::erase_if(devices, [&](const Device& device) {
        DeviceList list(device.instanceId);
        const auto pages = MakePages(list, LoadProvider(device.provider));
        const LibraryCall call;
        for (const HPROPSHEETPAGE page : pages)
            DestroyPropertySheetPage(page);
        return pages.empty();
    });
    return devices;
}

std::string ListDevices(const std::vector<Device>& devices) {
    std::string lines;
    for (const Device& device : devices)
        lines += Line({"device", Field(device.instanceId), Field(device.name)});
    return lines;
}

Sheet::Sheet(const Device& device, Provider provider)
    : m_instanceId(device.instanceId), m_list(std::make_unique<DeviceList>(device.instanceId)) {
    std::vector<HPROPSHEETPAGE> pages = MakePages(*m_list, provider);
    if (pages.empty()) return;

    const Text caption = device.name + TEXT(" Properties");
    PROPSHEETHEADERW header = {};
    header.dwSize = sizeof(header);
    header.dwFlags = PSH_MODELESS;
    header.pszCaption = caption.c_str();
    header.nPages = static_cast<UINT>(pages.size());
    header.phpage = pages.data();
    const INT_PTR result = PropertySheetW(&header);
    if (result != 0 && result != -1) m_window = reinterpret_cast<HWND>(result);
}

Sheet::~Sheet() {
    if (m_window != nullptr) DestroyWindow(m_window);
}

HWND Sheet::Page() const {
    if (m_window == nullptr) return nullptr;
    return reinterpret_cast<HWND>(SendMessageW(m_window, PSM_GETCURRENTPAGEHWND, 0, 0));
}

std::vector<Text> Sheet::Tabs() const {
    std::vector<Text> titles;
    if (m_window == nullptr) return titles;
    const HWND tabs = reinterpret_cast<HWND>(SendMessageW(m_window, PSM_GETTABCONTROL, 0, 0));
    const LRESULT count = SendMessageW(tabs, TCM_GETITEMCOUNT, 0, 0);
    for (LRESULT i = 0; i < count; ++i) {
        WCHAR title[MAX_PATH] = {};
        TCITEMW item = {};
        item.mask = TCIF_TEXT;
        item.pszText = title;
        item.cchTextMax = MAX_PATH;
        SendMessageW(tabs, TCM_GETITEMW, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(&item));
        titles.emplace_back(item.pszText);
    }
    return titles;
}

std::size_t Sheet::ActiveTab() const {
    return static_cast<std::size_t>(
        SendMessageW(m_window, PSM_HWNDTOINDEX, reinterpret_cast<WPARAM>(Page()), 0));
}

bool Sheet::Activate(std::size_t tab) {
    SendMessageW(m_window, PSM_SETCURSEL, tab, 0);
    return ActiveTab() == tab;
}

bool Sheet::CanApply() const {
    const HWND apply = GetDlgItem(m_window, kApplyButton);
    return apply != nullptr && IsWindowEnabled(apply);
}

bool Sheet::Handle(MSG& message) const {
    return m_window != nullptr &&
           SendMessageW(m_window, PSM_ISDIALOGMESSAGE, 0, reinterpret_cast<LPARAM>(&message)) != 0;
}

void Sheet::Press(int button) {
    PostMessageW(m_window, PSM_PRESSBUTTON, static_cast<WPARAM>(button), 0);
}

bool Sheets::GoTo(const Text& instanceId) {
    for (auto sheet = m_sheets.begin(); sheet != m_sheets.end(); ++sheet) {
        if (!EqualNoCase((*sheet)->InstanceId(), instanceId)) continue;
        std::rotate(sheet, sheet + 1, m_sheets.end());
        return true;
    }
    return false;
}

void Sheets::CloseFinished() {
    std::erase_if(m_sheets, [](const std::unique_ptr<Sheet>& sheet) {
        return sheet->HasTabs() && sheet->Page() == nullptr;
    });
}

void Sheets::Dispatch(MSG& message) const {
    for (const auto& sheet : m_sheets) {
        if (sheet->Handle(message)) return;
    }
    TranslateMessage(&message);
    DispatchMessageW(&message);
}

}  // namespace sheet
