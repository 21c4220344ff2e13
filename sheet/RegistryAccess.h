#pragma once
// Reading the registry through its API. Any thread.

#include <optional>
#include <vector>

#include "SheetText.h"

namespace sheet {

// The text of a REG_SZ's data, up to its terminator if it has one.
Text TextOf(const std::vector<BYTE>& data);

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
    // A value of any type as a driver takes it: the first four bytes, missing ones as 0; nothing
    // without data.
    std::optional<DWORD> ReadNumber(const WCHAR* name) const;
    // The same: the texts up to the first empty one or the end of the data.
    std::vector<Text> ReadTexts(const WCHAR* name) const;
    // Whether there is a value of that name, of any type.
    bool Has(const WCHAR* name) const;

  private:
    std::optional<Value> Read(const WCHAR* name) const;

    HKEY m_key = nullptr;
    LONG m_status;
};

// By their names, without regard to case. The registry has an order of its own, which says nothing.
void SortByName(std::vector<Key::Value>& values);

}  // namespace sheet
