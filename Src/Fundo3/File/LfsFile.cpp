#include "Fundo/Fundo3/LfsFile.h"

#include <algorithm>

#include "Fundo3/File/FileBody.h"

// CLfsFile: 64-bit position and length, transfers in chunks until the file system gives nothing.

namespace Tovra::Fundo {

static constexpr const char* kSource = Detail::kFileSource;

struct CLfsFile::FileInternal : Detail::FileRecord<uint64_t> {};

namespace {

struct Policy {
    using Position = uint64_t;
    using Long = long long;
    using Count = long long;
    using Record = Detail::FileRecord<Position>;

    static constexpr uint32_t kDirect = 0;

    static constexpr char kClass[] = "CLfsFile";
    static constexpr char kOpen[] = "virtual bool Tovra::Fundo::CLfsFile::open(const char *, uint32_t)";

    static void reportShortLoad(const CLfsFile* file, Position length, Long got, int error) {
        if (!Detail::isLevelOpen(Detail::kWarn)) return;
        Detail::reportObject(Detail::kWarn, {kSource, "load", __LINE__}, file,
                             "CLfsFile::load(): length(%ju), ret(%jd), %s\n", static_cast<uintmax_t>(length),
                             static_cast<intmax_t>(got), std::strerror(error));
    }

    static Long tell(Record& in) { return in.m_opt->ftell64(in.m_file); }

    static int seek(Record& in, Long offset, int whence) {
        return in.m_opt->fseek64(in.m_file, offset, whence);
    }

    static Long read(CLfsFile& file, Record& in, void* buffer, Count count) {
        const auto step = [&](size_t chunk) { return in.m_opt->fread(buffer, 1, chunk, in.m_file); };
        return transfer(count, step, [&](Long done, size_t chunk) {
            Detail::reportObject(Detail::kWarn, {kSource, "read", __LINE__}, &file,
                                 "fread get error,total %jd has read %jd,expected %zu return %zu\n",
                                 static_cast<intmax_t>(count), static_cast<intmax_t>(done), chunk, size_t{0});
        });
    }

    static Long write(CLfsFile& file, Record& in, const void* buffer, Count count) {
        const auto step = [&](size_t chunk) { return in.m_opt->fwrite(buffer, 1, chunk, in.m_file); };
        return transfer(count, step, [&](Long done, size_t chunk) {
            Detail::reportObject(Detail::kWarn, {kSource, "write", __LINE__}, &file,
                                 "fwrite get error,total %jd has write %jd,expected %zu return %zu",
                                 static_cast<intmax_t>(count), static_cast<intmax_t>(done), chunk, size_t{0});
        });
    }

    static char* gets(CLfsFile& file, Record& in, char* buffer, Count size) {
        if (size > INT_MAX) {
            if (Detail::isLevelOpen(Detail::kWarn)) {
                Detail::reportObject(Detail::kWarn, {kSource, "gets", __LINE__}, &file,
                                     "Bytes need to be seeked has been over the _MAX_INT_VALUE.\n");
            }
            return nullptr;
        }
        return in.m_opt->fgets(buffer, static_cast<int>(std::max<Count>(size, 0)), in.m_file);
    }

    static bool vectorMoves(long result) { return result > 0; }

private:
    // Contract: every step starts at the same place of the buffer; it does not advance.
    template <typename Step, typename Report>
    static Long transfer(Count count, Step step, Report report) {
        Long done = 0;
        while (done < count) {
            const auto chunk = static_cast<size_t>(count - done);
            const size_t moved = step(chunk);
            if (moved == 0) {
                if (Detail::isLevelOpen(Detail::kWarn)) report(done, chunk);
                break;
            }
            done += static_cast<Long>(moved);
        }
        return done;
    }
};

}  // namespace

#define FILE_CLASS CLfsFile
#define BODY Detail::FileBody<CLfsFile, Policy>
#include "Fundo3/File/FileFace.inc"

}  // namespace Tovra::Fundo
