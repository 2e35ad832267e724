#include "Fundo3/File/StreamBuffers.h"

#include <memory>
#include <new>
#include <unordered_map>

#include "Fundo/Fundo3/Mutex.h"
#include "Fundo3/Immortal.h"

namespace Tovra::Fundo::Detail {

namespace {

constexpr size_t kBufferSize = 16384;

using Buffer = std::unique_ptr<char[]>;

struct Registry {
    CMutex mutex;
    std::unordered_map<FILE*, Buffer> buffers;
};

Registry& registry() {
    static Immortal<Registry> s_registry;
    return *s_registry;
}

Buffer takeBuffer(FILE* stream) {
    Registry& known = registry();
    known.mutex.enter();
    Buffer buffer;
    const auto found = known.buffers.find(stream);
    if (found != known.buffers.end()) {
        buffer = std::move(found->second);
        known.buffers.erase(found);
    }
    known.mutex.leave();
    return buffer;
}

}  // namespace

void attachStreamBuffer(FILE* stream) {
    Buffer buffer(new (std::nothrow) char[kBufferSize]);
    if (buffer == nullptr) return;
    if (std::setvbuf(stream, buffer.get(), _IOFBF, kBufferSize) != 0) return;
    Registry& known = registry();
    known.mutex.enter();
    known.buffers[stream] = std::move(buffer);
    known.mutex.leave();
}

int closeBufferedStream(FILE* stream) {
    // Taken out first: the moment the stream is closed another thread may get one at the same address.
    const Buffer buffer = takeBuffer(stream);
    return std::fclose(stream);
}

}  // namespace Tovra::Fundo::Detail
