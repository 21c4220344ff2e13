#pragma once
// An enumerator of the engine's objects, each of which is made when it is asked for.

#include <utility>

#include "NetCfgObjects.h"

namespace platform {

// Kind gives the interfaces of the enumerator and of its items, the id, what an item is made of,
// the names of the counted methods, and how an item is made.
template <class Kind>
class NetCfgEnumerator final : public NetCfgObject<ComInterface<typename Kind::Enum, Kind::id>> {
    using Base = NetCfgObject<ComInterface<typename Kind::Enum, Kind::id>>;

  public:
    NetCfgEnumerator(const char* call, NetCfgSessionPtr session,
                     std::vector<typename Kind::Source> sources)
        : Base(call, Kind::query, std::move(session)), m_sources(std::move(sources)) {}

    HRESULT STDMETHODCALLTYPE Next(ULONG count, typename Kind::Item** items,
                                   ULONG* fetched) override {
        const Call call(Kind::next, nullptr, static_cast<DWORD>(E_FAIL));
        if (fetched != nullptr) *fetched = 0;
        if (items == nullptr || (fetched == nullptr && count != 1)) return E_POINTER;
        std::fill_n(items, count, nullptr);
        if (call.Failed()) return call.Result();
        if (const HRESULT refused = this->Session()->CheckUse()) return refused;
        ULONG given = 0;
        for (; given < count && m_next < m_sources.size(); ++given)
            items[given] = Kind::Make(call.Name(), this->Session(), m_sources[m_next++]);
        if (fetched != nullptr) *fetched = given;
        return given == count ? S_OK : S_FALSE;
    }
    HRESULT STDMETHODCALLTYPE Reset() override {
        const Call call(Kind::reset, nullptr, static_cast<DWORD>(E_FAIL));
        if (call.Failed()) return call.Result();
        m_next = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Skip(ULONG) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Clone(typename Kind::Enum**) override { return E_NOTIMPL; }

  private:
    std::vector<typename Kind::Source> m_sources;
    std::size_t m_next = 0;
};

}  // namespace platform
