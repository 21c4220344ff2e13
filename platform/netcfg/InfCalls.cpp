// The functions that read INF files.

#include <cstdint>

#include <setupapi.h>

#include "Call.h"
#include "InfFile.h"

namespace platform {
namespace {

constexpr const char* kInfKind = "INF file";

struct OpenInf {
    InfFile file;
    std::basic_string<WCHAR> path;
};

struct OpenInfs : Part {
    std::map<HINF, std::unique_ptr<OpenInf>> open;

    // Null when the handle isn't open.
    const OpenInf* Find(HINF inf) const {
        const auto found = open.find(inf);
        return found == open.end() ? nullptr : found->second.get();
    }
};

const OpenInf* FindInf(HINF inf) {
    return Machine::Current().Get<OpenInfs>().Find(inf);
}

// The text that tells an open file's calls from those of others.
const WCHAR* PathOfInf(HINF inf) {
    const OpenInf* const found = FindInf(inf);
    return found ? found->path.c_str() : nullptr;
}

BOOL FinishInf(DWORD error) {
    Call::SetLast(error);
    return error == ERROR_SUCCESS;
}

// The class that the file's devices are of, as its Version section names it.
bool IsOfClass(const InfFile& file, PCWSTR infClass) {
    const auto version = file.FindSection(TEXT("Version"));
    const auto line = version ? file.FindLine(*version, TEXT("Class")) : std::nullopt;
    const auto text = line ? file.Field(*version, *line, 1) : std::nullopt;
    return text && EqualNoCase(*text, infClass);
}

}  // namespace
}  // namespace platform

using namespace platform;

HINF WINAPI SetupOpenInfFileW(PCWSTR fileName, PCWSTR infClass, DWORD style, PUINT errorLine) {
    Call call("SetupOpenInfFileW", fileName, ERROR_ACCESS_DENIED);
    if (call.Failed()) return call.With(INVALID_HANDLE_VALUE);
    UINT line = 0;
    auto inf = std::make_unique<OpenInf>();
    DWORD error = ERROR_INVALID_PARAMETER;
    if (fileName && (style & INF_STYLE_WIN4) != 0) {
        inf->path = fileName;
        error = inf->file.Read(inf->path, line);
    }
    if (error == ERROR_SUCCESS && infClass && !IsOfClass(inf->file, infClass))
        error = ERROR_CLASS_MISMATCH;
    if (errorLine) *errorLine = line;
    Call::SetLast(error);
    if (error != ERROR_SUCCESS) return INVALID_HANDLE_VALUE;
    const HINF handle = inf.get();
    call.machine.Get<OpenInfs>().open.emplace(handle, std::move(inf));
    call.machine.ledger.Enter(kInfKind, handle, call.Name());
    return handle;
}

void WINAPI SetupCloseInfFile(HINF inf) {
    const Call call("SetupCloseInfFile", PathOfInf(inf));
    if (call.machine.ledger.Strike(kInfKind, inf)) call.machine.Get<OpenInfs>().open.erase(inf);
}

BOOL WINAPI SetupFindFirstLineW(HINF inf, PCWSTR section, PCWSTR key, PINFCONTEXT context) {
    Call call("SetupFindFirstLineW", section, ERROR_LINE_NOT_FOUND);
    if (call.Failed()) return call.With(FALSE);
    const OpenInf* const open = FindInf(inf);
    if (!open) return FinishInf(ERROR_INVALID_HANDLE);
    if (!section || !context) return FinishInf(ERROR_INVALID_PARAMETER);
    const auto number = open->file.FindSection(section);
    const auto line = number && key ? open->file.FindLine(*number, key) : std::optional<UINT>(0);
    if (!number || !line || *line >= open->file.LineCount(*number))
        return FinishInf(ERROR_LINE_NOT_FOUND);
    *context = {inf, inf, *number, *line};
    return FinishInf(ERROR_SUCCESS);
}

BOOL WINAPI SetupGetStringFieldW(PINFCONTEXT context, DWORD field, PWSTR buffer, DWORD capacity,
                                 PDWORD required) {
    const HINF inf = context ? context->Inf : nullptr;
    Call call("SetupGetStringFieldW", PathOfInf(inf), ERROR_NOT_ENOUGH_MEMORY);
    if (call.Failed()) return call.With(FALSE);
    const OpenInf* const open = FindInf(inf);
    if (!open) return FinishInf(context ? ERROR_INVALID_HANDLE : ERROR_INVALID_PARAMETER);
    const auto text = open->file.Field(context->Section, context->Line, field);
    if (!text) return FinishInf(ERROR_INVALID_PARAMETER);
    if (required) *required = static_cast<DWORD>(text->size() + 1);
    if (!buffer) return FinishInf(ERROR_SUCCESS);
    if (capacity <= text->size()) return FinishInf(ERROR_INSUFFICIENT_BUFFER);
    text->copy(buffer, text->size());
    buffer[text->size()] = TEXT('\0');
    return FinishInf(ERROR_SUCCESS);
}
