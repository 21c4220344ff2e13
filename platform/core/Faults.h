#pragma once
// Which calls are to fail, and with which error. True state stays as it is; a fault lies over it.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <minwindef.h>

namespace platform {

class FaultPlan {
  public:
    static constexpr std::uint64_t forever = ~std::uint64_t{0};

    // Calls of that name, and with that argument unless it is empty (compared without regard to
    // case), fail with error; from the first-th matching call on (1 is the next), count times.
    void FailCalls(std::string name, std::u16string argument, DWORD error, std::uint64_t first = 1,
                   std::uint64_t count = forever);

    // The n-th counted call since Mark fails (1 is the next); lasting: and all calls after it of
    // the same name and argument. error 0: the one that the call names as its ordinary failure.
    void FailNth(std::uint64_t n, bool lasting, DWORD error = 0);
    void Mark() { m_sinceMark = 0; }
    std::uint64_t CallsSinceMark() const { return m_sinceMark; }

    // Drops every rule, also those of the machine file.
    void Disarm();
    // True when a rule has failed a call since the last Disarm.
    bool Fired() const { return m_fired; }

    // Takes the rules of a machine file's `Faults` key, in the place of those taken before. A row
    // that stays as it was keeps its count. Name: "<call>[ <argument>]"; text:
    // "<error>[,<first>[,<count>]]", numbers in decimal or 0x form. False: a row can't be read, and
    // nothing has changed.
    struct Row {
        std::u16string name;
        std::u16string text;
    };
    bool SetRows(const std::vector<Row>& rows, std::u16string* badRow = nullptr);

    // Asked once for each counted call. The error to fail with, or nothing. ordinary: the error of
    // a failure that names none.
    std::optional<DWORD> Ask(std::string_view name, std::u16string_view argument, DWORD ordinary);

  private:
    struct Rule {
        std::string name;
        std::u16string argument;
        DWORD error;
        std::uint64_t first;
        std::uint64_t count;
        std::uint64_t seen = 0;
        std::optional<Row> row;  // set for a rule of the machine file
    };

    std::vector<Rule> m_rules;
    std::uint64_t m_sinceMark = 0;
    std::uint64_t m_nth = 0;  // 0: none
    bool m_nthLasting = false;
    DWORD m_nthError = 0;
    bool m_fired = false;
};

}  // namespace platform
