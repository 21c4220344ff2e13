#include "LowerObject.h"

#include "Failure.h"

HRESULT FindLowerObject(NetworkComponents& netCfg, REFGUID guid, LowerObject& found) {
    HRESULT result = netCfg.HrFindInstance(guid, found.component);
    if (FAILED(result)) return Stop(result, "HrFindInstance failed. hr = 0x%x\n", Code(result));
    if (!found.component) return Stop(NETCFG_E_ADAPTER_NOT_FOUND, "Illegal instance found\n");
    result = found.component->GetId(found.id.Receive());
    if (FAILED(result))
        return Stop(result, "Failed to read adapter device ID 0x%X\n", Code(result));
    if (!found.id || *found.id.Get() == TEXT('\0'))
        return Stop(kRefused, "Illegal adapter device ID \n");
    return S_OK;
}

HRESULT LoadLowerObject(CMuxPhysicalAdapter& adapter) {
    const HRESULT result = adapter.LoadConfiguration();
    if (FAILED(result) && result != kNotInTree)
        return Stop(result, "pMuxPhysicalAdapter->LoadConfiguration failed. hr = 0x%x\n",
                    Code(result));
    return S_OK;
}
