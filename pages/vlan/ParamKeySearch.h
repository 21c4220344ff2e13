#pragma once
// Finds the parameter keys of network components by their instance GUIDs. Remembers what a search
// has seen of the class key, so that many searches together look at each subkey once. The sheet's
// thread.

#include <windows.h>
#include <memory>

#include "RegistryKey.h"
#include "TextIndex.h"
#include "VlanList.h"

class ParamKeySearch {
  public:
    // The first subkey of the class key with that NetCfgInstanceId, compared exactly, open with all
    // rights; a closed key when there is none. A subkey that can't be opened ends the search, and
    // the next search that comes to it tries it again. A class key that can't be opened is shown to
    // the user.
    RegistryKey Find(LPCWSTR guid);

  private:
    struct Subkey {
        WCHAR guid[kGuidCapacity] = {};
        RegistryKey key;  // until it is given away
    };
    bool Begin();
    RegistryKey OpenSubkey(DWORD place) const;
    bool ReadNext();

    RegistryKey m_classKey;
    DWORD m_count = 0;                    // of subkeys
    DWORD m_read = 0;                     // so many of them, the first ones
    bool m_isUncertain = false;           // one of those couldn't be read
    std::unique_ptr<Subkey[]> m_subkeys;  // by place in the class key
    TextIndex m_index;                    // of those with a GUID
};
