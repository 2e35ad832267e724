#include "Component/ComponentFactory.h"

#include "Component/FactoryTable.h"
#include "Fundo3/Immortal.h"
#include "Fundo3/MutexGuard.h"
#include "Fundo3/Report.h"

namespace Tovra::Component {

static constexpr char kSource[] = "Src/Component/ComponentFactory";

using Fundo::CString;

const ClassID ClassID::local("Local");

FactoryTable& FactoryTable::instance() {
    static Fundo::Detail::Immortal<FactoryTable> s_table;
    return *s_table;
}

IFactoryUnknown::~IFactoryUnknown() = default;

namespace {

bool setEntry(const char* iid, const ClassID& clsid, IFactoryUnknown* factory) {
    FactoryTable& table = FactoryTable::instance();
    const Fundo::Detail::MutexGuard<Fundo::CRecursiveMutex> guard(table.s_mutex);
    table.s_interfaces[iid][clsid.name] = factory;
    return true;
}

}  // namespace

bool IFactoryUnknown::registerFactory(const char* iid) {
    initComponent();
    return setEntry(iid, clsid(), this);
}

// Contract: the key stays, so the class goes on being listed.
bool IFactoryUnknown::unregisterFactory(const char* iid) { return setEntry(iid, clsid(), nullptr); }

template <typename T>
void get_class_ids(const char* iid, std::vector<T>& out) {
    out.clear();
    out.reserve(8);
    FactoryTable& table = FactoryTable::instance();
    const Fundo::Detail::MutexGuard<Fundo::CRecursiveMutex> guard(table.s_mutex);
    const auto found = table.s_interfaces.find(iid);
    if (found != table.s_interfaces.end()) {
        out.reserve(found->second.size());
        for (const auto& [clsid, factory] : found->second)
            out.push_back(T(clsid.c_str()));
    }
}

template FUNDO_API void get_class_ids(const char* iid, std::vector<std::string>& out);
template FUNDO_API void get_class_ids(const char* iid, std::vector<CString>& out);

std::vector<std::string> ClassID::getClassIDs(const char* iid) {
    std::vector<std::string> ids;
    get_class_ids(iid, ids);
    return ids;
}

struct ClassIDList::Internal {
    std::vector<CString> ids;
};

ClassIDList::ClassIDList(const char* iid) : m_internal(new Internal) { get_class_ids(iid, m_internal->ids); }

ClassIDList::~ClassIDList() { delete m_internal; }

int ClassIDList::count() const { return static_cast<int>(m_internal->ids.size()); }

CString ClassIDList::operator[](int index) const {
    FUNDO_ASSERT_IN((size_t)index < m_internal->ids.size(),
                    "Fundo::CString Tovra::Component::ClassIDList::operator[](int) const");
    return m_internal->ids[static_cast<size_t>(index)];
}

}  // namespace Tovra::Component
