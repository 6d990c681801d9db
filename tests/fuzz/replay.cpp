#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include <sys/resource.h>

// Runs a fuzz target over saved inputs, so that every compiler and every test run tries them, and sees that
// none takes long and the process stays small: what a file claims is no reason to ask for time or memory.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

/// Of the whole process. Pictures of 3840 x 2160 pixels take 25 MB each, a video's encoder some hundred.
constexpr long mostMemory = 1024L * 1024; // kilobytes

/// Of processor time, all threads together: what else the machine does is no matter of an input.
constexpr double mostSeconds = 1;

class Watch
{
public:
    /// Seconds since it was made.
    double seconds() const { return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC; }

private:
    const std::clock_t start = std::clock();
};

bool isQuick(double seconds)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    return seconds >= 0; // most of the time is the sanitizers' own
#else
    return seconds < mostSeconds;
#endif
}

bool staysSmall()
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    return true; // the sanitizers' own memory is not the target's
#else
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    std::printf("at most %ld kB\n", usage.ru_maxrss);
    return usage.ru_maxrss < mostMemory;
#endif
}

} // namespace

int main(int argc, char** argv)
{
    std::size_t inputs = 0;
    double longest = 0;
    for (int i = 1; i < argc; ++i) {
        for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
            std::ifstream file(entry.path(), std::ios::binary);
            const std::vector<char> bytes((std::istreambuf_iterator<char>(file)),
                                          std::istreambuf_iterator<char>());
            std::fprintf(stderr, "%s\n", entry.path().filename().c_str());
            const Watch watch;
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
            longest = std::max(longest, watch.seconds());
            ++inputs;
        }
    }
    std::printf("%zu inputs, the longest took %.3f s\n", inputs, longest);
    return inputs > 0 && isQuick(longest) && staysSmall() ? 0 : 1;
}
