#pragma once

#include <cstdint>
#include <list>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "Fundo/Fundo3/LfsFile.h"
#include "Wire.h"

// A device with channels behind a TCP server on 127.0.0.1. One thread does everything, in turns of a few
// milliseconds.
//
// A channel makes frames from its first opening on, also while nobody is connected: their numbers are then
// missing from what the client gets. Every frame handed to a connection is also appended to the file
// "sent-<channel>.rec", so that what was received can be compared.
class Device {
public:
    struct Options {
        int channels = 4;
        std::string user = "user";
        std::string password = "word";
        std::string folder = ".";  // takes the files of what was sent
        uint64_t outage = 800;     // milliseconds without an answer after a drop
        // What goes wrong, once:
        //   garbage   the first login is answered with noise
        //   cut       channel 0 closes in the middle of its 50th frame
        //   corrupt   a bit of channel 0's 50th frame is wrong
        std::string fault;
    };

    // @param source where the payloads come from; not empty
    Device(Options options, std::vector<uint8_t> source);
    ~Device();
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

    // @param port 0 takes any. @return the port, 0 on failure
    int listen(int port);
    // Serves until a descriptor becomes readable or a time of the monotonic clock, 0 for none.
    void run(int ending, uint64_t end);
    void showTotals() const;

private:
    struct Connection {
        int socket = -1;
        std::vector<uint8_t> in;
        std::vector<uint8_t> out;
        size_t sent = 0;     // bytes of out that are gone
        uint32_t user = 0;   // 0 before the login or opening
        int channel = -1;    // of a stream
        bool ended = false;  // to be closed at the end of the turn
    };

    struct Channel {
        Tovra::Fundo::CLfsFile file;
        Connection* sink = nullptr;
        bool started = false;
        uint64_t due = 0;
        uint32_t sequence = 0;
        uint32_t sent = 0;
        uint8_t opened = 0;
        size_t place = 0;  // in the source
        std::mt19937 random;
    };

    void turn(int ending);
    void accept();
    void read(Connection& connection);
    void obey(Connection& connection, const FrameHead& head, const std::string& payload);
    void logIn(Connection& connection, const std::string& words);
    void open(Connection& connection, const FrameHead& head);
    void finish(Connection& connection);
    void drop(uint32_t user);
    void produce(uint64_t now);
    void makeFrame(int number, Channel& channel);
    bool takeFault(const char* name);
    void queue(Connection& connection, const FrameHead& head, const uint8_t* payload = nullptr);
    static void write(Connection& connection);
    void sweep();

    Options m_options;
    const std::vector<uint8_t> m_source;
    std::vector<std::unique_ptr<Channel>> m_channels;
    std::list<Connection> m_connections;
    std::set<uint32_t> m_users;
    std::mt19937 m_random;
    int m_listener = -1;
    uint64_t m_deafUntil = 0;
    int m_logins = 0;
    int m_refusals = 0;
    int m_drops = 0;
    int m_keepAlives = 0;
};
