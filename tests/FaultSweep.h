#pragma once
// The fault sweep: an operation of the library is run with its first system call failing, then with
// its second, and so on until a run meets no fault; each fault once for that call alone (passing)
// and once for all further calls of its name and argument as well (lasting), where the passing run
// has made such calls; where it hasn't, the lasting run would be the same. What each run shows
// must be what the operation's failure table says of the call, and nothing else: the boxes, the
// log, the registry. Nothing may be left open or leak, nothing hang, and the operation must work
// when it is run again without a fault.

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "Fixture.h"

// What the outside can see of one run.
struct Facts {
    std::vector<std::string> boxes;               // as Box() makes them
    std::vector<std::string> log;                 // the tuning log's lines, without time stamps
    std::map<std::string, std::string> registry;  // what it has changed: path -> data, "-": deleted
    std::map<std::string, std::string> notes;     // what the operation itself has noted

    bool operator==(const Facts&) const = default;
};

std::string Box(const std::string& caption, const std::string& text, unsigned style);

// A call that was made to fail.
struct Fault {
    std::string call;
    std::string argument;
    unsigned ofName;      // the how-manieth of its name in the run, from 1 on
    unsigned ofArgument;  // the same among those that also have its argument
    bool lasting;
};

// Makes of the clean run's facts those that are due. `found` is what the run has shown, for an
// outcome that the table leaves open in a part.
using Outcome = std::function<void(Facts& due, const Facts& found, const Fault& fault)>;
void AsClean(Facts&, const Facts&, const Fault&);
Outcome Noted(const std::string& note, const std::string& text);

// A row of a failure table; of several that fit a call the first counts. A call without a row fails
// the test.
struct FailureRow {
    std::vector<const char*> calls;
    std::vector<Outcome> outcomes;  // one of them
    std::string argument{};         // without regard to case; empty: any
    unsigned which = 0;             // of the calls with that name (and argument); 0: each
};

class FaultSweep {
  public:
    // The operation itself. It may note what else a run has shown.
    using Deed = std::function<void(std::map<std::string, std::string>& notes)>;
    // Does the deed under the fault, looks at what came of it, and does it again without.
    using Sweep = std::function<void(const Deed& deed)>;

    std::string name;
    Sample sample;
    const char* help = nullptr;  // the text of help.xml, null for none
    std::vector<FailureRow> table{};
    // Brings a fresh machine to the point where the operation begins, and sweeps that.
    std::function<void(TestMachine& test, const Sweep& sweep)> operation;
    // Takes out of the facts of the second run what the first may have made superfluous.
    std::function<void(Facts& facts)> forgetFirst{};

    // Says how many calls it has failed.
    void Run() const;
    // The facts of a run without a fault.
    Facts Clean() const;

  private:
    struct Result {
        Facts first;
        Facts second;
        Fault fault;
        bool fired = false;
        bool repeated = false;  // the failed call was made again
        bool ended = false;     // a text couldn't be allocated
        std::vector<std::string> calls;
    };
    Result RunOnce(std::uint64_t n, bool lasting) const;
    void Judge(const Result& result, const Result& clean) const;
    Result RunAndJudge(std::uint64_t n, bool lasting, const Result& clean) const;
};
