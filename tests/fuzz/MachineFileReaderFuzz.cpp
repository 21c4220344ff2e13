// Any bytes for the reader of machine files alone: what it gives is within the limits that it
// promises.

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "MachineFileReader.h"
#include "RegistryTree.h"

namespace {

void Require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}

void CheckPath(std::u16string_view path) {
    std::size_t depth = 0;
    while (!path.empty()) {
        const std::size_t end = std::min(path.find(u'\\'), path.size());
        Require(end > 0 && end <= platform::maxKeyName, "a key's name is empty or too long");
        path.remove_prefix(end);
        Require(path.size() != 1, "the path ends with a backslash");
        if (!path.empty()) path.remove_prefix(1);
        ++depth;
    }
    Require(depth <= platform::maxKeyDepth, "the key lies too deep");
}

class Checker : public platform::MachineFileSink {
  public:
    Refusal OpenKey(platform::RegistryRoot, std::u16string_view path) override {
        CheckPath(path);
        m_isOpen = true;
        return std::nullopt;
    }
    Refusal DeleteKey(platform::RegistryRoot, std::u16string_view path) override {
        Require(!path.empty(), "a root is deleted");
        CheckPath(path);
        return std::nullopt;
    }
    Refusal SetValue(std::u16string_view name, DWORD, std::span<const BYTE> data) override {
        CheckName(name);
        for (const BYTE byte : data)
            m_sum = m_sum + byte;
        return std::nullopt;
    }
    Refusal DeleteValue(std::u16string_view name) override {
        CheckName(name);
        return std::nullopt;
    }

  private:
    void CheckName(std::u16string_view name) const {
        Require(m_isOpen, "a value stands in no key");
        Require(name.size() <= platform::maxValueName, "a value's name is too long");
    }

    bool m_isOpen = false;
    volatile unsigned m_sum = 0;  // so that all of the data is read
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    Checker checker;
    if (const auto error = platform::ReadMachineFile(bytes, checker)) {
        const auto lines = static_cast<std::size_t>(std::count(bytes.begin(), bytes.end(), '\n'));
        Require(error->line > 0 && error->line <= lines + 1, "no such line");
        Require(!error->message.empty(), "no message");
    }
    return 0;
}
