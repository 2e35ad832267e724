#pragma once

#include <string>

#include "Fundo/Fundo3/Export.h"

/// @file
/// How the library fails: the assertion that ends the process, the last-error number of each thread,
/// and the process-wide table from error number to message text.

namespace Tovra::Fundo {

namespace Detail {

/// Prints "***** Internal Program Error - assertion (expression) failed in function: file(line)" on
/// standard error and aborts. Standard output is flushed before, if no other thread holds it, so that the
/// line logged just before reaches a pipe or file too. Active in every build. Any thread.
[[noreturn]] FUNDO_API void assertionFailed(const char* expression, const char* function, const char* file,
                                            long line);

/// The same with ": message" behind the line number. Note that the message stands second.
[[noreturn]] FUNDO_API void assertionFailedMsg(const char* expression, const char* message,
                                               const char* function, const char* file, long line);

}  // namespace Detail

/// Stores the last-error number of the calling thread. No success path of the library clears it.
FUNDO_API void setLastError(int error);

/// The last-error number of the calling thread; 0 if it never set one.
FUNDO_API int getLastError();

/// Stores the text for an error number, any number, replacing an earlier text. Any thread.
/// @param message null is stored as the empty string
/// @return true
FUNDO_API bool setErrMsg(int error, const char* message);

/// The text stored for an error number, never null; empty if there is none. Any thread.
/// The pointer is valid until the text of this number is replaced: do not hold it across setErrMsg().
FUNDO_API const char* getErrMsg(int error);

/// setErrMsg() with a string.
FUNDO_API bool setErrorMessage(int error, const std::string& message);

/// A copy of what getErrMsg() gives.
FUNDO_API std::string getErrorMessage(int error);

}  // namespace Tovra::Fundo

/// The assertion of the library's headers. It does not depend on NDEBUG.
#define FUNDO_ASSERT(expression)   \
    (static_cast<bool>(expression) \
         ? static_cast<void>(0)    \
         : ::Tovra::Fundo::Detail::assertionFailed(#expression, __PRETTY_FUNCTION__, __FILE__, __LINE__))
