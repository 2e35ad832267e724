// The file classes against the C library's streams with the same buffer of 16 KiB.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "Fundo/Fundo3/File.h"
#include "Fundo/Fundo3/LfsFile.h"

using namespace Tovra::Fundo;

namespace {

constexpr size_t kBuffer = 16384;
constexpr size_t kSize = 1 << 20;
constexpr size_t kLarge = 64 << 20;

// A file of its own for each size, removed at the end of the program.
class Scratch {
public:
    explicit Scratch(size_t size)
        : m_path(
              (std::filesystem::temp_directory_path() / ("fundo-bench-" + std::to_string(size))).string()) {
        FILE* file = std::fopen(m_path.c_str(), "wb");
        const std::vector<char> block(kSize, 'x');
        for (size_t done = 0; done < size; done += kSize)
            std::fwrite(block.data(), 1, kSize, file);
        std::fclose(file);
    }
    ~Scratch() { std::filesystem::remove(m_path); }
    const char* path() const { return m_path.c_str(); }

private:
    std::string m_path;
};

const char* smallFile() {
    static const Scratch s_file(kSize);
    return s_file.path();
}

const char* largeFile() {
    static const Scratch s_file(kLarge);
    return s_file.path();
}

// Reads the file to its end in blocks, over and over.
template <class File>
void read(benchmark::State& state) {
    const auto block = static_cast<size_t>(state.range(0));
    std::vector<char> buffer(block);
    File file;
    file.open(smallFile(), File::modeRead);
    size_t left = kSize;
    for (auto _ : state) {
        if (left < block) {
            file.seek(0, File::begin);
            left = kSize;
        }
        left -= static_cast<size_t>(file.read(buffer.data(), static_cast<long>(block)));
    }
}

template <class File>
void write(benchmark::State& state) {
    const auto block = static_cast<size_t>(state.range(0));
    std::vector<char> buffer(block, 'y');
    File file;
    file.open(smallFile(), File::modeReadWrite);
    size_t left = kSize;
    for (auto _ : state) {
        if (left < block) {
            file.seek(0, File::begin);
            left = kSize;
        }
        left -= static_cast<size_t>(file.write(buffer.data(), static_cast<long>(block)));
    }
}

template <class File>
void load(benchmark::State& state) {
    for (auto _ : state) {
        File file;
        benchmark::DoNotOptimize(file.load(largeFile()));
    }
}

// The C library's stream under the same face.
class Stream {
public:
    enum Mode { modeRead, modeReadWrite };
    enum { begin = SEEK_SET };
    ~Stream() { std::fclose(m_file); }
    void open(const char* path, Mode mode) {
        m_file = std::fopen(path, mode == modeRead ? "rb" : "rb+");
        std::setvbuf(m_file, m_buffer, _IOFBF, kBuffer);
    }
    void seek(long offset, int whence) { std::fseek(m_file, offset, whence); }
    long read(void* data, long count) {
        return static_cast<long>(std::fread(data, 1, static_cast<size_t>(count), m_file));
    }
    // The classes know their position after each write, and so asks this one.
    long write(const void* data, long count) {
        const auto done = static_cast<long>(std::fwrite(data, 1, static_cast<size_t>(count), m_file));
        benchmark::DoNotOptimize(std::ftell(m_file));
        return done;
    }

private:
    FILE* m_file = nullptr;
    char m_buffer[kBuffer];
};

void loadByRead(benchmark::State& state) {
    for (auto _ : state) {
        const int fd = ::open(largeFile(), O_RDONLY);
        struct stat status;
        fstat(fd, &status);
        const std::unique_ptr<char[]> bytes(new char[static_cast<size_t>(status.st_size)]);
        benchmark::DoNotOptimize(::read(fd, bytes.get(), static_cast<size_t>(status.st_size)));
        ::close(fd);
    }
}

BENCHMARK_TEMPLATE(read, CFile)->Name("Fundo/File/read")->Arg(64)->Arg(4096);
BENCHMARK_TEMPLATE(read, Stream)->Name("Stdio/File/read")->Arg(64)->Arg(4096);
BENCHMARK_TEMPLATE(read, CLfsFile)->Name("Fundo/LfsFile/read")->Arg(64)->Arg(4096);
BENCHMARK_TEMPLATE(read, Stream)->Name("Stdio/LfsFile/read")->Arg(64)->Arg(4096);
BENCHMARK_TEMPLATE(write, CFile)->Name("Fundo/File/write")->Arg(4096);
BENCHMARK_TEMPLATE(write, Stream)->Name("Stdio/File/write")->Arg(4096);
BENCHMARK_TEMPLATE(write, CLfsFile)->Name("Fundo/LfsFile/write")->Arg(4096);
BENCHMARK_TEMPLATE(write, Stream)->Name("Stdio/LfsFile/write")->Arg(4096);
BENCHMARK_TEMPLATE(load, CFile)->Name("Fundo/File/load")->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(load, CLfsFile)->Name("Fundo/LfsFile/load")->Unit(benchmark::kMillisecond);
BENCHMARK(loadByRead)->Name("Posix/File/load")->Unit(benchmark::kMillisecond);
BENCHMARK(loadByRead)->Name("Posix/LfsFile/load")->Unit(benchmark::kMillisecond);

}  // namespace
