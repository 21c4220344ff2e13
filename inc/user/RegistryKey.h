#pragma once
// The registry as the library uses it: one open key, the list that a REG_MULTI_SZ holds, and a walk
// over subkeys. No other code calls the registry functions.
//
// Any thread, one at a time for each object. Results are Windows error codes, 0 for success; a key
// or value that isn't there is ERROR_FILE_NOT_FOUND. Out-values keep what they held on a failure.
// Values are read whatever their type, since a foreign program may have written them.

#include <windows.h>
#include <cstddef>
#include <memory>

#include "AutoClasses.h"

// The texts of a REG_MULTI_SZ, as they are stored: up to the empty text that ends the list or,
// where that is missing, to the end of the data. Owns its copy of the data.
class MultiText {
  public:
    class Iterator {
      public:
        explicit Iterator(LPCWSTR text) : m_text(text) {}
        LPCWSTR operator*() const { return m_text; }
        Iterator& operator++();
        // The end of every list is its empty text.
        bool operator!=(const Iterator&) const { return *m_text != 0; }

      private:
        LPCWSTR m_text;
    };

    Iterator begin() const { return Iterator(m_text ? m_text.get() : TEXT("")); }
    Iterator end() const { return Iterator(TEXT("")); }
    // The data as it is stored, and its size in bytes. Zeros follow it.
    const BYTE* Data() const { return reinterpret_cast<const BYTE*>(m_text.get()); }
    DWORD Size() const { return m_size; }

  private:
    friend class RegistryKey;
    std::unique_ptr<WCHAR[]> m_text;
    DWORD m_size = 0;
};

class RegistryKey {
  public:
    // No value of the library holds a longer text, in bytes.
    static constexpr DWORD kLongestText = 1024;

    explicit operator bool() const { return static_cast<bool>(m_key); }
    HKEY Get() const { return m_key.Get(); }
    // For an operation that hands out an open key.
    HKEY* Receive() { return m_key.Receive(); }
    void Close() { m_key.Reset(); }

    // Opens a key below HKEY_LOCAL_MACHINE or below `parent`. A failure leaves no key open.
    LONG Open(LPCWSTR path, REGSAM access) { return Open(HKEY_LOCAL_MACHINE, path, access); }
    LONG Open(HKEY parent, LPCWSTR path, REGSAM access, DWORD options = 0);
    // Opens the key, or makes it. `created` (may be null) tells which.
    LONG Create(HKEY parent, LPCWSTR path, REGSAM access, bool* created = nullptr);

    // The size of a value in bytes; also tells whether it is there.
    LONG QuerySize(LPCWSTR name, DWORD& size) const;
    // A value of at most `limit` bytes (and kLongestText), taken as text up to its first
    // terminator, into `buffer` of `capacity` characters. An odd last byte is the low one of a
    // character. ERROR_MORE_DATA: longer than the limit or the buffer.
    LONG ReadText(LPCWSTR name, LPWSTR buffer, size_t capacity, DWORD limit) const;
    template <size_t N>
    LONG ReadText(LPCWSTR name, WCHAR (&buffer)[N], DWORD limit = N * sizeof(WCHAR)) const {
        return ReadText(name, buffer, N, limit);
    }
    // A number of at most four bytes, the lowest first; bytes that are missing count as 0.
    LONG ReadDword(LPCWSTR name, DWORD& number) const;
    // The data of a value, of at most `*size` bytes; `*size` becomes its length.
    LONG ReadBytes(LPCWSTR name, void* buffer, DWORD* size) const;
    // A list of any length. ERROR_NOT_ENOUGH_MEMORY when it can't be allocated.
    LONG ReadMultiText(LPCWSTR name, MultiText& list) const;

    // REG_SZ: the text with its terminator.
    LONG WriteText(LPCWSTR name, LPCWSTR text) const;
    LONG WriteDword(LPCWSTR name, DWORD number) const;
    // Exactly these bytes.
    LONG WriteBytes(LPCWSTR name, DWORD type, const void* data, DWORD size) const;
    LONG DeleteValue(LPCWSTR name) const;
    // Deletes a subkey that has no subkeys itself.
    LONG DeleteSubkey(LPCWSTR name) const;

    // The name of the subkey at that place, into `name` of `capacity` characters.
    // ERROR_NO_MORE_ITEMS behind the last one.
    LONG SubkeyName(DWORD index, LPWSTR name, DWORD capacity) const;
    // How many subkeys there are, and the length of the longest name in characters.
    LONG QuerySubkeys(DWORD& count, DWORD& longestName) const;

  private:
    ScopedRegKey m_key;
};

// Walks the subkeys of a key. S_OK: there is a name. S_FALSE: no more subkeys. Otherwise the
// failure as an HRESULT; the walk can go on with the next subkey then.
class RegistryKeyEnumerator {
  public:
    // Begins with the first subkey; S_FALSE also when the key doesn't exist. access: with which
    // each subkey is opened; 0: they stay closed.
    HRESULT Start(HKEY parentKey, LPCWSTR subkeyPath, DWORD options, REGSAM access);
    HRESULT Next();

    // Of the subkey reached last; valid until the next step.
    LPCWSTR Name() const { return m_name.get(); }
    const RegistryKey& Subkey() const { return m_subkey; }

  private:
    RegistryKey m_key;
    DWORD m_count = 0;
    DWORD m_index = 0;  // of the next subkey
    DWORD m_options = 0;
    REGSAM m_access = 0;
    std::unique_ptr<WCHAR[]> m_name;
    DWORD m_capacity = 0;  // characters of the name, with terminator
    RegistryKey m_subkey;
};
