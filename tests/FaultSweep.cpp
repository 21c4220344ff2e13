#include "FaultSweep.h"

#include <algorithm>
#include <iostream>
#include <iterator>
#include <utility>

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

// Type and bytes; those that are letters stand as such.
std::string Told(const platform::RegistryValue& value) {
    std::string text = std::to_string(value.Type()) + ":";
    char hex[5];
    for (const BYTE byte : value.Data()) {
        std::snprintf(hex, sizeof(hex), byte < 0x20 || byte > 0x7E ? "\\%02x" : "%c", byte);
        text += hex;
    }
    return text;
}

std::string At(const Values& values, const std::string& name) {
    const auto found = values.find(name);
    return found == values.end() ? "-" : found->second;
}

std::set<std::string> Names(const Values& a, const Values& b) {
    std::set<std::string> names;
    for (const Values& values : {std::cref(a), std::cref(b)})
        for (const auto& [name, data] : values)
            names.insert(name);
    return names;
}

void NoteChanges(const Values& from, const Values& to,
                 std::map<std::string, std::set<std::string>>& written) {
    for (const std::string& name : Names(from, to))
        if (At(from, name) != At(to, name)) written[name].insert({At(from, name), At(to, name)});
}

Lines SplitLines(const std::string& text) {
    Lines lines(1);
    for (const char c : text)
        c == '\n' ? lines.emplace_back() : lines.back() += c;
    return lines;
}

// Takes out each of the failures, which may be several lines.
Lines WithoutFailures(Lines log, const Lines& failures) {
    for (const std::string& failure : failures) {
        const Lines part = SplitLines(failure);
        for (auto at = log.begin();
             (at = std::search(at, log.end(), part.begin(), part.end())) != log.end();)
            at = log.erase(at, at + static_cast<std::ptrdiff_t>(part.size()));
    }
    return log;
}

// mayLack: some of the lines may be missing.
void ExpectLines(const Lines& found, const Lines& due, bool mayLack) {
    auto at = found.begin();
    for (auto line = due.begin(); line != due.end() && at != found.end(); ++line)
        at += *at == *line;
    if (!mayLack || at != found.end()) {
        EXPECT_EQ(found, due);
    }
}

Lines Edited(const Lines& clean, const LogEdit& edit) {
    const auto find = [&](auto from, const std::string& start) {
        const auto found = std::find_if(
            from, clean.end(), [&](const std::string& line) { return line.starts_with(start); });
        EXPECT_NE(found, clean.end()) << "no such line: " << start;
        return found;
    };
    const auto from = edit.from.empty() ? clean.begin() : find(clean.begin(), edit.from);
    const auto to = edit.to.empty() ? clean.end() : find(from, edit.to);
    Lines lines(clean.begin(), from);
    lines.insert(lines.end(), edit.lines.begin(), edit.lines.end());
    lines.insert(lines.end(), to, clean.end());
    return lines;
}

void ExpectSame(Values found, Values due, const std::function<bool(std::string)>& passOver) {
    for (Values* values : {&found, &due})
        std::erase_if(*values, [&](const auto& value) { return passOver(value.first); });
    for (const std::string& name : Names(found, due))
        EXPECT_EQ(At(found, name), At(due, name)) << name;
}

}  // namespace

std::string Box(const std::string& caption, const std::string& text, unsigned style) {
    return caption + "|" + text + "|" + std::to_string(style);
}

Values FaultSweep::Snapshot(TestMachine& test) const {
    Values values;
    test.machine.Get<platform::Registry>().Tree().Walk(
        [&](const std::u16string& path, const platform::RegistryKey& key) {
            const std::string start = platform::ToUtf8(path) + "\\";
            values[start] = "key";
            for (const platform::RegistryValue& value : key.Values())
                values[start + platform::ToUtf8(std::u16string(value.Name()))] = Told(value);
        });
    if (normalise) normalise(values);
    return values;
}

// The first call that was failed. repeated: whether it was made again.
FaultSweep::Fault FaultSweep::FailedCall(const platform::Trace& trace, bool lasting,
                                         bool& repeated) {
    Fault fault;
    const auto& records = trace.Records();
    const auto failed = std::find_if(records.begin(), records.end(),
                                     [](const auto& record) { return record.failed; });
    if (failed == records.end()) return fault;
    fault.call = failed->name;
    fault.argument = platform::ToUtf8(failed->argument);
    fault.lasting = lasting;
    for (auto record = records.begin(); record != records.end(); ++record) {
        if (fault.call != record->name) continue;
        const bool same = failed->argument.empty() || record->argument == failed->argument;
        repeated = repeated || (same && record > failed);
        fault.ofName += record <= failed;
        fault.ofArgument += same && record <= failed;
    }
    return fault;
}

bool FaultSweep::Fits(const FailureRow& row, const Fault& fault) {
    if (std::find(row.calls.begin(), row.calls.end(), fault.call) == row.calls.end()) return false;
    if (row.lasting && *row.lasting != fault.lasting) return false;
    if (!row.argument.empty() && !platform::EqualNoCase(Wide(row.argument), Wide(fault.argument)))
        return false;
    return row.which == 0 || row.which == (row.argument.empty() ? fault.ofName : fault.ofArgument);
}

FaultSweep::Result FaultSweep::RunOnce(std::uint64_t n, bool lasting) const {
    Result result;
    TestMachine test(sample, 0, help);
    test.user.agrees = true;
    std::size_t boxesSeen = 0;
    std::size_t linesSeen = 0;
    const auto run = [&](const Action& action) {
        Observed observed;
        Values notes;
        action(notes);
        test.machine.faults.Disarm();
        test.machine.trace.Stop();
        test.machine.trace.onCall = nullptr;
        for (; boxesSeen < test.user.Boxes().size(); ++boxesSeen) {
            const ScriptedUser::Box& box = test.user.Boxes()[boxesSeen];
            observed.boxes.push_back(
                Box(platform::ToUtf8(box.caption), platform::ToUtf8(box.text), box.style));
        }
        const Lines lines = log ? log(test) : test.LogLines();
        observed.log.assign(lines.begin() + static_cast<std::ptrdiff_t>(linesSeen), lines.end());
        linesSeen = lines.size();
        observed.values = Snapshot(test);
        observed.values.merge(notes);
        return observed;
    };
    const Sweep sweep = [&](const Action& action) {
        const Entries open = OpenEntries(test);
        result.before = Snapshot(test);
        Values last = result.before;
        auto generation = test.machine.Get<platform::Registry>().Generation();
        test.machine.trace.Start();
        if (n != 0) {
            test.machine.faults.FailNth(n, lasting);
        } else {
            test.machine.trace.onCall = [&](const auto&) {
                const auto changes = test.machine.Get<platform::Registry>().Generation();
                if (std::exchange(generation, changes) == changes) return;
                Values now = Snapshot(test);
                NoteChanges(last, now, result.written);
                last = std::move(now);
            };
        }
        result.before.insert(shownBefore.begin(), shownBefore.end());
        last.insert(shownBefore.begin(), shownBefore.end());
        result.first = run(action);
        NoteChanges(last, result.first.values, result.written);
        EXPECT_EQ(LeftOpen(test, open), Entries()) << "after the failed call";
        result.second = run(action);
        EXPECT_EQ(LeftOpen(test, open), Entries()) << "after the second run";
    };
    try {
        operation(test, sweep);
    } catch (const platform::MachineEnded& end) {
        result.ended = true;
        EXPECT_EQ(end.code, STATUS_NO_MEMORY) << end.reason;
        result.first.values = Snapshot(test);
    }
    for (const auto& record : test.machine.trace.Records())
        result.calls.emplace_back(record.name);
    result.fault = FailedCall(test.machine.trace, lasting, result.repeated);
    result.fired = !result.fault.call.empty();
    return result;
}

// Each value is what it was before or what the clean run writes there.
void FaultSweep::ExpectAllowed(const Values& found, const Run& clean) const {
    for (const std::string& value : Names(found, clean.before)) {
        const std::string is = At(found, value);
        if (is == At(clean.before, value)) continue;
        const auto written = clean.written.find(value);
        const auto [begin, end] = mayBe.equal_range(value);
        EXPECT_TRUE((written != clean.written.end() && written->second.contains(is)) ||
                    std::any_of(begin, end, [&](const auto& other) { return other.second == is; }))
            << value << " was " << At(clean.before, value) << ", is " << is << ", and ends as "
            << At(clean.first.values, value) << " in the clean run";
    }
}

void FaultSweep::ExpectSeen(const Seen& seen, const Observed& found, const Run& clean) const {
    EXPECT_EQ(found.boxes, seen.boxes.value_or(clean.first.boxes));
    ExpectLines(found.log, seen.log ? Edited(clean.first.log, *seen.log) : clean.first.log,
                seen.linesMissing);
    Values due = seen.values.value_or(clean.first.values);
    for (const auto& [value, data] : seen.shown)
        due[value] = data;
    const auto isKept = [&](const std::string& value) {
        return std::any_of(seen.kept.begin(), seen.kept.end(),
                           [&](const std::string& end) { return value.ends_with(end); });
    };
    ExpectSame(found.values, due, isKept);
    const auto isOther = [&](const auto& value) { return !isKept(value.first); };
    Values kept = found.values;
    Run among = clean;
    std::erase_if(kept, isOther);
    std::erase_if(among.before, isOther);
    ExpectAllowed(kept, among);
}

void FaultSweep::ExpectInvariants(const Result& result, const Run& clean) const {
    const Observed& found = result.first;
    ExpectAllowed(found.values, clean);
    ExpectLines(WithoutFailures(found.log, failureLines),
                WithoutFailures(clean.first.log, failureLines), true);
    const auto withoutFailures = [&](Lines boxes) {
        std::erase_if(boxes, [&](const std::string& box) {
            return std::count(failureBoxes.begin(), failureBoxes.end(), box) != 0;
        });
        return boxes;
    };
    const Lines boxes = withoutFailures(found.boxes);
    const bool success =
        succeeded ? succeeded(found, clean.first) : found.values == clean.first.values;
    EXPECT_TRUE(success || boxes.size() < found.boxes.size()) << "the user doesn't hear of it";
    ExpectLines(boxes, withoutFailures(clean.first.boxes),
                !success || result.fault.call == "MessageBoxW");
}

void FaultSweep::ExpectSecondRun(const Observed& found, const Observed& clean) const {
    const auto isDone = [&](const std::string& text) {
        return std::any_of(onceOnly.begin(), onceOnly.end(), [&](const std::string& fragment) {
            return text.find(fragment) != std::string::npos;
        });
    };
    const auto settled = [&](Lines lines) {
        std::erase_if(lines, isDone);
        return lines;
    };
    SCOPED_TRACE("the second run");
    EXPECT_EQ(settled(found.boxes), settled(clean.boxes));
    EXPECT_EQ(settled(found.log), settled(clean.log));
    ExpectSame(found.values, clean.values, isDone);
}

FaultSweep::Result FaultSweep::RunAndJudge(std::uint64_t n, bool lasting,
                                           const Result& clean) const {
    SCOPED_TRACE(testing::Message() << (lasting ? "lasting " : "passing ") << n);
    // A text that can't be allocated ends the machine, with all that the library holds.
    const MayLeak scope(n <= clean.calls.size() &&
                        clean.calls[n - 1].starts_with("SysAllocString"));
    const Result result = RunOnce(n, lasting);
    SCOPED_TRACE(result.fault.call + " " + result.fault.argument);
    if (result.ended) {
        EXPECT_TRUE(result.fault.call.starts_with("SysAllocString"));
        Run among = clean;  // what was on the screen has gone
        for (const auto& [note, text] : shownBefore)
            among.before.erase(note);
        ExpectAllowed(result.first.values, among);
        return result;
    }
    const auto row = std::find_if(
        described.begin(), described.end(),
        [&](const FailureRow& candidate) { return result.fired && Fits(candidate, result.fault); });
    if (!result.fired)
        ExpectSeen({}, result.first, clean);
    else if (row != described.end())
        ExpectSeen(row->seen, result.first, clean);
    else
        ExpectInvariants(result, clean);
    ExpectSecondRun(result.second, clean.second);
    return result;
}

FaultSweep::Run FaultSweep::Clean() const {
    return RunOnce(0, false);
}

void FaultSweep::Execute() const {
    SCOPED_TRACE(name);
    const Result clean = RunOnce(0, false);
    ASSERT_FALSE(clean.fired);
    std::uint64_t lasting = 0;
    std::uint64_t ended = 0;
    std::uint64_t n = 1;
    for (;; ++n) {
        ASSERT_LT(n, 2000U) << "never ran clean";
        const Result passing = RunAndJudge(n, false, clean);
        if (!passing.fired) break;
        ended += passing.ended;
        if (!passing.repeated) continue;
        ++lasting;
        EXPECT_TRUE(RunAndJudge(n, true, clean).fired);
    }
    std::cout << name << ": " << n - 1 << " calls failed, " << lasting << " of them also for good, "
              << ended << " with the end of the machine\n";
}
