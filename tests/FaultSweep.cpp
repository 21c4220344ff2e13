#include "FaultSweep.h"

#include <algorithm>
#include <cstring>
#include <iostream>
#include <iterator>
#include <set>

#include "Registry.h"
#include "Text.h"

// Of the leak sanitizer; null without it.
extern "C" {
[[gnu::weak]] void __lsan_disable();
[[gnu::weak]] void __lsan_enable();
}

namespace {

// What is allocated meanwhile may be left behind.
class MayLeak {
  public:
    explicit MayLeak(bool may) : m_may(may && __lsan_disable != nullptr) {
        if (m_may) __lsan_disable();
    }
    ~MayLeak() {
        if (m_may) __lsan_enable();
    }
    MayLeak(const MayLeak&) = delete;
    MayLeak& operator=(const MayLeak&) = delete;

  private:
    bool m_may;
};

constexpr std::uint64_t kMostCalls = 2000;

using Entries = std::multiset<std::string>;

Entries OpenEntries(const TestMachine& test) {
    Entries open;
    for (const auto& entry : test.machine.ledger.Open())
        open.insert(std::string(entry.kind) + " of " + entry.call);
    return open;
}

// What is open now and wasn't then.
Entries LeftOpen(const TestMachine& test, const Entries& then) {
    const Entries now = OpenEntries(test);
    Entries left;
    std::set_difference(now.begin(), now.end(), then.begin(), then.end(),
                        std::inserter(left, left.end()));
    return left;
}

using Values = std::map<std::string, std::string>;

Values AllValues(TestMachine& test) {
    Values values;
    test.machine.Get<platform::Registry>().Tree().Walk(
        [&](const std::u16string& path, const platform::RegistryKey& key) {
            for (const platform::RegistryValue& value : key.Values()) {
                const auto data = value.Data();
                std::u16string text(data.size() / 2, u'\0');
                std::memcpy(text.data(), data.data(), text.size() * 2);
                if (value.Type() == REG_DWORD && data.size() == sizeof(DWORD))
                    text = Wide(std::to_string(data[0] | data[1] << 8 | data[2] << 16));
                values[platform::ToUtf8(path + u'\\' + std::u16string(value.Name()))] =
                    platform::ToUtf8(text.c_str());
            }
        });
    return values;
}

Values Changes(const Values& from, const Values& to) {
    Values changes;
    for (const auto& [name, data] : to) {
        const auto old = from.find(name);
        if (old == from.end() || old->second != data) changes[name] = data;
    }
    for (const auto& [name, data] : from)
        if (!to.contains(name)) changes[name] = "-";
    return changes;
}

// The first call that was failed. repeated: whether it was made again.
Fault FailedCall(const platform::Trace& trace, bool lasting, bool& repeated) {
    Fault fault{"", "", 0, 0, lasting};
    const auto& records = trace.Records();
    const auto failed = std::find_if(records.begin(), records.end(),
                                     [](const auto& record) { return record.failed; });
    if (failed == records.end()) return fault;
    fault.call = failed->name;
    fault.argument = platform::ToUtf8(failed->argument);
    for (auto record = records.begin(); record != records.end(); ++record) {
        if (fault.call != record->name) continue;
        const bool same = failed->argument.empty() || record->argument == failed->argument;
        repeated = repeated || (same && record > failed);
        fault.ofName += record <= failed;
        fault.ofArgument += same && record <= failed;
    }
    return fault;
}

bool Fits(const FailureRow& row, const Fault& fault) {
    if (std::find(row.calls.begin(), row.calls.end(), fault.call) == row.calls.end()) return false;
    if (!row.argument.empty() && !platform::EqualNoCase(Wide(row.argument), Wide(fault.argument)))
        return false;
    return row.which == 0 || row.which == (row.argument.empty() ? fault.ofName : fault.ofArgument);
}

// The facts, a line each.
std::string Told(const Facts& facts) {
    std::string text;
    for (const std::string& box : facts.boxes)
        text += "box " + box + "\n";
    for (const std::string& line : facts.log)
        text += "log " + line + "\n";
    for (const Values& values : {facts.registry, facts.notes})
        for (const auto& [name, data] : values)
            text += name + ": " + data + "\n";
    return text;
}

}  // namespace

std::string Box(const std::string& caption, const std::string& text, unsigned style) {
    return caption + "|" + text + "|" + std::to_string(style);
}

void AsClean(Facts&, const Facts&, const Fault&) {}

Outcome Noted(const std::string& note, const std::string& text) {
    return [=](Facts& due, const Facts&, const Fault&) { due.notes[note] = text; };
}

FaultSweep::Result FaultSweep::RunOnce(std::uint64_t n, bool lasting) const {
    Result result;
    TestMachine test(sample, 0, help);
    test.user.agrees = true;
    const Values before = AllValues(test);
    std::size_t boxesSeen = 0;
    std::size_t linesSeen = 0;
    const auto run = [&](const Deed& deed) {
        Facts facts;
        deed(facts.notes);
        result.fired = result.fired || test.machine.faults.Fired();
        test.machine.faults.Disarm();
        test.machine.trace.Stop();
        for (; boxesSeen < test.user.Boxes().size(); ++boxesSeen) {
            const ScriptedUser::Box& box = test.user.Boxes()[boxesSeen];
            facts.boxes.push_back(
                Box(platform::ToUtf8(box.caption), platform::ToUtf8(box.text), box.style));
        }
        facts.log = test.LogLines();
        facts.log.erase(facts.log.begin(),
                        facts.log.begin() + static_cast<std::ptrdiff_t>(linesSeen));
        linesSeen += facts.log.size();
        facts.registry = Changes(before, AllValues(test));
        return facts;
    };
    const Sweep sweep = [&](const Deed& deed) {
        const Entries open = OpenEntries(test);
        test.machine.trace.Start();
        if (n != 0) test.machine.faults.FailNth(n, lasting);
        result.first = run(deed);
        EXPECT_EQ(LeftOpen(test, open), Entries()) << "after the failed call";
        result.second = run(deed);
        EXPECT_EQ(LeftOpen(test, open), Entries()) << "after the second run";
    };
    try {
        operation(test, sweep);
    } catch (const platform::MachineEnded& end) {
        result.ended = true;
        result.fired = true;
        EXPECT_EQ(end.code, STATUS_NO_MEMORY) << end.reason;
    }
    for (const auto& record : test.machine.trace.Records())
        result.calls.emplace_back(record.name);
    result.fault = FailedCall(test.machine.trace, lasting, result.repeated);
    return result;
}

void FaultSweep::Judge(const Result& result, const Result& clean) const {
    const Fault& fault = result.fault;
    if (result.ended) {
        EXPECT_TRUE(fault.call.starts_with("SysAllocString"));
        return;
    }
    if (result.fired) {
        const auto row = std::find_if(table.begin(), table.end(), [&](const FailureRow& candidate) {
            return Fits(candidate, fault);
        });
        if (row == table.end()) {
            ADD_FAILURE() << "no row of the failure table";
            return;
        }
        Facts due;
        for (const Outcome& outcome : row->outcomes) {
            due = clean.first;
            outcome(due, result.first, fault);
            if (due == result.first) break;
        }
        EXPECT_EQ(Told(result.first), Told(due));
    } else {
        EXPECT_EQ(Told(result.first), Told(clean.first));
    }
    Facts due = clean.second;
    Facts found = result.second;
    if (forgetFirst) {
        forgetFirst(due);
        forgetFirst(found);
    }
    EXPECT_EQ(Told(found), Told(due)) << "the second run";
}

FaultSweep::Result FaultSweep::RunAndJudge(std::uint64_t n, bool lasting,
                                           const Result& clean) const {
    SCOPED_TRACE(testing::Message() << (lasting ? "lasting " : "passing ") << n);
    // A text that can't be allocated ends the machine, with all that the library holds.
    const MayLeak scope(n <= clean.calls.size() &&
                        clean.calls[n - 1].starts_with("SysAllocString"));
    const Result result = RunOnce(n, lasting);
    SCOPED_TRACE(result.fault.call + " " + result.fault.argument);
    Judge(result, clean);
    return result;
}

Facts FaultSweep::Clean() const {
    return RunOnce(0, false).first;
}

void FaultSweep::Run() const {
    SCOPED_TRACE(name);
    const Result clean = RunOnce(0, false);
    ASSERT_FALSE(clean.fired);
    std::uint64_t lasting = 0;
    std::uint64_t ended = 0;
    std::uint64_t n = 1;
    for (;; ++n) {
        ASSERT_LT(n, kMostCalls) << "never ran clean";
        const Result passing = RunAndJudge(n, false, clean);
        if (!passing.fired) break;
        ended += passing.ended;
        if (!passing.repeated) continue;
        ++lasting;
        EXPECT_TRUE(RunAndJudge(n, true, clean).fired);
    }
    testing::Test::RecordProperty(name, std::to_string(n - 1));
    std::cout << name << ": " << n - 1 << " calls failed, " << lasting << " of them also for good, "
              << ended << " with the end of the machine\n";
}
