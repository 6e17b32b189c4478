// SPDX-License-Identifier: MIT
//
// Runs a fuzz target without the fuzzer: on each file named, and on each file of each folder named.
// A target that finds a fault ends the process; an input that cannot be read fails.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> inputsOf(const fs::path& named) {
    if (!fs::is_directory(named)) return {named};
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(named)) {
        if (entry.is_regular_file()) files.push_back(entry.path());
    }
    // Sorted by name, so that two runs do the same.
    std::sort(files.begin(), files.end());
    return files;
}

bool replay(const fs::path& path) {
    std::ifstream stream(path, std::ios::binary);
    if (!stream) {
        std::fprintf(stderr, "%s: cannot be opened\n", path.string().c_str());
        return false;
    }
    const std::string bytes{std::istreambuf_iterator<char>(stream),
                            std::istreambuf_iterator<char>()};
    // Prints the name first: if the target ends the process, this line identifies the input.
    std::printf("%s: %zu bytes\n", path.string().c_str(), bytes.size());
    std::fflush(stdout);
    // A copy of exactly its size, so that the sanitizer detects the first byte read past its end.
    const std::vector<std::uint8_t> data(bytes.begin(), bytes.end());
    LLVMFuzzerTestOneInput(data.data(), data.size());
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    std::size_t ran = 0;
    bool good = true;
    for (int i = 1; i < argc; ++i) {
        for (const fs::path& path : inputsOf(argv[i])) {
            good = replay(path) && good;
            ++ran;
        }
    }
    std::printf("%zu inputs\n", ran);
    if (ran == 0) std::fprintf(stderr, "no inputs: name files or folders\n");
    return good && ran > 0 ? 0 : 1;
}
