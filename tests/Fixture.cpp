#include "Fixture.h"

#include <cstring>
#include <fstream>
#include <sstream>

#include "Call.h"
#include "Drive.h"
#include "Facts.h"
#include "LibraryImage.h"
#include "Modules.h"
#include "Registry.h"
#include "Text.h"
#include "frame/DeviceRequest.h"
#include "platform/FactsMachine.h"

namespace {

using Provider = BOOL(WINAPI*)(PSP_PROPSHEETPAGE_REQUEST, LPFNADDPROPSHEETPAGE, LPARAM);

// Adds the page to a list; null: refuses it.
BOOL CALLBACK AddPage(HPROPSHEETPAGE page, LPARAM list) {
    const platform::QuietScope quiet;
    if (list != 0) reinterpret_cast<std::vector<HPROPSHEETPAGE>*>(list)->push_back(page);
    return list != 0;
}

}  // namespace

std::u16string Wide(const std::string& utf8) {
    return platform::FromUtf8(utf8);
}

int ScriptedUser::OnMessageBox(const platform::MessageBoxRequest& box) {
    m_boxes.push_back({box.caption, box.text, box.style});
    if (m_answers.empty()) {
        EXPECT_TRUE(agrees) << "unexpected box: " << platform::ToUtf8(box.caption) << ": "
                            << platform::ToUtf8(box.text);
        const UINT buttons = box.style & 0xF;
        return buttons == MB_YESNO || buttons == MB_YESNOCANCEL ? IDYES : IDOK;
    }
    const int answer = m_answers.front();
    m_answers.pop_front();
    return answer;
}

std::optional<std::u16string> ScriptedUser::OnFileDialog(const platform::FileDialogRequest&) {
    if (m_paths.empty()) {
        ADD_FAILURE() << "unexpected file dialog";
        return std::nullopt;
    }
    auto path = std::move(m_paths.front());
    m_paths.pop_front();
    return path;
}

bool ScriptedUser::OnIdle() {
    if (!m_deeds.empty()) {
        const std::function<void()> deed = std::move(m_deeds.front());
        m_deeds.pop_front();
        deed();
        return true;
    }
    return atEnd && atEnd();
}

TestMachine::TestMachine(const Sample& theSample, std::uint64_t seed, const char* help)
    : machine(seed), sample(theSample) {
    FailOnLeaks(machine);
    machine.user = &user;
    const platform::QuietScope quiet;
    if (const auto error = platform::LoadMachineFile(machine, sample.Text()))
        ADD_FAILURE() << "sample, line " << error->line << ": " << error->message;
    machine.Get<platform::Modules>().Install(LibraryImage());
    if (help != nullptr) {
        machine.Get<platform::Drive>().WriteWholeFile(
            u"C:\\Program Files\\Corvanta\\Documentation\\help.xml", help);
    }
}

void TestMachine::AddInfFiles() {
    for (const char* name : {"muxp.inf", "mux_mp.inf"}) {
        std::ifstream file(
            SOURCE_DIR "/samples/drive/Program Files/Corvanta/Vlan_lbfo/" + std::string(name),
            std::ios::binary);
        std::ostringstream bytes;
        bytes << file.rdbuf();
        machine.Get<platform::Drive>().WriteWholeFile(
            u"C:\\Program Files\\Corvanta\\Vlan_lbfo\\" + Wide(name), bytes.str());
    }
}

TestMachine::~TestMachine() {
    if (!machine.Ended()) Detach();
}

HMODULE TestMachine::Attach() {
    const platform::QuietScope quiet;
    if (m_library == nullptr) m_library = LoadLibraryW(u"WinTsrTune_ipoib.dll");
    return m_library;
}

void TestMachine::Detach() {
    const platform::QuietScope quiet;
    if (m_library != nullptr) FreeLibrary(m_library);
    m_library = nullptr;
}

TestMachine::ProviderResult TestMachine::CallProvider(int port, bool refuse) {
    return CallProvider(sample.InstanceId(port), "WinTsrTunePropPageProvider", refuse);
}

TestMachine::ProviderResult TestMachine::CallBusProvider(bool refuse) {
    return CallProvider(Sample::BusInstanceId(), "CvtPropPageProvider", refuse);
}

TestMachine::ProviderResult TestMachine::CallProvider(const std::string& instanceId,
                                                      const char* name, bool refuse) {
    const HMODULE library = Attach();
    const platform::QuietScope quiet;
    ProviderResult result{};
    DeviceRequest device(Wide(instanceId));
    const auto provider =
        reinterpret_cast<Provider>(reinterpret_cast<void (*)()>(GetProcAddress(library, name)));
    {
        const platform::CallbackScope counting;
        result.result = provider(&device.request, AddPage,
                                 refuse ? 0 : reinterpret_cast<LPARAM>(&result.pages));
    }
    return result;
}

bool TestMachine::RunSheet(int port) {
    return RunSheet(CallProvider(port));
}

bool TestMachine::RunBusSheet() {
    return RunSheet(CallBusProvider());
}

bool TestMachine::RunSheet(ProviderResult provided) {
    if (provided.pages.empty()) return false;
    const platform::QuietScope quiet;
    PROPSHEETHEADERW header{};
    header.dwSize = sizeof(header);
    header.pszCaption = u"Adapter";
    header.nPages = static_cast<UINT>(provided.pages.size());
    header.phpage = provided.pages.data();
    header.dwFlags = PSH_USECALLBACK;
    header.pfnCallback = [](HWND, UINT, LPARAM) { return 0; };
    bool cancelled = false;
    user.atEnd = [&] {
        if (cancelled) return false;
        cancelled = true;
        PostMessageW(m_sheet, PSM_PRESSBUTTON, PSBTN_CANCEL, 0);
        return true;
    };
    // The sheet's window is the foreground when the user is first asked.
    user.DoFirst([&] { m_sheet = GetForegroundWindow(); });
    PropertySheetW(&header);
    m_sheet = nullptr;
    user.atEnd = nullptr;
    return true;
}

HWND TestMachine::Page() const {
    return reinterpret_cast<HWND>(SendMessageW(m_sheet, PSM_GETCURRENTPAGEHWND, 0, 0));
}

void TestMachine::Press(int control) {
    SendDlgItemMessageW(Page(), control, BM_CLICK, 0, 0);
}

bool TestMachine::IsChecked(int control) {
    return IsDlgButtonChecked(Page(), control) == BST_CHECKED;
}

std::optional<std::u16string> TestMachine::Text(const std::string& path,
                                                const std::u16string& value) const {
    return platform::MachineText(Wide(path), value.c_str());
}

std::optional<DWORD> TestMachine::Number(const std::string& path,
                                         const std::u16string& value) const {
    return platform::MachineNumber(Wide(path), value.c_str());
}

std::optional<std::pair<DWORD, std::vector<BYTE>>> TestMachine::Bytes(
    const std::string& path, const std::u16string& value) const {
    const platform::RegistryTree& tree =
        const_cast<platform::Machine&>(machine).Get<platform::Registry>().Tree();
    const auto key = tree.Find(platform::RegistryRoot::LocalMachine, Wide(path));
    const platform::RegistryValue* found = key ? key->FindValue(value) : nullptr;
    if (!found) return {};
    return std::pair(found->Type(), std::vector(found->Data().begin(), found->Data().end()));
}

std::u16string TestMachine::PortText(int port, const std::u16string& value) const {
    return Text(Sample::ClassKey(port), value).value_or(u"-");
}

DWORD TestMachine::Restarts(int port) const {
    return Number("SOFTWARE\\StandIn\\Restarts", Wide(sample.InstanceId(port))).value_or(0);
}

DWORD TestMachine::Reboots() const {
    return Number("SOFTWARE\\StandIn\\Restarts", u"Reboots").value_or(0);
}

std::string TestMachine::LogBytes() const {
    return const_cast<platform::Machine&>(machine)
        .Get<platform::Drive>()
        .ReadWholeFile(u"C:\\Windows\\System32\\LogFiles\\PerformanceTuning.log")
        .value_or("");
}

std::vector<std::string> TestMachine::LogLines() const {
    const std::string bytes = LogBytes();
    if (bytes.empty()) return {};
    std::u16string text(bytes.size() / 2, u'\0');
    std::memcpy(text.data(), bytes.data(), text.size() * 2);
    EXPECT_EQ(text.front(), u'\xFEFF') << "no byte-order mark";
    text.erase(0, 1);
    EXPECT_TRUE(text.empty() || text.back() == u'\n') << "the log ends within a line";
    std::erase(text, u'\r');
    std::vector<std::string> lines;
    std::istringstream stream(platform::ToUtf8(text));
    for (std::string line; std::getline(stream, line);) {
        const std::size_t stamp = line.find(" : ");
        lines.push_back(stamp == std::string::npos ? line : line.substr(stamp + 3));
    }
    return lines;
}
