#pragma once
// Which registry values the library reads and writes: each call with its key, where the machine's
// trace knows only the value's name. One recorder at a time.

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "Machine.h"
#include "RegistryTree.h"

class ValueRecorder {
  public:
    explicit ValueRecorder(platform::Machine& machine);
    ~ValueRecorder();
    ValueRecorder(const ValueRecorder&) = delete;
    ValueRecorder& operator=(const ValueRecorder&) = delete;

    // What was done to each value, in order: 's' its size asked for, 'r' read, 'w' written,
    // 'd' deleted. By the path of its key and its name.
    using Accesses = std::map<std::pair<std::u16string, std::u16string>, std::string>;
    Accesses Values() const;

    static void Add(char what, HKEY key, LPCWSTR name);

  private:
    struct Access {
        char what;
        std::shared_ptr<platform::RegistryKey> key;
        std::u16string name;
    };

    platform::Machine& m_machine;
    std::vector<Access> m_accesses;
};
