#pragma once
// The library as a module that the machine can load.

#include "Modules.h"

// "WinTsrTune_ipoib.dll" with its entry point, both providers and its resources.
platform::ModuleImage LibraryImage();
