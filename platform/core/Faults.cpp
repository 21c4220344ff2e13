#include "Faults.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "Facts.h"
#include "Text.h"

namespace platform {
namespace {

// The one call whose name has a blank: "operator new".
constexpr std::u16string_view operatorName = u"operator ";

// A Windows error or an HRESULT, which may be written as a negative number.
bool IsError(long long number) {
    return number >= std::numeric_limits<int>::min() && number <= std::numeric_limits<DWORD>::max();
}

}  // namespace

void FaultPlan::FailCalls(std::string name, std::u16string argument, DWORD error,
                          std::uint64_t first, std::uint64_t count) {
    m_rules.push_back({std::move(name), std::move(argument), error, first, count, 0, {}});
}

void FaultPlan::FailNth(std::uint64_t n, bool lasting, DWORD error) {
    m_nth = n;
    m_nthLasting = lasting;
    m_nthError = error;
    Mark();
}

void FaultPlan::Disarm() {
    m_rules.clear();
    m_nth = 0;
    m_fired = false;
}

bool FaultPlan::SetRows(const std::vector<Row>& rows, std::u16string* badRow) {
    std::vector<Rule> rules;
    for (const Rule& rule : m_rules) {
        if (!rule.row) rules.push_back(rule);
    }
    for (const Row& row : rows) {
        const auto kept = std::find_if(m_rules.begin(), m_rules.end(), [&](const Rule& rule) {
            return rule.row && rule.row->name == row.name && rule.row->text == row.text;
        });
        if (kept != m_rules.end()) {
            rules.push_back(*kept);
            continue;
        }
        const std::size_t start = row.name.starts_with(operatorName) ? operatorName.size() : 0;
        const std::size_t blank = row.name.find(u' ', start);
        const std::u16string call = row.name.substr(0, blank);
        Rule rule{ToUtf8(call), {}, 0, 1, forever, 0, row};
        if (blank != std::u16string::npos) rule.argument = row.name.substr(blank + 1);

        const auto fields = SplitFields(row.text, u',');
        std::vector<long long> numbers;
        for (const auto& field : fields) {
            const auto number = ParseNumber(field);
            if (!number) break;
            numbers.push_back(*number);
        }
        if (call.empty() || fields.empty() || fields.size() > 3 ||
            numbers.size() != fields.size() || !IsError(numbers[0]) ||
            std::any_of(numbers.begin() + 1, numbers.end(), [](long long n) { return n < 1; })) {
            if (badRow) *badRow = row.name;
            return false;
        }
        rule.error = static_cast<DWORD>(numbers[0]);
        if (numbers.size() > 1) rule.first = static_cast<std::uint64_t>(numbers[1]);
        if (numbers.size() > 2) rule.count = static_cast<std::uint64_t>(numbers[2]);
        rules.push_back(std::move(rule));
    }
    m_rules = std::move(rules);
    return true;
}

std::optional<DWORD> FaultPlan::Ask(std::string_view name, std::u16string_view argument,
                                    DWORD ordinary) {
    ++m_sinceMark;
    std::optional<DWORD> error;
    for (Rule& rule : m_rules) {
        if (rule.name != name) continue;
        if (!rule.argument.empty() && !EqualNoCase(rule.argument, argument)) continue;
        ++rule.seen;
        const bool reached = rule.seen >= rule.first;
        if (reached && rule.seen - rule.first < rule.count && !error) error = rule.error;
    }
    if (m_nth != 0 && m_sinceMark == m_nth) {
        error = m_nthError != 0 ? m_nthError : ordinary;
        m_nth = 0;
        if (m_nthLasting) FailCalls(std::string(name), std::u16string(argument), *error);
    }
    m_fired = m_fired || error;
    return error;
}

}  // namespace platform
