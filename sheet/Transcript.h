#pragma once
// What goes to standard output: UTF-8, one fact a line, fields parted by " | ".

#include <initializer_list>
#include <string>
#include <string_view>

#include "SheetText.h"

namespace sheet {

// A refused command, argument or file: the one line that says why. Ends a script with exit code 2.
struct Refusal {
    std::string reason;
};

// A field as it stands in a line: printable, a backslash is \\, a bar \|.
std::string Field(TextView text);
// The fields, already escaped, as a line with its end.
std::string Line(std::initializer_list<std::string_view> fields);
// Adds a field to a line that has no end yet.
void AddField(std::string& line, std::string_view field);

// Writes to standard output at once, so that a transcript holds all that came before a failure. Of
// characters that would control the terminal only line ends (LF or CR LF) go out as they are.
void Print(std::string_view text);
// The same to standard error.
void PrintError(std::string_view text);
// "sheet: " and the reason to standard error, as one line.
void PrintRefusal(std::string_view reason);
// Something that was printed couldn't be written; the first time standard error has been told.
bool HasPrintingFailed();

}  // namespace sheet
