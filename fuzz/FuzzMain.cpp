// A standalone driver for the fuzz targets, so that they build and run with any
// compiler. It is called the way libFuzzer is:
//
//   fuzz_xxx [-runs=N] [-seed=S] [-max_len=L] FILE_OR_FOLDER...
//
// Every input named (folders recursively) runs once; then N mutations of them
// run. The same seed gives the same mutations, so a failure found at run K is
// replayed by the same command. When an input brings the process down, it is
// written to crash-<seed>-<run> in the current folder first.
#include <algorithm>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <unistd.h>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);
extern "C" __attribute__((weak)) void __sanitizer_set_death_callback(void (*callback)());

namespace {

using Bytes = std::vector<uint8_t>;

// The input under test and its crash file name, kept where a signal handler
// can reach them without allocating.
const Bytes* currentInput = nullptr;
char crashName[64] = "crash";

void DumpCurrentInput() {
    if (!currentInput) return;
    const int fd = open(crashName, O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (fd < 0) return;
    if (write(fd, currentInput->data(), currentInput->size()) < 0) {
    }
    close(fd);
    currentInput = nullptr;
}

void OnFatalSignal(int sig) {
    DumpCurrentInput();
    std::signal(sig, SIG_DFL);
    std::raise(sig);
}

void RunOne(const Bytes& input, const char* name) {
    std::snprintf(crashName, sizeof crashName, "%s", name);
    currentInput = &input;
    LLVMFuzzerTestOneInput(input.data(), input.size());
    currentInput = nullptr;
}

bool ReadFile(const std::filesystem::path& path, Bytes& out) {
    std::ifstream f(path, std::ios::binary);
    if (!f) return false;
    out.assign(std::istreambuf_iterator<char>(f), std::istreambuf_iterator<char>());
    return true;
}

// Values that sit on the edges parsers test against: zero, one, signs, powers
// of two, all ones.
uint32_t InterestingValue(std::mt19937& gen) {
    static const uint32_t values[] = {
        0,   1,   2,   3,   4,   7,   8,      12,     16,     24,      32,         40,         56,        64,
        108, 124, 127, 128, 255, 256, 0x7FFF, 0x8000, 0xFFFF, 0x10000, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
    return values[gen() % std::size(values)];
}

void Mutate(Bytes& data, const std::vector<Bytes>& corpus, size_t maxLen, std::mt19937& gen) {
    const int steps = 1 + static_cast<int>(gen() % 6);
    for (int s = 0; s < steps; ++s) {
        const size_t at = data.empty() ? 0 : gen() % data.size();
        switch (gen() % 8) {
        case 0: // flip one bit
            if (!data.empty()) data[at] ^= static_cast<uint8_t>(1u << (gen() % 8));
            break;
        case 1: // any byte
            if (!data.empty()) data[at] = static_cast<uint8_t>(gen());
            break;
        case 2: { // an edge value, 1, 2 or 4 bytes little-endian
            const uint32_t v = InterestingValue(gen);
            const size_t width = size_t{1} << (gen() % 3);
            for (size_t i = 0; i < width && at + i < data.size(); ++i)
                data[at + i] = static_cast<uint8_t>(v >> (8 * i));
            break;
        }
        case 3: { // insert a few random bytes
            const size_t n = 1 + gen() % 16;
            Bytes extra(n);
            for (auto& b : extra)
                b = static_cast<uint8_t>(gen());
            data.insert(data.begin() + static_cast<ptrdiff_t>(at), extra.begin(), extra.end());
            break;
        }
        case 4: // erase a stretch
            if (!data.empty()) {
                const size_t n = std::min<size_t>(1 + gen() % 64, data.size() - at);
                data.erase(data.begin() + static_cast<ptrdiff_t>(at),
                           data.begin() + static_cast<ptrdiff_t>(at + n));
            }
            break;
        case 5: // cut off the end
            data.resize(at);
            break;
        case 6: { // repeat a stretch
            if (data.empty()) break;
            const size_t n = std::min<size_t>(1 + gen() % 256, data.size() - at);
            const Bytes chunk(data.begin() + static_cast<ptrdiff_t>(at),
                              data.begin() + static_cast<ptrdiff_t>(at + n));
            data.insert(data.begin() + static_cast<ptrdiff_t>(at), chunk.begin(), chunk.end());
            break;
        }
        default: { // splice in the tail of another input
            const Bytes& other = corpus[gen() % corpus.size()];
            if (other.empty()) break;
            const size_t from = gen() % other.size();
            data.resize(at);
            data.insert(data.end(), other.begin() + static_cast<ptrdiff_t>(from), other.end());
            break;
        }
        }
    }
    if (data.size() > maxLen) data.resize(maxLen);
}

bool ParseFlag(const char* arg, const char* name, unsigned long long& value) {
    const size_t n = std::strlen(name);
    if (std::strncmp(arg, name, n) != 0) return false;
    value = std::strtoull(arg + n, nullptr, 10);
    return true;
}

} // namespace

int main(int argc, char** argv) {
    unsigned long long runs = 0, seed = static_cast<unsigned long long>(std::time(nullptr)), maxLen = 1 << 16;
    std::vector<std::filesystem::path> paths;
    for (int i = 1; i < argc; ++i) {
        if (ParseFlag(argv[i], "-runs=", runs) || ParseFlag(argv[i], "-seed=", seed) ||
            ParseFlag(argv[i], "-max_len=", maxLen))
            continue;
        if (argv[i][0] == '-') {
            std::fprintf(stderr, "usage: %s [-runs=N] [-seed=S] [-max_len=L] FILE_OR_FOLDER...\n", argv[0]);
            return 2;
        }
        paths.emplace_back(argv[i]);
    }

    for (int sig : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT})
        std::signal(sig, OnFatalSignal);
    if (__sanitizer_set_death_callback) __sanitizer_set_death_callback(DumpCurrentInput);

    std::vector<Bytes> corpus;
    for (const auto& path : paths) {
        std::vector<std::filesystem::path> files;
        if (std::filesystem::is_directory(path)) {
            for (const auto& entry : std::filesystem::recursive_directory_iterator(path))
                if (entry.is_regular_file()) files.push_back(entry.path());
            std::sort(files.begin(), files.end());
        } else {
            files.push_back(path);
        }
        for (const auto& file : files) {
            Bytes data;
            if (!ReadFile(file, data)) {
                std::fprintf(stderr, "cannot read %s\n", file.c_str());
                return 1;
            }
            RunOne(data, "crash-input");
            corpus.push_back(std::move(data));
        }
    }
    std::printf("ran %zu inputs\n", corpus.size());
    if (corpus.empty()) corpus.emplace_back();

    std::mt19937 gen(static_cast<uint32_t>(seed));
    for (unsigned long long run = 0; run < runs; ++run) {
        Bytes data = corpus[gen() % corpus.size()];
        Mutate(data, corpus, maxLen, gen);
        char name[64];
        std::snprintf(name, sizeof name, "crash-%llu-%llu", seed, run);
        RunOne(data, name);
    }
    if (runs) std::printf("ran %llu mutations, seed %llu\n", runs, seed);
    return 0;
}
