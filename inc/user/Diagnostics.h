#pragma once
// Lines for whoever watches the process's output streams. Any thread. `format` is narrow, of at
// most 1023 characters when filled in; %S and %ls take wide text.

// To standard output.
void PrintDiagnostic(const char* format, ...);
// To standard error.
void PrintError(const char* format, ...);
