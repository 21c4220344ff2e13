// Owners that count or release. What they lose is a leak, which fails the test by itself.

#include "AutoClasses.h"

#include <msxml.h>
#include <utility>

#include "Fixture.h"

namespace {

constexpr CLSID kDocumentClass = {
    0xF5078F32, 0xC551, 0x11D3, {0x89, 0xB9, 0x00, 0x00, 0xF8, 0x1F, 0xE2, 0x21}};

TEST(AutoClasses, ReferencesAreCopiedMovedAndAskedForOtherInterfaces) {
    TestMachine test;
    ScopedCom com;
    EXPECT_EQ(com.Initialise(), S_OK);
    ScopedReference<IXMLDOMDocument> first;
    ASSERT_EQ(CoCreateInstance(kDocumentClass, nullptr, CLSCTX_INPROC_SERVER, IID_IXMLDOMDocument,
                               reinterpret_cast<void**>(first.Receive())),
              S_OK);
    ScopedReference<IXMLDOMDocument> copy(first);
    EXPECT_EQ(copy.Get(), first.Get());
    ScopedReference<IXMLDOMDocument> assigned;
    assigned = copy;
    assigned = *&assigned;
    const ScopedReference<IXMLDOMDocument> moved = std::move(copy);
    EXPECT_FALSE(copy);  // NOLINT(bugprone-use-after-move)
    first.Reset();
    EXPECT_TRUE(assigned && moved);

    ScopedReference<IDispatch> dispatch;
    EXPECT_EQ(moved.Query(IID_IDispatch, dispatch), S_OK);
    EXPECT_TRUE(dispatch);
    ScopedReference<IXMLDOMNodeList> none;
    EXPECT_EQ(moved.Query(IID_IXMLDOMNodeList, none), E_NOINTERFACE);
    EXPECT_FALSE(none);
}

TEST(AutoClasses, OtherOwnersCloseOnce) {
    TestMachine test;
    ScopedTaskMemory<WCHAR> block(static_cast<WCHAR*>(CoTaskMemAlloc(10)));
    block = ScopedTaskMemory<WCHAR>(static_cast<WCHAR*>(CoTaskMemAlloc(20)));
    const ScopedHandle mutex(CreateMutexW(nullptr, TRUE, nullptr));
    ScopedMutexOwnership owned(mutex.Get());
    const ScopedMutexOwnership moved = std::move(owned);
    EXPECT_TRUE(moved);
    EXPECT_FALSE(owned);  // NOLINT(bugprone-use-after-move)
}

}  // namespace
