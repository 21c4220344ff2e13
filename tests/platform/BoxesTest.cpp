// Message boxes, which ask the machine's user.

#include <functional>

#include <windows.h>

#include "FactsMachine.h"
#include "User.h"

namespace {

struct DesktopMachine : FactsMachine, platform::User {
    DesktopMachine() { machine.user = this; }

    int OnMessageBox(const platform::MessageBoxRequest& request) override { return onBox(request); }
    std::optional<std::u16string> OnFileDialog(const platform::FileDialogRequest&) override {
        return std::nullopt;
    }
    bool OnIdle() override { return false; }

    std::function<int(const platform::MessageBoxRequest&)> onBox;
};

TEST(Boxes, OfferTheButtonsOfTheirStyle) {
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
        desktop.onBox = [&](const platform::MessageBoxRequest& box) {
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
            EXPECT_EQ(box.style, c.style);
            return c.ids.back();
        };
        EXPECT_EQ(MessageBoxW(nullptr, TEXT("Text"), TEXT("Caption"), c.style), c.ids.back());
    }
}

TEST(Boxes, OneThatCannotBeAnsweredEndsTheMachine) {
    for (const int answer : {-1, IDYES, 0}) {  // no user, not one of its buttons, held for good
        SCOPED_TRACE(answer);
        DesktopMachine desktop;
        if (answer == -1) desktop.machine.user = nullptr;
        desktop.onBox = [&](const auto&) { return answer; };
        EXPECT_THROW(MessageBoxW(nullptr, TEXT("Text"), nullptr, MB_OK), platform::MachineEnded);
    }
}

}  // namespace
