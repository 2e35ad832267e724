#pragma once

#include <string>

#include "Fundo/Fundo3/SystemTime.h"
#include "Fundo3/Log/LogFileSettings.h"

// Archives of the log file: "<live path>_YYYY-MM-DD_N", N counting from 0 for each date.

namespace Tovra::Fundo::Detail {

// The next free archive name of a date.
std::string getNewLogPath(const LogPath& path, const SystemTime& date);

// Removes the oldest of the files whose names hold the live path, if there are more than the limit.
void limitLogFileNumber(const LogPath& path);

}  // namespace Tovra::Fundo::Detail
