// What the old names cost over the current ones: the same work through both.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "Fundo/File.h"
#include "Fundo/Fundo3/File.h"
#include "Fundo/Fundo3/Timer.h"
#include "Fundo/Packet.h"
#include "Fundo/Timer.h"
#include "Memory/Packet.h"

namespace {

using CurrentFile = Tovra::Fundo::CFile;
using CurrentPacket = Tovra::Memory::CPacket;
using CurrentTimer = Tovra::Fundo::CTimer;

constexpr unsigned long kBytes = 256;
constexpr size_t kHeader = 128;         // what a legacy packet has
constexpr unsigned int kFar = 3600000;  // milliseconds

void packetMakeOld(benchmark::State& state) {
    for (auto _ : state) {
        CPacket packet(kBytes);
        benchmark::DoNotOptimize(packet);
    }
}
void packetMakeCurrent(benchmark::State& state) {
    for (auto _ : state) {
        CurrentPacket packet(kBytes, kHeader);
        benchmark::DoNotOptimize(packet);
    }
}
BENCHMARK(packetMakeOld)->Name("Fundo/LegacyPacket/make");
BENCHMARK(packetMakeCurrent)->Name("Current/LegacyPacket/make");

template <class Packet, class... More>
void packetCopy(benchmark::State& state, More... more) {
    const Packet packet(kBytes, more...);
    for (auto _ : state) {
        Packet copy(packet);
        benchmark::DoNotOptimize(copy);
    }
}
void packetCopyOld(benchmark::State& state) { packetCopy<CPacket>(state); }
void packetCopyCurrent(benchmark::State& state) { packetCopy<CurrentPacket>(state, kHeader); }
BENCHMARK(packetCopyOld)->Name("Fundo/LegacyPacket/copy");
BENCHMARK(packetCopyCurrent)->Name("Current/LegacyPacket/copy");

void packetPutOld(benchmark::State& state) {
    CPacket packet(kBytes);
    char bytes[16] = "fifteen letters";
    for (auto _ : state) {
        packet.SetLength(0);
        benchmark::DoNotOptimize(packet.PutBuffer(bytes, sizeof bytes));
    }
}
void packetPutCurrent(benchmark::State& state) {
    CurrentPacket packet(kBytes, kHeader);
    char bytes[16] = "fifteen letters";
    for (auto _ : state) {
        packet.resize(0);
        benchmark::DoNotOptimize(packet.putBuffer(bytes, sizeof bytes));
    }
}
BENCHMARK(packetPutOld)->Name("Fundo/LegacyPacket/put");
BENCHMARK(packetPutCurrent)->Name("Current/LegacyPacket/put");

void packetLeftOld(benchmark::State& state) {
    CPacket packet(kBytes);
    for (auto _ : state) {
        benchmark::DoNotOptimize(packet);
        benchmark::DoNotOptimize(packet.GetLeft());
    }
}
void packetLeftCurrent(benchmark::State& state) {
    CurrentPacket packet(kBytes, kHeader);
    for (auto _ : state) {
        benchmark::DoNotOptimize(packet);
        benchmark::DoNotOptimize(packet.capacity() - packet.size());
    }
}
BENCHMARK(packetLeftOld)->Name("Fundo/LegacyPacket/left");
BENCHMARK(packetLeftCurrent)->Name("Current/LegacyPacket/left");

void nothing(unsigned long) {}

struct Target : CObject {
    void nothing(unsigned int) {}
};

void timerOld(benchmark::State& state) {
    CTimer timer("Bench");
    for (auto _ : state) {
        timer.Start(&nothing, kFar, 0UL, 0UL, 0UL);
        timer.Stop(false);
    }
}
void timerObjectOld(benchmark::State& state) {
    CTimer timer("Bench");
    Target target;
    const auto method = static_cast<void (CObject::*)(unsigned int)>(&Target::nothing);
    for (auto _ : state) {
        timer.Start(&target, method, kFar, 0U, 0U, 0U);
        timer.Stop(false);
    }
}
void timerCurrent(benchmark::State& state) {
    CurrentTimer timer("Bench");
    for (auto _ : state) {
        timer.start(&nothing, kFar, 0, 0, 0);
        timer.stop(false);
    }
}
BENCHMARK(timerOld)->Name("Fundo/LegacyTimer/arm_cancel");
BENCHMARK(timerCurrent)->Name("Current/LegacyTimer/arm_cancel");
BENCHMARK(timerObjectOld)->Name("Fundo/LegacyTimer/arm_cancel_object");
BENCHMARK(timerCurrent)->Name("Current/LegacyTimer/arm_cancel_object");

template <class Timer, bool (Timer::*isStarted)()>
void timerState(benchmark::State& state) {
    Timer timer("Bench");
    for (auto _ : state)
        benchmark::DoNotOptimize((timer.*isStarted)());
}
BENCHMARK_TEMPLATE(timerState, CTimer, &CTimer::IsStarted)->Name("Fundo/LegacyTimer/is_started");
BENCHMARK_TEMPLATE(timerState, CurrentTimer, &CurrentTimer::isStarted)
    ->Name("Current/LegacyTimer/is_started");

class Scratch {
public:
    Scratch() {
        if (FILE* file = std::fopen(m_path.c_str(), "wb")) {
            std::fputs(std::string(4096, 'x').c_str(), file);
            std::fclose(file);
        }
    }
    ~Scratch() { std::filesystem::remove(m_path); }
    const char* path() const { return m_path.c_str(); }

private:
    std::string m_path = (std::filesystem::temp_directory_path() / "fundo-bench-legacy").string();
};

// 64 bytes at a time, from the start again every 4 KiB.
void fileReadOld(benchmark::State& state) {
    const Scratch scratch;
    CFile file;
    file.Open(scratch.path(), CFile::modeRead);
    char bytes[64];
    for (auto _ : state) {
        if (file.Read(bytes, sizeof bytes) <= 0) file.Seek(0, CFile::begin);
    }
}
void fileReadCurrent(benchmark::State& state) {
    const Scratch scratch;
    CurrentFile file;
    file.open(scratch.path(), CurrentFile::modeRead);
    char bytes[64];
    for (auto _ : state) {
        if (file.read(bytes, sizeof bytes) <= 0) file.seek(0, CurrentFile::begin);
    }
}
BENCHMARK(fileReadOld)->Name("Fundo/LegacyFile/read");
BENCHMARK(fileReadCurrent)->Name("Current/LegacyFile/read");

void fileWriteOld(benchmark::State& state) {
    const Scratch scratch;
    CFile file;
    file.Open(scratch.path(), CFile::modeReadWrite);
    char bytes[64] = "";
    for (auto _ : state) {
        file.Write(bytes, sizeof bytes);
        if (file.GetPosition() >= 4096) file.Seek(0, CFile::begin);
    }
}
void fileWriteCurrent(benchmark::State& state) {
    const Scratch scratch;
    CurrentFile file;
    file.open(scratch.path(), CurrentFile::modeReadWrite);
    char bytes[64] = "";
    for (auto _ : state) {
        file.write(bytes, sizeof bytes);
        if (file.getPosition() >= 4096) file.seek(0, CurrentFile::begin);
    }
}
BENCHMARK(fileWriteOld)->Name("Fundo/LegacyFile/write");
BENCHMARK(fileWriteCurrent)->Name("Current/LegacyFile/write");

template <class File, long (File::*getPosition)()>
void filePosition(benchmark::State& state) {
    File file;
    for (auto _ : state)
        benchmark::DoNotOptimize((file.*getPosition)());
}
BENCHMARK_TEMPLATE(filePosition, CFile, &CFile::GetPosition)->Name("Fundo/LegacyFile/position");
BENCHMARK_TEMPLATE(filePosition, CurrentFile, &CurrentFile::getPosition)->Name("Current/LegacyFile/position");

}  // namespace
