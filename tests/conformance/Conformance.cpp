#include "Conformance.h"

Conformance::Conformance() {
    RegDeleteTreeW(HKEY_CURRENT_USER, kScratch);  // of a run that was broken off
    EXPECT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, kScratch, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                              &scratch, nullptr),
              ERROR_SUCCESS);
}

Conformance::~Conformance() {
    EXPECT_EQ(RegCloseKey(scratch), ERROR_SUCCESS);
    RegDeleteTreeW(HKEY_CURRENT_USER, kScratch);
}

Text Conformance::Put(const WCHAR* name, const std::string& bytes) {
    const Text path = here->folder + name;
    const HANDLE file =
        CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    DWORD written = 0;
    EXPECT_TRUE(WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr));
    CloseHandle(file);
    return path;
}

Worker::Worker(std::function<void()> work)
    : m_work(std::move(work)),
      m_thread(CreateThread(nullptr, 0, &Body, const_cast<std::function<void()>*>(&m_work), 0,
                            nullptr)) {}

Worker::~Worker() {
    EXPECT_EQ(WaitForSingleObject(m_thread, INFINITE), WAIT_OBJECT_0);
    CloseHandle(m_thread);
}

DWORD WINAPI Worker::Body(LPVOID work) {
    (*static_cast<const std::function<void()>*>(work))();
    return 0;
}

DialogCase::DialogCase() {
    s_case = this;
}

DialogCase::~DialogCase() {
    on = nullptr;
    for (const HWND window : m_windows)
        DestroyWindow(window);
    s_case = nullptr;
}

HWND DialogCase::Open(int id, HWND owner) {
    dialog = CreateDialogParamW(here->module, MAKEINTRESOURCEW(id), owner, &Procedure, 0);
    if (dialog != nullptr) m_windows.push_back(dialog);
    return dialog;
}

LRESULT DialogCase::Send(int id, UINT message, WPARAM wParam, LPARAM lParam) const {
    return SendMessageW(Item(id), message, wParam, lParam);
}

Text DialogCase::TextOf(HWND window) {
    WCHAR text[256];
    return Text(text, static_cast<std::size_t>(GetWindowTextW(window, text, 256)));
}

INT_PTR CALLBACK DialogCase::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    return s_case->on ? s_case->on(window, message, wParam, lParam) : FALSE;
}
