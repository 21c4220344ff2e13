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
        ResourceFile()
            .Dialog(1, DialogBytes(u"Strict").Control(u"RichEdit20W", 7))
            .Dialog(2, DialogBytes(u"Lenient", DS_NOFAILCREATE).Control(u"RichEdit20W", 7)));
    const auto hasControl = [&](int id) -> std::optional<bool> {
        const HWND dialog = Make(desktop, id);
        if (!dialog) return std::nullopt;
        const bool has = GetDlgItem(dialog, 7) != nullptr;
        DestroyWindow(dialog);
        return has;
    };
    EXPECT_EQ(hasControl(1), std::nullopt);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_CANNOT_FIND_WND_CLASS});
    EXPECT_EQ(DialogBoxParamW(desktop.module, MAKEINTRESOURCEW(1), nullptr, &Procedure, 0), -1);
    EXPECT_EQ(hasControl(2), false);
    const HMODULE richEdit = LoadLibraryW(TEXT("RICHED20"));
    EXPECT_EQ(hasControl(1), true);
    FreeLibrary(richEdit);
    EXPECT_EQ(hasControl(1), std::nullopt);
}

TEST(Windows, DialogProcedureAnswersThroughMessageResult) {
    const OneDialog dialog(DialogBytes(u"Title"));
    const struct {
        UINT message;
        INT_PTR returned;
        LONG_PTR messageResult;
        LRESULT expected;
        const char* what;
    } cases[] = {
        {WM_NOTIFY, TRUE, 5, 5, "handled"},
        {WM_NOTIFY, FALSE, 5, 0, "not handled: the default's answer"},
        {WM_GETTEXTLENGTH, FALSE, 9, 5, "not handled: the default's answer"},
        {WM_CTLCOLORSTATIC, 77, 5, 77, "returned as it is"},
    };
    for (const auto& c : cases) {
        g_procedure = [&](HWND window, UINT, WPARAM, LPARAM) -> INT_PTR {
            if (c.messageResult) SetWindowLongPtrW(window, DWLP_MSGRESULT, c.messageResult);
            return c.returned;
        };
        EXPECT_EQ(SendMessageW(dialog.window, c.message, 0, 0), c.expected) << c.what;
    }
}

TEST(Windows, ModalDialogEndsWithItsResult) {
    DesktopMachine desktop(
        ResourceFile()
            .Dialog(1, DialogBytes(u"Owner"))
            .Dialog(2, DialogBytes(u"Inner").Control(kButton, 5, WS_VISIBLE | WS_DISABLED)));
    const HWND owner = Make(desktop, 1);
    ShowWindow(owner, SW_SHOW);
    g_procedure = [](HWND window, UINT message, WPARAM wParam, LPARAM) -> INT_PTR {
        if (message == WM_COMMAND) EndDialog(window, LOWORD(wParam));
        return message == WM_INITDIALOG;
    };
    HWND inner = nullptr;
    desktop.user.deeds = {
        [&] {
            inner = GetForegroundWindow();
            EXPECT_EQ(TextOf(inner), u"Inner");
            EXPECT_EQ(GetLastActivePopup(owner), inner);
            EXPECT_FALSE(IsWindowEnabled(owner));
            SendMessageW(GetDlgItem(inner, 5), BM_CLICK, 0, 0);  // does nothing
        },
        [&] { PostMessageW(inner, WM_CLOSE, 0, 0); },
    };
    EXPECT_EQ(DialogBoxParamW(desktop.module, MAKEINTRESOURCEW(2), owner, &Procedure, 0), IDCANCEL);
    EXPECT_FALSE(IsWindow(inner));
    EXPECT_TRUE(IsWindowEnabled(owner));
    EXPECT_EQ(GetForegroundWindow(), owner);
    g_procedure = nullptr;
    DestroyWindow(owner);
}

TEST(Windows, MessageBoxOffersTheButtonsOfItsStyle) {
    const struct {
        UINT style;
        std::vector<int> ids;
        int defaultId;
    } cases[] = {
        {MB_OK | MB_ICONERROR, {IDOK}, IDOK},
        {MB_OKCANCEL, {IDOK, IDCANCEL}, IDOK},
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
    DesktopMachine desktop;
    desktop.machine.faults.FailCalls("MessageBoxW", u"Text", ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(MessageBoxW(nullptr, TEXT("Text"), nullptr, MB_OK), 0);
    EXPECT_TRUE(desktop.user.boxes.empty());
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

TEST(Windows, LoopGivesMessagesInOrderUntilQuit) {
    OneDialog dialog(DialogBytes(u"Target").Control(kButton, 7));
    PostMessageW(dialog.window, WM_APP, 1, 0);
    PostQuitMessage(4);
    PostMessageW(dialog.Item(7), WM_APP, 2, 0);
    dialog.user.deeds = {[&] { ADD_FAILURE() << "the loop wasn't idle"; }};
    MSG message;
    for (const WPARAM number : {1U, 2U}) {
        EXPECT_TRUE(GetMessageW(&message, nullptr, 0, 0));
        EXPECT_EQ(message.wParam, number);
    }
    EXPECT_FALSE(GetMessageW(&message, nullptr, 0, 0));
    EXPECT_EQ(message.wParam, 4U);
    // With the window go its messages.
    PostMessageW(dialog.window, WM_APP, 3, 0);
    DestroyWindow(dialog.window);
    EXPECT_FALSE(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE));
    EXPECT_FALSE(PostMessageW(dialog.window, WM_APP, 0, 0));
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
        {ES_MULTILINE, 0, u"x", u"a", u"ax", {EN_CHANGE}},
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
        dialog.Send(7, EM_SETSEL, 0, -1);
        dialog.Send(7, EM_LIMITTEXT);
        dialog.Send(7, EM_REPLACESEL, 0, Pointer(TEXT("all")));
        EXPECT_EQ(TextOf(dialog.Item(7)), u"all");
    }
}

TEST(Windows, RichEditShowsTheTextOfRtf) {
    const struct {
        const char* given;  // null: none
        std::u16string plain, crlf;
    } cases[] = {
        {"{\\rtf1\\ansi One\\par Two}", u"One\rTwo", u"One\r\nTwo"},
        {"{no rtf}", u"{no rtf}", u"{no rtf}"},
        {"a\r\nb\nc\xE9", u"a\rb\rc\u00E9", u"a\r\nb\r\nc\u00E9"},
        {nullptr, u"", u""},
    };
    const DesktopMachine desktop(ResourceFile().Dialog(
        1, DialogBytes(u"Rich").Control(u"RICHEDIT20a", 7, WS_VISIBLE | ES_READONLY)));
    const HMODULE library = LoadLibraryW(TEXT("Riched20.dll"));
    const HWND dialog = Make(desktop, 1);
    const HWND edit = GetDlgItem(dialog, 7);
    SetWindowTextW(edit, TEXT("before"));
    for (const auto& c : cases) {
        SETTEXTEX set = {ST_DEFAULT, 0};
        SendMessageW(edit, EM_SETTEXTEX, reinterpret_cast<WPARAM>(&set), Pointer(c.given));
        for (const DWORD flags : {GT_DEFAULT, GT_USECRLF}) {
            WCHAR text[64];
            GETTEXTEX get = {sizeof(text), flags, 1200, nullptr, nullptr};
            SendMessageW(edit, EM_GETTEXTEX, reinterpret_cast<WPARAM>(&get), Pointer(text));
            EXPECT_EQ(std::u16string(text), flags == GT_DEFAULT ? c.plain : c.crlf);
        }
        EXPECT_EQ(TextOf(edit), c.crlf);
    }
    EXPECT_EQ(SendMessageW(edit, EM_SETBKGNDCOLOR, 0, 0xD2FAFF), 0xFFFFFF);
    EXPECT_EQ(SendMessageW(edit, EM_SETBKGNDCOLOR, 0, 0), 0xD2FAFF);
    DestroyWindow(dialog);
    FreeLibrary(library);
}

TEST(Windows, ListsSortAndSelect) {
    OneDialog dialog(DialogBytes(u"Lists")
                         .Control(u"COMBOBOX", 7, CBS_DROPDOWNLIST | CBS_SORT)
                         .Control(u"\x83", 8, LBS_NOTIFY));
    const struct {
        UINT message;
        WPARAM wParam;
        const WCHAR* text;
        LRESULT result;
    } cases[] = {
        {CB_ADDSTRING, 0, TEXT("beta"), 0},
        {CB_ADDSTRING, 0, TEXT("Gamma"), 1},
        {CB_SETCURSEL, 1, nullptr, 1},
        {CB_ADDSTRING, 0, TEXT("Alpha"), 0},
        {CB_GETCURSEL, 0, nullptr, 2},  // the selection goes with its entry
        {CB_SELECTSTRING, 0, TEXT("none"), CB_ERR},
        {CB_SELECTSTRING, 0, TEXT("BET"), 1},
    };
    for (const auto& c : cases)
        EXPECT_EQ(dialog.Send(7, c.message, c.wParam, Pointer(c.text)), c.result) << &c - cases;
    EXPECT_EQ(TextOf(dialog.Item(7)), u"beta");
    dialog.Send(7, CB_RESETCONTENT);
    EXPECT_EQ(TextOf(dialog.Item(7)), u"");
    EXPECT_TRUE(dialog.codes.empty()) << "messages of the program don't notify it";

    dialog.machine.faults.FailCalls("SendMessageW", u"384", 8);
    EXPECT_EQ(dialog.Send(8, LB_ADDSTRING, 0, Pointer(TEXT("x"))), LB_ERRSPACE);
}

int InsertRow(const OneDialog& dialog, std::u16string name) {
    LVITEMW item = {};
    item.mask = LVIF_TEXT | LVIF_STATE;
    item.pszText = name.data();
    return static_cast<int>(dialog.Send(7, LVM_INSERTITEMW, 0, Pointer(&item)));
}

TEST(ListViews, RowsGoWhereTheOrderPutsThem) {
    const struct {
        DWORD style;
        std::u16string rows;
    } cases[] = {
        {0, u"bCa"},  // each was inserted at 0
        {LVS_SORTASCENDING, u"abC"},
        {LVS_SORTDESCENDING, u"Cba"},
    };
    for (const auto& c : cases) {
        const OneDialog dialog(
            DialogBytes(u"List").Control(u"SysListView32", 7, LVS_REPORT | c.style));
        for (std::u16string name : {u"a", u"C", u"b"}) {
            LVITEMW item = {};
            item.iSubItem = 1;
            item.pszText = name.data();
            const auto row = static_cast<WPARAM>(InsertRow(dialog, name));
            dialog.Send(7, LVM_SETITEMTEXTW, row, Pointer(&item));
        }
        for (const int column : {0, 1}) {
            std::u16string texts;
            for (WPARAM row = 0; row < 4; ++row) {
                WCHAR text[8] = {};
                LVITEMW item = {};
                item.iSubItem = column;
                item.pszText = text;
                item.cchTextMax = 8;
                dialog.Send(7, LVM_GETITEMTEXTW, row, Pointer(&item));
                texts += text;
            }
            EXPECT_EQ(texts, c.rows) << column;
        }
    }
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
    InsertRow(dialog, u"b");
    InsertRow(dialog, u"a");
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
    const struct {
        std::optional<std::u16string> given;
        const char16_t* extension;
        DWORD capacity;
        std::u16string path;  // empty: as cancelled
    } cases[] = {
        {u"C:\\a", u"log", 260, u"C:\\a.log"}, {u"C:\\x.y\\a", u"log", 260, u"C:\\x.y\\a.log"},
        {u"C:\\a", nullptr, 260, u"C:\\a"},    {u"C:\\a", u"log", 8, u""},
        {std::nullopt, u"log", 260, u""},
    };
    for (const auto& c : cases) {
        DesktopMachine desktop;
        desktop.user.file = c.given;
        WCHAR path[260] = {};
        OPENFILENAMEW dialog = {};
        dialog.lStructSize = sizeof(dialog);
        dialog.lpstrFilter = TEXT("Logs\0*.log\0");
        dialog.lpstrFile = path;
        dialog.nMaxFile = c.capacity;
        dialog.lpstrDefExt = c.extension;
        EXPECT_EQ(GetSaveFileNameW(&dialog), !c.path.empty());
        EXPECT_EQ(std::u16string(path), c.path);
        EXPECT_EQ(desktop.user.fileDialog.filter, std::u16string(u"Logs\0*.log\0", 11));
    }
}

}  // namespace
