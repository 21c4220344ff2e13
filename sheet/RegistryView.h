#pragma once
// A key as text, in the format of a machine file.

#include <string>

#include "RegistryAccess.h"

namespace sheet {

// The value's name and "=", as they stand in front of its data.
std::string DescribeName(const Key::Value& value);
// The value with its line end.
std::string DescribeValue(const Key::Value& value);
// The key below HKEY_LOCAL_MACHINE at that path, with or without the root's name
// (HKEY_LOCAL_MACHINE or HKLM) in front: the path in brackets, a line for each value, then the full
// path of each subkey in brackets. Refusal: there is no such key.
std::string DescribeKey(TextView path);

}  // namespace sheet
