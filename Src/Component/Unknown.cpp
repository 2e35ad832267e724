#include "Component/Unknown.h"

#include "Component/Client.h"
#include "Component/ClientFactory.h"
#include "Component/Component.h"
#include "Component/Detail/ComponentHelper.h"
#include "Component/UnknownInternal.h"
#include "Fundo3/Report.h"

// References. The last release() of an object of a table runs under the table's lock from the decrement to
// the erasure, so that a find() under that lock sees a live object or none.

namespace Tovra::Component {

static constexpr char kSource[] = "Src/Component/OldUnknown";

using Detail::UnknownAccess;

IUnknown::IUnknown() : m_internal(new UnknownInternal) {}

IUnknown::~IUnknown() {
    delete m_internal;
    m_internal = nullptr;
}

int IUnknown::addRef() {
    m_internal->claim();
    return m_internal->increase();
}

int IUnknown::release() {
    // Kept here: after its end nothing of the object may be read.
    Detail::CObjectTable* const table = m_internal->objectTable.load(std::memory_order_acquire);
    if (table != nullptr) table->lock();
    const int count = m_internal->decrease();
    if (count != 0) {
        if (table != nullptr) table->unlock();
        return count;
    }
    if (!m_internal->componentName.empty()) {
        destroyComponent(this, m_internal->componentName.c_str(), m_internal->isInstance);
        if (table != nullptr) table->unlock();
        return 0;
    }
    if (table != nullptr) {
        table->erase(this);
        table->unlock();
    }
    destroy();
    return 0;
}

int decreaseRefCount(IUnknown* object) {
    FUNDO_ASSERT_IN(object, "int Tovra::Component::decreaseRefCount(Tovra::Component::IUnknown *)");
    return UnknownAccess::of(object).decrease();
}

int getRefCount(IUnknown* object) {
    return UnknownAccess::of(object).refCount.load(std::memory_order_acquire);
}

void setObjectTable(IUnknown* object, Detail::CObjectTable* table) {
    FUNDO_ASSERT_IN(object,
                    "void Tovra::Component::setObjectTable(Tovra::Component::IUnknown *, "
                    "Tovra::Component::Detail::CObjectTable *)");
    UnknownAccess::of(object).objectTable.store(table, std::memory_order_release);
}

void makeInstanceForTable(IUnknown* object) {
    FUNDO_ASSERT_IN(object, "void Tovra::Component::makeInstanceForTable(Tovra::Component::IUnknown *)");
    UnknownInternal& state = UnknownAccess::of(object);
    if (state.claim()) state.increase();
}

namespace Detail {

namespace {

constexpr int kCreatingFailed = 0x1003000d;
constexpr int kGettingFailed = 0x1003000e;

bool hasTable(const UnknownInternal& state) {
    return state.objectTable.load(std::memory_order_acquire) != nullptr;
}

}  // namespace

IUnknown* CComponentHelper::makeComponentObject(IUnknown* object) {
    if (object == nullptr) {
        Fundo::setLastError(kCreatingFailed);
        return nullptr;
    }
    UnknownInternal& state = UnknownAccess::of(object);
    if (!hasTable(state)) state.claim();
    return object;
}

IUnknown* CComponentHelper::makeComponentInstance(IUnknown* object) {
    if (object == nullptr) {
        Fundo::setLastError(kGettingFailed);
        return nullptr;
    }
    UnknownInternal& state = UnknownAccess::of(object);
    if (!hasTable(state) && state.claim()) state.increase();
    return object;
}

int CComponentHelper::addRef(IUnknown* object) { return object != nullptr ? object->addRef() : 0; }

int CComponentHelper::release(IUnknown* object) {
    if (object == nullptr) return 0;
    if (UnknownAccess::of(object).isClient) {
        return ClientFactory::releaseClientObject(static_cast<IClient*>(object));
    }
    return object->release();
}

void addRefToClient(IClient* client) { CComponentHelper::addRef(client); }

void releaseClient(IClient* client) { CComponentHelper::release(client); }

}  // namespace Detail

}  // namespace Tovra::Component
