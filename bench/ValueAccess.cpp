#include "ValueAccess.h"

#include <windows.h>

#include "Call.h"
#include "Registry.h"

namespace {

ValueRecorder* recorder = nullptr;

}  // namespace

ValueRecorder::ValueRecorder(platform::Machine& machine) : m_machine(machine) {
    recorder = this;
}

ValueRecorder::~ValueRecorder() {
    recorder = nullptr;
}

ValueRecorder::Accesses ValueRecorder::Values() const {
    std::map<const platform::RegistryKey*, std::u16string> paths;
    m_machine.Get<platform::Registry>().Tree().Walk(
        [&](const std::u16string& path, const platform::RegistryKey& key) { paths[&key] = path; });
    Accesses values;
    for (const Access& access : m_accesses)
        values[{paths[access.key.get()], access.name}] += access.what;
    return values;
}

void ValueRecorder::Add(char what, HKEY key, LPCWSTR name) {
    if (!recorder || platform::IsQuiet()) return;
    auto found = recorder->m_machine.Get<platform::Registry>().Find(key, 0).key;
    recorder->m_accesses.push_back({what, std::move(found), name ? name : u""});
}

// The linker leads the library's calls here (--wrap), and from here on to the machine. The names
// are those that the compiler gives the functions.
#define THROUGH(name) asm("__wrap_" name)
#define ONWARD(name) asm("__real_" name)
#define QUERY_VALUE "_Z16RegQueryValueExWP6HKEY__PKDsPjS3_PhS3_"
#define SET_VALUE "_Z14RegSetValueExWP6HKEY__PKDsjjPKhj"
#define DELETE_VALUE "_Z15RegDeleteValueWP6HKEY__PKDs"

LSTATUS OnwardQuery(HKEY, LPCWSTR, LPDWORD, LPDWORD, LPBYTE, LPDWORD) ONWARD(QUERY_VALUE);
LSTATUS OnwardSet(HKEY, LPCWSTR, DWORD, DWORD, const BYTE*, DWORD) ONWARD(SET_VALUE);
LSTATUS OnwardDelete(HKEY, LPCWSTR) ONWARD(DELETE_VALUE);

LSTATUS ThroughQuery(HKEY, LPCWSTR, LPDWORD, LPDWORD, LPBYTE, LPDWORD) THROUGH(QUERY_VALUE);
LSTATUS ThroughSet(HKEY, LPCWSTR, DWORD, DWORD, const BYTE*, DWORD) THROUGH(SET_VALUE);
LSTATUS ThroughDelete(HKEY, LPCWSTR) THROUGH(DELETE_VALUE);

LSTATUS ThroughQuery(HKEY key, LPCWSTR name, LPDWORD reserved, LPDWORD type, LPBYTE data,
                     LPDWORD size) {
    ValueRecorder::Add(data ? 'r' : 's', key, name);
    return OnwardQuery(key, name, reserved, type, data, size);
}

LSTATUS ThroughSet(HKEY key, LPCWSTR name, DWORD reserved, DWORD type, const BYTE* data,
                   DWORD size) {
    ValueRecorder::Add('w', key, name);
    return OnwardSet(key, name, reserved, type, data, size);
}

LSTATUS ThroughDelete(HKEY key, LPCWSTR name) {
    ValueRecorder::Add('d', key, name);
    return OnwardDelete(key, name);
}
