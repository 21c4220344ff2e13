#pragma once
// The end of the operations that make a miniport.

#include "MuxVirtualMiniport.h"

// Makes the component and gives its GUID text to `guid` (kNewGuidCapacity characters). The result
// is negative whenever it wasn't made. failure, success: the lines, with the result and with the
// parts of the GUID.
HRESULT InstallMiniport(CMuxVirtualMiniport& miniport, LPWSTR guid, const char* failure,
                        const char* success);
