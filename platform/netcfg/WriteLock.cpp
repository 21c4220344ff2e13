#include "WriteLock.h"

#include <algorithm>

#include "Facts.h"
#include "NetCfgCarrier.h"

namespace platform {
namespace {

const std::basic_string<WCHAR> kLockFacts = TEXT("NetCfg");

}  // namespace

bool WriteLock::IsWithOtherProgram() const {
    const std::uint64_t now = EngineTime();
    if (now < m_takenUntil) return true;
    if (!FactText(kLockFacts, TEXT("LockedBy"))) return false;
    const auto lockedFor = FactNumber(kLockFacts, TEXT("LockedFor"));
    return !lockedFor || now < *lockedFor;
}

std::optional<std::uint64_t> WriteLock::OtherProgramEnds() const {
    if (!IsWithOtherProgram()) return std::nullopt;
    if (!FactText(kLockFacts, TEXT("LockedBy"))) return m_takenUntil;
    const auto lockedFor = FactNumber(kLockFacts, TEXT("LockedFor"));
    if (!lockedFor) return std::nullopt;
    return std::max<std::uint64_t>(*lockedFor, m_takenUntil);
}

std::optional<std::basic_string<WCHAR>> WriteLock::HolderAgainst(Client client) const {
    if (m_owner == client) return std::nullopt;
    if (m_owner != nullptr) return m_ownerName;
    if (!IsWithOtherProgram()) return std::nullopt;
    return FactText(kLockFacts, TEXT("LockedBy")).value_or(TEXT("another program"));
}

std::optional<std::basic_string<WCHAR>> WriteLock::Acquire(const char* call, Client client,
                                                           const std::basic_string<WCHAR>& name,
                                                           DWORD timeout) {
    std::optional<std::uint64_t> due;
    if (timeout != INFINITE) due = EngineTime() + timeout;
    while (auto holder = HolderAgainst(client)) {
        if (due && EngineTime() >= *due) return holder;
        auto until = OtherProgramEnds();
        if (due && (!until || *due < *until)) until = due;
        const bool isFree = WaitForEngine(
            call, [&] { return !HolderAgainst(client); }, until);
        // A wait that ends early is cut short because the machine has ended.
        if (!isFree && (!until || EngineTime() < *until)) return holder;
    }
    m_owner = client;
    m_ownerName = name;
    return std::nullopt;
}

void WriteLock::Release(Client client) {
    if (m_owner != client) return;
    m_owner = nullptr;
    ++m_releases;
    const auto takenAt = FactNumber(kLockFacts, TEXT("TakenAt"));
    if (takenAt && *takenAt != m_releases) return;
    m_takenUntil = EngineTime() + FactNumber(kLockFacts, TEXT("TakenFor")).value_or(0);
}

}  // namespace platform
