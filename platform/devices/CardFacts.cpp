#include "CardFacts.h"

#include <array>
#include <bit>
#include <string>

#include "Carrier.h"
#include "Facts.h"

namespace platform {
namespace {

using WideText = std::basic_string<WCHAR>;
using GuidBytes = std::array<BYTE, sizeof(Net64)>;

constexpr std::size_t kMostPorts = 255;
constexpr DWORD kDefaultTicks = 10;
constexpr long long kMostTicks = 0xFFFFFFFF;

std::optional<Net64> ParseGuid(const WideText& text) {
    GuidBytes bytes{};
    if (text.size() != 2 * bytes.size()) return std::nullopt;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const auto byte = ParseNumber(TEXT("0x") + text.substr(2 * i, 2));
        if (!byte) return std::nullopt;
        bytes[i] = static_cast<BYTE>(*byte);
    }
    return std::bit_cast<Net64>(bytes);
}

WideText CardKey(Net64 card) {
    constexpr const WCHAR* kDigits = TEXT("0123456789abcdef");
    WideText key = TEXT("Cards\\");
    for (const BYTE byte : std::bit_cast<GuidBytes>(card)) {
        key += kDigits[byte >> 4];
        key += kDigits[byte & 15];
    }
    return key;
}

}  // namespace

std::vector<Net64> CardGuids() {
    std::vector<Net64> cards;
    for (const WideText& name : MachineSubkeys(FactPath(TEXT("Cards"))))
        if (const std::optional<Net64> card = ParseGuid(name)) cards.push_back(*card);
    return cards;
}

std::optional<std::vector<Net64>> CardPorts(Net64 card) {
    std::vector<Net64> ports;
    const auto text = FactText(CardKey(card), TEXT("Ports"));
    if (!text) return ports;
    for (const WideText& field : SplitFields(*text, TEXT(';'))) {
        const std::optional<Net64> port = ParseGuid(field);
        if (!port || ports.size() == kMostPorts) return std::nullopt;
        ports.push_back(*port);
    }
    return ports;
}

DWORD MeasurementTicks(Net64 card) {
    PROCESSOR_NUMBER processor = {};
    if (const auto affinity = PinnedTo(GetCurrentThread())) {
        processor.Group = affinity->Group;
        processor.Number = static_cast<BYTE>(std::countr_zero(affinity->Mask));
    }
    USHORT node = 0;
    const auto text = FactText(CardKey(card), TEXT("DoorbellTicks"));
    if (!text || !GetNumaProcessorNodeEx(&processor, &node)) return kDefaultTicks;
    const std::vector<WideText> fields = SplitFields(*text, TEXT(','));
    const auto ticks = node < fields.size() ? ParseNumber(fields[node]) : std::nullopt;
    return ticks && *ticks >= 0 && *ticks <= kMostTicks ? static_cast<DWORD>(*ticks)
                                                        : kDefaultTicks;
}

}  // namespace platform
