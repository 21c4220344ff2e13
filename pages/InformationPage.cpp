#include "InformationPage.h"

#include <commdlg.h>
#include <new>

#include "../resources/resource.h"
#include "CommonControls.h"
#include "InformationFile.h"
#include "InformationPoll.h"
#include "LibraryState.h"
#include "Messages.h"
#include "RegistryKey.h"
#include "RegistryPaths.h"

#include <strsafe.h>

namespace {

constexpr struct {
    LPCWSTR title;
    int width;  // pixels of a screen with 96 dots an inch
} kColumns[] = {{TEXT("Information"), 200}, {TEXT("Value"), 130}};

bool InsertColumns(HWND list) {
    int index = 0;
    for (const auto& column : kColumns)
        if (!InsertColumn(list, index++, column.title, ScaleToScreen(column.width))) return false;
    return true;
}

// False when the list couldn't take all of it.
bool FillList(HWND list, const InformationRows& rows) {
    bool filled = ClearRows(list);
    int place = 0;
    for (const InformationRow& row : rows) {
        const int index = InsertRow(list, place++, row.label);
        filled = index >= 0 && SetCell(list, index, 1, row.value) && filled;
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

  private:
    bool OnStart() override;
    INT_PTR OnNotify(const NMHDR& header) override;
    void OnCommand(WORD control, WORD notification) override;
    void OnPosted(UINT message, WPARAM wParam, LPARAM lParam) override;

    bool StopRequested() override { return false; }
    void Report(const UserFailure& failure) override { ShowFailure(failure); }

    void ShowRows();
    void ShowFailure(const UserFailure& failure);
    void SaveRowsToFile();

    RegistryPath classKeyPath = {};
    WCHAR deviceName[40] = {};  // the adapter's NetCfgInstanceId
    bool m_isShown = false;     // the list shows the rows, as far as they have been told of
    bool m_boxIsUp = false;
    InformationPoll m_poll{InformationSource{classKeyPath, deviceName}};
};

bool InformationPage::OnStart() {
    RegistryKey key;
    if (key.Open(classKeyPath, KEY_QUERY_VALUE) == ERROR_SUCCESS)
        key.ReadText(kNetCfgInstanceId, deviceName);
    if (!InsertColumns(Control(IDC_INFORMATION_LIST))) return false;
    m_poll.Fill(*this);
    ShowRows();
    return true;
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
        ShowFailure({static_cast<UINT>(wParam), static_cast<DWORD>(lParam)});
}

void InformationPage::ShowRows() {
    InformationRows rows;
    m_isShown = m_poll.Copy(rows) && FillList(Control(IDC_INFORMATION_LIST), rows);
}

// One box at a time. A refresh that fails again while it is up has nothing new to say.
void InformationPage::ShowFailure(const UserFailure& failure) {
    if (m_boxIsUp) return;
    m_boxIsUp = true;
    ShowSystemErrorMessage(failure.message, failure.error);
    m_boxIsUp = false;
}

void InformationPage::SaveRowsToFile() {
    WCHAR path[MAX_PATH];
    if (!AskForFile(Window(), path)) return;
    InformationRows rows;
    UserFailure failure;
    if (m_poll.Copy(rows))
        failure = SaveRows(path, rows);
    else
        failure = {IDS_FILE_WRITE_FAILED, GetLastError()};
    if (failure) ShowFailure(failure);
}

}  // namespace

std::unique_ptr<SheetPage> NewInformationPage(LPCWSTR classKeyPath) {
    return std::unique_ptr<SheetPage>(new (std::nothrow) InformationPage(classKeyPath));
}
