#pragma once
// Machine files: registry exports of the format "Windows Registry Editor Version 5.00", read and
// written so that a real server's export is an input and Windows imports what is written.
//
// Read: UTF-16 with byte-order mark, UTF-8 with or without one; lines end with CR LF or LF.
// SYSTEM\CurrentControlSet of a loaded file is the control set that SYSTEM\Select names, where the
// file has that one.

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "Machine.h"
#include "RegistryTree.h"

namespace platform {

struct MachineFileError {
    std::size_t line;     // from 1
    std::string message;  // UTF-8, without the line
};

// Gives the machine this registry, in the place of the one it has, starts its clock at the file's
// "Time", if it has one, and takes its fault rows. On an error nothing has changed.
std::optional<MachineFileError> LoadMachineFile(Machine& machine, std::string_view bytes);

// Imports the file into the machine's registry as it is, with the deletion of values and keys, and
// takes the fault rows anew. The clock stays. On an error nothing has changed.
std::optional<MachineFileError> MergeMachineFile(Machine& machine, std::string_view bytes);

// True for a text with a character that a terminal obeys instead of showing it: C0, DEL, C1, and
// those that change the direction of text.
bool HasControlCharacter(std::u16string_view text);

// The machine's registry as Windows writes an export: UTF-16 with byte-order mark and CR LF. A text
// with a control character is written as hex(1). The format has no such form for names: they are
// written as they are, and a key whose name holds a line break can't be read back, as on Windows.
std::string SaveMachineFile(Machine& machine);

// The same text in UTF-8, without mark and with LF: the form of a file that people keep. Surrogates
// without their partner survive in data, but not in names.
std::string FormatRegistry(const RegistryTree& tree);

// One value as its line (or lines) of such a file, in UTF-8 with an LF at the end.
std::string FormatValue(std::u16string_view name, DWORD type, std::span<const BYTE> data);
// What stands in front of its "=".
std::string FormatValueName(std::u16string_view name);

}  // namespace platform
