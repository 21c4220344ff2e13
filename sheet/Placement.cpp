#include "Placement.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include "Script.h"

namespace sheet {

namespace {

// A value of the class key that holds a number.
struct Setting {
    enum class State { Absent, NoNumber, Number };
    State state = State::Absent;
    long long number = 0;

    bool IsUsable() const { return state == State::Number && number >= 0; }
};

constexpr unsigned long long kHighestNumber = 999'999'999'999'999'999;

const Key::Value* Find(const Port& port, TextView name) {
    const auto found = std::find_if(port.values.begin(), port.values.end(), [&](const auto& value) {
        return EqualNoCase(value.name, name);
    });
    return found == port.values.end() ? nullptr : &*found;
}

std::string TextOf(const Key::Value& value) {
    Text text(value.data.size() / sizeof(WCHAR), TEXT('\0'));
    std::memcpy(text.data(), value.data.data(), text.size() * sizeof(WCHAR));
    return ToUtf8(text.substr(0, text.find(TEXT('\0'))));
}

// Decimal text, as the tuning tab and a driver's installation write it, or a REG_DWORD.
Setting Read(const Port& port, TextView name) {
    const Key::Value* const value = Find(port, name);
    if (value == nullptr) return {};
    if (value->type == REG_DWORD && value->data.size() == sizeof(LONG)) {
        LONG number = 0;
        std::memcpy(&number, value->data.data(), sizeof(number));
        return {Setting::State::Number, number};
    }
    if (value->type != REG_SZ) return {Setting::State::NoNumber};
    const std::string text = TextOf(*value);
    const bool isNegative = text.starts_with('-');
    const auto digits = ReadNumber(std::string_view(text).substr(isNegative), kHighestNumber);
    if (!digits) return {Setting::State::NoNumber};
    const auto number = static_cast<long long>(*digits);
    return {Setting::State::Number, isNegative ? -number : number};
}

std::string Limited(const std::string& place) {
    return place.size() <= kWidestPlace ? place : "far beyond";
}

// Receive, transmit or forwarding: one processor.
WorkRow SingleRow(const std::string& name, const Setting& setting, DWORD processors) {
    WorkRow row{name, {}, std::vector<Mark>(processors, Mark::Free)};
    if (setting.state == Setting::State::Absent) {
        row.place = "not set";
    } else if (setting.state == Setting::State::NoNumber) {
        row.place = "not a number";
    } else if (setting.number == -1) {
        row.place = "driver (-1)";
    } else if (setting.number < 0 || (processors != 0 && setting.number >= processors)) {
        row.place = Limited(std::to_string(setting.number) + ": beyond");
    } else {
        row.place = std::to_string(setting.number);
        if (processors != 0) row.marks[static_cast<std::size_t>(setting.number)] = Mark::Work;
    }
    return row;
}

// The values that place RSS, each with what counts without it.
struct RssValue {
    const WCHAR* name;
    const char* displayName;
    long long defaultNumber;
};
constexpr RssValue kRssValues[] = {
    {TEXT("*RssBaseProcNumber"), "*RssBaseProcNumber", 0},
    {TEXT("*MaxRssProcessors"), "*MaxRssProcessors", 8},
    {TEXT("*RssMaxProcNumber"), "*RssMaxProcNumber", 63},
};
constexpr std::size_t kRssValueCount = std::size(kRssValues);

struct Rss {
    Setting settings[kRssValueCount];
    long long numbers[kRssValueCount];  // what is set, or else the default
    Setting queues;

    long long Base() const { return numbers[0]; }
    long long Count() const { return numbers[1]; }
    long long Highest() const { return numbers[2]; }
};

Rss ReadRss(const Port& port) {
    Rss rss{};
    for (std::size_t i = 0; i < kRssValueCount; ++i) {
        rss.settings[i] = Read(port, kRssValues[i].name);
        rss.numbers[i] =
            rss.settings[i].IsUsable() ? rss.settings[i].number : kRssValues[i].defaultNumber;
    }
    rss.queues = Read(port, TEXT("*NumRSSQueues"));
    return rss;
}

std::string Range(long long first, long long last) {
    if (first == last) return std::to_string(first);
    return std::to_string(first) + "-" + std::to_string(last);
}

WorkRow RssRow(const Rss& rss, DWORD processors) {
    WorkRow row{"RSS", "none", std::vector<Mark>(processors, Mark::Free)};
    if (rss.queues.IsUsable() && rss.queues.number <= 999)
        row.name += " ×" + std::to_string(rss.queues.number);
    const long long last =
        std::min<long long>(rss.Highest(), static_cast<long long>(processors) - 1);
    const long long allowed = std::max(last - rss.Base() + 1, 0LL);
    const long long taken = std::min(rss.Count(), allowed);
    for (long long i = 0; i < allowed; ++i)
        row.marks[static_cast<std::size_t>(rss.Base() + i)] = i < taken ? Mark::Rss : Mark::Spare;
    if (taken != 0 && taken == allowed) {
        row.place = Range(rss.Base(), last);
    } else if (taken != 0) {
        row.place = Limited(std::to_string(taken) + " of " + Range(rss.Base(), rss.Highest()));
    }
    return row;
}

std::string Complaint(const char* name, const Setting& setting) {
    const std::string text = name;
    if (setting.state == Setting::State::Absent) return text + " isn't set";
    if (setting.state == Setting::State::NoNumber) return text + " isn't a number";
    if (setting.number == -1) return text + " is -1, the driver's choice";
    return text + " is below 0";
}

std::vector<std::string> RssNotes(const Rss& rss, DWORD processors) {
    bool isDefault = true;
    bool isAbsent = true;
    bool isBad = false;
    std::vector<std::string> notes;
    for (std::size_t i = 0; i < kRssValueCount; ++i) {
        const Setting& setting = rss.settings[i];
        isAbsent = isAbsent && setting.state == Setting::State::Absent;
        isBad = isBad || (setting.state != Setting::State::Absent && !setting.IsUsable());
        isDefault = isDefault && rss.numbers[i] == kRssValues[i].defaultNumber;
        if (!setting.IsUsable()) {
            notes.push_back(Complaint(kRssValues[i].displayName, setting) + "; the default is " +
                            std::to_string(kRssValues[i].defaultNumber));
        }
    }
    if (isDefault && !isBad) {
        notes = {std::string(isAbsent ? "not set, by default" : "the defaults") +
                 ": base 0, 8 processors, highest 63"};
    }
    if (processors != 0 && rss.Base() >= processors)
        notes.push_back("*RssBaseProcNumber is beyond the machine's processors");
    if (rss.queues.state != Setting::State::Absent && !rss.queues.IsUsable())
        notes.push_back(Complaint("*NumRSSQueues", rss.queues));
    return notes;
}

// The stored scenario as the tuning tab names it.
std::string ScenarioOf(const Port& port) {
    static constexpr struct {
        const char* stored;
        const char* name;
    } kScenarios[] = {
        {"1086", "single port traffic"},   {"1087", "dual port traffic"},
        {"1088", "forwarding traffic"},    {"1096", "multicast traffic"},
        {"1098", "single stream traffic"},
    };
    const Key::Value* const value = Find(port, TEXT("TuningScenario"));
    if (value == nullptr) return std::string();
    const std::string text = value->type == REG_SZ ? TextOf(*value) : std::string();
    for (const auto& scenario : kScenarios) {
        if (text == scenario.stored) return scenario.name;
    }
    return "an unknown scenario";
}

}  // namespace

Placement PlacementOf(const Port& port, DWORD processors) {
    static constexpr struct {
        const char* name;
        const WCHAR* value;
    } kSingles[] = {
        {"receive", TEXT("DefaultRecvRingProcessor")},
        {"transmit", TEXT("TxInterruptProcessor")},
        {"forwarding", TEXT("TxForwardingProcessor")},
    };
    Placement placement{ScenarioOf(port), {}, {}};
    for (const auto& single : kSingles)
        placement.rows.push_back(SingleRow(single.name, Read(port, single.value), processors));
    const Rss rss = ReadRss(port);
    placement.rows.push_back(RssRow(rss, processors));
    placement.notes = RssNotes(rss, processors);
    return placement;
}

}  // namespace sheet
