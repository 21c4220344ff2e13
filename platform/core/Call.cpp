#include "Call.h"

#include "Announce.h"

namespace platform {
namespace {

thread_local int t_quiet = 0;
thread_local DWORD t_lastError = 0;

// A quiet thread works for the stand-in.
void SetQuiet(int depth) {
    if (t_quiet == 0 && depth > 0) AnnounceEntry();
    if (t_quiet > 0 && depth == 0) AnnounceExit();
    t_quiet = depth;
}

}  // namespace

Call::Call(const char* name, const WCHAR* argument, DWORD ordinary)
    : machine(Machine::Current()), m_name(name) {
    const bool counts = t_quiet == 0;
    SetQuiet(t_quiet + 1);
    if (counts) {
        machine.scheduler.PassOn();
        const std::u16string_view text = argument ? argument : u"";
        if (machine.beforeCall) machine.beforeCall(name, text);
        const std::optional<DWORD> error = machine.faults.Ask(name, text, ordinary);
        if (error) {
            m_failed = true;
            m_error = *error;
        }
        if (machine.trace.Recording()) {
            machine.trace.Add(
                {name, std::u16string(text), machine.scheduler.CurrentThread(), m_failed});
        }
    }
}

Call::~Call() {
    SetQuiet(t_quiet - 1);
}

HRESULT Call::Result() const {
    const bool isResult = m_error == 0 || (m_error & 0x80000000) != 0;
    return static_cast<HRESULT>(isResult ? m_error : (m_error & 0xFFFF) | 0x80070000);
}

void Call::SetLast(DWORD error) {
    t_lastError = error;
}

DWORD Call::GetLast() {
    return t_lastError;
}

bool IsQuiet() {
    return t_quiet != 0;
}

QuietScope::QuietScope() {
    SetQuiet(t_quiet + 1);
}
QuietScope::~QuietScope() {
    SetQuiet(t_quiet - 1);
}

CallbackScope::CallbackScope() : m_saved(t_quiet) {
    SetQuiet(0);
}
CallbackScope::~CallbackScope() {
    SetQuiet(m_saved);
}

}  // namespace platform
