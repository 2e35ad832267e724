// ComponentStress [seconds]: sixteen threads ask for four servers at random, with logins that fail,
// connections that break, look-ups that miss, and releases in between. A census watches the list meanwhile.
//
// Checked: every client is logged out once and destroyed once, in this order, none is left at the end, and
// one server never has two listed clients of which none has broken. Next to a broken client a second one may
// be listed: a thread that looked before the first was listed goes on to make one, and passes over broken
// ones. How often that was seen is printed.

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <thread>
#include <vector>

#include "Component/Client.h"
#include "Component/ClientFactory.h"
#include "Component/ComponentFactory.h"
#include "Fundo/Fundo3/Error.h"
#include "Fundo/Fundo3/PrintLog.h"

using namespace Tovra::Component;

namespace {

constexpr int kThreads = 16;
constexpr int kServers = 4;
constexpr size_t kHeldMost = 2;

[[noreturn]] void fail(const char* what) {
    std::fprintf(stderr, "FAILED: %s\n", what);
    std::abort();
}

// True once in so many.
bool oneIn(unsigned chances) {
    thread_local std::mt19937 t_random{std::random_device{}()};
    return t_random() % chances == 0;
}

// Who is listed, by server, while this thread walks the list.
struct Census {
    std::array<int, kServers> listed{};
    std::array<int, kServers> unbroken{};
};
thread_local Census* t_census = nullptr;

std::atomic<bool> s_calm{false};  // everything succeeds
std::atomic<long> s_made{0};
std::atomic<long> s_logouts{0};
std::atomic<long> s_destroyed{0};
std::atomic<long> s_requests{0};
std::atomic<long> s_failures{0};

class Client : public IClient {
public:
    explicit Client(int server) : m_server(static_cast<size_t>(server)) { ++s_made; }

    bool checkBroken() override {
        requireAlive();
        if (s_calm || !oneIn(8)) return false;
        m_hasBroken = true;
        return true;
    }
    bool login() override {
        requireAlive();
        if (oneIn(4)) std::this_thread::yield();
        if (s_calm || !oneIn(4)) return true;
        Tovra::Fundo::setLastError(0x10030007);
        return false;
    }
    bool logout() override {
        if (m_loggedOut.exchange(true)) fail("a client was logged out twice");
        ++s_logouts;
        return true;
    }
    // The list asks each of its clients, under its lock, when it looks for a user id.
    bool getUserID(int& id) override {
        id = static_cast<int>(m_server) + 1;
        if (t_census == nullptr) return true;
        ++t_census->listed[m_server];
        t_census->unbroken[m_server] += m_hasBroken ? 0 : 1;
        id = -1;
        return true;
    }
    void destroy() override {
        if (!m_loggedOut) fail("a client was destroyed before its logout");
        ++s_destroyed;
        delete this;
    }
    void reservedOperation() override {}

private:
    void requireAlive() const {
        if (m_loggedOut) fail("a client was handed out after its logout");
    }

    const size_t m_server;
    std::atomic<bool> m_hasBroken{false};
    std::atomic<bool> m_loggedOut{false};
};

struct ClientMaker : IClient::IFactory {
    ClassID clsid() const override { return "Station"; }
    IUnknown* create(const ServerInfo& info) override {
        return !s_calm && oneIn(64) ? nullptr : new Client(info.port);
    }
};

struct ChannelMaker : IFactoryUnknown {
    ClassID clsid() const override { return "Station.main"; }
    IUnknown* create(const ServerInfo&) override { return nullptr; }
};

using Factory = TComPtr<IFactoryUnknown>;

Factory ask(int server, const char* iid = "Channel") {
    ServerInfo info = {};
    info.address = "10.0.0.1";
    info.port = server;
    return getComponentFactory<IFactoryUnknown>(iid, "Station.main", info);
}

void work(unsigned seed, const std::atomic<bool>& stop) {
    std::mt19937 random(seed);
    std::vector<Factory> held;
    while (!stop) {
        Factory factory = ask(static_cast<int>(random() % kServers), oneIn(16) ? "Nothing" : "Channel");
        ++s_requests;
        s_failures += factory ? 0 : 1;
        // Held rarely, so that clients also come and go.
        if (factory && oneIn(16)) held.push_back(factory);
        if (held.size() > kHeldMost || oneIn(4)) held.clear();
    }
}

Census count() {
    Census census;
    t_census = &census;
    CClientInstanceList::instance()->findClientInstance("Station", -2);
    t_census = nullptr;
    return census;
}

struct Seen {
    long looks = 0;  // at one server each
    long pairs = 0;  // two or more listed for one server
    int most = 0;
};

void watch(Seen& seen, const std::atomic<bool>& stop) {
    while (!stop) {
        const Census census = count();
        for (size_t server = 0; server < kServers; ++server) {
            ++seen.looks;
            if (census.unbroken[server] > 1) fail("two clients of one server are listed, neither has broken");
            seen.pairs += census.listed[server] > 1 ? 1 : 0;
            seen.most = std::max(seen.most, census.listed[server]);
        }
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
}

// Gets every client that is still listed once, which gives up the reference that keeps it there.
void emptyTheList() {
    s_calm = true;
    for (int server = 0; server < kServers; ++server) {
        while (count().listed[static_cast<size_t>(server)] > 0)
            ask(server);
    }
}

}  // namespace

int main(int argc, char** argv) {
    const int seconds = argc > 1 ? std::atoi(argv[1]) : 2;
    Tovra::Fundo::setPrintLogLevel(0);  // failures are wanted here
    ClientMaker clients;
    ChannelMaker channels;
    clients.registerFactory("Client");
    channels.registerFactory("Channel");

    std::atomic<bool> stop{false};
    Seen seen;
    std::vector<std::thread> threads;
    threads.emplace_back([&] { watch(seen, stop); });
    for (unsigned i = 0; i < kThreads; ++i)
        threads.emplace_back([&, i] { work(i, stop); });
    std::this_thread::sleep_for(std::chrono::seconds(seconds));
    stop = true;
    for (std::thread& thread : threads)
        thread.join();
    emptyTheList();

    std::printf("%ld requests, %ld failed; clients: %ld made, %ld logged out, %ld destroyed\n",
                s_requests.load(), s_failures.load(), s_made.load(), s_logouts.load(), s_destroyed.load());
    std::printf("two listed for one server: in %ld of %ld looks at a server, %d at most\n", seen.pairs,
                seen.looks, seen.most);
    if (s_made != s_logouts || s_made != s_destroyed) fail("clients are left over");
    if (s_failures == 0 || s_failures == s_requests || s_made < kServers)
        fail("the run was too tame to tell");
    return 0;
}
