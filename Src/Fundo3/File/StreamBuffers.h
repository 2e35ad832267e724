#pragma once

#include <cstdio>

// The C library ignores the size of a buffer that it allocates itself, so the streams of the default file
// system bring their own. A buffer must live until its stream is closed, whatever setvbuf() has put in its
// place meanwhile.

namespace Tovra::Fundo::Detail {

// Gives a fresh stream a buffer of 16 KiB; without memory it keeps the C library's.
void attachStreamBuffer(FILE* stream);

// Closes a stream and frees its buffer. @return what fclose() gave
int closeBufferedStream(FILE* stream);

}  // namespace Tovra::Fundo::Detail
