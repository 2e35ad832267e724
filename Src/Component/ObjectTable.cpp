#include <algorithm>
#include <vector>

#include "Component/Unknown.h"
#include "Fundo/Fundo3/Mutex.h"
#include "Fundo3/Report.h"

namespace Tovra::Component::Detail {

static constexpr char kSource[] = "Src/Component/SingletonFactory";

key_base::~key_base() = default;

struct CObjectTable::Internal {
    Fundo::CMutex mutex;
    std::vector<IUnknown*> objects;
};

CObjectTable::CObjectTable() : m_internal(new Internal) {}

CObjectTable::~CObjectTable() { delete m_internal; }

void CObjectTable::lock() { m_internal->mutex.enter(); }

void CObjectTable::unlock() { m_internal->mutex.leave(); }

IUnknown* CObjectTable::find(const key_base& key) const {
    const auto& objects = m_internal->objects;
    const auto found =
        std::find_if(objects.begin(), objects.end(), [&](IUnknown* object) { return key.isEqual(object); });
    if (found == objects.end()) return nullptr;
    makeInstanceForTable(*found);
    return *found;
}

void CObjectTable::insert(IUnknown* object) {
    setObjectTable(object, this);
    makeInstanceForTable(object);
    m_internal->objects.push_back(object);
}

void CObjectTable::erase(IUnknown* object) {
    auto& objects = m_internal->objects;
    const auto found = std::find(objects.begin(), objects.end(), object);
    if (found != objects.end()) objects.erase(found);
}

size_t CObjectTable::count() const { return m_internal->objects.size(); }

IUnknown* CObjectTable::get(size_t index) const {
    FUNDO_ASSERT_IN(index < m_internal->objects.size(),
                    "Tovra::Component::IUnknown *Tovra::Component::Detail::CObjectTable::get(size_t) const");
    return m_internal->objects[index];
}

}  // namespace Tovra::Component::Detail
