#pragma once
// Riched20.dll, whose window classes exist while it is loaded.

#include "Modules.h"

namespace platform {

ModuleImage RichEditImage();

}  // namespace platform
