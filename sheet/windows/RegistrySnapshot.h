#pragma once
// The registry at one time, as far as administrators' and drivers' settings stand there, and what
// takes it from one time to another. The calling thread only.

#include <map>
#include <string>
#include <vector>

#include "../RegistryAccess.h"

namespace sheet {

struct NameLess {
    bool operator()(const Text& a, const Text& b) const;
};

// A key with all that is below it. Names are compared without regard to case.
struct KeySnapshot {
    std::map<Text, Key::Value, NameLess> values;
    std::map<Text, KeySnapshot, NameLess> subkeys;
};

// SYSTEM\CurrentControlSet and SOFTWARE below HKEY_LOCAL_MACHINE, by their paths; left out are the
// classes of programs, what the system itself keeps of devices other than those of VLANs and teams,
// and what the machine counts of restarts. A key that can't be read is as one that isn't there.
std::map<Text, KeySnapshot, NameLess> TakeRegistrySnapshot();

// The text of a machine file that makes of one the other when it is merged. Values stand in the
// order of their names.
std::string FormatChanges(const std::map<Text, KeySnapshot, NameLess>& from,
                          const std::map<Text, KeySnapshot, NameLess>& to);

}  // namespace sheet
