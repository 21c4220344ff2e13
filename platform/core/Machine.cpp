#include "Machine.h"

#include <cstdio>
#include <cstdlib>

namespace platform {
namespace {

Machine* g_machine = nullptr;

}  // namespace

Machine::Machine(std::uint64_t startSeed) : seed(startSeed), scheduler(startSeed) {
    if (g_machine != nullptr) {
        std::fputs("a second machine was made while one lives\n", stderr);
        std::abort();
    }
    g_machine = this;
}

Machine::~Machine() {
    scheduler.JoinAll();
    if (!m_ended) {
        for (const Ledger::Entry& entry : ledger.Open()) {
            if (onLeak) {
                onLeak(entry);
                continue;
            }
            std::fprintf(stderr, "leak: %s of %s, number %llu\n", entry.kind, entry.call,
                         static_cast<unsigned long long>(entry.serial));
            std::abort();
        }
    }
    while (!m_parts.empty())
        m_parts.pop_back();
    g_machine = nullptr;
}

Machine& Machine::Current() {
    if (g_machine == nullptr) {
        std::fputs("a Windows function was called while no machine lives\n", stderr);
        std::abort();
    }
    return *g_machine;
}

Machine* Machine::CurrentOrNull() {
    return g_machine;
}

void Machine::End(const std::string& reason) {
    m_ended = true;
    std::fprintf(stderr, "machine ended: %s\n", reason.c_str());
}

void Machine::Exit() {
    // What is called on the way may make further parts.
    for (std::size_t i = 0; i < m_parts.size(); ++i)
        (*m_parts[i])->OnExit();
    m_ended = true;
}

}  // namespace platform
