// SPDX-License-Identifier: MIT
// Feeds every file of the folders on its command line to a fuzz target once, in an ordinary build: the seeds of the
// fuzz corpora stay inputs that the targets accept without a fault. Exit status 1 for a folder without files.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

namespace fs = std::filesystem;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

static void FeedFile(const fs::path& path) {
    std::printf("%s\n", path.filename().c_str());
    std::fflush(stdout);
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    std::vector<std::uint8_t> data(bytes.begin(), bytes.end());
    LLVMFuzzerTestOneInput(data.data(), data.size());
}

int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        std::vector<fs::path> files;
        for (const fs::directory_entry& entry : fs::directory_iterator(argv[i])) {
            files.push_back(entry.path());
        }
        std::sort(files.begin(), files.end());
        std::for_each(files.begin(), files.end(), FeedFile);
        if (files.empty()) {
            return 1;
        }
    }
    return argc > 1 ? 0 : 1;
}
