#pragma once
// Resources of a module, from a .res file as the resource compiler writes it.

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include <minwindef.h>

namespace platform {

// A resource's type or name: a number, or a text.
using ResourceName = std::variant<WORD, std::u16string>;

struct Resource {
    ResourceName type;
    ResourceName name;
    WORD language = 0;
    std::span<const BYTE> data;
};

// The entries of a .res file in its 32-bit form (an empty entry first, headers and data aligned to
// 4 bytes). Borrows the bytes. Reading ends where an entry isn't whole.
std::vector<Resource> ParseResources(std::span<const BYTE> file);

// Walks little-endian data. Past the end every read gives zeros and Good becomes false.
class ResourceReader {
  public:
    explicit ResourceReader(std::span<const BYTE> data) : m_data(data) {}

    WORD Word();
    DWORD Dword();
    short Short() { return static_cast<short>(Word()); }
    // Up to its terminator, which is skipped.
    std::u16string Text();
    // The text of that many characters.
    std::u16string Text(std::size_t length);
    // 0xFFFF and a number, or a text.
    ResourceName Name();
    std::span<const BYTE> Bytes(std::size_t count);
    void Align(std::size_t boundary);
    bool Good() const { return m_good; }
    std::size_t Position() const { return m_position; }

  private:
    std::span<const BYTE> m_data;
    std::size_t m_position = 0;
    bool m_good = true;
};

// A resource of a loaded module; type and name as FindResourceW takes them. Null, with the last
// error set, when there is none. It stays where it is as long as the machine lives.
const Resource* FindResourceOf(HMODULE module, const char16_t* type, const char16_t* name);

// A string of the module's string table, not terminated; nothing when it is missing or empty.
std::optional<std::u16string_view> FindString(HMODULE module, UINT id);

}  // namespace platform
