// An object with several interfaces.

#include <windows.h>

#include "Com.h"
#include "FactsMachine.h"

namespace {

using platform::ComInterface;
using platform::ComObject;

// {5C1F8E60-0000-0000-C000-000000000046} and the ids next to it
extern const IID kFirst;
extern const IID kSecond;
const IID kFirst = {0x5C1F8E60, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
const IID kSecond = {0x5C1F8E61, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

struct IFirst : IUnknown {
    virtual int One() = 0;
};
struct ISecond : IUnknown {
    virtual int Two() = 0;
};

class Both final : public ComObject<ComInterface<IFirst, kFirst>, ComInterface<ISecond, kSecond>> {
  public:
    Both() : ComObject("CoCreateInstance") {}
    int One() override { return 1; }
    int Two() override { return 2; }
};

template <class Interface>
Interface* As(IUnknown* object, REFIID id) {
    void* found = nullptr;
    EXPECT_EQ(object->QueryInterface(id, &found), S_OK);
    return static_cast<Interface*>(found);
}

TEST(Com, AnObjectOfTwoInterfacesIsOneObject) {
    FactsMachine facts;
    void* made = nullptr;
    EXPECT_EQ(platform::HandOut(new Both, IID_IDispatch, &made), E_NOINTERFACE);
    ASSERT_EQ(platform::HandOut(new Both, kFirst, &made), S_OK);
    auto* const first = static_cast<IFirst*>(made);
    auto* const second = As<ISecond>(first, kSecond);
    auto* const unknown = As<IUnknown>(second, IID_IUnknown);
    EXPECT_EQ(unknown, As<IUnknown>(first, IID_IUnknown));
    EXPECT_EQ(As<IFirst>(second, kFirst), first);
    EXPECT_EQ(first->One() * 10 + second->Two(), 12);
    for (ULONG left = 5; left-- > 0;)
        EXPECT_EQ(second->Release(), left);
}

}  // namespace
