#pragma once
// The VLANs of one adapter or team, as the VLAN tab knows them. Not for use by two threads at a
// time.

#include <windows.h>
#include <memory>

#include "RegistryKey.h"

inline constexpr int kGuidCapacity = 40;  // characters of a GUID's text, with terminator

// The values of a VLAN in the parameter key of its virtual miniport.
inline constexpr WCHAR kVlanName[] = TEXT("VlanName");
inline constexpr WCHAR kVlanId[] = TEXT("VlanID");
inline constexpr WCHAR kPriority[] = TEXT("Priority");

// A VLAN that has none of its own.
inline constexpr WCHAR kUsualVlanName[] = TEXT("Corvanta Virtual Miniport Driver");
inline constexpr WCHAR kUsualPriority[] = TEXT("0");

// What the user gives a VLAN.
struct VlanSettings {
    using Text = WCHAR[250];
    Text name = {};
    Text id = {};
    Text priority = {};
};

struct VlanEntry {
    WCHAR guid[kGuidCapacity] = {};  // of its virtual miniport
    VlanSettings settings;
    bool isUp = false;
    RegistryKey paramKey;  // of its virtual miniport; open as long as the entry lives, once found
    std::unique_ptr<VlanEntry> next;
};

// Owns its entries. The newest comes first.
class VlanList {
  public:
    VlanList() = default;
    ~VlanList();
    VlanList(const VlanList&) = delete;
    VlanList& operator=(const VlanList&) = delete;

    // The first entry, from which `next` leads to the others; null for an empty list.
    VlanEntry* First() const { return m_first.get(); }
    LONG Count() const { return m_count; }
    void Push(std::unique_ptr<VlanEntry> entry);
    // Takes the entry out and frees it. The entry is one of the list's.
    void Remove(const VlanEntry& entry);

  private:
    std::unique_ptr<VlanEntry> m_first;
    LONG m_count = 0;
};
