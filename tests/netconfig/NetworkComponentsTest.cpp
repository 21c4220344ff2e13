// Searches of a session find what a search from the first component on would find.

#include "NetworkComponents.h"

#include "MuxRegistry.h"
#include "NetConfigTest.h"

namespace {

constexpr char kEngineFailed[] = "80004005";

// An open session with A at the first place, B at the second and, if wanted, a component with the
// GUID of B at the third.
struct Searches : LayerMachine {
    explicit Searches(bool hasDouble = false)
        : LayerMachine(hasDouble
                           ? Sample().With(kClass + "0013",
                                           "\"ComponentId\"=\"other\"\n\"NetCfgInstanceId\"=\"" +
                                               std::string(Sample::Guid(2)) + "\"")
                           : Sample()) {
        ScopedTaskMemory<WCHAR> holder;
        EXPECT_EQ(session.Open(holder), S_OK);
        machine.trace.Start();
    }
    // The id of the component, or the result.
    std::string Search(const std::u16string& guid) {
        ScopedReference<INetCfgComponent> component;
        const HRESULT result =
            session.Components().HrFindInstance(ParseGuid(guid.c_str()), component);
        EXPECT_EQ(result == S_OK, static_cast<bool>(component));
        if (result != S_OK) {
            char text[12];
            std::snprintf(text, sizeof(text), "%x", static_cast<unsigned>(result));
            return text;
        }
        ScopedTaskMemory<WCHAR> id;
        EXPECT_EQ(component->GetId(id.Receive()), S_OK);
        return platform::ToUtf8(id.Get());
    }

    NetworkSession session{kRenameSession};
};

const std::string kPort = Sample::ComponentId(Sample::Kind::Ethernet);

TEST(NetworkComponents, AFailingComponentEndsTheSearchesThatGetToIt) {
    for (const char* call : {"INetCfgComponent::GetInstanceGuid", "IEnumNetCfgComponent::Next"}) {
        SCOPED_TRACE(call);
        Searches test;
        test.Fail(std::string(call) + "=E,2,2");
        EXPECT_EQ(test.Search(kA), kPort);
        EXPECT_EQ(test.Search(kB), kEngineFailed);
        EXPECT_EQ(test.Search(kA), kPort) << "lies before it";
        EXPECT_EQ(test.Search(kUnknown), kEngineFailed);
        EXPECT_EQ(test.Search(kB), kPort) << "it is asked again";
        EXPECT_EQ(test.Search(kUnknown), "1");
    }
    Searches test;
    test.Fail("INetCfg::EnumComponents=E,1,1|operator new=8,1,2");
    EXPECT_EQ(test.Search(kA), kEngineFailed);
    EXPECT_EQ(test.Search(kA), "8007000e");
    EXPECT_EQ(test.Search(kB), kPort);
}

TEST(NetworkComponents, WhatIsRemovedIsNoLongerFoundAndTheNextOneIs) {
    Searches test(true);
    EXPECT_EQ(test.Search(kUnknown), "1");
    EXPECT_EQ(test.Search(kB), kPort);
    test.session.Components().Forget(ParseGuid(kB.c_str()));
    EXPECT_EQ(test.Search(kB), "other");
    test.session.Components().Forget(ParseGuid(kB.c_str()));
    EXPECT_EQ(test.Search(kB), "1");
    EXPECT_EQ(test.Calls("INetCfgComponent::GetInstanceGuid"), 3U);
    EXPECT_EQ(test.session.Components().Apply(), S_OK);
    EXPECT_EQ(test.Search(kB), kPort);
}

TEST(NetworkComponents, EachComponentIsTakenOnce) {
    LayerMachine test(Sample().Vlans(300));
    ScopedTaskMemory<WCHAR> holder;
    NetworkSession session(kRenameSession);
    ASSERT_EQ(session.Open(holder), S_OK);
    test.machine.trace.Start();
    for (unsigned id = 300; id != 0; --id) {
        ScopedReference<INetCfgComponent> component;
        const GUID guid = {
            0x5E7B0D21,
            0x93C4,
            0x4F18,
            {0xA6, 0xE2, 0, 0, 0, 0, static_cast<BYTE>(id >> 8), static_cast<BYTE>(id)}};
        ASSERT_EQ(session.Components().HrFindInstance(guid, component), S_OK) << id;
        GUID found = {};
        EXPECT_EQ(component->GetInstanceGuid(&found), S_OK);
        EXPECT_EQ(found, guid);
    }
    // Of each VLAN and of both ports, beside the loop's own.
    EXPECT_EQ(test.Calls("INetCfgComponent::GetInstanceGuid"), 302U + 300U);
}

}  // namespace
