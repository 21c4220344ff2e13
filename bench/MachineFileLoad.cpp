// Loading a machine file of the size of a server's SYSTEM hive, in time and memory.

#include <malloc.h>

#include <cstdio>
#include <random>
#include <string_view>

#include "Machine.h"
#include "MachineFile.h"
#include "Timing.h"

namespace {

constexpr int kKeys = 50'000;
constexpr int kValuesOfAKey = 6;

// Writes an export in UTF-16 with byte-order mark and CR LF, as Windows does.
class Export {
  public:
    Export() { Add("Windows Registry Editor Version 5.00\r\n"); }

    std::string Take() { return std::move(m_bytes); }
    void AddKey(int number) {
        char path[160];
        std::snprintf(path, sizeof(path),
                      "\r\n[HKEY_LOCAL_MACHINE\\SYSTEM\\ControlSet001\\Enum\\Bus%02d\\"
                      "Device%03d\\Instance%05d\\Settings]\r\n",
                      number % 40, number / 40 % 250, number);
        Add(path);
        for (int value = 0; value < kValuesOfAKey; ++value)
            AddValue(value);
    }

  private:
    void Add(std::string_view text) {
        for (const char c : text) {
            m_bytes += c;
            m_bytes += '\0';
        }
    }
    void AddValue(int number) {
        Add("\"Value" + std::to_string(number) + "\"=");
        switch (Below(4)) {
            case 0:
                Add("dword:" + Hex(4, ""));
                break;
            case 1:
                Add("\"C:\\\\Program Files\\\\" + Hex(10 + Below(40), "") + "\"");
                break;
            case 2:
                Add("hex(2):");
                AddBytes(2 * (10 + Below(20)));
                break;
            default:
                Add("hex:");
                AddBytes(8 + Below(80));
        }
        Add("\r\n");
    }
    void AddBytes(unsigned count) {
        for (; count > 25; count -= 25)
            Add(Hex(25, ",") + ",\\\r\n  ");
        Add(Hex(count, ","));
    }
    std::string Hex(unsigned count, std::string_view separator) {
        constexpr char kDigits[] = "0123456789abcdef";
        std::string text;
        for (unsigned i = 0; i < count; ++i) {
            if (i != 0) text += separator;
            text += kDigits[Below(16)];
            text += kDigits[Below(16)];
        }
        return text;
    }
    unsigned Below(unsigned limit) { return static_cast<unsigned>(m_random() % limit); }

    std::mt19937_64 m_random{20'261'119};
    std::string m_bytes = "\xFF\xFE";
};

std::string MakeExport() {
    Export file;
    for (int key = 0; key < kKeys; ++key)
        file.AddKey(key);
    return file.Take();
}

// A row of the process's memory, in bytes.
double ProcessMemory(std::string_view row) {
    std::ifstream status("/proc/self/status");
    double kilobytes = 0;
    for (std::string name; status >> name;)
        if (name == row) status >> kilobytes;
    return kilobytes * 1024;
}

void ForgetPeak() {
    std::ofstream("/proc/self/clear_refs") << 5;
}

void LoadMachineFile(benchmark::State& state) {
    const std::string file = MakeExport();
    const auto size = static_cast<double>(file.size());
    double peak = 0;
    double kept = 0;
    while (state.KeepRunning()) {
        platform::Machine machine;
        malloc_trim(0);
        ForgetPeak();
        const double before = ProcessMemory("VmRSS:");
        const Clock::time_point start = Clock::now();
        const auto error = platform::LoadMachineFile(machine, file);
        state.SetIterationTime(Seconds(Clock::now() - start));
        if (error) state.SkipWithError(error->message.c_str());
        peak = std::max(peak, ProcessMemory("VmHWM:") - before);
        kept = std::max(kept, ProcessMemory("VmRSS:") - before);
    }
    state.SetBytesProcessed(static_cast<int64_t>(file.size()) * state.iterations());
    state.counters["file_MB"] = size / 1e6;
    // The file's own bytes are in memory while it is read, and count.
    state.counters["peak_to_file"] = (size + peak) / size;
    state.counters["tree_to_file"] = kept / size;
}
BENCHMARK(LoadMachineFile)->Unit(benchmark::kMillisecond)->Apply([](auto* b) { Repeated(b, 3); });

}  // namespace
