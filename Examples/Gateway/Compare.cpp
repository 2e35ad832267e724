#include "Compare.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

#include "Fundo/Fundo3/LfsFile.h"
#include "Utils/Crc.h"
#include "Wire.h"

using Tovra::Fundo::CLfsFile;

namespace {

struct Frame {
    FrameHead head;
    const uint8_t* bytes;  // of the head, with the payload behind

    bool operator==(const Frame& other) const {
        return head.length == other.head.length &&
               std::memcmp(bytes, other.bytes, kHeadSize + head.length) == 0;
    }
    bool isWhole() const { return Tovra::Utils::crc32(bytes + kHeadSize, head.length) == head.crc; }
};

// The frames of a file, which owns their bytes. A file that ends in the middle of a frame is not valid.
class Recording {
public:
    explicit Recording(const std::string& path) {
        const uint8_t* bytes = CLfsFile::access(path.c_str(), 4) ? m_file.load(path.c_str()) : nullptr;
        if (bytes == nullptr) return;
        const auto size = static_cast<size_t>(m_file.getLength());
        size_t place = 0;
        while (place + kHeadSize <= size) {
            Frame frame = {{}, bytes + place};
            if (!decode(frame.bytes, frame.head)) return;
            place += kHeadSize + frame.head.length;
            if (place > size) return;
            frames.push_back(frame);
        }
        valid = place == size;
    }

    std::vector<Frame> frames;
    bool valid = false;

private:
    CLfsFile m_file;
};

struct Verdict {
    size_t missing = 0;    // sent, but not recorded
    size_t different = 0;  // not equal to what was sent, or never sent
    size_t damaged = 0;    // wrong CRC
    size_t misplaced = 0;  // missing from a connection that went on
};

Verdict compare(const std::vector<Frame>& sent, const std::vector<Frame>& recorded) {
    Verdict verdict;
    size_t next = 0;
    for (const Frame& frame : recorded) {
        verdict.damaged += frame.isWhole() ? 0 : 1;
        for (; next < sent.size() && sent[next].head.sequence < frame.head.sequence; ++next) {
            ++verdict.missing;
            verdict.misplaced += sent[next].head.connection == frame.head.connection ? 1 : 0;
        }
        const bool equal = next < sent.size() && sent[next] == frame;
        verdict.different += equal ? 0 : 1;
        next += equal ? 1 : 0;
    }
    // The last connection ended in order.
    verdict.missing += sent.size() - next;
    verdict.misplaced += sent.size() - next;
    return verdict;
}

bool compareChannel(const std::string& sentPath, const std::string& recordedPath, int channel) {
    const Recording sent(sentPath);
    const Recording recorded(recordedPath);
    if (!sent.valid || !recorded.valid) {
        std::printf("compare channel %d: the recordings cannot be read to their ends\n", channel);
        return false;
    }
    const Verdict verdict = compare(sent.frames, recorded.frames);
    const size_t last = recorded.frames.empty() ? 0 : recorded.frames.back().head.sequence;
    const bool held =
        !recorded.frames.empty() && verdict.different + verdict.damaged + verdict.misplaced == 0;
    std::printf(
        "compare channel %d: sent %zu, recorded %zu, lost %zu (%zu of them under way), crc errors %zu, %s\n",
        channel, sent.frames.size(), recorded.frames.size(), last - recorded.frames.size(), verdict.missing,
        verdict.damaged, held ? "identical" : "DIFFERENT");
    return held;
}

}  // namespace

bool compareRecordings(const std::string& sent, const std::string& recorded, int channels) {
    bool held = true;
    for (int channel = 0; channel < channels; ++channel) {
        const std::string name = std::to_string(channel) + ".rec";
        held = compareChannel(sent + "/sent-" + name, recorded + "/channel-" + name, channel) && held;
    }
    return held;
}
