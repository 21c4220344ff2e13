#pragma once
// The fault sweep: an operation of the library is run with its first system call failing, then with
// its second, and so on until a run meets no fault. Each call fails once alone (passing), and once
// together with all further calls of its name and argument (lasting) where there are any.
//
// What must be seen of a failure that is described stands in a row of the operation's table. Every
// other run is judged by the same invariants:
// - nothing leaks, no handle or lock is held, and no thread waits for ever;
// - each value is what it was before, or what the clean run writes there at some time, and no other
//   value has changed; the type and all bytes count;
// - boxes and log are those of the clean run, with some missing and known failures added;
// - the user has been told when the operation didn't succeed;
// - a second run without a fault ends like the second one after a clean run.

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "Fixture.h"

// What is compared, by name: each registry value under its path, as its type and bytes; each key
// under its path and a backslash; and what the operation notes of the screen. Absent: "-".
using Values = std::map<std::string, std::string>;

// What the outside can see of one run.
struct Observed {
    Lines boxes{};  // as Box makes them
    Lines log{};    // the tuning log's lines without time stamps
    Values values{};
};

std::string Box(const std::string& caption, const std::string& text, unsigned style);

// The clean log with the lines from the first one that starts with `from` up to the next one that
// starts with `to` replaced; an empty `to`: up to the end. The same for both: an insertion.
struct LogEdit {
    std::string from;
    std::string to;
    Lines lines{};
};

// What must be seen of a described failure: what isn't given is as in the clean run.
struct Seen {
    std::optional<Lines> boxes{};
    std::optional<LogEdit> log{};
    std::optional<Values> values{};  // all of them at the end
    Values shown{};                  // these values at the end
    // Ends of the names of values that may be what they were before, or at some time of the clean
    // run.
    Lines kept{};
    bool linesMissing = false;  // some of the log's lines may be missing
};

// Of several rows that fit a call the first counts.
struct FailureRow {
    std::vector<const char*> calls;
    Seen seen;
    std::string argument{};  // without regard to case; empty: any
    unsigned which = 0;      // of the calls with that name (and argument); 0: each
    std::optional<bool> lasting{};
};

class FaultSweep {
  public:
    // The operation itself. It may note what a run shows on the screen.
    using Action = std::function<void(Values& notes)>;
    // Runs the action with the fault, and once more without.
    using Sweep = std::function<void(const Action& action)>;

    struct Run {
        Values before;
        Observed first;
        Observed second;
        std::map<std::string, std::set<std::string>> written;  // by the first, at any time
    };

    std::string name;
    Sample sample;
    const char* help = nullptr;  // the text of help.xml, null for none
    // Brings a fresh machine to the point where the operation begins, and sweeps that.
    std::function<void(TestMachine& test, const Sweep& sweep)> operation;

    std::vector<FailureRow> described{};
    // Boxes and log lines that tell of a failure. A line break in a line: a further line.
    Lines failureBoxes{};
    Lines failureLines{};
    // Whether the run with a fault did what it should. Default: all values are the clean run's.
    std::function<bool(const Observed& found, const Observed& clean)> succeeded{};
    // What stands on the screen before, by the names of the notes.
    Values shownBefore{};
    // Further values, by name, that may be found.
    std::multimap<std::string, std::string> mayBe{};
    // Fragments of boxes, log lines and names of values that a second run may lack because the
    // first has done the work already.
    Lines onceOnly{};
    // Rewrites what differs from run to run, such as numbers and GUIDs that are given anew.
    std::function<void(Values& values)> normalise{};
    // The lines that stand for the log. Default: the tuning log's.
    std::function<Lines(const TestMachine& test)> log{};

    // Says how many calls it has failed.
    void Execute() const;
    // Without a fault.
    Run Clean() const;

  private:
    struct Fault {
        std::string call;
        std::string argument;
        unsigned ofName = 0;      // the how-manieth of its name in the run, from 1 on
        unsigned ofArgument = 0;  // the same among those that also have its argument
        bool lasting = false;
    };
    struct Result : Run {
        Fault fault;
        bool fired = false;
        bool repeated = false;  // the failed call was made again
        bool ended = false;     // a text couldn't be allocated
        Lines calls;
    };
    static bool Fits(const FailureRow& row, const Fault& fault);
    static Fault FailedCall(const platform::Trace& trace, bool lasting, bool& repeated);
    Values Snapshot(TestMachine& test) const;
    Result RunOnce(std::uint64_t n, bool lasting) const;
    void ExpectSeen(const Seen& seen, const Observed& found, const Run& clean) const;
    void ExpectAllowed(const Values& found, const Run& clean) const;
    void ExpectInvariants(const Result& result, const Run& clean) const;
    void ExpectSecondRun(const Observed& found, const Observed& clean) const;
    Result RunAndJudge(std::uint64_t n, bool lasting, const Result& clean) const;
};
