#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "Component/ComPtr.h"
#include "Component/Component.h"
#include "Component/ServerInfoQueryer.h"
#include "Component/Unknown.h"
#include "Fakes.h"
#include "Fundo/Fundo3/Error.h"

using namespace Tovra::Component;
using Detail::CComponentHelper;
using Detail::CObjectTable;

namespace {

struct IsObject : Detail::key_base {
    explicit IsObject(IUnknown* object) : m_object(object) {}
    bool isEqual(IUnknown* object) const override { return object == m_object; }
    IUnknown* m_object;
};

TEST(References, AreClaimedOnceAndCountedAfterwards) {
    auto* object = new Counted;
    EXPECT_EQ(CComponentHelper::makeComponentInstance(object), object);
    EXPECT_EQ(getRefCount(object), 1);
    EXPECT_EQ(getRefCount(CComponentHelper::makeComponentInstance(object)), 2);
    EXPECT_EQ(getRefCount(CComponentHelper::makeComponentObject(object)), 2);
    EXPECT_TRUE(object->addRef() == 3 && decreaseRefCount(object) == 2 && object->release() == 1);
    EXPECT_EQ(CComponentHelper::release(object), 0);
    EXPECT_EQ(Counted::alive, 0);

    auto* owned = new Counted;
    CComponentHelper::makeComponentObject(owned);
    CComponentHelper::makeComponentInstance(owned);
    EXPECT_EQ(getRefCount(owned), 2);
    EXPECT_TRUE(owned->release() == 1 && owned->release() == 0 && Counted::alive == 0);

    EXPECT_EQ(CComponentHelper::makeComponentObject(nullptr), nullptr);
    EXPECT_EQ(Tovra::Fundo::getLastError(), 0x1003000d);
    EXPECT_EQ(CComponentHelper::makeComponentInstance(nullptr), nullptr);
    EXPECT_EQ(Tovra::Fundo::getLastError(), 0x1003000e);
    EXPECT_EQ(CComponentHelper::addRef(nullptr) + CComponentHelper::release(nullptr), 0);
    EXPECT_FALSE(CComponentHelper::setAsCurrentUser(nullptr));
    EXPECT_DEATH(decreaseRefCount(nullptr),
                 "assertion \\(object\\) failed in .*: Src/Component/OldUnknown\\(");
}

TEST(ObjectTable, HoldsNoReferenceAndLosesAnObjectAtItsEnd) {
    CObjectTable table;
    auto* first = new Counted;
    auto* second = new Counted;
    table.lock();
    table.insert(first);
    table.insert(second);
    EXPECT_TRUE(table.count() == 2 && table.get(1) == second && getRefCount(first) == 1);
    EXPECT_TRUE(table.find(IsObject(first)) == first && table.find(IsObject(nullptr)) == nullptr);
    table.unlock();
    EXPECT_EQ(getRefCount(CComponentHelper::makeComponentInstance(first)), 2);
    first->release();
    first->release();
    EXPECT_TRUE(table.count() == 1 && Counted::alive == 1);
    second->release();
    EXPECT_EQ(table.count(), 0U);
    EXPECT_DEATH(table.get(0),
                 "assertion \\(index < m_internal->objects.size\\(\\)\\) failed in .*: "
                 "Src/Component/SingletonFactory\\(");
}

// Find and last release race for one object: whoever finds it has it alive.
TEST(ObjectTable, NeverGivesADyingObject) {
    CObjectTable table;
    std::atomic<bool> stop{false};
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back([&] {
            while (!stop) {
                table.lock();
                IUnknown* object = table.count() > 0 ? table.find(IsObject(table.get(0))) : nullptr;
                table.unlock();
                if (object == nullptr) continue;
                EXPECT_GE(getRefCount(object), 1);
                object->release();
            }
        });
    }
    for (int i = 0; i < 2000; ++i) {
        auto* object = new Counted;
        table.lock();
        table.insert(object);
        table.unlock();
        object->release();
    }
    stop = true;
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(Counted::alive, 0);
    EXPECT_EQ(table.count(), 0U);
}

TEST(ComPtr, TakesOverCopiesMovesAndReleases) {
    auto* object = new Counted;
    {
        TComPtr<Counted> owner(object);
        TComPtr<Counted> copy(owner);
        EXPECT_EQ(getRefCount(object), 2);
        TComPtr<Counted> moved(std::move(copy));
        EXPECT_TRUE(!copy && getRefCount(object) == 2);
        moved = owner;
        const TComPtr<Counted>& same = owner;
        owner = same;
        EXPECT_EQ(getRefCount(object), 2);
        moved.reset();
        EXPECT_TRUE(owner.operator->() == object && getRefCount(object) == 1);
    }
    EXPECT_EQ(Counted::alive, 0);
    const TComPtr<IServerInfoQueryer> empty;
    EXPECT_DEATH(static_cast<void>(empty.operator->()),
                 "assertion \\(m_ptr != NULL\\) failed in Tovra::Component::TComPtr::element_type "
                 "\\*Tovra::Component::TComPtr<Tovra::Component::IServerInfoQueryer>::operator->\\(\\) const "
                 "\\[Y = Tovra::Component::IServerInfoQueryer\\]: ./Include/Component/ComPtr\\(");
}

IUnknown* makeCounted(const ServerInfo*) { return new Counted; }
IUnknown* makeNothing(const ServerInfo*) { return nullptr; }

TEST(Registry, SharesOneObjectPerClassAndServer) {
    registerComponent("Shared", makeCounted);
    IUnknown* plain = getComponentInstance("Shared", nullptr);
    EXPECT_EQ(getComponentInstance("Shared", nullptr), plain);
    EXPECT_EQ(getRefCount(plain), 2);

    ServerInfo info = {};
    IUnknown* empty = getComponentInstance("Shared", &info);
    EXPECT_NE(empty, plain);
    info.value1 = 9;
    EXPECT_EQ(getComponentInstance("Shared", &info), empty);
    info.flag1 = 1;
    EXPECT_NE(getComponentInstance<IUnknown>("Shared", &info).get(), empty);
    info.port = 1;
    IUnknown* other = getComponentInstance("Shared", &info);
    EXPECT_NE(other, empty);
    const TComPtr<IUnknown> single(createComponentObject("Shared", &info));
    EXPECT_NE(single.get(), other);
    EXPECT_EQ(s_componentMap["Shared"].instances.size(), 3U);

    plain->release();
    plain->release();
    EXPECT_EQ(s_componentMap["Shared"].instances.size(), 2U);
    registerComponent("Shared", makeNothing);
    EXPECT_EQ(getComponentInstance("Shared", &info), other);
    EXPECT_FALSE(getComponentInstance<Counted>("Shared"));
    EXPECT_EQ(Tovra::Fundo::getLastError(), 0x1003000e);
}

TEST(Registry, LoadsAClassFromItsLibraryInTheCurrentFolder) {
    TComPtr<IUnknown> object(createComponentObject("Probe", nullptr));
    EXPECT_TRUE(object && s_componentMap["Probe"].libraryHandle && !s_componentMap["Probe"].creator);
    EXPECT_EQ(createComponentObject("Hollow", nullptr), nullptr);
    EXPECT_EQ(getComponentInstance("Missing", nullptr), nullptr);
    EXPECT_EQ(s_componentMap.count("Missing"), 1U);
    EXPECT_EQ(createComponentObject("AClassNameThatIsFarTooLongForItsFile", nullptr), nullptr);
}

}  // namespace
