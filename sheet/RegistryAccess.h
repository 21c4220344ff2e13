#pragma once
// Reading the registry through its API. Any thread.

#include <optional>
#include <vector>

#include "SheetText.h"

namespace sheet {

// An open key below HKEY_LOCAL_MACHINE, for reading; closed when it goes.
class Key {
  public:
    explicit Key(const Text& path);
    ~Key();
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;

    // ERROR_SUCCESS, or why it isn't open; nothing else may be asked then.
    LONG Status() const { return m_status; }

    struct Value {
        Text name;  // empty for the default value
        DWORD type;
        std::vector<BYTE> data;
    };
    // In the registry's order.
    std::vector<Value> Values() const;
    std::vector<Text> Subkeys() const;
    // The text of a REG_SZ or REG_EXPAND_SZ up to its terminator, or nothing.
    std::optional<Text> ReadText(const WCHAR* name) const;

  private:
    HKEY m_key = nullptr;
    LONG m_status;
};

}  // namespace sheet
