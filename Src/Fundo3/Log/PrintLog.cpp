#include "Fundo/Fundo3/PrintLog.h"

#include <cstdarg>
#include <cstdio>

#include "Fundo3/Report.h"

int Fundo_printLogLevel = 3;
int Fundo_openLog = 2;
int Fundo_returned = 1;

namespace Tovra::Fundo {

int logFilter(int level, const char*, const char*, const char*, int, const char*, const char* format, ...) {
    if (!Detail::isLevelOpen(level)) return 0;
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vprintf(format, arguments);
    va_end(arguments);
    return length;
}

namespace Detail {
static void reportList(int level, const Site& site, const char* prefix, const char* format,
                       va_list arguments) {
    char text[8192];
    std::vsnprintf(text, sizeof text, format, arguments);
    logFilter(level, "libFundo", site.source, site.function, site.line, "", "%s%s", prefix, text);
}
void report(int level, const Site& site, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    reportList(level, site, "", format, arguments);
    va_end(arguments);
}
void reportObject(int level, const Site& site, const void* object, const char* format, ...) {
    char prefix[256];
    std::snprintf(prefix, sizeof prefix, "[%s:%d] this:%p tid:%d, ", site.source, site.line, object, 0);
    va_list arguments;
    va_start(arguments, format);
    reportList(level, site, prefix, format, arguments);
    va_end(arguments);
}
void reportStatic(int level, const Site& site, const char* format, ...) {
    char prefix[256];
    std::snprintf(prefix, sizeof prefix, "[%s:%d] tid:%d, ", site.source, site.line, 0);
    va_list arguments;
    va_start(arguments, format);
    reportList(level, site, prefix, format, arguments);
    va_end(arguments);
}
}  // namespace Detail
}  // namespace Tovra::Fundo
