// Property sheets: what their pages are told, when, and that each is released once.

#include "DesktopMachine.h"

#include <commctrl.h>
#include <prsht.h>
#include <algorithm>
#include <map>
#include <optional>

namespace {

constexpr UINT kApplyId = 0x3021;

// What pages are told, in order: "<page> <what>".
std::vector<std::string> g_events;
// The answers of a page to a notification, by "<page> <what>".
std::map<std::string, LONG_PTR> g_answers;
LONG_PTR Note(LPARAM page, const std::string& what) {
    const std::string event = static_cast<char>(page) + (" " + what);
    g_events.push_back(event);
    const auto answer = g_answers.find(event);
    return answer == g_answers.end() ? 0 : answer->second;
}

INT_PTR CALLBACK PageProcedure(HWND window, UINT message, WPARAM, LPARAM lParam) {
    if (message == WM_INITDIALOG) {
        const LPARAM page = reinterpret_cast<const PROPSHEETPAGEW*>(lParam)->lParam;
        SetWindowLongPtrW(window, GWLP_USERDATA, page);
        Note(page, "init");
        return TRUE;
    }
    const LPARAM page = GetWindowLongPtrW(window, GWLP_USERDATA);
    if (message == WM_DESTROY) Note(page, "destroy");
    if (message != WM_NOTIFY) return FALSE;
    const auto& note = *reinterpret_cast<const PSHNOTIFY*>(lParam);
    const std::map<UINT, std::string> names = {
        {PSN_SETACTIVE, "setactive"}, {PSN_KILLACTIVE, "killactive"},   {PSN_APPLY, "apply"},
        {PSN_RESET, "reset"},         {PSN_QUERYCANCEL, "querycancel"},
    };
    const auto name = names.find(note.hdr.code);
    if (name == names.end()) return FALSE;
    SetWindowLongPtrW(window, DWLP_MSGRESULT, Note(page, name->second + (note.lParam ? "+" : "")));
    return TRUE;
}

UINT CALLBACK PageCallback(HWND, UINT message, PROPSHEETPAGEW* page) {
    const char* const names[] = {"addref", "release", "create"};
    return Note(page->lParam, names[message]) == 0;
}

long Count(const std::string& event) {
    return std::count(g_events.begin(), g_events.end(), event);
}

class PropertySheetTest : public testing::Test {
  protected:
    PropertySheetTest() {
        g_events.clear();
        g_answers.clear();
        ResourceFile resources;
        for (unsigned id : {'A', 'B', 'C'})
            resources.Dialog(id, DialogBytes(std::u16string(u"Page ") + static_cast<char16_t>(id)));
        resources.Dialog('X', DialogBytes(u"Bad").Control(u"NoSuchClass", 1));
        desktop.emplace(resources);
    }

    HPROPSHEETPAGE Make(char page, DWORD size = sizeof(PROPSHEETPAGEW)) const {
        PROPSHEETPAGEW description = {};
        description.dwSize = size;
        description.dwFlags = PSP_USECALLBACK;
        description.hInstance = desktop->module;
        description.pszTemplate = MAKEINTRESOURCEW(page);
        description.pfnDlgProc = &PageProcedure;
        description.lParam = page;
        description.pfnCallback = &PageCallback;
        return CreatePropertySheetPageW(&description);
    }
    static int CALLBACK OnSheet(HWND window, UINT, LPARAM) {
        s_sheet = window;
        return 0;
    }
    INT_PTR Show(const std::string& pages) {
        std::vector<HPROPSHEETPAGE> handles;
        for (const char page : pages)
            handles.push_back(Make(page));
        PROPSHEETHEADERW header = {};
        header.dwSize = sizeof(header);
        header.dwFlags = PSH_USECALLBACK;
        header.nPages = static_cast<UINT>(handles.size());
        header.phpage = handles.data();
        header.pfnCallback = &OnSheet;
        return PropertySheetW(&header);
    }
    static LRESULT Tell(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
        return SendMessageW(s_sheet, message, wParam, lParam);
    }
    // '0' to '9' activate a page, 'o', 'a' and 'c' press a button, 'x' closes the frame.
    static void Press(char key) {
        if (key >= '0' && key <= '9') Tell(PSM_SETCURSEL, static_cast<WPARAM>(key - '0'));
        if (key == 'o') Tell(PSM_PRESSBUTTON, PSBTN_OK);
        if (key == 'a') Tell(PSM_PRESSBUTTON, PSBTN_APPLYNOW);
        if (key == 'c') SendMessageW(GetDlgItem(s_sheet, IDCANCEL), BM_CLICK, 0, 0);
        if (key == 'x') SendMessageW(s_sheet, WM_CLOSE, 0, 0);
    }
    void PressAll(const std::string& keys) {
        for (const char key : keys)
            desktop->user.deeds.push_back([key] { Press(key); });
    }

    static HWND s_sheet;
    std::optional<DesktopMachine> desktop;
};
HWND PropertySheetTest::s_sheet = nullptr;

TEST_F(PropertySheetTest, PagesAreToldInOrder) {
    const std::string start = "A create, A init, A setactive, ";
    const std::string toB = "A killactive, B create, B init, B setactive, ";
    const struct {
        const char* what;
        std::string keys, asked;
        LONG_PTR answer;  // to the notification asked; else 0
        std::string events;
        INT_PTR result;
    } cases[] = {
        {"cancel", "c", "", 0, start + "A querycancel, A reset, ", 0},
        {"the frame's own closing", "x", "", 0, start + "A querycancel, A reset+, ", 0},
        {"OK", "o", "", 0, start + "A killactive, A apply+, ", 1},
        {"apply, then cancel", "ac", "", 0,
         start + "A killactive, A apply, A setactive, A querycancel, A reset, ", 1},
        {"a change of tabs and back", "10c", "", 0,
         start + toB + "B killactive, A setactive, A querycancel, A reset, B reset, ", 0},
        {"apply goes to every page that was shown", "1ao", "", 0,
         start + toB + "B killactive, A apply, B apply, B setactive, " +
             "B killactive, A apply+, B apply+, ",
         1},
        {"the tab that is active already", "0c", "", 0,
         start + "A killactive, A setactive, A querycancel, A reset, ", 0},
        {"a page that doesn't let go", "1oac", "A killactive", 1,
         start + "A killactive, A killactive, A killactive, A querycancel, A reset, ", 0},
        {"a page that refuses to apply, and comes up", "1oc", "A apply+", PSNRET_INVALID,
         start + toB + "B killactive, A apply+, A setactive, A querycancel, A reset, B reset, ", 0},
        {"a page that refuses to apply, and doesn't", "1oc", "A apply+",
         PSNRET_INVALID_NOCHANGEPAGE,
         start + toB + "B killactive, A apply+, B setactive, B querycancel, A reset, B reset, ", 0},
        {"a page that doesn't want to be active", "1c", "B setactive", -1,
         start + toB + "C create, C init, C setactive, C querycancel, A reset, B reset, C reset, ",
         0},
        {"a page that wants another to be active", "2c", "C setactive", 'A',
         start + "A killactive, C create, C init, C setactive, A setactive, A querycancel, " +
             "A reset, C reset, ",
         0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        g_events.clear();
        g_answers = {{c.asked, c.answer}};
        PressAll(c.keys);
        EXPECT_EQ(Show("ABC"), c.result);
        std::string events;
        for (const std::string& event : g_events) {
            if (!event.ends_with("addref") && !event.ends_with("destroy") &&
                !event.ends_with("release"))
                events += event + ", ";
        }
        EXPECT_EQ(events, c.events);
    }
}

TEST_F(PropertySheetTest, CancelCanBeRefused) {
    g_answers["A querycancel"] = 1;
    PressAll("c");
    desktop->user.deeds.push_back([] { g_answers.clear(); });
    PressAll("c");
    EXPECT_EQ(Show("A"), 0);
    EXPECT_EQ(Count("A querycancel"), 2);
    EXPECT_EQ(Count("A reset"), 1);
}

TEST_F(PropertySheetTest, EachPageIsReleasedOnceAfterItsWindow) {
    const struct {
        const char* what;
        std::string pages, keys;
        std::map<std::string, LONG_PTR> answers;
        std::string made;  // pages whose window was made
        INT_PTR result;
    } cases[] = {
        {"some shown", "ABC", "1o", {}, "AB", 1},
        {"one refuses to be made", "ABC", "1c", {{"B create", 1}}, "AC", 0},
        {"the first can't be made", "XAB", "c", {}, "A", 0},
        {"the last can't be made", "ABX", "2c", {}, "AB", 0},
        {"none can be made", "X", "", {}, "", -1},
        {"no pages", "", "", {}, "", -1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        g_events.clear();
        g_answers = c.answers;
        PressAll(c.keys);
        EXPECT_EQ(Show(c.pages), c.result);
        for (const char page : c.pages) {
            const std::string name(1, page);
            const bool made = c.made.find(page) != std::string::npos;
            EXPECT_EQ(Count(name + " addref"), 1) << page;
            EXPECT_EQ(Count(name + " release"), 1) << page;
            EXPECT_EQ(Count(name + " init"), made) << page;
            EXPECT_EQ(Count(name + " destroy"), made) << page;
            const auto last =
                std::find_if(g_events.rbegin(), g_events.rend(),
                             [&](const std::string& event) { return event[0] == page; });
            EXPECT_EQ(*last, name + " release");
        }
    }
}

TEST_F(PropertySheetTest, PageThatNoSheetTookBelongsToItsMaker) {
    const std::vector<std::string> once = {"A addref", "A release"};
    const HPROPSHEETPAGE page = Make('A');
    EXPECT_TRUE(DestroyPropertySheetPage(page));
    EXPECT_FALSE(DestroyPropertySheetPage(page));
    EXPECT_EQ(g_events, once);

    g_events.clear();
    for (const DWORD size : {0U, 72U - 1, 5000U})
        EXPECT_EQ(Make('A', size), nullptr) << size;
    EXPECT_TRUE(g_events.empty());
    // A sheet that fails lets go of what it was given.
    desktop->machine.faults.FailCalls("PropertySheetW", u"", 8);
    EXPECT_EQ(Show("A"), -1);
    EXPECT_EQ(g_events, once);
}

TEST_F(PropertySheetTest, ApplyIsEnabledWhileAPageHasChanges) {
    desktop->user.deeds.push_back([] {
        const HWND apply = GetDlgItem(s_sheet, kApplyId);
        const auto page = [](WPARAM index) {
            return static_cast<WPARAM>(Tell(PSM_INDEXTOHWND, index));
        };
        Press('1');
        EXPECT_FALSE(IsWindowEnabled(apply));
        Tell(PSM_CHANGED, page(0));
        Tell(PSM_CHANGED, page(1));
        Tell(PSM_UNCHANGED, page(0));
        EXPECT_TRUE(IsWindowEnabled(apply));
        SendMessageW(apply, BM_CLICK, 0, 0);
        EXPECT_FALSE(IsWindowEnabled(apply));
        SendMessageW(apply, BM_CLICK, 0, 0);
        EXPECT_EQ(Count("A apply"), 1);
    });
    PressAll("c");
    EXPECT_EQ(Show("AB"), 1);
}

}  // namespace
