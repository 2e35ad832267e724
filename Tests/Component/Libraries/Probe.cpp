#include "Component/Component.h"

namespace {

class CProbe : public Tovra::Component::IUnknown {
public:
    void destroy() override { delete this; }
    void reservedOperation() override {}
};

}  // namespace

extern "C" __attribute__((visibility("default"))) Tovra::Component::IUnknown* createProbeObject(
    const Tovra::Component::ServerInfo*) {
    return new CProbe;
}
