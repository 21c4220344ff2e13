#include "AccessLayer.h"

#include <algorithm>
#include <new>

#include "Diagnostics.h"

namespace {

template <class Function>
bool Bind(HMODULE module, LPCSTR name, Function& function) {
    function =
        reinterpret_cast<Function>(reinterpret_cast<void (*)()>(GetProcAddress(module, name)));
    return function != nullptr;
}

bool BindAll(HMODULE module, AccessLayerCalls& calls) {
    return Bind(module, "ib_open_al", calls.ib_open_al) &&
           Bind(module, "ib_close_al", calls.ib_close_al) &&
           Bind(module, "ib_get_ca_guids", calls.ib_get_ca_guids) &&
           Bind(module, "ib_open_ca", calls.ib_open_ca) &&
           Bind(module, "ib_close_ca", calls.ib_close_ca) &&
           Bind(module, "ib_query_ca", calls.ib_query_ca) &&
           Bind(module, "ib_alloc_pd", calls.ib_alloc_pd) &&
           Bind(module, "ib_dealloc_pd", calls.ib_dealloc_pd) &&
           Bind(module, "ib_reg_mem", calls.ib_reg_mem) &&
           Bind(module, "ib_dereg_mr", calls.ib_dereg_mr) &&
           Bind(module, "ib_create_cq", calls.ib_create_cq) &&
           Bind(module, "ib_destroy_cq", calls.ib_destroy_cq) &&
           Bind(module, "ib_create_qp", calls.ib_create_qp) &&
           Bind(module, "ib_modify_qp", calls.ib_modify_qp) &&
           Bind(module, "ib_query_qp", calls.ib_query_qp) &&
           Bind(module, "ib_destroy_qp", calls.ib_destroy_qp);
}

}  // namespace

AccessLayer::~AccessLayer() {
    if (m_handle && m_calls.ib_close_al(m_handle) != kIbSuccess) PrintError("Failed to close al\n");
}

bool AccessLayer::Open() {
    m_module.Reset(LoadLibraryExW(TEXT("ibal.dll"), nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32));
    if (!m_module || !BindAll(m_module.Get(), m_calls)) {
        PrintError("ibal.dll is not available, error = %d\n", static_cast<int>(GetLastError()));
        return false;
    }
    const ib_api_status_t status = m_calls.ib_open_al(&m_handle);
    if (status != kIbSuccess) {
        m_handle = nullptr;
        PrintError("ib_open_al failed status = %d\n", static_cast<int>(status));
        return false;
    }
    return true;
}

bool AccessLayer::ReadCardGuids(const char* allocationFailure) {
    SIZE_T count = 0;
    ib_api_status_t status = m_calls.ib_get_ca_guids(m_handle, nullptr, &count);
    if (status != kIbBufferTooSmall) {
        PrintError("ib_get_ca_guids1 failed status = %d\n", static_cast<int>(status));
        return false;
    }
    if (count == 0) return true;
    m_guids.reset(new (std::nothrow) net64_t[count]());
    if (!m_guids) {
        PrintError("%s", allocationFailure);
        return false;
    }
    SIZE_T filled = count;
    status = m_calls.ib_get_ca_guids(m_handle, m_guids.get(), &filled);
    if (status != kIbSuccess) {
        PrintError("ib_get_ca_guids2 failed with status = %d\n", static_cast<int>(status));
        return false;
    }
    m_guidCount = std::min(filled, count);
    return true;
}

Card::~Card() {
    if (m_handle && m_layer.Calls().ib_close_ca(m_handle, nullptr) != kIbSuccess)
        PrintError("Failed to close ca\n");
}

bool Card::Open(net64_t guid) {
    const ib_api_status_t status =
        m_layer.Calls().ib_open_ca(m_layer.Handle(), guid, nullptr, nullptr, &m_handle);
    if (status != kIbSuccess) {
        m_handle = nullptr;
        PrintError("ib_open_ca failed with status = %d\n", static_cast<int>(status));
        return false;
    }
    return true;
}

bool Card::Query() {
    UINT32 size = 0;
    if (m_layer.Calls().ib_query_ca(m_handle, nullptr, &size) != kIbBufferTooSmall) {
        PrintError("Failed to query device props");
        return false;
    }
    const size_t capacity = std::max<size_t>(size, sizeof(ib_ca_attr_t));
    std::unique_ptr<BYTE[]> buffer(new (std::nothrow) BYTE[capacity]());
    if (!buffer) {
        PrintError("Couldn't allocate CA attributes buffer\n");
        return false;
    }
    const ib_api_status_t status =
        m_layer.Calls().ib_query_ca(m_handle, reinterpret_cast<ib_ca_attr_t*>(buffer.get()), &size);
    if (status != kIbSuccess) {
        PrintDiagnostic("ib_query_ca failed with status = %d\n", static_cast<int>(status));
        return false;
    }
    m_attributes = std::move(buffer);
    return true;
}

std::span<const ib_port_attr_t> Card::Ports() const {
    if (!m_attributes) return {};
    const auto* attributes = reinterpret_cast<const ib_ca_attr_t*>(m_attributes.get());
    return {attributes->p_port_attr, attributes->num_ports};
}
