#pragma once

#include <functional>
#include <istream>
#include <string>
#include <vector>

// What the example programs share: options, the console with its commands, and the log's settings.

// The word behind an option on the command line, or a default.
const char* option(int argc, char** argv, const char* name, const char* otherwise);

// A log without colours, unless a terminal shows it, and without versions; level 4.
void preparePrint();

// Hands words to the print log's command language.
void steerLog(std::vector<std::string> words);

// Log to a file that rolls at so many KiB and keeps three files.
void rollLog(const std::string& path, const char* kilobytes);

// Does a command that every example has, "threads", "timers" or "logfilter ...". @return whether it was one
bool obeyShared(const std::string& command, std::istream& words);

// Blocks SIGINT and SIGTERM and gives a descriptor that becomes readable at one of them. Called before the
// first thread is made, so that every thread inherits the mask.
int endingSignals();

// Reads commands until one says no, a signal, or the end of the time. The end of standard input ends nothing:
// a service has none.
class Console {
public:
    using Obey = std::function<bool(const std::string& line)>;

    Console() : m_ending(endingSignals()) {}
    ~Console();
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

    // @param seconds 0 means no end
    void run(const Obey& obey, int seconds);

private:
    bool readCommands(const Obey& obey);

    const int m_ending;
    bool m_hasInput = true;
    std::string m_input;
};
