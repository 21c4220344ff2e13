// Dialogs, controls, message boxes and messages between threads.

#include "DesktopMachine.h"

#include <commctrl.h>
#include <commdlg.h>
#include <richedit.h>

#include "Seeds.h"

namespace {

constexpr DWORD kRadio = WS_VISIBLE | BS_AUTORADIOBUTTON;
constexpr char16_t kButton[] = u"\x80";
constexpr char16_t kEdit[] = u"\x81";

std::function<INT_PTR(HWND, UINT, WPARAM, LPARAM)> g_procedure;
INT_PTR CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    return g_procedure ? g_procedure(window, message, wParam, lParam) : FALSE;
}

HWND Make(const DesktopMachine& desktop, int dialog, HWND owner = nullptr) {
    return CreateDialogParamW(desktop.module, MAKEINTRESOURCEW(dialog), owner, &Procedure, 0);
}

// A machine with one dialog. What the controls tell it is noted.
struct OneDialog : DesktopMachine {
    explicit OneDialog(const DialogBytes& dialog, std::uint64_t seed = 0)
        : DesktopMachine(ResourceFile().Dialog(1, dialog), seed) {
        g_procedure = [this](HWND, UINT message, WPARAM wParam, LPARAM) -> INT_PTR {
            if (message == WM_COMMAND) codes.push_back(HIWORD(wParam));
            return FALSE;
        };
        window = Make(*this, 1);
    }
    ~OneDialog() {
        g_procedure = nullptr;
        DestroyWindow(window);
    }
    HWND Item(int id) const { return GetDlgItem(window, id); }
    LRESULT Send(int id, UINT message, WPARAM wParam = 0, LPARAM lParam = 0) const {
        return SendMessageW(Item(id), message, wParam, lParam);
    }

    HWND window;
    std::vector<int> codes;  // of the WM_COMMAND messages
};

LPARAM Pointer(const void* p) {
    return reinterpret_cast<LPARAM>(p);
}

TEST(Windows, RadioButtonsUncheckTheRestOfTheirGroup) {
    // Ids 1 to 4 are a group, 5 and 6 the next one.
    DialogBytes radios(u"Radio");
    for (const int id : {1, 2, 3, 4, 5, 6})
        radios.Control(kButton, id, kRadio | (id == 1 || id == 5 ? WS_GROUP : 0));
    const struct {
        const char* what;
        std::vector<int> checkedBefore;
        int disabled, hidden;
        std::vector<int> clicks;
        std::vector<int> checked;
    } cases[] = {
        {"the last click wins", {}, 0, 0, {1, 3, 2}, {2}},
        {"groups don't touch each other", {5}, 0, 0, {2, 6, 1}, {1, 6}},
        {"a disabled button keeps its check", {2}, 2, 0, {3}, {2, 3}},
        {"a hidden button keeps its check", {2}, 0, 2, {3}, {2, 3}},
        {"a click on a disabled button does nothing", {1}, 2, 0, {2}, {1}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const OneDialog dialog(radios);
        for (const int id : c.checkedBefore)
            CheckDlgButton(dialog.window, id, BST_CHECKED);
        EnableWindow(dialog.Item(c.disabled), FALSE);
        ShowWindow(dialog.Item(c.hidden), SW_HIDE);
        for (const int id : c.clicks)
            dialog.Send(id, BM_CLICK);
        std::vector<int> checked;
        for (int id = 1; id <= 6; ++id) {
            if (IsDlgButtonChecked(dialog.window, id) == BST_CHECKED) checked.push_back(id);
        }
        EXPECT_EQ(checked, c.checked);
    }
}

TEST(Windows, ClickTellsTheParentOnceTheCheckIsChanged) {
    using Checks = std::vector<UINT>;
    const struct {
        DWORD style;
        Checks checks;  // as seen in each command of three clicks
    } cases[] = {
        {BS_PUSHBUTTON, {0, 0, 0}},
        {BS_CHECKBOX, {0, 0, 0}},
        {BS_AUTOCHECKBOX, {1, 0, 1}},
        {BS_AUTO3STATE, {1, 2, 0}},
        {BS_AUTORADIOBUTTON, {1, 1, 1}},
        {BS_AUTOCHECKBOX | WS_DISABLED, {}},
        {BS_GROUPBOX, {}},
    };
    for (const auto& c : cases) {
        const OneDialog dialog(
            DialogBytes(u"One").Control(kButton, 7, WS_VISIBLE | WS_GROUP | c.style));
        Checks seen;
        g_procedure = [&](HWND window, UINT message, WPARAM, LPARAM) -> INT_PTR {
            if (message == WM_COMMAND) seen.push_back(IsDlgButtonChecked(window, 7));
            return FALSE;
        };
        for (int i = 0; i < 3; ++i)
            dialog.Send(7, BM_CLICK);
        EXPECT_EQ(seen, c.checks) << c.style;
    }
}

TEST(Windows, DialogNeedsTheClassesOfItsControls) {
    const DesktopMachine desktop(
        ResourceFile().Dialog(1, DialogBytes(u"Rich").Control(u"RichEdit20W", 7)));
    EXPECT_EQ(ErrorOf(Make(desktop, 1)), ERROR_CANNOT_FIND_WND_CLASS);
    EXPECT_EQ(DialogBoxParamW(desktop.module, MAKEINTRESOURCEW(1), nullptr, &Procedure, 0), -1);
    const HMODULE richEdit = LoadLibraryW(TEXT("RICHED20"));
    const HWND dialog = Make(desktop, 1);
    EXPECT_NE(GetDlgItem(dialog, 7), nullptr);
    DestroyWindow(dialog);
    FreeLibrary(richEdit);
    EXPECT_EQ(Make(desktop, 1), nullptr);
}

TEST(Windows, ModalDialogEndsWithItsResult) {
    OneDialog owner(DialogBytes(u"Owner").Control(kButton, 5, WS_VISIBLE | WS_DISABLED));
    ShowWindow(owner.window, SW_SHOW);
    g_procedure = [](HWND window, UINT message, WPARAM wParam, LPARAM) -> INT_PTR {
        if (message == WM_COMMAND) EndDialog(window, LOWORD(wParam));
        return message == WM_INITDIALOG;
    };
    HWND inner = nullptr;
    owner.user.deeds = {
        [&] {
            inner = GetForegroundWindow();
            EXPECT_EQ(GetLastActivePopup(owner.window), inner);
            EXPECT_FALSE(IsWindowEnabled(owner.window));
            SendMessageW(GetDlgItem(inner, 5), BM_CLICK, 0, 0);  // disabled, it does nothing
        },
        [&] { PostMessageW(inner, WM_CLOSE, 0, 0); },
    };
    EXPECT_EQ(DialogBoxParamW(owner.module, MAKEINTRESOURCEW(1), owner.window, &Procedure, 0),
              IDCANCEL);
    EXPECT_FALSE(IsWindow(inner));
    EXPECT_TRUE(IsWindowEnabled(owner.window));
    EXPECT_EQ(GetForegroundWindow(), owner.window);
}

TEST(Windows, MessageBoxOffersTheButtonsOfItsStyle) {
    const struct {
        UINT style;
        std::vector<int> ids;
        int defaultId;
    } cases[] = {
        {MB_OK | MB_ICONERROR, {IDOK}, IDOK},
        {MB_YESNO | MB_DEFBUTTON2, {IDYES, IDNO}, IDNO},
        {MB_YESNOCANCEL | MB_DEFBUTTON3, {IDYES, IDNO, IDCANCEL}, IDCANCEL},
        {MB_RETRYCANCEL | MB_TASKMODAL, {IDRETRY, IDCANCEL}, IDRETRY},
    };
    for (const auto& c : cases) {
        DesktopMachine desktop;
        desktop.user.onBox = [&](const platform::MessageBoxRequest& box) {
            std::vector<int> ids;
            int defaultId = 0;
            for (HWND child = GetWindow(box.window, GW_CHILD); child;
                 child = GetWindow(child, GW_HWNDNEXT)) {
                const LRESULT code = SendMessageW(child, WM_GETDLGCODE, 0, 0);
                if (code & DLGC_BUTTON) ids.push_back(GetDlgCtrlID(child));
                if (code & DLGC_DEFPUSHBUTTON) defaultId = GetDlgCtrlID(child);
            }
            EXPECT_EQ(ids, c.ids);
            EXPECT_EQ(defaultId, c.defaultId);
            EXPECT_EQ(TextOf(box.window), u"Caption");
            EXPECT_EQ(box.style, c.style);
            return c.ids.back();
        };
        EXPECT_EQ(MessageBoxW(nullptr, TEXT("Text"), TEXT("Caption"), c.style), c.ids.back());
    }
}

TEST(Windows, BoxThatCannotBeAnsweredEndsTheMachine) {
    for (const int answer : {-1, IDYES, 0}) {  // no user, not one of its buttons, held for good
        SCOPED_TRACE(answer);
        DesktopMachine desktop;
        if (answer == -1) desktop.machine.user = nullptr;
        desktop.user.onBox = [&](const auto&) { return answer; };
        EXPECT_THROW(MessageBoxW(nullptr, TEXT("Text"), nullptr, MB_OK), platform::MachineEnded);
    }
}

// A worker that sends three numbers to the dialog, and then sets the event.
struct Sender {
    HWND dialog;
    HANDLE done;
    std::vector<LRESULT> answers;
};
DWORD WINAPI SendNumbers(LPVOID parameter) {
    Sender& sender = *static_cast<Sender*>(parameter);
    for (const WPARAM number : {1U, 2U, 3U})
        sender.answers.push_back(SendMessageW(sender.dialog, WM_APP, number, 0));
    SetEvent(sender.done);
    return 0;
}

TEST(Windows, SentMessageRunsInTheThreadOfItsWindow) {
    for (const std::uint64_t seed : Seeds(40)) {
        SCOPED_TRACE(seed);
        const OneDialog dialog(DialogBytes(u"Target"), seed);
        g_procedure = [](HWND window, UINT message, WPARAM wParam, LPARAM) -> INT_PTR {
            EXPECT_EQ(platform::Machine::Current().scheduler.CurrentThread(), 0U);
            if (message != WM_APP) return FALSE;
            SetWindowLongPtrW(window, DWLP_MSGRESULT, static_cast<LONG_PTR>(wParam) * 10);
            return TRUE;
        };
        Sender sender = {dialog.window, CreateEventW(nullptr, TRUE, FALSE, nullptr), {}};
        const HANDLE thread = CreateThread(nullptr, 0, &SendNumbers, &sender, 0, nullptr);
        // As a page waits for its worker: it goes on answering what the worker sends.
        DWORD wake;
        while ((wake = MsgWaitForMultipleObjectsEx(1, &sender.done, INFINITE, QS_SENDMESSAGE, 0)) ==
               WAIT_OBJECT_0 + 1) {
            MSG message;
            PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE);
        }
        EXPECT_EQ(wake, WAIT_OBJECT_0);
        EXPECT_EQ(sender.answers, (std::vector<LRESULT>{10, 20, 30}));
        WaitForSingleObject(thread, INFINITE);
        CloseHandle(thread);
        CloseHandle(sender.done);
    }
}

TEST(Windows, WaitingForMessagesTellsNewOnesFromThoseSeen) {
    OneDialog dialog(DialogBytes(u"Target"));
    const auto wait = [](DWORD mask, DWORD flags) {
        return MsgWaitForMultipleObjectsEx(0, nullptr, 100, mask, flags);
    };
    PostMessageW(dialog.window, WM_APP, 0, 0);
    EXPECT_EQ(wait(QS_SENDMESSAGE, 0), WAIT_TIMEOUT);
    EXPECT_EQ(wait(QS_POSTMESSAGE, 0), WAIT_OBJECT_0);
    EXPECT_EQ(wait(QS_POSTMESSAGE, 0), WAIT_TIMEOUT) << "it isn't new any more";
    EXPECT_EQ(wait(QS_POSTMESSAGE, MWMO_INPUTAVAILABLE), WAIT_OBJECT_0);
    EXPECT_EQ(dialog.machine.scheduler.Now(), 200U);
    MSG message;
    EXPECT_TRUE(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE));
    EXPECT_FALSE(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE));
    EXPECT_EQ(wait(QS_POSTMESSAGE, MWMO_INPUTAVAILABLE), WAIT_TIMEOUT);
}

TEST(Windows, EditTakesWhatItsStyleAndLimitAllow) {
    const struct {
        DWORD style;
        WPARAM limit;
        const char16_t *before, *typed;
        std::u16string after;
        std::vector<int> codes;
    } cases[] = {
        {0, 0, u"", u"ab", u"ab", {EN_CHANGE, EN_CHANGE, EN_CHANGE}},
        {ES_NUMBER, 0, u"x", u"a1", u"1x", {EN_CHANGE, EN_CHANGE}},
        {ES_READONLY, 0, u"x", u"a", u"x", {EN_CHANGE}},
        {0, 3, u"long", u"a", u"long", {EN_CHANGE, EN_MAXTEXT, EN_CHANGE}},
        {0, 2, u"", u"abc", u"ab", {EN_CHANGE, EN_CHANGE, EN_CHANGE, EN_MAXTEXT, EN_CHANGE}},
        {0, 0, u"", u"ab\b", u"a", {EN_CHANGE, EN_CHANGE, EN_CHANGE, EN_CHANGE}},
    };
    for (const auto& c : cases) {
        const OneDialog dialog(DialogBytes(u"Edit").Control(kEdit, 7, WS_VISIBLE | c.style));
        dialog.Send(7, EM_LIMITTEXT, c.limit);
        SetWindowTextW(dialog.Item(7), c.before);
        for (const char16_t unit : std::u16string_view(c.typed))
            dialog.Send(7, WM_CHAR, unit);
        EXPECT_EQ(TextOf(dialog.Item(7)), c.after);
        EXPECT_EQ(dialog.codes, c.codes) << c.limit;
    }
}

TEST(Windows, RichEditShowsTheTextOfRtf) {
    const struct {
        const char* given;  // null: none
        std::u16string text;
    } cases[] = {
        {"{\\rtf1\\ansi One\\par Two}", u"One\r\nTwo"},
        {"{no rtf}", u"{no rtf}"},
        {"a\r\nb\nc\xE9", u"a\r\nb\r\nc\u00E9"},
        {nullptr, u""},
    };
    DesktopMachine desktop(
        ResourceFile().Dialog(1, DialogBytes(u"Rich").Control(u"RichEdit20W", 7)));
    const HMODULE library = LoadLibraryW(TEXT("Riched20.dll"));
    const HWND dialog = Make(desktop, 1);
    const HWND edit = GetDlgItem(dialog, 7);
    for (const auto& c : cases) {
        SETTEXTEX set = {ST_DEFAULT, 0};
        SendMessageW(edit, EM_SETTEXTEX, reinterpret_cast<WPARAM>(&set), Pointer(c.given));
        EXPECT_EQ(TextOf(edit), c.text);
    }
    DestroyWindow(dialog);
    FreeLibrary(library);
}

TEST(Windows, ListsSortAndSelect) {
    const OneDialog dialog(
        DialogBytes(u"List").Control(u"COMBOBOX", 7, CBS_DROPDOWNLIST | CBS_SORT));
    for (const WCHAR* entry : {TEXT("beta"), TEXT("Gamma")})
        dialog.Send(7, CB_ADDSTRING, 0, Pointer(entry));
    EXPECT_EQ(dialog.Send(7, CB_SETCURSEL, 1), 1);
    EXPECT_EQ(dialog.Send(7, CB_ADDSTRING, 0, Pointer(TEXT("Alpha"))), 0);
    EXPECT_EQ(dialog.Send(7, CB_GETCURSEL), 2) << "the selection goes with its entry";
    EXPECT_EQ(TextOf(dialog.Item(7)), u"Gamma");
    EXPECT_EQ(dialog.Send(7, CB_SELECTSTRING, 0, Pointer(TEXT("none"))), CB_ERR);
    EXPECT_EQ(dialog.Send(7, CB_SELECTSTRING, 0, Pointer(TEXT("BET"))), 1);
    EXPECT_TRUE(dialog.codes.empty()) << "messages of the program don't notify it";
    dialog.Send(7, CB_RESETCONTENT);
    EXPECT_EQ(TextOf(dialog.Item(7)), u"");
}

TEST(ListViews, ChecksAndSelectionsAreToldToTheParent) {
    const OneDialog dialog(
        DialogBytes(u"List").Control(u"SysListView32", 7, LVS_REPORT | LVS_SINGLESEL));
    using Changes = std::vector<std::vector<UINT>>;  // row, state before and after
    Changes changes;
    bool refuse = false;
    g_procedure = [&](HWND window, UINT message, WPARAM wParam, LPARAM lParam) -> INT_PTR {
        if (message != WM_NOTIFY) return FALSE;
        const auto& note = *reinterpret_cast<const NMLISTVIEW*>(lParam);
        EXPECT_EQ(wParam, 7U);
        if (note.hdr.code == LVN_ITEMCHANGED)
            changes.push_back({static_cast<UINT>(note.iItem), note.uOldState, note.uNewState});
        if (note.hdr.code == LVN_ITEMCHANGING) SetWindowLongPtrW(window, DWLP_MSGRESULT, refuse);
        return note.hdr.code == LVN_ITEMCHANGING;
    };
    const auto setState = [&](WPARAM row, UINT state, UINT mask) {
        LVITEMW item = {};
        item.state = state;
        item.stateMask = mask;
        dialog.Send(7, LVM_SETITEMSTATE, row, Pointer(&item));
    };
    dialog.Send(7, LVM_SETEXTENDEDLISTVIEWSTYLE, 0, LVS_EX_CHECKBOXES);
    LVITEMW added = {};
    for (int row = 0; row < 2; ++row)
        dialog.Send(7, LVM_INSERTITEMW, 0, Pointer(&added));
    setState(0, 0x2000, LVIS_STATEIMAGEMASK);
    setState(0, 0x2000, LVIS_STATEIMAGEMASK);  // no change
    setState(0, LVIS_SELECTED, LVIS_SELECTED);
    setState(1, LVIS_SELECTED, LVIS_SELECTED);
    EXPECT_EQ(changes, (Changes{{0, 0, 0x1000},
                                {0, 0, 0x1000},
                                {0, 0x1000, 0x2000},
                                {0, 0x2000, 0x2002},
                                {0, 0x2002, 0x2000},
                                {1, 0x1000, 0x1002}}));
    EXPECT_EQ(dialog.Send(7, LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_SELECTED), 1);
    refuse = true;
    setState(0, 0x1000, LVIS_STATEIMAGEMASK);
    EXPECT_EQ(dialog.Send(7, LVM_GETITEMSTATE, 0, LVIS_STATEIMAGEMASK), 0x2000);
}

TEST(Windows, FileDialogAddsTheExtensionThatIsMissing) {
    for (const bool isMissing : {true, false}) {
        DesktopMachine desktop;
        desktop.user.file = isMissing ? u"C:\\x.y\\a" : u"C:\\a.txt";
        WCHAR path[260] = {};
        OPENFILENAMEW dialog = {};
        dialog.lStructSize = sizeof(dialog);
        dialog.lpstrFile = path;
        dialog.nMaxFile = 260;
        dialog.lpstrDefExt = TEXT("log");
        EXPECT_TRUE(GetSaveFileNameW(&dialog));
        EXPECT_EQ(std::u16string(path), isMissing ? u"C:\\x.y\\a.log" : u"C:\\a.txt");
        dialog.nMaxFile = 3;
        EXPECT_FALSE(GetSaveFileNameW(&dialog));
    }
}

}  // namespace
