#pragma once
// The access layer as a module that the machine can load.

#include "Modules.h"

namespace platform {

// "ibal.dll", with the functions of IbAccessLayer.h.
ModuleImage AccessLayerImage();

}  // namespace platform
