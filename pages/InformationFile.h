#pragma once
// The text file that the Information tab saves. Any thread.

#include "InformationRows.h"

// Writes a line "label : value" for each row, in UTF-8 with byte-order mark, each ended by CR LF.
// An existing file is replaced. A file that fails in the middle keeps the lines written so far.
UserFailure SaveRows(LPCWSTR path, const InformationRows& rows);
