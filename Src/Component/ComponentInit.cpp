#include <atomic>

#include "Component/ComponentFactory.h"
#include "Fundo/Fundo3/Error.h"

// The texts of the framework's error numbers. Users match them, spelling included.

namespace Tovra::Component {

namespace {

struct ErrorText {
    int error;
    const char* text;
};

constexpr ErrorText kErrorTexts[] = {
    {0x10030000, "Component error: interface not found!"},
    {0x10030001, "Component error: class not found!"},
    {0x10030002, "Component error: client not found!"},
    {0x10030003, "Component error: client not exist!"},
    {0x10030004, "Component error: not login yet!"},
    {0x10030005, "Component error: tring login!"},
    {0x10030006, "Component error: user's name not valid!"},
    {0x10030007, "Component error: password not valid!"},
    {0x10030008, "Component error: peer has been blocked!"},
    {0x10030009, "Component error: peer in blacklist!"},
    {0x1003000a, "Component error: user's name has been used!"},
    {0x1003000b, "Component error: too many connections!"},
    {0x1003000c, "Component error: no authority!"},
    {0x1003000d, "Component error: creating object failed!"},
    {0x1003000e, "Component error: getting instance failed!"},
    {0x1003000f, "Component error: login challenge!"},
    {0x10030015, "Component error: User or password not valid!"},
};

}  // namespace

void initComponent() {
    static std::atomic<bool> s_done{false};
    if (s_done.exchange(true, std::memory_order_relaxed)) return;
    for (const ErrorText& entry : kErrorTexts)
        Fundo::setErrMsg(entry.error, entry.text);
}

}  // namespace Tovra::Component
