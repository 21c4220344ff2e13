// Property sheets: what their pages are told, when, and that each is released once.

#include <algorithm>
#include <map>

#include "Conformance.h"

#include <prsht.h>

namespace {

class PropertySheetTest : public Conformance {
  protected:
    PropertySheetTest() { s_case = this; }

    // Shows a sheet of the pages A, B and C to a user who presses these keys: '0' and '1' activate
    // a page, 'o', 'a' and 'c' are the sheet's buttons, 'x' closes its frame.
    INT_PTR Show(const std::string& keys) {
        events.clear();
        m_keys = keys;
        PROPSHEETPAGEW page = {};
        page.dwSize = sizeof(page);
        page.dwFlags = PSP_USECALLBACK;
        page.hInstance = here->module;
        page.pszTemplate = MAKEINTRESOURCEW(IDD_PAGE);
        page.pfnDlgProc = &PageProcedure;
        page.pfnCallback = &PageCallback;
        std::vector<HPROPSHEETPAGE> handles;
        for (page.lParam = 'A'; page.lParam <= 'C'; ++page.lParam)
            handles.push_back(CreatePropertySheetPageW(&page));
        PROPSHEETHEADERW header = {};
        header.dwSize = sizeof(header);
        header.dwFlags = PSH_USECALLBACK;
        header.hInstance = here->module;
        header.pszCaption = TEXT("Sheet");
        header.nPages = static_cast<UINT>(handles.size());
        header.phpage = handles.data();
        header.pfnCallback = &OnSheet;
        return PropertySheetW(&header);
    }
    long Count(const std::string& event) const {
        return static_cast<long>(std::count(events.begin(), events.end(), event));
    }

    struct Run {
        const char* what;
        std::string keys, asked;
        LONG_PTR answer;  // to the event asked; else 0
        std::string events;
        INT_PTR result;
    };
    // Each run has these events, and releases each page once, last.
    void ExpectRuns(const std::vector<Run>& runs) {
        for (const Run& run : runs) {
            SCOPED_TRACE(run.what);
            answers = {{run.asked, run.answer}};
            EXPECT_EQ(Show(run.keys), run.result);
            std::string told;
            for (const std::string& event : events) {
                if (std::string("addref destroy release").find(event.substr(2)) ==
                    std::string::npos)
                    told += event + ", ";
            }
            EXPECT_EQ(told, run.events);
            for (const std::string page : {"A", "B", "C"}) {
                EXPECT_EQ(Count(page + " addref"), 1) << page;
                EXPECT_EQ(Count(page + " release"), 1) << page;
                EXPECT_EQ(Count(page + " init"), Count(page + " destroy")) << page;
                const auto last =
                    std::find_if(events.rbegin(), events.rend(),
                                 [&](const std::string& event) { return event[0] == page[0]; });
                EXPECT_EQ(*last, page + " release");
            }
        }
    }

    std::vector<std::string> events;          // "<page> <what>"
    std::map<std::string, LONG_PTR> answers;  // of a page to an event

  private:
    LONG_PTR Note(LPARAM page, const std::string& what) {
        events.push_back(static_cast<char>(page) + (" " + what));
        const auto answer = answers.find(events.back());
        return answer == answers.end() ? 0 : answer->second;
    }
    // The user's keys are posted, so that the sheet's own loop takes them.
    static int CALLBACK OnSheet(HWND window, UINT message, LPARAM) {
        if (message != PSCB_INITIALIZED) return 0;
        const std::map<char, std::pair<UINT, WPARAM>> meanings = {
            {'0', {PSM_SETCURSEL, 0}},
            {'1', {PSM_SETCURSEL, 1}},
            {'o', {PSM_PRESSBUTTON, PSBTN_OK}},
            {'a', {PSM_PRESSBUTTON, PSBTN_APPLYNOW}},
            {'c', {PSM_PRESSBUTTON, PSBTN_CANCEL}},
            {'x', {WM_CLOSE, 0}},
        };
        for (const char key : s_case->m_keys)
            PostMessageW(window, meanings.at(key).first, meanings.at(key).second, 0);
        return 0;
    }
    static UINT CALLBACK PageCallback(HWND, UINT message, PROPSHEETPAGEW* page) {
        const char* const names[] = {"addref", "release", "create"};
        return s_case->Note(page->lParam, names[message]) == 0;
    }
    static INT_PTR CALLBACK PageProcedure(HWND window, UINT message, WPARAM, LPARAM lParam) {
        if (message == WM_INITDIALOG) {
            const LPARAM page = reinterpret_cast<const PROPSHEETPAGEW*>(lParam)->lParam;
            SetWindowLongPtrW(window, GWLP_USERDATA, page);
            s_case->Note(page, "init");
            return TRUE;
        }
        const LPARAM page = GetWindowLongPtrW(window, GWLP_USERDATA);
        if (message == WM_DESTROY && page != 0) s_case->Note(page, "destroy");
        if (message != WM_NOTIFY) return FALSE;
        const auto& note = *reinterpret_cast<const PSHNOTIFY*>(lParam);
        const std::map<UINT, std::string> names = {
            {PSN_SETACTIVE, "setactive"}, {PSN_KILLACTIVE, "killactive"},   {PSN_APPLY, "apply"},
            {PSN_RESET, "reset"},         {PSN_QUERYCANCEL, "querycancel"},
        };
        const auto name = names.find(note.hdr.code);
        if (name == names.end()) return FALSE;
        SetWindowLongPtrW(window, DWLP_MSGRESULT,
                          s_case->Note(page, name->second + (note.lParam ? "+" : "")));
        return TRUE;
    }

    static inline PropertySheetTest* s_case = nullptr;
    std::string m_keys;
};

const std::string kStart = "A create, A init, A setactive, ";
const std::string kToB = "A killactive, B create, B init, B setactive, ";

TEST_F(PropertySheetTest, PagesAreToldInOrder) {
    ExpectRuns({
        {"cancel", "c", "", 0, kStart + "A querycancel, A reset, ", 0},
        {"the frame's own closing", "x", "", 0, kStart + "A querycancel, A reset+, ", 0},
        {"OK", "o", "", 0, kStart + "A killactive, A apply+, ", 1},
        {"a change of tabs and back", "10c", "", 0,
         kStart + kToB + "B killactive, A setactive, A querycancel, A reset, B reset, ", 0},
        {"apply goes to every page that was shown", "1ao", "", 0,
         kStart + kToB + "B killactive, A apply, B apply, B setactive, " +
             "B killactive, A apply+, B apply+, ",
         1},
        {"a page that doesn't let go", "1oac", "A killactive", 1,
         kStart + "A killactive, A killactive, A killactive, A querycancel, A reset, ", 0},
        {"a page that doesn't want to be active", "1c", "B setactive", -1,
         kStart + kToB +
             "C create, C init, C setactive, C querycancel, A reset, B reset, C reset, ",
         0},
    });
}

TEST_F(PropertySheetTest, WhatWasAppliedIsSavedAlthoughTheSheetIsCancelled) {
    ExpectRuns({{"apply, then cancel", "ac", "", 0,
                 kStart + "A killactive, A apply, A setactive, A querycancel, A reset, ", 1}});
}

}  // namespace
