#include "Component/ComPtr.h"

#include <string>

#include "Fundo3/Report.h"

namespace Tovra::Component::Detail {

namespace {

// The type named Y in the compiler's text of a function of a class template over it: what stands between
// "Y = " and the end of the list.
std::string pointee(const std::string& function) {
    const size_t start = function.rfind("Y = ");
    if (start == std::string::npos) return "Y";
    const size_t end = function.find_first_of(";]", start);
    return function.substr(start + 4, end - start - 4);
}

}  // namespace

// The text is the same whatever compiler built the program: users search logs for it.
void emptyComPtrUsed(const char* function, int line) {
    const std::string type = pointee(function);
    const std::string text = "Tovra::Component::TComPtr::element_type *Tovra::Component::TComPtr<" + type +
                             ">::operator->() const [Y = " + type + "]";
    Fundo::Detail::assertionFailed("m_ptr != NULL", text.c_str(), "./Include/Component/ComPtr", line);
}

}  // namespace Tovra::Component::Detail
