// A case's surroundings on the host: a fresh machine, on which what isn't released fails the case.

#include <fstream>
#include <iterator>

#include "../Conformance.h"
#include "Modules.h"
#include "platform/FactsMachine.h"

namespace {

struct FreshMachine : Surroundings {
    FreshMachine() {
        std::ifstream file(CONFORMANCE_RES, std::ios::binary);
        resources.assign(std::istreambuf_iterator<char>(file), {});
        platform::Modules& modules = facts.machine.Get<platform::Modules>();
        modules.Install({u"conformance.exe", nullptr, resources, {}});
        module = modules.Load(u"conformance.exe", "conformance");
        folder = u"C:\\";
    }
    ~FreshMachine() override { facts.machine.Get<platform::Modules>().Free(module); }

    std::vector<BYTE> resources;
    FactsMachine facts;
};

}  // namespace

std::unique_ptr<Surroundings> MakeSurroundings() {
    return std::make_unique<FreshMachine>();
}
