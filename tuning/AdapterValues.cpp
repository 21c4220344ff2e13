#include "AdapterValues.h"

#include <algorithm>
#include <strsafe.h>

void SetAdapterKey(LogStream* log, const TuningAdapter& adapter, LPCWSTR name, int number) {
    WCHAR text[12];  // "-2147483648" and the terminator
    (void)StringCchPrintfW(text, ARRAYSIZE(text), TEXT("%d"), number);
    LogFormatted(log, TEXT("Setting adapter %d key %s to %s"), adapter.number, name, text);

    (void)adapter.key.WriteText(name, text);
}

void DeleteAdapterKey(LogStream* log, const TuningAdapter& adapter, LPCWSTR name) {
    LogFormatted(log, TEXT("Deleting adapter %d key %s"), adapter.number, name);
    (void)adapter.key.DeleteValue(name);
}

int GetOsTuningLevel() {
    OSVERSIONINFOW version = {};
    version.dwOSVersionInfoSize = sizeof(version);
    if (!GetVersionExW(&version) || version.dwMajorVersion < 6) return 0;
    return static_cast<int>(std::min<DWORD>(version.dwMinorVersion, 2));
}
