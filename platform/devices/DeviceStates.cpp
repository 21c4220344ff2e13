#include "DeviceStates.h"

#include <cstring>

#include "Facts.h"

namespace platform {

bool CountRestart(const DeviceId& name) {
    const DeviceId key = TEXT("Restarts");
    const DWORD count = FactNumber(key, name.c_str()).value_or(0);
    return WriteMachineNumber(FactPath(key), name.c_str(), count + 1);
}

std::optional<SP_PROPCHANGE_PARAMS> ReadStateChange(const SP_CLASSINSTALL_HEADER* parameters,
                                                    DWORD size, DWORD& error) {
    error = ERROR_INVALID_USER_BUFFER;
    if (parameters->cbSize != sizeof *parameters) return std::nullopt;
    SP_PROPCHANGE_PARAMS change;
    error = ERROR_INVALID_PARAMETER;
    if (parameters->InstallFunction != DIF_PROPERTYCHANGE || size < sizeof change)
        return std::nullopt;
    std::memcpy(&change, parameters, sizeof change);
    const bool state = change.StateChange == DICS_ENABLE || change.StateChange == DICS_DISABLE;
    const bool scope = change.Scope == DICS_FLAG_GLOBAL || change.Scope == DICS_FLAG_CONFIGSPECIFIC;
    return state && scope ? std::optional(change) : std::nullopt;
}

bool DeviceStates::IsDisabled(const DeviceId& key) const {
    return m_disabled.contains({key, DICS_FLAG_GLOBAL}) ||
           m_disabled.contains({key, DICS_FLAG_CONFIGSPECIFIC});
}

void DeviceStates::Change(const DeviceId& id, const SP_PROPCHANGE_PARAMS& change) {
    const DeviceId key = FoldId(id);
    const bool wasDisabled = IsDisabled(key);
    if (change.StateChange == DICS_DISABLE)
        m_disabled.emplace(key, change.Scope);
    else
        m_disabled.erase({key, change.Scope});
    if (wasDisabled && !IsDisabled(key)) CountRestart(id);
}

}  // namespace platform
