#pragma once
// Lines for whoever watches the process's output streams, in the system's code page; characters
// that it lacks are replaced. Any thread. `format` is narrow, of at most 1023 characters as it is
// and when filled in; %S and %ls take wide text.

// To standard output.
void PrintDiagnostic(const char* format, ...);
// To standard error.
void PrintError(const char* format, ...);
