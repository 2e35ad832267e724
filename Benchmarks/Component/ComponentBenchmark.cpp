#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "Component/Client.h"
#include "Component/ComPtr.h"
#include "Component/ComponentFactory.h"
#include "Fundo/Fundo3/Signal.h"

#ifdef HAVE_BOOST
#include <boost/signals2/signal.hpp>
#endif

using namespace Tovra::Component;
using Detail::CComponentHelper;
using Tovra::Fundo::TSignal5;

namespace {

struct Object : IUnknown {
    void destroy() override { delete this; }
    void reservedOperation() override {}
};

struct Client : IClient {
    bool checkBroken() override { return false; }
    bool login() override { return true; }
    bool logout() override { return true; }
    bool getUserID(int& id) override {
        id = 1;
        return true;
    }
    void destroy() override { delete this; }
    void reservedOperation() override {}
};

struct ClientMaker : IClient::IFactory {
    ClassID clsid() const override { return "Station"; }
    IUnknown* create(const ServerInfo&) override { return new Client; }
};

struct ObjectMaker : IFactoryUnknown {
    ClassID clsid() const override { return "Station.main"; }
    IUnknown* create(const ServerInfo&) override { return new Object; }
};

using Text = const char* ServerInfo::*;

// Logged-in clients of one class, each of a server of its own. The servers differ in one text, or in port.
class Listed {
public:
    Listed(int count, Text text) : m_infos(static_cast<size_t>(count)) {
        m_clients.registerFactory("Client");
        m_objects.registerFactory("Channel");
        for (int i = 0; i < count; ++i)
            m_texts.push_back("192.168.100." + std::to_string(i));
        for (size_t i = 0; i < m_infos.size(); ++i) {
            ServerInfo& info = m_infos[i];
            info.address = "192.168.100.108";
            info.port = text == nullptr ? static_cast<int>(i) : 37777;
            info.userName = "administrator";
            info.password = "a password";
            if (text != nullptr) info.*text = m_texts[i].c_str();
            m_held.push_back(getComponentFactory<IFactoryUnknown>("Channel", "Station.main", info));
        }
    }

    // The last one listed, which is found after all others.
    const ServerInfo& last() const { return m_infos.back(); }

private:
    ClientMaker m_clients;
    ObjectMaker m_objects;
    std::vector<std::string> m_texts;
    std::vector<ServerInfo> m_infos;
    std::vector<TComPtr<IFactoryUnknown>> m_held;
};

void request(benchmark::State& state, Text text) {
    const Listed listed(static_cast<int>(state.range(0)), text);
    for (auto _ : state) {
        IClient* client = nullptr;
        benchmark::DoNotOptimize(
            CComponentHelper::getComponentFactory("Channel", "Station.main", listed.last(), client));
        CComponentHelper::release(client);
    }
}
BENCHMARK_CAPTURE(request, port, nullptr)->Name("Fundo/Client/request_by_port")->Arg(1)->Arg(10)->Arg(100);
BENCHMARK_CAPTURE(request, address, &ServerInfo::address)
    ->Name("Fundo/Client/request_by_address")
    ->Arg(10)
    ->Arg(100);
// Compared last of all.
BENCHMARK_CAPTURE(request, text8, &ServerInfo::text8)
    ->Name("Fundo/Client/request_by_text8")
    ->Arg(10)
    ->Arg(100);

// The standard library counts without atomic operations until a second thread is made.
void becomeThreaded() {
    std::thread([] {}).join();
}

void addRefRelease(benchmark::State& state) {
    becomeThreaded();
    IUnknown* object = CComponentHelper::makeComponentObject(new Object);
    for (auto _ : state) {
        benchmark::DoNotOptimize(object);
        object->addRef();
        object->release();
    }
    object->release();
}
BENCHMARK(addRefRelease)->Name("Fundo/Reference/add_release");

void comPtrCopy(benchmark::State& state) {
    becomeThreaded();
    const TComPtr<Object> object(new Object);
    for (auto _ : state) {
        TComPtr<Object> copy(object);
        benchmark::DoNotOptimize(copy);
    }
}
BENCHMARK(comPtrCopy)->Name("Fundo/Reference/copy");

void sharedPtrCopy(benchmark::State& state) {
    becomeThreaded();
    const auto object = std::make_shared<int>(1);
    for (auto _ : state) {
        std::shared_ptr<int> copy(object);
        benchmark::DoNotOptimize(copy);
    }
}
BENCHMARK(sharedPtrCopy)->Name("Std/Reference/add_release");
BENCHMARK(sharedPtrCopy)->Name("Std/Reference/copy");

constexpr int kSlots = 8;

struct Listener {
    void hear(void*, int, int, int, int value) { sum += value; }
    long sum = 0;
};

void emit(benchmark::State& state) {
    becomeThreaded();
    TSignal5<void*, int, int, int, int> signal(kSlots);
    Listener listeners[kSlots];
    for (Listener& listener : listeners)
        signal.attach({&Listener::hear, &listener}, decltype(signal)::any);
    for (auto _ : state)
        signal(nullptr, 1, 2, 3, 4);
    benchmark::DoNotOptimize(listeners[kSlots - 1].sum);
}
BENCHMARK(emit)->Name("Fundo/Signal/emit_8_slots");

#ifdef HAVE_BOOST
void boostEmit(benchmark::State& state) {
    becomeThreaded();
    boost::signals2::signal<void(void*, int, int, int, int)> signal;
    Listener listeners[kSlots];
    for (Listener& listener : listeners) {
        signal.connect(
            [&listener](void* data, int a, int b, int c, int d) { listener.hear(data, a, b, c, d); });
    }
    for (auto _ : state)
        signal(nullptr, 1, 2, 3, 4);
    benchmark::DoNotOptimize(listeners[kSlots - 1].sum);
}
BENCHMARK(boostEmit)->Name("Boost/Signal/emit_8_slots");
#endif

}  // namespace
