#include "Session.h"

#include <algorithm>
#include <utility>

#include "Controls.h"
#include "Drawing.h"
#include "Seam.h"
#include "Transcript.h"

namespace sheet {

namespace {

constexpr int kExitRefused = 2;
// A sheet or dialog that hasn't gone after so many attempts never will.
constexpr int kMostClosingSteps = 1000;

constexpr std::size_t kMostToldDevices = 20;

bool HasButton(const Box& box, int button) {
    const std::vector<int> buttons = ButtonsOf(box.style);
    return std::find(buttons.begin(), buttons.end(), button) != buttons.end();
}

// The dialog in front of a window, or the window itself.
HWND FrontOf(HWND window) {
    for (;;) {
        const HWND popup = GetLastActivePopup(window);
        if (popup == nullptr || popup == window || !IsWindowVisible(popup)) return window;
        window = popup;
    }
}

}  // namespace

Session::Session(Script& script, Executor execute, Completer complete)
    : m_script(script), m_execute(std::move(execute)), m_complete(std::move(complete)) {}

int Session::Run(const std::optional<Text>& instanceId) {
    RememberRegistry();
    if (instanceId) {
        OpenDevice(*instanceId);
    } else if (const std::optional<Device> first = m_devices.First()) {
        AddSheet(*first);
    }
    const Sheet* const sheet = m_sheets.Current();
    if (HasPerson() && (sheet == nullptr || !sheet->HasTabs())) TellDevices();
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        m_sheets.Dispatch(message);
        m_sheets.CloseFinished();
    }
    return HasPrintingFailed() ? kExitRefused : m_exitCode;
}

// For a person whose device has no tabs.
void Session::TellDevices() {
    const std::vector<Device> withTabs = m_devices.WithTabs();
    if (!withTabs.empty()) {
        Print("The sheet has no tabs. These devices have some:\n" + ListDevices(withTabs));
        return;
    }
    std::vector<Device> all = m_devices.All();
    const std::size_t count = all.size();
    all.resize(std::min(count, kMostToldDevices));
    Print(all.empty() ? "This machine has no devices.\n"
                      : "No device of this machine has tabs. It has:\n" + ListDevices(all));
    if (count > all.size()) Print("and " + std::to_string(count - all.size()) + " more\n");
}

int Session::OnMessageBox(const Box& box) {
    const std::optional<int> answer = AnswerTo(box);
    if (!answer) {
        m_boxes.push_back(box);
        return 0;
    }
    Print(DescribeBox(box, *answer));
    return *answer;
}

// Nothing: the box is left up.
std::optional<int> Session::AnswerTo(const Box& box) {
    if (!m_answers.empty()) {
        const std::optional<int> queued = m_answers.front();
        m_answers.pop_front();
        if (!queued && !m_isEnding) return std::nullopt;
        if (queued && HasButton(box, *queued)) return queued;
        if (queued)
            Refuse("the box \"" + ToUtf8(box.caption) + "\" has no button " + NameOfButton(*queued),
                   m_script.Place());
    }
    return HasPerson() ? AskAnswer(box) : AnswerUnasked(box.style);
}

std::optional<int> Session::AskAnswer(const Box& box) {
    Print(DrawMessageBox(box));
    std::vector<std::string> names = ButtonNames(box);
    std::string prompt;
    for (const std::string& name : names)
        prompt += name + ", ";
    prompt += std::string("hold [") + NameOfButton(EnterAnswer(box.style)) + "]> ";
    names.emplace_back("hold");
    while (const std::optional<std::string> line = m_script.Ask(prompt, names)) {
        if (line->empty()) return EnterAnswer(box.style);
        if (*line == "hold") return std::nullopt;
        const std::optional<int> button = ButtonNamed(*line);
        if (button && HasButton(box, *button)) return button;
        PrintRefusal("the box has no button " + *line);
    }
    m_isEnding = true;
    return AnswerUnasked(box.style);
}

// After a failure, or when the person has gone, nothing that was under way is carried on.
int Session::AnswerUnasked(UINT style) const {
    const bool isCautious =
        m_exitCode == kExitRefused || HasPrintingFailed() || m_script.IsInteractive();
    return isCautious ? CautiousAnswer(style) : DefaultAnswer(style);
}

void Session::AnswerBox(int button) {
    if (m_boxes.empty()) throw NoBox{{"no message box is up"}};
    const Box box = m_boxes.back();
    if (!HasButton(box, button))
        throw Refusal{"the box \"" + ToUtf8(box.caption) + "\" has no such button"};
    m_boxes.pop_back();
    Print(DescribeBox(box, button));
    PostMessageW(box.window, WM_COMMAND, MAKEWPARAM(static_cast<WORD>(button), BN_CLICKED),
                 reinterpret_cast<LPARAM>(GetDlgItem(box.window, button)));
}

void Session::PressButton(const Text& label) {
    if (m_boxes.empty()) {
        PressControl(ActiveWindow(), label);
        return;
    }
    for (const int id : ButtonsOf(m_boxes.back().style)) {
        if (FromUtf8(LabelOfButton(id)) == label) return AnswerBox(id);
    }
    throw Refusal{"the box \"" + ToUtf8(m_boxes.back().caption) + "\" has no button \"" +
                  ToUtf8(label) + "\""};
}

std::vector<Text> Session::PressableLabels() {
    std::vector<Text> labels;
    if (m_boxes.empty()) {
        const Sheet* const sheet = m_sheets.Current();
        return sheet != nullptr && sheet->HasTabs() ? ButtonLabels(ActiveWindow()) : labels;
    }
    for (const int id : ButtonsOf(m_boxes.back().style))
        labels.push_back(FromUtf8(LabelOfButton(id)));
    return labels;
}

std::optional<Text> Session::OnFileDialog() {
    if (m_files.empty()) {
        const auto name =
            HasPerson() ? m_script.Ask("name of the file [cancel]> ", {}) : std::nullopt;
        if (name && !name->empty()) return FromUtf8(*name);
        Print(Line({"file", m_script.IsInteractive() ? "-" : "no name was queued", "cancel"}));
        return std::nullopt;
    }
    std::optional<Text> path = std::move(m_files.front());
    m_files.pop_front();
    return path;
}

bool Session::OnIdle() {
    m_sheets.CloseFinished();
    if (HasPrintingFailed()) {
        m_exitCode = kExitRefused;
        m_isEnding = true;
    }
    if (m_isEnding) return Close();
    if (m_untilBox) {
        const Planned again = *std::exchange(m_untilBox, std::nullopt);
        Do(again.line, again.place);
        return true;
    }
    if (DoWhatIsDue()) return true;
    if (MachineTime() < m_waitsUntil) return false;
    DoNextLine();
    return true;
}

void Session::DoNextLine() {
    try {
        const std::optional<std::string> line = m_script.Next(
            [this](const std::string& beginning) { return m_complete(*this, beginning); });
        if (!line) m_isEnding = true;
        if (line) Do(*line, m_script.Place());
    } catch (const Refusal& refusal) {
        Refuse(refusal.reason, m_script.Place());
    }
}

bool Session::DoWhatIsDue() {
    if (m_plan.empty() || m_plan.begin()->first > MachineTime()) return false;
    const Planned planned = std::move(m_plan.begin()->second);
    m_plan.erase(m_plan.begin());
    Do(planned.line, planned.place);
    return true;
}

void Session::Do(const std::string& line, const std::string& place) {
    try {
        m_execute(*this, line);
        m_looksForBox = 0;
    } catch (const NoBox& refusal) {
        if (MayBoxComeYet(m_looksForBox++)) {
            m_untilBox = Planned{line, place};
        } else {
            Refuse(refusal.reason, place);
        }
    } catch (const Refusal& refusal) {
        Refuse(refusal.reason, place);
    }
}

void Session::Refuse(const std::string& reason, const std::string& place) {
    PrintRefusal(place.empty() ? reason : place + ": " + reason);
    if (m_script.IsInteractive()) return;
    m_exitCode = kExitRefused;
    m_isEnding = true;
}

// One step of the way out a turn, since each may bring up something new.
bool Session::Close() {
    if (++m_closingSteps > kMostClosingSteps) return false;
    if (!m_boxes.empty()) {
        AnswerBox(AnswerUnasked(m_boxes.back().style));
        return true;
    }
    Sheet* const sheet = m_sheets.Current();
    if (sheet == nullptr) {
        PostQuitMessage(0);
        return true;
    }
    if (!sheet->HasTabs()) {
        m_sheets.CloseCurrent();
        return true;
    }
    const HWND front = FrontOf(sheet->Window());
    if (front != sheet->Window()) {
        PostMessageW(front, WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED), 0);
    } else {
        sheet->Press(PSBTN_CANCEL);
    }
    return true;
}

Sheet& Session::CurrentSheet() {
    Sheet* const sheet = m_sheets.Current();
    if (sheet == nullptr) throw Refusal{"no sheet is open"};
    if (!sheet->HasTabs())
        throw Refusal{"the device " + ToUtf8(sheet->InstanceId()) + " has no tabs"};
    return *sheet;
}

Sheet& Session::FreeSheet() {
    Sheet& sheet = CurrentSheet();
    if (!m_boxes.empty()) throw Refusal{"a message box is up"};
    if (!IsWindowEnabled(sheet.Window())) throw Refusal{"a dialog is open in front of the sheet"};
    return sheet;
}

HWND Session::ActiveWindow() {
    if (!m_boxes.empty()) return m_boxes.back().window;
    const Sheet& sheet = CurrentSheet();
    const HWND front = FrontOf(sheet.Window());
    return front == sheet.Window() ? sheet.Page() : front;
}

void Session::OpenDevice(const Text& instanceId) {
    if (m_sheets.GoTo(instanceId)) return;
    const std::optional<Device> device = m_devices.Find(instanceId);
    if (!device) throw Refusal{"there is no device " + ToUtf8(instanceId)};
    AddSheet(*device);
}

void Session::AddSheet(const Device& device) {
    m_sheets.Add(std::make_unique<Sheet>(device, m_devices.LoadProvider(device.provider)));
    if (m_sheets.Current()->HasTabs()) SheetShown();
}

void Session::Wait(std::uint64_t milliseconds) {
    m_waitsUntil = MachineTime() + milliseconds;
    LetTimePass(milliseconds);
}

void Session::At(std::uint64_t time, const std::string& line) {
    m_plan.emplace(time, Planned{line, m_script.Place()});
    WakeAt(time);
}

}  // namespace sheet
