#include "AccessLayerImage.h"

#include "IbAccessLayer.h"

namespace platform {
namespace {

template <class Function>
FARPROC Erase(Function* function) {
    return reinterpret_cast<FARPROC>(reinterpret_cast<void (*)()>(function));
}

}  // namespace

ModuleImage AccessLayerImage() {
    ModuleImage image;
    image.name = u"ibal.dll";
    image.exports = {
        {"ib_open_al", Erase(ib_open_al)},       {"ib_get_ca_guids", Erase(ib_get_ca_guids)},
        {"ib_open_ca", Erase(ib_open_ca)},       {"ib_query_ca", Erase(ib_query_ca)},
        {"ib_alloc_pd", Erase(ib_alloc_pd)},     {"ib_reg_mem", Erase(ib_reg_mem)},
        {"ib_create_cq", Erase(ib_create_cq)},   {"ib_create_qp", Erase(ib_create_qp)},
        {"ib_modify_qp", Erase(ib_modify_qp)},   {"ib_query_qp", Erase(ib_query_qp)},
        {"ib_destroy_qp", Erase(ib_destroy_qp)}, {"ib_destroy_cq", Erase(ib_destroy_cq)},
        {"ib_dereg_mr", Erase(ib_dereg_mr)},     {"ib_dealloc_pd", Erase(ib_dealloc_pd)},
        {"ib_close_ca", Erase(ib_close_ca)},     {"ib_close_al", Erase(ib_close_al)},
    };
    return image;
}

}  // namespace platform
