#include "NewMiniport.h"

#include "ConfigurationOperations.h"
#include "Failure.h"

HRESULT InstallMiniport(CMuxVirtualMiniport& miniport, LPWSTR guid, const char* failure,
                        const char* success) {
    const HRESULT result = miniport.Install();
    // After any other result the component is gone again.
    if (result != S_OK) return Stop(FAILED(result) ? result : kRefused, failure, Code(result));
    const GUID& made = miniport.Guid();
    const BYTE* const rest = made.Data4;
    PrintDiagnostic(success, made.Data1, made.Data2, made.Data3, rest[0], rest[1], rest[2], rest[3],
                    rest[4], rest[5], rest[6], rest[7]);
    (void)StringFromGUID2(made, guid, kNewGuidCapacity);
    return S_OK;
}
