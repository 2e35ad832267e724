#pragma once

#include <atomic>
#include <string>

#include "Fundo/Fundo3/Mutex.h"
#include "Fundo3/Immortal.h"
#include "Fundo3/MutexGuard.h"
#include "Fundo3/Report.h"
#include "Fundo3/Time/Pattern.h"

namespace Tovra::Fundo::Detail {

// The order that a pattern asks for, or the usual one with an error line.
inline DateOrder validOrder(const char* pattern, const Site& site) {
    const DateOrder order = dateOrderOf(pattern);
    if (order != kNoOrder) return order;
    FUNDO_REPORT_IF(
        kError, reportStatic(kError, site, "setFormat dateFormat is invalid,set default separator: ymd \n"));
    return kYearMonthDay;
}

// The process-wide display format of a date class: a pattern, and what follows from it. The numbers are there
// before any initialiser runs, the text is made at first use, so that other initialisers may set the format.
template <class Owner>
class DisplayFormat {
public:
    static void set(const char* pattern, const Site& site) {
        {
            Pattern& state = s_pattern();
            const MutexGuard<CMutex> guard(state.mutex);
            state.text = pattern;
        }
        char separator = separatorOf(pattern);
        if (separator == '\0') {
            separator = '-';
            FUNDO_REPORT_IF(
                kError,
                reportStatic(kError, site, "setFormat separator is invalid,set default separator: - \n"));
        }
        setSeparator(separator);
        set12Hour(has12Hour(pattern));
        setOrder(validOrder(pattern, site));
    }

    static std::string text() {
        Pattern& state = s_pattern();
        const MutexGuard<CMutex> guard(state.mutex);
        return state.text;
    }

    static int order() { return s_dateFormat.load(std::memory_order_relaxed); }
    static void setOrder(int order) { s_dateFormat.store(order, std::memory_order_relaxed); }
    static bool is12Hour() { return s_12hour.load(std::memory_order_relaxed); }
    static void set12Hour(bool on) { s_12hour.store(on, std::memory_order_relaxed); }
    static char separator() { return s_dateSeparator.load(std::memory_order_relaxed); }
    static void setSeparator(char separator) { s_dateSeparator.store(separator, std::memory_order_relaxed); }

private:
    struct Pattern {
        CMutex mutex;
        std::string text = "yyyy-MM-dd HH:mm:ss";
    };

    static Pattern& s_pattern() {
        static Immortal<Pattern> s_text;
        return *s_text;
    }

    static inline std::atomic<int> s_dateFormat{kYearMonthDay};
    static inline std::atomic<bool> s_12hour{false};
    static inline std::atomic<char> s_dateSeparator{'-'};
};

}  // namespace Tovra::Fundo::Detail
