#include "InformationPage.h"

#include <commctrl.h>
#include <commdlg.h>
#include <new>

#include "../resources/resource.h"
#include "AdapterContext.h"
#include "AutoClasses.h"
#include "InformationFile.h"
#include "InformationPoll.h"
#include "LibraryState.h"
#include "Messages.h"
#include "RegistryServices.h"

#include <strsafe.h>

namespace {

constexpr struct {
    LPCWSTR title;
    int width;  // pixels of a screen with kUsualDots
} kColumns[] = {{TEXT("Information"), 200}, {TEXT("Value"), 130}};

constexpr int kUsualDots = 96;  // an inch

// The screen's, an inch; the usual ones when it doesn't tell.
int ScreenDots() {
    const ScopedScreen screen(GetDC(nullptr));
    const int dots = screen ? GetDeviceCaps(screen.Get(), LOGPIXELSX) : 0;
    return dots > 0 ? dots : kUsualDots;
}

bool InsertColumns(HWND list) {
    const int dots = ScreenDots();
    for (size_t i = 0; i < ARRAYSIZE(kColumns); ++i) {
        LVCOLUMNW column = {};
        column.mask = LVCF_FMT | LVCF_WIDTH | LVCF_TEXT | LVCF_SUBITEM;
        column.fmt = LVCFMT_LEFT;
        column.cx = kColumns[i].width * dots / kUsualDots;
        column.pszText = const_cast<LPWSTR>(kColumns[i].title);
        column.iSubItem = static_cast<int>(i);
        if (SendMessageW(list, LVM_INSERTCOLUMNW, i, reinterpret_cast<LPARAM>(&column)) == -1)
            return false;
    }
    return true;
}

// False when the list couldn't take all of it.
bool FillList(HWND list, InformationRows& rows) {
    bool filled = SendMessageW(list, LVM_DELETEALLITEMS, 0, 0) != FALSE;
    int place = 0;
    for (InformationRow& row : rows) {
        LVITEMW item = {};
        item.mask = LVIF_TEXT | LVIF_STATE;
        item.iItem = place++;
        item.pszText = row.label;
        const LRESULT index =
            SendMessageW(list, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
        LVITEMW value = {};
        value.iSubItem = 1;
        value.pszText = row.value;
        filled = index >= 0 &&
                 SendMessageW(list, LVM_SETITEMTEXTW, static_cast<WPARAM>(index),
                              reinterpret_cast<LPARAM>(&value)) &&
                 filled;
    }
    return filled;
}

// False when the user cancels.
bool AskForFile(HWND owner, WCHAR (&path)[MAX_PATH]) {
    WCHAR title[250] = {};
    LoadStringW(Library().moduleHandle, IDS_SAVE_INFORMATION, title, ARRAYSIZE(title));
    path[0] = 0;
    OPENFILENAMEW dialog = {};
    dialog.lStructSize = sizeof(dialog);
    dialog.hwndOwner = owner;
    dialog.hInstance = Library().moduleHandle;
    dialog.lpstrFilter = TEXT("*.log\0*.log\0");
    dialog.lpstrFile = path;
    dialog.nMaxFile = ARRAYSIZE(path);
    dialog.lpstrTitle = title;
    dialog.Flags = OFN_OVERWRITEPROMPT | OFN_SHOWHELP;
    dialog.lpstrDefExt = TEXT("log");
    return GetSaveFileNameW(&dialog) != FALSE;
}

class InformationPage final : public SheetPage, private RefreshObserver {
  public:
    explicit InformationPage(LPCWSTR path) {
        (void)StringCchCopyW(classKeyPath, ARRAYSIZE(classKeyPath), path);
    }

    void OnStart() override;
    INT_PTR OnNotify(const NMHDR& header) override;
    void OnCommand(WORD control, WORD notification) override;
    void OnPosted(UINT message, WPARAM wParam, LPARAM lParam) override;

  private:
    bool StopRequested() override { return false; }
    void Report(UINT message, DWORD error) override { ShowFailure(message, error); }

    void ShowRows();
    void ShowFailure(UINT message, DWORD error);
    void SaveRowsToFile();

    WCHAR classKeyPath[kPathCapacity] = {};
    WCHAR deviceName[40] = {};  // the adapter's NetCfgInstanceId
    HWND m_list = nullptr;      // null when it couldn't be set up: then it stays empty
    bool m_isShown = false;     // the list shows the rows, as far as they have been told of
    bool m_boxIsUp = false;
    InformationPoll m_poll{InformationSource{classKeyPath, deviceName}};
};

void InformationPage::OnStart() {
    ScopedRegKey key;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, classKeyPath, 0, KEY_QUERY_VALUE, key.Receive()) ==
        ERROR_SUCCESS)
        ReadRegistryText(key.Get(), TEXT("NetCfgInstanceId"), deviceName, ARRAYSIZE(deviceName),
                         sizeof(deviceName));
    const HWND list = GetDlgItem(Window(), IDC_INFORMATION_LIST);
    if (!list || !InsertColumns(list)) return;
    m_list = list;
    m_poll.Fill(*this);
    ShowRows();
}

INT_PTR InformationPage::OnNotify(const NMHDR& header) {
    switch (header.code) {
        case PSN_SETACTIVE:
            if (!m_isShown) ShowRows();
            m_poll.Start(Window());
            break;
        case PSN_KILLACTIVE:
        case PSN_APPLY:
        case PSN_RESET:
            m_poll.Stop();
            break;
        default:
            break;
    }
    return 0;
}

void InformationPage::OnCommand(WORD control, WORD notification) {
    if (control == IDC_SAVE_INFORMATION && notification == BN_CLICKED) SaveRowsToFile();
}

void InformationPage::OnPosted(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == kRowsChanged) ShowRows();
    // What comes too late would be about a tab that the user has left.
    if (message == kRefreshFailed && m_poll.Runs())
        ShowFailure(static_cast<UINT>(wParam), static_cast<DWORD>(lParam));
}

void InformationPage::ShowRows() {
    InformationRows rows;
    m_isShown = m_list && m_poll.Copy(rows) && FillList(m_list, rows);
}

// One box at a time. A refresh that fails again while it is up has nothing new to say.
void InformationPage::ShowFailure(UINT message, DWORD error) {
    if (m_boxIsUp) return;
    m_boxIsUp = true;
    const HWND window = Window();
    ShowSystemErrorMessage(message, error);
    // The sheet, and this page with it, may have gone in the meantime.
    if (IsWindow(window)) m_boxIsUp = false;
}

void InformationPage::SaveRowsToFile() {
    WCHAR path[MAX_PATH];
    if (!AskForFile(Window(), path)) return;
    InformationRows rows;
    DWORD error = ERROR_SUCCESS;
    UINT failure = 0;
    if (m_poll.Copy(rows)) {
        failure = SaveRows(path, rows, &error);
    } else {
        error = GetLastError();
        failure = IDS_FILE_WRITE_FAILED;
    }
    if (failure != 0) ShowFailure(failure, error);
}

}  // namespace

std::unique_ptr<SheetPage> NewInformationPage(LPCWSTR classKeyPath) {
    return std::unique_ptr<SheetPage>(new (std::nothrow) InformationPage(classKeyPath));
}

INT_PTR CALLBACK InformationDialogProc(HWND page, UINT message, WPARAM wParam, LPARAM lParam) {
    return HandlePageMessage(Library().informationPages, page, message, wParam, lParam);
}

UINT CALLBACK InformationPageCallback(HWND, UINT message, PROPSHEETPAGEW* sheetPage) {
    return ReleaseSheetPage(Library().informationPages, message, sheetPage);
}
