// Any bytes as a machine file: read whole or not at all, and what is written reads back.

#include <cstdio>
#include <cstdlib>

#include "../hostile/MachineFileCheck.h"

namespace {

constexpr char kBase[] =
    "Windows Registry Editor Version 5.00\n\n"
    "[HKEY_LOCAL_MACHINE\\SOFTWARE\\StandIn]\n\"Time\"=\"2026-11-19 08:05\"\n\n"
    "[HKEY_LOCAL_MACHINE\\SYSTEM\\Select]\n\"Current\"=dword:1\n\n"
    "[HKEY_LOCAL_MACHINE\\SYSTEM\\ControlSet001\\Services]\n\"a\"=\"1\"\n\"b\"=hex(7):00,00\n";

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string wrong = WrongWithReading(kBase, {reinterpret_cast<const char*>(data), size});
    if (wrong.empty()) return 0;
    std::fprintf(stderr, "%s\n", wrong.c_str());
    std::abort();
}
