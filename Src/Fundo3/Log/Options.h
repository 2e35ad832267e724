#pragma once

#include <cstddef>

#include "Fundo/Fundo3/PrintLog.h"

// The options live twice: the namespace copy, which decides about log file and version text, and the flat
// flags behind Fundo_getPrintOption(), which the composer reads. setPrintOptions() writes both; a user of
// the flat layer may change the flat ones alone, and a command must leave those as they are.
//
// Any thread reads while a console writes, so every flag is read and written as a relaxed atomic byte.

namespace Tovra::Fundo::Detail {

// Places of the flat flags, in the order of PrintOptions.
enum OptionFlag : unsigned {
    kNoTime,
    kNoColor,
    kNoLibName,
    kNoLevel,
    kNoThread,
    kNoVersion,
    kNoFunction,
    kNoFile,
    kNoLine,
    kShowDate,
    kShowMillisecond,
    kStructuredForm,
    kNoLogFile,
    kOptionFlagCount
};

// A flag of the flat copy.
bool isFlatFlagSet(OptionFlag flag);

// A flag of the namespace copy.
bool isOptionSet(OptionFlag flag);

// Sets one flag in both copies.
void setOption(OptionFlag flag, bool on);

}  // namespace Tovra::Fundo::Detail
