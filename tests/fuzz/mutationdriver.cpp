// mutationdriver COUNT DIRECTORY: feeds the files of the directory, and COUNT inputs made of them by random changes, to
// the function that clang's fuzzer would call. The inputs are the same in every run. One that crashes is in the file
// "crash-input", in the directory of the run.

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size);

namespace {
constexpr std::size_t longestInput = 4096;

std::string current;

/// Nothing but system calls: whatever state the process is in.
void keepInput(int)
{
    const int file = open("crash-input", O_WRONLY | O_CREAT | O_TRUNC, 0644);
    const bool kept = file >= 0 && write(file, current.data(), current.size()) == static_cast<ssize_t>(current.size());
    _exit(kept ? 2 : 3);
}

void feed(const std::string &input)
{
    current = input;
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(current.data()), current.size());
}

std::vector<std::string> readSeeds(const char *directory)
{
    std::vector<std::filesystem::path> paths;
    for (const auto &entry : std::filesystem::directory_iterator(directory))
        paths.push_back(entry.path());
    // The system lists them in any order.
    std::sort(paths.begin(), paths.end());
    std::vector<std::string> seeds;
    for (const auto &path : paths) {
        std::ifstream file(path, std::ios::binary);
        seeds.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
    return seeds;
}

class Mutator
{
public:
    explicit Mutator(const std::vector<std::string> &seeds)
        : m_seeds(seeds)
    {
    }

    std::string next()
    {
        std::string input = anySeed();
        for (std::size_t changes = 1 + below(8); changes > 0; --changes)
            change(input);
        input.resize(std::min(input.size(), longestInput));
        return input;
    }

private:
    std::size_t below(std::size_t end) { return std::uniform_int_distribution<std::size_t>(0, end - 1)(m_generator); }
    char anyByte() { return static_cast<char>(below(256)); }
    const std::string &anySeed() { return m_seeds[below(m_seeds.size())]; }

    /// A part of a text: where it begins, and how long it is.
    std::pair<std::size_t, std::size_t> anyPart(const std::string &text)
    {
        const std::size_t begin = below(text.size() + 1);
        return {begin, below(text.size() - begin + 1)};
    }

    void change(std::string &input)
    {
        const auto [begin, length] = anyPart(input);
        switch (below(5)) {
        case 0:
            input.insert(begin, 1, anyByte());
            break;
        case 1:
            input.replace(begin, std::min<std::size_t>(1, input.size() - begin), 1, anyByte());
            break;
        case 2:
            input.erase(begin, length);
            break;
        case 3:
            input.insert(begin, input.substr(begin, length));
            break;
        default: {
            const std::string &other = anySeed();
            const auto [otherBegin, otherLength] = anyPart(other);
            input.insert(begin, other, otherBegin, otherLength);
        }
        }
    }

    const std::vector<std::string> &m_seeds;
    std::mt19937 m_generator{1};
};
} // namespace

int main(int argc, char *argv[])
{
    const long count = argc == 3 ? std::atol(argv[1]) : 0;
    const std::vector<std::string> seeds = count > 0 ? readSeeds(argv[2]) : std::vector<std::string>();
    if (seeds.empty()) {
        std::fprintf(stderr, "usage: %s COUNT DIRECTORY_WITH_INPUTS\n", argv[0]);
        return 1;
    }
    for (const int signal : {SIGABRT, SIGSEGV, SIGBUS, SIGFPE, SIGILL})
        std::signal(signal, keepInput);
    for (const std::string &seed : seeds)
        feed(seed);
    Mutator mutator(seeds);
    for (long i = 0; i < count; ++i)
        feed(mutator.next());
    std::printf("%zu inputs and %ld made of them\n", seeds.size(), count);
    return 0;
}
