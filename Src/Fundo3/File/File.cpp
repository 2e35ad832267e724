#include "Fundo/Fundo3/File.h"

#include "Fundo3/File/FileBody.h"

// CFile: 32-bit position and length, transfers in one call.

namespace Tovra::Fundo {

static constexpr const char* kSource = Detail::kFileSource;

struct CFile::FileInternal : Detail::FileRecord<uint32_t> {};

namespace {

struct Policy {
    using Position = uint32_t;
    using Long = long;
    using Count = size_t;
    using Record = Detail::FileRecord<Position>;

    static constexpr uint32_t kDirect = CFile::modeDirect;

    static constexpr char kClass[] = "CFile";
    static constexpr char kOpen[] = "virtual bool Tovra::Fundo::CFile::open(const char *, uint32_t)";

    static void reportShortLoad(const CFile* file, Position length, Long got, int error) {
        if (!Detail::isLevelOpen(Detail::kWarn)) return;
        Detail::reportObject(Detail::kWarn, {kSource, "load", __LINE__}, file,
                             "CFile::load(): length(%d), ret(%d), %s\n", static_cast<int>(length),
                             static_cast<int>(got), std::strerror(error));
    }

    static Long tell(Record& in) { return in.m_opt->ftell(in.m_file); }

    static int seek(Record& in, Long offset, int whence) {
        return in.m_opt->fseek(in.m_file, offset, whence);
    }

    static Long read(CFile&, Record& in, void* buffer, Count count) {
        return static_cast<Long>(in.m_opt->fread(buffer, 1, count, in.m_file));
    }

    static Long write(CFile&, Record& in, const void* buffer, Count count) {
        const size_t done = in.m_opt->fwrite(buffer, 1, count, in.m_file);
        if (done != count && Detail::isLevelOpen(Detail::kWarn)) {
            const int error = errno;
            Detail::report(Detail::kWarn, {kSource, "write", __LINE__},
                           "fwrite failed, expected:%u, actual:%u,errno=%d, errmsg:%s\n",
                           static_cast<unsigned>(count), static_cast<unsigned>(done), error,
                           std::strerror(error));
        }
        return static_cast<Long>(done);
    }

    static char* gets(CFile&, Record& in, char* buffer, Count size) {
        const Count most = INT_MAX;
        return in.m_opt->fgets(buffer, static_cast<int>(size < most ? size : most), in.m_file);
    }

    // Contract: the -1 of a file system without vector writes counts as an amount.
    static bool vectorMoves(long result) { return result != 0; }
};

}  // namespace

#define FILE_CLASS CFile
#define BODY Detail::FileBody<CFile, Policy>
#include "Fundo3/File/FileFace.inc"

}  // namespace Tovra::Fundo
