#include "Fundo3/File/StreamBuffers.h"

#include <memory>
#include <new>
#include <unordered_map>

#include "Fundo/Fundo3/Mutex.h"
#include "Fundo3/Immortal.h"
#include "Fundo3/MutexGuard.h"

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
    const MutexGuard<CMutex> guard(known.mutex);
    const auto found = known.buffers.find(stream);
    if (found == known.buffers.end()) return nullptr;
    Buffer buffer = std::move(found->second);
    known.buffers.erase(found);
    return buffer;
}

// @return the buffer's place, which outlives this
char* keepBuffer(FILE* stream, Buffer buffer) {
    Registry& known = registry();
    const MutexGuard<CMutex> guard(known.mutex);
    return (known.buffers[stream] = std::move(buffer)).get();
}

}  // namespace

void attachStreamBuffer(FILE* stream) {
    Buffer buffer(new (std::nothrow) char[kBufferSize]);
    if (buffer == nullptr) return;
    // Kept before the stream knows it: without memory to keep it, the stream must not be left with it.
    std::setvbuf(stream, keepBuffer(stream, std::move(buffer)), _IOFBF, kBufferSize);
}

int closeBufferedStream(FILE* stream) {
    // Taken out first: the moment the stream is closed another thread may get one at the same address.
    const Buffer buffer = takeBuffer(stream);
    return std::fclose(stream);
}

}  // namespace Tovra::Fundo::Detail
