// SPDX-License-Identifier: Apache-2.0
// A main program in the place of the fuzzer's: runs the target once on each file of the folders
// and files that it is given.
#include <stdint.h>
#include <stdio.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

int gCount = 0;

void run(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> input(std::istreambuf_iterator<char>(file), {});
    fprintf(stderr, "%s: %zu bytes\n", path.c_str(), input.size());
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(input.data()), input.size());
    ++gCount;
}

}  // namespace

int main(int argc, char** argv) {
    namespace fs = std::filesystem;
    for (int i = 1; i < argc; ++i) {
        if (!fs::is_directory(argv[i])) {
            if (fs::exists(argv[i])) run(argv[i]);
            continue;
        }
        for (const auto& entry : fs::directory_iterator(argv[i])) run(entry.path());
    }
    printf("%d inputs\n", gCount);
    return gCount > 0 ? 0 : 1;
}
