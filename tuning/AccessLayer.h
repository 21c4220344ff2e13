#pragma once
// The InfiniBand access layer, ibal.dll of the system directory, loaded while it is in use so that
// the library also runs where there is none. The sheet's thread. Failures are printed where they
// happen.

#include <windows.h>
#include <memory>
#include <span>

#include "AutoClasses.h"

// The layer's own types and layouts, for 64-bit processes. A GUID's bytes stand in network order.
using net64_t = UINT64;
using ib_api_status_t = unsigned int;
inline constexpr ib_api_status_t kIbSuccess = 0;
inline constexpr ib_api_status_t kIbBufferTooSmall = 2;

struct ib_port_attr_t {
    net64_t port_guid;
    UINT8 port_num;
    UINT8 reserved[7];
};

struct ib_ca_attr_t {
    net64_t ca_guid;
    UINT8 num_ports;
    UINT8 reserved[7];
    ib_port_attr_t* p_port_attr;
};

struct ib_mr_create_t {
    void* vaddr;
    UINT64 length;
    UINT32 access_ctrl;
    UINT32 reserved;
};

struct ib_cq_create_t {
    UINT32 size;
    UINT32 reserved;
    void* pfn_comp_cb;
    void* h_wait_obj;
};

struct ib_qp_create_t {
    UINT32 qp_type;
    UINT32 sq_depth;
    UINT32 rq_depth;
    UINT32 sq_sge;
    UINT32 rq_sge;
    UINT32 sq_signaled;
    void* h_sq_cq;
    void* h_rq_cq;
};

struct ib_qp_mod_t {
    UINT32 req_state;
    UINT32 access_ctrl;
    UINT8 primary_port;
    UINT8 reserved;
    UINT16 pkey_index;
    UINT32 reserved2;
};

// The functions of ibal.dll. Every one gives a status, 0 for success.
struct AccessLayerCalls {
    ib_api_status_t(WINAPI* ib_open_al)(void** al);
    ib_api_status_t(WINAPI* ib_close_al)(void* al);
    ib_api_status_t(WINAPI* ib_get_ca_guids)(void* al, net64_t* guids, SIZE_T* count);
    ib_api_status_t(WINAPI* ib_open_ca)(void* al, net64_t guid, void* eventCallback, void* context,
                                        void** ca);
    ib_api_status_t(WINAPI* ib_close_ca)(void* ca, void* callback);
    ib_api_status_t(WINAPI* ib_query_ca)(void* ca, ib_ca_attr_t* attributes, UINT32* size);
    ib_api_status_t(WINAPI* ib_alloc_pd)(void* ca, UINT32 type, const void* context, void** pd);
    ib_api_status_t(WINAPI* ib_dealloc_pd)(void* pd, void* callback);
    ib_api_status_t(WINAPI* ib_reg_mem)(void* pd, const ib_mr_create_t* request, UINT32* localKey,
                                        UINT32* remoteKey, void** mr);
    ib_api_status_t(WINAPI* ib_dereg_mr)(void* mr);
    ib_api_status_t(WINAPI* ib_create_cq)(void* ca, const ib_cq_create_t* request,
                                          const void* context, void* eventCallback, void** cq);
    ib_api_status_t(WINAPI* ib_destroy_cq)(void* cq, void* callback);
    ib_api_status_t(WINAPI* ib_create_qp)(void* pd, const ib_qp_create_t* request,
                                          const void* context, void* eventCallback, void** qp);
    ib_api_status_t(WINAPI* ib_modify_qp)(void* qp, const ib_qp_mod_t* request);
    ib_api_status_t(WINAPI* ib_query_qp)(void* qp, void* attributes);
    ib_api_status_t(WINAPI* ib_destroy_qp)(void* qp, void* callback);
};

// The open access layer; closes it and unloads the library when it goes.
class AccessLayer {
  public:
    AccessLayer() = default;
    AccessLayer(const AccessLayer&) = delete;
    AccessLayer& operator=(const AccessLayer&) = delete;
    ~AccessLayer();

    // Loads the library and opens the layer.
    bool Open();
    // The GUIDs of all cards; none is no failure. allocationFailure: printed when memory runs out.
    bool ReadCardGuids(const char* allocationFailure);

    std::span<const net64_t> CardGuids() const { return {m_guids.get(), m_guidCount}; }
    const AccessLayerCalls& Calls() const { return m_calls; }
    void* Handle() const { return m_handle; }

  private:
    ScopedModule m_module;
    AccessLayerCalls m_calls = {};
    void* m_handle = nullptr;
    std::unique_ptr<net64_t[]> m_guids;
    SIZE_T m_guidCount = 0;
};

// An open card and its attributes; closes the card when it goes. The layer must outlive it.
class Card {
  public:
    explicit Card(const AccessLayer& layer) : m_layer(layer) {}
    Card(const Card&) = delete;
    Card& operator=(const Card&) = delete;
    ~Card();

    bool Open(net64_t guid);
    bool Query();

    // Valid until the card goes; empty before Query.
    std::span<const ib_port_attr_t> Ports() const;
    void* Handle() const { return m_handle; }

  private:
    const AccessLayer& m_layer;
    void* m_handle = nullptr;
    std::unique_ptr<BYTE[]> m_attributes;  // an ib_ca_attr_t and what it points to
};
