#include "Fundo3/Report.h"

#include <cstdarg>
#include <cstdio>

#include "Fundo3/Build.h"
#include "Fundo3/Log/Line.h"
#include "Fundo3/Log/LogFile.h"
#include "Platform/ThreadId.h"

// The library's own lines: filtered entries under "libFundo", with source, function and revision. What fails
// inside the log file's station must not come back into it, and goes to standard output as it stands.

namespace Tovra::Fundo::Detail {

namespace {

void reportList(int level, const Site& site, const char* lead, const char* format, va_list arguments) {
    if (insideLogFile()) {
        std::printf("%s", lead);
        std::vprintf(format, arguments);
        return;
    }
    filterList({level, "libFundo", site.source, site.function, site.line, kRevisionText, lead}, format,
               arguments);
}

struct ObjectLead {
    ObjectLead(const Site& site, const void* object) {
        std::snprintf(text, sizeof text, "[%s:%d] this:%p tid:%d, ", site.source, site.line, object,
                      Platform::currentThreadId());
    }

    char text[160];
};

}  // namespace

void report(int level, const Site& site, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    reportList(level, site, "", format, arguments);
    va_end(arguments);
}

void reportObject(int level, const Site& site, const void* object, const char* format, ...) {
    const ObjectLead lead(site, object);
    va_list arguments;
    va_start(arguments, format);
    reportList(level, site, lead.text, format, arguments);
    va_end(arguments);
}

void reportPlainObject(int level, const Site& site, const void* object, const char* format, ...) {
    const ObjectLead lead(site, object);
    va_list arguments;
    va_start(arguments, format);
    printLine({level, "libFundo", "", "", -1, "", lead.text}, format, arguments);
    va_end(arguments);
}

void reportStatic(int level, const Site& site, const char* format, ...) {
    char lead[160];
    std::snprintf(lead, sizeof lead, "[%s:%d] tid:%d, ", site.source, site.line, Platform::currentThreadId());
    va_list arguments;
    va_start(arguments, format);
    reportList(level, site, lead, format, arguments);
    va_end(arguments);
}

}  // namespace Tovra::Fundo::Detail
