#pragma once

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <memory>

#include "Fundo/Fundo3/FileSystem.h"
#include "Fundo/Fundo3/SystemCall.h"
#include "Fundo3/File/DefaultFileSystem.h"
#include "Fundo3/Report.h"
#include "Platform/ThreadId.h"

// The one body of CFile and CLfsFile. Their differences, the width of positions, whole or chunked transfers,
// and the words of messages, come from a policy class; see File.cpp and LfsFile.cpp.

namespace Tovra::Fundo::Detail {

inline constexpr char kFileSource[] = "Src/Fundo3/File";

// What an open file knows of itself.
template <typename Position>
struct FileRecord {
    void* m_file = nullptr;       // handle of the file system; null when not open
    uint8_t* m_buffer = nullptr;  // what load() read
    Position m_length = 0;        // 0 means not known
    Position m_position = 0;
    IFileSystem* m_opt = FileDefaultOpt::instance();
};

constexpr uint32_t kAccessMask = 0xF;
constexpr uint32_t kCloseOnExec = 0x80;
constexpr uint32_t kCreate = 0x1000;
constexpr uint32_t kNoTruncate = 0x2000;

// The mode text of the C library for open flags; empty if they name no access.
inline const char* modeText(uint32_t flags) {
    const bool keep = (flags & kNoTruncate) != 0;
    switch (flags & kAccessMask) {
        case 0:
            return "rb";
        case 1:
            return keep ? "ab" : "wb";
        case 2:
            if ((flags & kCreate) == 0) return "rb+";
            return keep ? "ab+" : "wb+";
        default:
            return "";
    }
}

// Policy gives: Position, Long (what the public face answers), Count, tell(), seek(), read(), write(), gets()
// and the words of messages. File is the public class, whose operations are called virtually.
template <class File, class Policy>
class FileBody {
public:
    using Position = typename Policy::Position;
    using Long = typename Policy::Long;
    using Count = typename Policy::Count;
    using Record = FileRecord<Position>;
    static constexpr const char* kSource = kFileSource;

    static bool open(File& file, Record& in, const char* path, uint32_t flags) {
        if (in.m_file != nullptr) file.close();
        if (in.m_buffer != nullptr) file.unload();
        in.m_opt = _findOpts(path);
        const Record* const m_internal = &in;
        FUNDO_ASSERT_IN(m_internal->m_opt, Policy::kOpen);

        char mode[8];
        std::snprintf(mode, sizeof mode, "%s", modeText(flags));
        if (mode[0] == '\0') {
            FUNDO_REPORT_IF(kError, reportObject(kError, {kSource, "open", __LINE__}, &file,
                                                 "%s::open(): dwFlags(%d) is invalid\n", Policy::kClass,
                                                 static_cast<int>(flags)));
            return false;
        }
        if ((flags & kCloseOnExec) != 0) std::strcat(mode, "e");
        if ((flags & Policy::kDirect) != 0) std::strcat(mode, "d");

        in.m_file = in.m_opt->fopen(path, mode);
        if (in.m_file == nullptr) return false;
        in.m_position = tell(in);
        in.m_length = (flags & (kCreate | kNoTruncate)) == kCreate ? 0 : lengthOf(in, path);
        return true;
    }

    static void close(Record& in) {
        if (in.m_file == nullptr) return;
        in.m_opt->fclose(in.m_file);
        delete[] in.m_buffer;
        in = Record();
    }

    static uint8_t* load(File& file, Record& in, const char* path) {
        if (in.m_buffer != nullptr) return in.m_buffer;
        if (!file.open(path, kNoTruncate)) return nullptr;
        if (in.m_length == 0) {
            in.m_length = static_cast<Position>(file.seek(0, File::end));
            file.seek(0, File::begin);
        }
        if (in.m_length == 0) return nullptr;

        in.m_buffer = new uint8_t[in.m_length];
        file.seek(0, File::begin);
        const Long got = file.read(in.m_buffer, static_cast<Count>(in.m_length));
        if (got >= 0 && static_cast<Position>(got) >= in.m_length) return in.m_buffer;

        const int error = errno;
        describeDescriptor(in);
        Policy::reportShortLoad(&file, in.m_length, got, error);
        file.unload();
        return nullptr;
    }

    static void unload(File& file, Record& in) {
        file.close();
        delete[] in.m_buffer;
        in.m_buffer = nullptr;
    }

    static Long read(File& file, Record& in, void* buffer, Count count) {
        if (in.m_file == nullptr) return -1;
        const Long done = Policy::read(file, in, buffer, count);
        in.m_position += static_cast<Position>(done);
        return done;
    }

    static Long write(File& file, Record& in, const void* buffer, Count count) {
        if (in.m_file == nullptr) return -1;
        const Long done = Policy::write(file, in, buffer, count);
        follow(in);
        return done;
    }

    static void flush(Record& in) {
        if (in.m_file == nullptr) return;
        in.m_opt->fflush(in.m_file);
        follow(in);
    }

    static Long seek(Record& in, Long offset, int whence) {
        if (in.m_file == nullptr) return 0;
        if (whence != File::end) {
            const Position target = seekTarget(in, offset, whence);
            if (target == in.m_position) return static_cast<Long>(target);
        }
        const bool known = whence >= File::begin && whence <= File::end;
        if (Policy::seek(in, offset, known ? whence : static_cast<int>(File::begin)) < 0) return 0;
        in.m_position = tell(in);
        return static_cast<Long>(in.m_position);
    }

    static Long getPosition(const Record& in) {
        return in.m_file != nullptr ? static_cast<Long>(in.m_position) : 0;
    }

    static Long getLength(File& file, Record& in) {
        if (in.m_file == nullptr) return 0;
        if (in.m_length == 0) {
            const Long kept = file.getPosition();
            in.m_length = static_cast<Position>(file.seek(0, File::end));
            file.seek(kept, File::begin);
        }
        return static_cast<Long>(in.m_length);
    }

    static char* gets(File& file, Record& in, char* buffer, Count size) {
        if (in.m_file == nullptr) return nullptr;
        char* text = Policy::gets(file, in, buffer, size);
        if (text != nullptr) in.m_position += static_cast<Position>(std::strlen(text));
        return text;
    }

    static int puts(Record& in, const char* text) {
        if (in.m_file == nullptr) return 0;
        const int result = in.m_opt->fputs(text, in.m_file);
        if (result != -1) in.m_position += static_cast<Position>(std::strlen(text));
        grow(in);
        return result;
    }

    static long writev(Record& in, const io_vec* vec, int count) {
        if (in.m_file == nullptr) return -1;
        const long result = in.m_opt->writev(::fileno(static_cast<FILE*>(in.m_file)), vec, count);
        if (!Policy::vectorMoves(result)) return result;
        in.m_position += static_cast<Position>(result);
        grow(in);
        return result;
    }

    // Contract: goes past the file system to the stream; both classes say "CFile".
    static bool setvbuf(Record& in, char* buffer, int mode, size_t size) {
        if (in.m_file == nullptr) return refuseBuffer("CFile::setvbuf failed, file has not been opened!\n");
        if (std::setvbuf(static_cast<FILE*>(in.m_file), buffer, mode, size) == 0) return true;
        return refuseBuffer("CFile::setvbuf failed\n");
    }

private:
    static Position tell(Record& in) {
        const Long position = Policy::tell(in);
        return position > 0 ? static_cast<Position>(position) : 0;
    }

    static Position lengthOf(Record& in, const char* path) {
        const auto info = std::make_unique<FileInfo>();
        return in.m_opt->stat(path, *info) == 0 ? static_cast<Position>(info->size) : 0;
    }

    static Position seekTarget(const Record& in, Long offset, int whence) {
        if (whence == File::begin) return static_cast<Position>(offset);
        if (whence == File::current)
            return static_cast<Position>(in.m_position + static_cast<Position>(offset));
        return 0;
    }

    static void grow(Record& in) {
        if (in.m_position > in.m_length) in.m_length = in.m_position;
    }

    static void follow(Record& in) {
        in.m_position = tell(in);
        grow(in);
    }

    static bool refuseBuffer(const char* message) {
        FUNDO_REPORT_IF(kWarn, report(kWarn, {kSource, "setvbuf", __LINE__}, "%s", message));
        return false;
    }

    // Contract: the handle is taken for a stdio stream here, also under a hooked file system.
    static void describeDescriptor(Record& in) {
        char command[32] = {};
        std::snprintf(command, sizeof command - 1, "%s%d%s%d", "ls -lh /proc/", Platform::currentThreadId(),
                      "/fd/", ::fileno(static_cast<FILE*>(in.m_file)));
        systemCall(command);
    }
};

}  // namespace Tovra::Fundo::Detail
