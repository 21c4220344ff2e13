#include "Session.h"

#include <algorithm>

#include "Seam.h"
#include "Transcript.h"

namespace sheet {

namespace {

constexpr int kExitRefused = 2;
// A sheet or dialog that hasn't gone after so many attempts never will.
constexpr int kMostClosingSteps = 1000;

// The dialog in front of a window, or the window itself.
HWND FrontOf(HWND window) {
    for (;;) {
        const HWND popup = GetLastActivePopup(window);
        if (popup == nullptr || popup == window || !IsWindowVisible(popup)) return window;
        window = popup;
    }
}

}  // namespace

Session::Session(Script& script, Executor execute)
    : m_script(script), m_execute(std::move(execute)) {}

int Session::Run(const std::optional<Text>& instanceId) {
    RememberRegistry();
    if (instanceId) {
        OpenDevice(*instanceId);
    } else if (const std::optional<Device> first = m_devices.First()) {
        m_sheets.Add(std::make_unique<Sheet>(*first, m_devices.LoadProvider(first->provider)));
    }
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        m_sheets.Dispatch(message);
        m_sheets.CloseFinished();
    }
    return m_exitCode;
}

int Session::OnMessageBox(const Box& box) {
    const std::vector<int> buttons = ButtonsOf(box.style);
    int answer = AnswerUnasked(box.style);
    if (!m_answers.empty()) {
        const std::optional<int> queued = m_answers.front();
        m_answers.pop_front();
        if (!queued && !m_isEnding) {
            m_boxes.push_back(box);
            return 0;
        }
        if (queued && std::find(buttons.begin(), buttons.end(), *queued) == buttons.end()) {
            Refuse("the box \"" + ToUtf8(box.caption) + "\" has no button " + NameOfButton(*queued),
                   m_script.Place());
            answer = AnswerUnasked(box.style);
        } else if (queued) {
            answer = *queued;
        }
    }
    Print(DescribeBox(box, answer));
    return answer;
}

// After a refusal nothing that was under way is carried on.
int Session::AnswerUnasked(UINT style) const {
    return m_exitCode == kExitRefused ? CautiousAnswer(style) : DefaultAnswer(style);
}

void Session::AnswerBox(int button) {
    if (m_boxes.empty()) throw Refusal{"no message box is up"};
    const Box box = m_boxes.back();
    const std::vector<int> buttons = ButtonsOf(box.style);
    if (std::find(buttons.begin(), buttons.end(), button) == buttons.end())
        throw Refusal{"the box \"" + ToUtf8(box.caption) + "\" has no such button"};
    m_boxes.pop_back();
    Print(DescribeBox(box, button));
    PostMessageW(box.window, WM_COMMAND, MAKEWPARAM(static_cast<WORD>(button), BN_CLICKED),
                 reinterpret_cast<LPARAM>(GetDlgItem(box.window, button)));
}

std::optional<Text> Session::OnFileDialog() {
    if (m_files.empty()) return std::nullopt;
    std::optional<Text> path = std::move(m_files.front());
    m_files.pop_front();
    return path;
}

bool Session::OnIdle() {
    m_sheets.CloseFinished();
    if (m_isEnding) return Close();
    if (DoWhatIsDue()) return true;
    if (MachineTime() < m_waitsUntil) return false;
    if (const std::optional<std::string> line = m_script.Next()) {
        Do(*line, m_script.Place());
    } else {
        m_isEnding = true;
    }
    return true;
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
    m_sheets.Add(std::make_unique<Sheet>(*device, m_devices.LoadProvider(device->provider)));
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
