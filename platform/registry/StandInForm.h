#pragma once
// What a machine file may say below HKEY_LOCAL_MACHINE\SOFTWARE\StandIn: one table of the keys and
// values there, each with its type and form. docs/machine-file.md describes them.

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "RegistryTree.h"

namespace platform {

// Follows a file from key to key. Everything outside of StandIn is accepted.
class StandInForm {
  public:
    // What is wrong, in one line of UTF-8 with the nearest known name.
    using Refusal = std::optional<std::string>;

    // Goes to a key; path: below the root, without empty parts. Refused: an unknown key of StandIn.
    Refusal OpenKey(RegistryRoot root, std::u16string_view path);
    // A value of the key opened last. Refused: an unknown name, a wrong type, a wrong form.
    Refusal CheckValue(std::u16string_view name, DWORD type, std::span<const BYTE> data) const;

    // A row of the table.
    struct Row;

  private:
    // A row whose key begins with the steps taken so far, and what is left of its key.
    struct Candidate {
        const Row* row;
        std::u16string_view rest;
    };

    bool m_isInside = false;
    std::u16string m_place;  // the key opened last, from StandIn on
    std::vector<Candidate> m_candidates;
};

}  // namespace platform
