#include "Fundo3/Log/LogFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>

#include "Fundo/Fundo3/Mutex.h"
#include "Fundo3/Immortal.h"
#include "Fundo3/Log/LogArchive.h"
#include "Fundo3/Log/LogFileSettings.h"
#include "Fundo3/MutexGuard.h"

// The last station of a line: the live file, which is emptied at its limit (the old way) or renamed to a
// dated archive (rolling) by size, by day or both.
//
// Everything here runs under one mutex, held across the file classes, and tells what fails by printf: the log
// cannot be entered from here. A failure costs at most the line; the next one tries again. Only bytes that
// reached the file count for the limit, so a full disk never rolls good archives away.

namespace Tovra::Fundo::Detail {

static constexpr char kSource[] = "Src/Fundo3/PrintLog";

namespace {

thread_local bool t_inside = false;

void tell(const char* what, int line) {
    const int error = errno;
    std::printf("[%s:%d]%s faild,errno:%d, errmesg:%s\n", kSource, line, what, error, std::strerror(error));
}

// Holds the file's mutex, and says so to what is called meanwhile.
class Inside {
public:
    explicit Inside(CMutex& mutex) : m_guard(mutex) { t_inside = true; }
    ~Inside() { t_inside = false; }
    Inside(const Inside&) = delete;
    Inside& operator=(const Inside&) = delete;

private:
    MutexGuard<CMutex> m_guard;
};

bool sameDay(const SystemTime& a, const SystemTime& b) {
    return a.year == b.year && a.month == b.month && a.day == b.day;
}

class LogFile {
public:
    void write(const char* data, int size, const SystemTime& time) {
        refreshLogPath(m_path, m_pathVersion);
        if (m_path.file.empty()) return;
        if (!m_judgeexist) takeOver(time);
        const bool fresh = m_logfile == nullptr;
        if (fresh && !open(time)) return;
        if (mustRoll(time, fresh) && !roll(time)) return;
        append(data, static_cast<size_t>(size));
    }

    void close() {
        if (m_logfile == nullptr) return;
        std::fclose(m_logfile);
        m_logfile = nullptr;
    }

    CMutex mutex;

private:
    static bool rolling() { return s_saveLogInOldWay.load(std::memory_order_relaxed); }

    // What a former run has left: an archive of today when rolling, a beginning otherwise.
    void takeOver(const SystemTime& time) {
        m_judgeexist = true;
        struct ::stat status;
        if (::stat(m_path.file.c_str(), &status) != 0) return;
        if (!rolling()) {
            m_totallen = status.st_size > INT_MAX ? INT_MAX : static_cast<int>(status.st_size);
            return;
        }
        archive(time);
        limitLogFileNumber(m_path);
    }

    bool archive(const SystemTime& date) {
        const std::string name = getNewLogPath(m_path, date);
        if (std::rename(m_path.file.c_str(), name.c_str()) == 0) return true;
        tell("rename", __LINE__);
        return false;
    }

    bool open(const SystemTime& time) {
        m_logfile = std::fopen(m_path.file.c_str(), "a+");
        if (m_logfile == nullptr) {
            tell("fopen", __LINE__);
            return false;
        }
        m_lastLogTime = time;
        return true;
    }

    // Decides on an archive; in the old way empties the file. A file just opened is given one line first.
    bool mustRoll(const SystemTime& time, bool fresh) {
        const bool byDay = s_saveLogByDay.load(std::memory_order_relaxed);
        const bool newDay =
            rolling() && byDay && m_lastLogTime.year != 0 && !fresh && !sameDay(m_lastLogTime, time);
        const int limit = s_logsize.load(std::memory_order_relaxed);
        if (m_totallen < limit) return newDay;
        if (rolling()) return newDay || (limit != 0 && !fresh);
        // Contract: a limit of 0 empties the file at every line, so that it keeps just the latest.
        empty();
        return false;
    }

    void empty() {
        // Contract: the number is taken once; a file opened later is still emptied through it.
        if (m_fd < 0) m_fd = ::fileno(m_logfile);
        if (::ftruncate(m_fd, 0) == -1) tell("ftruncate", __LINE__);
        std::rewind(m_logfile);
        m_totallen = 0;
    }

    // @return false if there is no file to write to
    bool roll(const SystemTime& time) {
        close();
        const bool archived = archive(m_lastLogTime);
        if (archived) {
            limitLogFileNumber(m_path);
            m_lastLogTime = time;
            m_totallen = 0;
        }
        m_logfile = std::fopen(m_path.file.c_str(), archived ? "w+" : "a+");
        if (m_logfile != nullptr) return true;
        tell("fopen", __LINE__);
        return false;
    }

    // One write for a line. A line that does not fit is taken back, so that what is in the file is whole.
    void append(const char* data, size_t size) {
        const int fd = ::fileno(m_logfile);
        size_t done = 0;
        while (done < size) {
            const ssize_t written = ::write(fd, data + done, size - done);
            if (written < 0 && errno == EINTR) continue;
            if (written <= 0) break;
            done += static_cast<size_t>(written);
        }
        if (done < size) {
            takeBack(fd, done);
            return;
        }
        m_failing = false;
        m_totallen =
            done > static_cast<size_t>(INT_MAX - m_totallen) ? INT_MAX : m_totallen + static_cast<int>(done);
    }

    void takeBack(int fd, size_t done) {
        // Told once for each fault: every line may fail while the disk is full.
        if (!m_failing) tell("fwrite", __LINE__);
        m_failing = true;
        struct ::stat status;
        if (done == 0 || ::fstat(fd, &status) != 0) return;
        const off_t whole = status.st_size - static_cast<off_t>(done);
        if (::ftruncate(fd, whole) == 0) ::lseek(fd, whole, SEEK_SET);
    }

    LogPath m_path;
    unsigned m_pathVersion = 0;
    FILE* m_logfile = nullptr;
    SystemTime m_lastLogTime = {};  // when the content of the live file began
    int m_totallen = 0;             // bytes in the live file as this process counts them
    bool m_judgeexist = false;      // the look at what a former run has left is done
    bool m_failing = false;
    int m_fd = -1;
};

LogFile& logFile() {
    static Immortal<LogFile> s_file;
    return *s_file;
}

}  // namespace

void writelog(const char* data, int size, const SystemTime& time) {
    // A file system hooked under the log folder may log: that line cannot go to the file it is in the way of.
    if (t_inside || !hasLogPath()) return;
    const Inside inside(logFile().mutex);
    logFile().write(data, size, time);
}

void closeLogFile() {
    if (t_inside) return;
    const Inside inside(logFile().mutex);
    logFile().close();
}

void waitForLogFile() {
    if (t_inside) return;
    const MutexGuard<CMutex> guard(logFile().mutex);
}

bool insideLogFile() { return t_inside; }

}  // namespace Tovra::Fundo::Detail
