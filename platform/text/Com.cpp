// Initialisation of COM for a thread, the classes it knows, and GUIDs as text.

#include "Com.h"

#include <bit>
#include <cstdint>
#include <cstdio>
#include <map>
#include <optional>
#include <string_view>
#include <vector>

#include <objbase.h>

#include "Text.h"

// {00000000-0000-0000-C000-000000000046}
extern const IID IID_IUnknown = {0, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
// {00020400-0000-0000-C000-000000000046}
extern const IID IID_IDispatch = {0x00020400, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

namespace platform {
namespace {

constexpr char kind[] = "COM initialisation";

struct RegisteredClass {
    CLSID id;
    HRESULT (*create)(REFIID id, void** object);
};

// Made by whoever asks first, since the classes register before the program begins.
std::vector<RegisteredClass>& Classes() {
    static std::vector<RegisteredClass> classes;
    return classes;
}

// Which threads have initialised COM, how, and how often.
class Apartments : public Part {
  public:
    HRESULT Enter(unsigned thread, bool multithreaded, const Call& call) {
        Apartment& apartment = m_apartments[thread];
        if (apartment.count != 0 && apartment.multithreaded != multithreaded)
            return RPC_E_CHANGED_MODE;
        apartment.multithreaded = multithreaded;
        ++apartment.count;
        call.machine.ledger.Enter(kind, Thing(thread, apartment.count), call.Name());
        return apartment.count == 1 ? S_OK : S_FALSE;
    }

    void Leave(unsigned thread, const Call& call) {
        Apartment& apartment = m_apartments[thread];
        if (apartment.count == 0) return;
        call.machine.ledger.Strike(kind, Thing(thread, apartment.count));
        --apartment.count;
    }

    // A thread of its own initialisation, or any while a multithreaded apartment lives.
    bool IsInitialised(unsigned thread) const {
        for (const auto& [owner, apartment] : m_apartments) {
            if (apartment.count != 0 && (owner == thread || apartment.multithreaded)) return true;
        }
        return false;
    }

  private:
    struct Apartment {
        bool multithreaded = false;
        unsigned count = 0;
    };

    static const void* Thing(unsigned thread, unsigned count) {
        return std::bit_cast<const void*>((std::uintptr_t{thread} << 32) | count);
    }

    std::map<unsigned, Apartment> m_apartments;
};

HRESULT Initialise(const char* name, LPVOID reserved, DWORD model) {
    const Call call(name, nullptr, static_cast<DWORD>(E_OUTOFMEMORY));
    if (call.Failed()) return call.Result();
    if (reserved != nullptr) return E_INVALIDARG;
    const bool multithreaded = (model & COINIT_APARTMENTTHREADED) == 0;
    return call.machine.Get<Apartments>().Enter(call.machine.scheduler.CurrentThread(),
                                                multithreaded, call);
}

// The places of a GUID's text, in which 'x' is a hexadecimal digit.
constexpr std::u16string_view guidPattern = u"{xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}";

std::optional<unsigned> HexDigit(char16_t unit) {
    if (unit >= u'0' && unit <= u'9') return unit - u'0';
    if (unit >= u'A' && unit <= u'F') return unit - u'A' + 10u;
    if (unit >= u'a' && unit <= u'f') return unit - u'a' + 10u;
    return std::nullopt;
}

std::optional<GUID> ParseGuid(std::u16string_view text) {
    if (text.size() != guidPattern.size()) return std::nullopt;
    std::uint8_t bytes[16] = {};
    unsigned digits = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (guidPattern[at] != u'x') {
            if (text[at] != guidPattern[at]) return std::nullopt;
            continue;
        }
        const std::optional<unsigned> digit = HexDigit(text[at]);
        if (!digit) return std::nullopt;
        std::uint8_t& byte = bytes[digits++ / 2];
        byte = static_cast<std::uint8_t>(byte * 16U + *digit);
    }
    const auto word = [&bytes](int at) {
        return static_cast<WORD>(bytes[at] << 8 | bytes[at + 1]);
    };
    GUID guid = {DWORD{word(0)} << 16 | word(2), word(4), word(6), {}};
    std::memcpy(guid.Data4, bytes + 8, sizeof(guid.Data4));
    return guid;
}

}  // namespace

ComClass::ComClass(const CLSID& id, HRESULT (*create)(REFIID id, void** object)) {
    Classes().push_back({id, create});
}

std::u16string GuidText(REFGUID guid) {
    char text[40];
    const BYTE* rest = guid.Data4;
    std::snprintf(text, sizeof(text), "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}",
                  guid.Data1, guid.Data2, guid.Data3, rest[0], rest[1], rest[2], rest[3], rest[4],
                  rest[5], rest[6], rest[7]);
    return FromUtf8(text);
}

}  // namespace platform

using platform::Call;

HRESULT WINAPI CoInitialize(LPVOID reserved) {
    return platform::Initialise("CoInitialize", reserved, COINIT_APARTMENTTHREADED);
}

HRESULT WINAPI CoInitializeEx(LPVOID reserved, DWORD model) {
    return platform::Initialise("CoInitializeEx", reserved, model);
}

void WINAPI CoUninitialize() {
    const Call call("CoUninitialize");
    call.machine.Get<platform::Apartments>().Leave(call.machine.scheduler.CurrentThread(), call);
}

HRESULT WINAPI CoCreateInstance(REFCLSID classId, LPUNKNOWN outer, DWORD context,
                                REFIID interfaceId, LPVOID* object) {
    const Call call("CoCreateInstance", platform::GuidText(classId).c_str(),
                    static_cast<DWORD>(REGDB_E_CLASSNOTREG));
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (call.Failed()) return call.Result();
    const unsigned thread = call.machine.scheduler.CurrentThread();
    if (!call.machine.Get<platform::Apartments>().IsInitialised(thread)) return CO_E_NOTINITIALIZED;
    for (const platform::RegisteredClass& known : platform::Classes()) {
        if (known.id != classId || (context & CLSCTX_INPROC_SERVER) == 0) continue;
        return outer != nullptr ? CLASS_E_NOAGGREGATION : known.create(interfaceId, object);
    }
    return REGDB_E_CLASSNOTREG;
}

int WINAPI StringFromGUID2(REFGUID guid, LPOLESTR text, int capacity) {
    const std::u16string made = platform::GuidText(guid);
    if (capacity <= static_cast<int>(made.size())) return 0;
    made.copy(text, made.size());
    text[made.size()] = 0;
    return static_cast<int>(made.size()) + 1;
}

// Of a class's name instead of its id the stand-in knows none. A null is the null id.
HRESULT WINAPI CLSIDFromString(LPCOLESTR text, LPCLSID id) {
    const Call call("CLSIDFromString", text, static_cast<DWORD>(CO_E_CLASSSTRING));
    *id = {};
    if (call.Failed()) return call.Result();
    if (text == nullptr) return S_OK;
    const std::optional<GUID> guid = platform::ParseGuid(text);
    if (!guid) return CO_E_CLASSSTRING;
    *id = *guid;
    return S_OK;
}
