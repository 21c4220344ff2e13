#include "Modules.h"

#include <libloaderapi.h>
#include <winerror.h>
#include <winnt.h>
#include <deque>
#include <memory>
#include <utility>

#include "Call.h"
#include "RichEdits.h"
#include "Text.h"

namespace platform {

// The access layer's image.
ModuleImage AccessLayerImage();

struct Modules::State {
    struct Loaded {
        ModuleImage image;
        int references = 0;
        // One for each reference, for the ledger.
        std::vector<std::unique_ptr<char>> tokens;
    };

    std::map<std::u16string, ModuleImage, LessNoCase> images;
    // Aligned copies of the images' resources. They stay, since what was found in them is borrowed.
    std::deque<std::vector<BYTE>> resources;
    std::vector<std::unique_ptr<Loaded>> loaded;

    static HMODULE HandleOf(const Loaded& module) {
        return reinterpret_cast<HMODULE>(const_cast<Loaded*>(&module));
    }
    Loaded* Find(HMODULE handle) const {
        for (const auto& module : loaded) {
            if (HandleOf(*module) == handle) return module.get();
        }
        return nullptr;
    }
    Loaded* Find(std::u16string_view name) const {
        for (const auto& module : loaded) {
            if (EqualNoCase(module->image.name, name)) return module.get();
        }
        return nullptr;
    }
    void Forget(HMODULE handle) {
        std::erase_if(loaded, [&](const auto& module) { return HandleOf(*module) == handle; });
    }
};

namespace {

constexpr const char* kKind = "module";

// The name that a module is known by: without a folder, with an extension.
std::u16string BaseName(const char16_t* given) {
    std::u16string name = given;
    name.erase(0, name.find_last_of(u"\\/") + 1);
    if (name.find(u'.') == std::u16string::npos) name += u".dll";
    return name;
}

BOOL CallEntry(const ModuleImage& image, HMODULE handle, DWORD reason, LPVOID reserved = nullptr) {
    if (!image.entry) return TRUE;
    const CallbackScope inCallback;
    return image.entry(handle, reason, reserved);
}

}  // namespace

Modules::Modules() : m_state(std::make_unique<State>()) {
    Install(RichEditImage());
    Install(AccessLayerImage());
}

Modules::~Modules() = default;

void Modules::Install(ModuleImage image) {
    m_state->resources.emplace_back(image.resources.begin(), image.resources.end());
    image.resources = m_state->resources.back();
    std::u16string name = image.name;
    m_state->images.insert_or_assign(std::move(name), std::move(image));
}

const ModuleImage* Modules::Find(HMODULE module) const {
    const State::Loaded* loaded = m_state->Find(module);
    return loaded ? &loaded->image : nullptr;
}

HMODULE Modules::Loaded(const char16_t* name) const {
    const State::Loaded* module = m_state->Find(BaseName(name));
    if (!module) Call::SetLast(ERROR_MOD_NOT_FOUND);
    return module ? State::HandleOf(*module) : nullptr;
}

HMODULE Modules::Load(const char16_t* name, const char* call) {
    const std::u16string base = BaseName(name);
    State::Loaded* module = m_state->Find(base);
    if (!module) {
        const auto image = m_state->images.find(base);
        if (image == m_state->images.end()) {
            Call::SetLast(ERROR_MOD_NOT_FOUND);
            return nullptr;
        }
        m_state->loaded.push_back(std::make_unique<State::Loaded>());
        module = m_state->loaded.back().get();
        module->image = image->second;
    }
    const HMODULE handle = State::HandleOf(*module);
    if (++module->references == 1 && !CallEntry(module->image, handle, DLL_PROCESS_ATTACH)) {
        CallEntry(module->image, handle, DLL_PROCESS_DETACH);
        m_state->Forget(handle);
        Call::SetLast(ERROR_DLL_INIT_FAILED);
        return nullptr;
    }
    module->tokens.push_back(std::make_unique<char>());
    Machine::Current().ledger.Enter(kKind, module->tokens.back().get(), call);
    return handle;
}

bool Modules::Free(HMODULE handle) {
    State::Loaded* module = m_state->Find(handle);
    if (!module || module->tokens.empty()) {
        Call::SetLast(ERROR_MOD_NOT_FOUND);
        return false;
    }
    Machine::Current().ledger.Strike(kKind, module->tokens.back().get());
    module->tokens.pop_back();
    if (--module->references > 0) return true;
    CallEntry(module->image, handle, DLL_PROCESS_DETACH);
    m_state->Forget(handle);
    return true;
}

void Modules::OnExit() {
    static char exits;  // what the pointer points to means nothing
    for (auto module = m_state->loaded.rbegin(); module != m_state->loaded.rend(); ++module)
        CallEntry((*module)->image, State::HandleOf(**module), DLL_PROCESS_DETACH, &exits);
}

FARPROC Modules::Procedure(HMODULE handle, const char* name) const {
    const ModuleImage* image = Find(handle);
    if (!image) {
        Call::SetLast(ERROR_MOD_NOT_FOUND);
        return nullptr;
    }
    const auto found = image->exports.find(name);
    if (found != image->exports.end()) return found->second;
    Call::SetLast(ERROR_PROC_NOT_FOUND);
    return nullptr;
}

}  // namespace platform

using platform::Call;
using platform::Modules;

HMODULE WINAPI LoadLibraryW(LPCWSTR name) {
    Call call("LoadLibraryW", name, ERROR_MOD_NOT_FOUND);
    if (call.Failed()) return call.With<HMODULE>(nullptr);
    return call.machine.Get<Modules>().Load(name, call.Name());
}

// From the system directory alone, which has the modules that the stand-in plays itself.
HMODULE WINAPI LoadLibraryExW(LPCWSTR name, HANDLE reserved, DWORD flags) {
    Call call("LoadLibraryExW", name, ERROR_MOD_NOT_FOUND);
    if (call.Failed()) return call.With<HMODULE>(nullptr);
    if (reserved != nullptr || flags != LOAD_LIBRARY_SEARCH_SYSTEM32) {
        Call::SetLast(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    return call.machine.Get<Modules>().Load(name, call.Name());
}

BOOL WINAPI FreeLibrary(HMODULE module) {
    Call call("FreeLibrary");
    return call.machine.Get<Modules>().Free(module);
}

FARPROC WINAPI GetProcAddress(HMODULE module, LPCSTR name) {
    Call call("GetProcAddress", platform::FromUtf8(name).c_str(), ERROR_PROC_NOT_FOUND);
    if (call.Failed()) return call.With<FARPROC>(nullptr);
    return call.machine.Get<Modules>().Procedure(module, name);
}

HMODULE WINAPI GetModuleHandleW(LPCWSTR name) {
    Call call("GetModuleHandleW", name, ERROR_MOD_NOT_FOUND);
    if (call.Failed()) return call.With<HMODULE>(nullptr);
    // The program's own image isn't one that the machine has loaded.
    static char program;
    if (name == nullptr) return reinterpret_cast<HMODULE>(&program);
    return call.machine.Get<Modules>().Loaded(name);
}
