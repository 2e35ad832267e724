#include "Fundo3/Log/LogArchive.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

#include "Fundo/Fundo3/File.h"
#include "Fundo/Fundo3/FileFind.h"

namespace Tovra::Fundo::Detail {

static constexpr char kSource[] = "Src/Fundo3/PrintLog";

namespace {

// Calls visit with the path of every file whose name holds the live path. @return false without the folder
template <typename Visit>
bool forEachFile(const LogPath& path, Visit visit) {
    CFileFind find;
    if (!find.findFile(path.search.c_str())) {
        std::printf("[%s:%d]no such logpath\n", kSource, __LINE__);
        return false;
    }
    do {
        const std::string name = find.getFilePath();
        if (name.find(path.file) != std::string::npos) visit(name);
    } while (find.findNextFile());
    return true;
}

std::string archiveName(const LogPath& path, const SystemTime& date, int number) {
    char suffix[64];
    std::snprintf(suffix, 31, "_%04d-%02d-%02d_%d", date.year, date.month, date.day, number);
    return path.file + suffix;
}

}  // namespace

std::string getNewLogPath(const LogPath& path, const SystemTime& date) {
    int largest = -1;
    int year = 0;
    int month = 0;
    int day = 0;
    int number = 0;
    forEachFile(path, [&](const std::string& name) {
        // The live path is text, so it is compared; only what follows is a pattern.
        if (name.compare(0, path.file.size(), path.file) != 0) return;
        const char* suffix = name.c_str() + path.file.size();
        std::sscanf(suffix, "_%4d-%2d-%2d_%d", &year, &month, &day, &number);
        if (year == date.year && month == date.month && day == date.day) largest = std::max(largest, number);
    });
    std::string fresh = archiveName(path, date, ++largest);
    // A listing that ends early must not cost an archive its name.
    while (::access(fresh.c_str(), F_OK) == 0)
        fresh = archiveName(path, date, ++largest);
    return fresh;
}

void limitLogFileNumber(const LogPath& path) {
    const int limit = s_logFileMaxNumber.load(std::memory_order_relaxed);
    if (limit == 0) return;
    int count = 0;
    std::string oldest;
    time_t oldestTime = 0;
    const bool listed = forEachFile(path, [&](const std::string& name) {
        ++count;
        struct ::stat status;
        if (::stat(name.c_str(), &status) != 0) return;
        if (!oldest.empty() && status.st_mtime >= oldestTime) return;
        oldest = name;
        oldestTime = status.st_mtime;
    });
    // Contract: one file goes per call, however far the count is above the limit.
    if (listed && !oldest.empty() && count > limit) CFile::remove(oldest.c_str());
}

}  // namespace Tovra::Fundo::Detail
