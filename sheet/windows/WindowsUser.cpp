#include "WindowsUser.h"

#include <algorithm>

#include "../Transcript.h"
#include "Lending.h"
#include "MachineClock.h"

namespace sheet {

namespace {

constexpr const WCHAR* kClassName = TEXT("SheetUser");
constexpr const WCHAR* kDialogClass = TEXT("#32770");
// What holds the name in a file dialog: a combo box, or an edit where there is none (cmb13 and edt1
// of dlgs.h).
constexpr int kFileNameBox = 0x47C;
constexpr int kFileNameEdit = 0x480;
constexpr UINT kLookEvery = 10;  // milliseconds
// So long nothing must have happened for the desktop to be taken for idle.
constexpr ULONGLONG kQuiet = 80;
// So long a thread of the library may be busy before the user goes on in spite of it.
constexpr ULONGLONG kBusy = 30'000;

User* g_user = nullptr;

Text TextOf(HWND window) {
    Text text(static_cast<std::size_t>(GetWindowTextLengthW(window)) + 1, TEXT('\0'));
    text.resize(static_cast<std::size_t>(
        GetWindowTextW(window, text.data(), static_cast<int>(text.size()))));
    return text;
}

// What a message box says: the text beside its icon.
Text MessageOf(HWND box) {
    Text message;
    for (HWND label = nullptr;
         (label = FindWindowExW(box, label, TEXT("Static"), nullptr)) != nullptr;) {
        if ((GetWindowLongPtrW(label, GWL_STYLE) & SS_TYPEMASK) != SS_ICON) message = TextOf(label);
    }
    return message;
}

BOOL CALLBACK CollectDialog(HWND window, LPARAM dialogs) {
    WCHAR name[32] = {};
    GetClassNameW(window, name, ARRAYSIZE(name));
    if (IsWindowVisible(window) && Text(name) == kDialogClass)
        reinterpret_cast<std::vector<HWND>*>(dialogs)->push_back(window);
    return TRUE;
}

// The dialogs that this thread shows, the front one first.
std::vector<HWND> ShownDialogs() {
    std::vector<HWND> dialogs;
    EnumThreadWindows(GetCurrentThreadId(), CollectDialog, reinterpret_cast<LPARAM>(&dialogs));
    return dialogs;
}

// Null for another dialog.
HWND FileNameOf(HWND dialog) {
    const HWND box = GetDlgItem(dialog, kFileNameBox);
    return box != nullptr ? box : GetDlgItem(dialog, kFileNameEdit);
}

void PressButton(HWND dialog, int id) {
    PostMessageW(dialog, WM_COMMAND, MAKEWPARAM(static_cast<WORD>(id), BN_CLICKED),
                 reinterpret_cast<LPARAM>(GetDlgItem(dialog, id)));
}

bool Contains(const std::vector<HWND>& windows, HWND window) {
    return std::find(windows.begin(), windows.end(), window) != windows.end();
}

}  // namespace

User::User(Session& session) : m_session(session) {
    HoldMachineClock(Lender());
    WNDCLASSW windowClass = {};
    windowClass.lpfnWndProc = WindowProc;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.lpszClassName = kClassName;
    RegisterClassW(&windowClass);
    m_window = CreateWindowExW(0, kClassName, TEXT(""), 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                               windowClass.hInstance, nullptr);
    g_user = this;
    m_posted = SetWindowsHookExW(WH_GETMESSAGE, OnPosted, nullptr, GetCurrentThreadId());
    m_sent = SetWindowsHookExW(WH_CALLWNDPROC, OnSent, nullptr, GetCurrentThreadId());
    if (m_window == nullptr || m_posted == nullptr || m_sent == nullptr ||
        SetTimer(m_window, 1, kLookEvery, nullptr) == 0) {
        throw Refusal{"the windows of this computer can't be watched: error " +
                      std::to_string(GetLastError())};
    }
}

User::~User() {
    g_user = nullptr;
    if (m_sent != nullptr) UnhookWindowsHookEx(m_sent);
    if (m_posted != nullptr) UnhookWindowsHookEx(m_posted);
    if (m_window != nullptr) DestroyWindow(m_window);
}

int WINAPI User::ShowMessageBox(HWND owner, LPCWSTR text, LPCWSTR caption, UINT style) {
    User* const user = g_user;
    if (user == nullptr) return MessageBoxW(owner, text, caption, style);
    user->m_boxes.push_back({style, caption ? caption : TEXT("Error"), nullptr});
    const int answer = MessageBoxW(owner, text, caption, style);
    user->m_boxes.pop_back();
    return answer;
}

LRESULT CALLBACK User::WindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message != WM_TIMER || g_user == nullptr)
        return DefWindowProcW(window, message, wParam, lParam);
    if (g_user->IsQuiet()) g_user->Look();
    return 0;
}

LRESULT CALLBACK User::OnPosted(int code, WPARAM wParam, LPARAM lParam) {
    const MSG* const message = reinterpret_cast<const MSG*>(lParam);
    if (code == HC_ACTION && wParam == PM_REMOVE && g_user != nullptr &&
        message->hwnd != g_user->m_window)
        g_user->m_lastMessage = GetTickCount64();
    return CallNextHookEx(nullptr, code, wParam, lParam);
}

// wParam: whether the thread itself has sent it, as this program does without end.
LRESULT CALLBACK User::OnSent(int code, WPARAM wParam, LPARAM lParam) {
    if (code == HC_ACTION && wParam == FALSE && g_user != nullptr)
        g_user->m_lastMessage = GetTickCount64();
    return CallNextHookEx(nullptr, code, wParam, lParam);
}

// Called for a timer's message, which comes only when no other is waiting.
bool User::IsQuiet() {
    const ULONGLONG now = GetTickCount64();
    if (now - m_lastMessage < kQuiet) return false;
    if (!LibraryThreadsWait()) {
        // A thread may also be busy with what the user must answer first.
        if (m_busySince == 0) m_busySince = now;
        return now - m_busySince >= kBusy;
    }
    m_busySince = 0;
    // What the threads have posted before they waited.
    return HIWORD(GetQueueStatus(QS_POSTMESSAGE | QS_SENDMESSAGE | QS_INPUT)) == 0;
}

void User::Look() {
    const auto isGone = [](HWND window) { return !IsWindow(window); };
    std::erase_if(m_seen, isGone);
    std::erase_if(m_fileDialogs, isGone);
    if (!LookAtNewDialog() && !m_session.OnIdle()) MoveMachineClock();
}

// True when it was one that wanted something.
bool User::LookAtNewDialog() {
    for (const HWND dialog : ShownDialogs()) {
        // A file dialog that has been answered and is still there wants another answer.
        const bool wantsAgain = Contains(m_fileDialogs, dialog) && IsWindowEnabled(dialog);
        if (Contains(m_seen, dialog) && !wantsAgain) continue;
        const HWND owner = GetWindow(dialog, GW_OWNER);
        if (FileNameOf(dialog) != nullptr) {
            AnswerFileDialog(dialog);
            return true;
        }
        if (Contains(m_fileDialogs, owner)) {
            // It asks whether a file may be replaced, or says that the name won't do.
            m_seen.push_back(dialog);
            PressButton(dialog, GetDlgItem(dialog, IDYES) != nullptr ? IDYES : IDOK);
            return true;
        }
        if (m_boxes.empty() || m_boxes.back().window != nullptr ||
            TextOf(dialog) != m_boxes.back().caption)
            continue;
        m_seen.push_back(dialog);
        AnswerBox(m_boxes.back(), dialog);
        return true;
    }
    return false;
}

void User::AnswerBox(PendingBox& box, HWND window) {
    box.window = window;
    const int answer =
        m_session.OnMessageBox({window, TextOf(window), MessageOf(window), box.style});
    if (answer != 0) PressButton(window, answer);
}

void User::AnswerFileDialog(HWND dialog) {
    if (!Contains(m_seen, dialog)) {
        m_seen.push_back(dialog);
        m_fileDialogs.push_back(dialog);
    }
    const std::optional<Text> path = m_session.OnFileDialog();
    if (path) SetWindowTextW(FileNameOf(dialog), path->c_str());
    PressButton(dialog, path ? IDOK : IDCANCEL);
}

}  // namespace sheet
