#include "Tally.h"

#include <algorithm>

#include "Component/Component.h"
#include "Support/Guard.h"

namespace {

class Tally : public ITally {
public:
    void add(uint32_t sequence, size_t size) override {
        const Guard guard(m_mutex);
        m_result.smallest = m_result.frames == 0 ? size : std::min(m_result.smallest, size);
        m_result.largest = std::max(m_result.largest, size);
        ++m_result.frames;
        m_result.bytes += size;
        m_result.lost = sequence - m_result.frames;
    }

    TallyResult result() override {
        const Guard guard(m_mutex);
        return m_result;
    }

    void destroy() override { delete this; }
    void reservedOperation() override {}

private:
    Tovra::Fundo::CMutex m_mutex;
    TallyResult m_result;
};

}  // namespace

extern "C" FUNDO_API Tovra::Component::IUnknown* createTallyObject(const Tovra::Component::ServerInfo*) {
    return new Tally;
}
